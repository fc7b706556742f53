// Prints the lines of files that contain a match of a pattern.
//
//     grep [-icn] PATTERN FILE...
//
//     -i  without regard to case
//     -c  prints how many lines match instead, for each file
//     -n  prints the number of each line before it
//
// A FILE is a path whose file name may hold wildcards: "logs\*.txt"; folders that match are passed over. With several
// files each line bears the name of its own. Files that start with a byte-order mark of UTF-16 are searched as such,
// others as UTF-8 or any other text of bytes, where the dot is one byte.
// Lines end with CR LF, LF or CR. What is printed is UTF-8. What cannot be read is reported on standard error, with the
// whole status chain, and the others are still done.
//
// Exit code 0 when a line matches, 1 when none does, 2 when something failed or the arguments are wrong.

#include <cstdio>
#include <cwchar>
#include <exception>
#include <string>
#include <vector>

#include <windows.h>

#include <tam/tam.h>

using namespace tam;

namespace {

constexpr unsigned int LONGEST_LINE = 0xFFFFFFFD; // units; only what arrives takes memory

enum Exit_code { MATCHES = 0, NO_MATCH = 1, TROUBLE = 2 };

std::string utf8(const std::wstring& text)
{
    const int units = static_cast<int>(text.size());
    std::string bytes(3 * text.size(), '\0');
    const int count = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(),
                                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

const std::string& utf8(const std::string& bytes)
{
    return bytes;
}

void print_line(std::FILE* stream, const std::string& line)
{
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fputc('\n', stream);
}

// Newest first: what this program asked for, then the reasons below it.
void print_failure(const std::wstring& subject, const Tam_status& status)
{
    print_line(stderr, utf8(subject) + ":");
    std::wstring text;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, text);
        tam_trim(text);
        print_line(stderr, "  " + utf8(text));
    }
}

struct Grep {
    Tam_regular_expression narrow;
    Tam_wregular_expression wide;
    bool prints_counts = false;
    bool prints_numbers = false;
    std::string prefix;             // the file's name and a colon, when there are several files
    unsigned long long matches = 0; // in this file
};

template <class Line>
bool print_match(const Line& line, unsigned long long number, void* argument)
{
    Grep& grep = *static_cast<Grep*>(argument);
    ++grep.matches;
    if (!grep.prints_counts) {
        print_line(stdout, grep.prefix + (grep.prints_numbers ? std::to_string(number) + ":" : "") + utf8(line));
    }
    return true;
}

// The library's grep takes UTF-16 as Windows has it; lines in the other byte order are read and searched one by one.
void grep_big_endian(Tam_istream& stream, Grep& grep, Tam_status& status)
{
    std::wstring line;
    std::size_t start = 0;
    std::size_t length = 0;
    for (unsigned long long number = 1; status.ok(); ++number) {
        stream.wreadln_be(LONGEST_LINE, line, status);
        const bool is_line = status.ok() || status == TAM_E_NO_LINE_END; // the last line may have no end
        if (is_line && grep.wide.search(line, 0, start, length, status)) {
            print_match(line, number, &grep);
        }
    }
    if (status == TAM_E_END_OF_DATA) {
        status.clear();
    }
}

void search(const std::wstring& path, Grep& grep, Tam_status& status)
{
    grep.matches = 0;
    const Tam_file_buffer file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN,
                               TAM_FILE_SHARE_READ_WRITE, status);
    if (!status.ok()) {
        return;
    }
    Tam_buffered_istream stream(file, false, status, TAM_EOL_ANY);
    unsigned char mark[3] = {};
    stream.read_at(0, sizeof mark, mark, status); // zeros from the end of a shorter file on
    if (mark[0] == 0xFF && mark[1] == 0xFE) {
        stream.seek(2);
        grep.wide.grep(stream, print_match<std::wstring>, &grep, status);
    } else if (mark[0] == 0xFE && mark[1] == 0xFF) {
        stream.seek(2);
        grep_big_endian(stream, grep, status);
    } else {
        stream.seek(mark[0] == 0xEF && mark[1] == 0xBB && mark[2] == 0xBF ? 3 : 0);
        grep.narrow.grep(stream, print_match<std::string>, &grep, status);
    }
    if (grep.prints_counts && status.ok()) {
        print_line(stdout, grep.prefix + std::to_string(grep.matches));
    }
}

// Adds the files that a path with wildcards names.
void find_files(const std::wstring& wildcard, std::vector<std::wstring>& files, Tam_status& status)
{
    // Set as it stands: the constructor would simplify it. Windows takes slashes too, but a path has one separator.
    Tam_path path;
    path.path_separator(L'/');
    path = wildcard;
    path.path_separator(Tam_path::default_path_separator());
    const std::wstring directory = path.root_and_directory();
    Tam_directory_iterator entry(directory, path.filename());
    for (; !entry.end(); ++entry) {
        if (!entry->is_directory) {
            files.push_back(directory + entry->name);
        }
    }
    status = entry.status();
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    // Without the message module the statuses still show their codes and arguments.
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);

    Grep grep;
    bool caseless = false;
    bool usage_is_right = true;
    int next = 1;
    for (; next < argc && argv[next][0] == L'-'; ++next) {
        for (const wchar_t* flag = argv[next] + 1; *flag != 0; ++flag) {
            caseless |= *flag == L'i';
            grep.prints_counts |= *flag == L'c';
            grep.prints_numbers |= *flag == L'n';
            usage_is_right &= std::wcschr(L"icn", *flag) != nullptr;
        }
    }
    if (!usage_is_right || argc - next < 2) {
        print_line(stderr, "usage: grep [-icn] PATTERN FILE...");
        return TROUBLE;
    }

    bool failed = false;
    const auto report = [&](const std::wstring& subject) {
        if (!status.ok()) {
            print_failure(subject, status);
            failed = true;
        }
    };
    std::wstring pattern = argv[next++];
    std::string narrow_pattern = utf8(pattern);
    if (caseless) {
        tam_rx_remove_case(pattern, pattern);
        tam_rx_remove_case(narrow_pattern, narrow_pattern);
    }
    grep.wide.compile(pattern, status);
    if (status.ok()) {
        grep.narrow.compile(narrow_pattern, status);
    }
    report(L"grep");
    if (failed) {
        return TROUBLE;
    }

    std::vector<std::wstring> files;
    for (; next < argc; ++next) {
        try {
            find_files(argv[next], files, status);
            report(argv[next]);
        } catch (const std::exception& error) { // such as a path with a server, but no share
            print_line(stderr, utf8(argv[next]) + ": " + error.what());
            failed = true;
        }
    }
    bool matches = false;
    for (const std::wstring& file : files) {
        grep.prefix = files.size() > 1 ? utf8(file) + ":" : "";
        search(file, grep, status);
        report(file);
        matches |= grep.matches != 0;
    }
    if (std::fflush(stdout) != 0) {
        print_line(stderr, "The output could not be written.");
        failed = true;
    }
    return failed ? TROUBLE : matches ? MATCHES : NO_MATCH;
}
