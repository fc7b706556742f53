// Shows the CRC-32, the size in bytes and the number of lines of every file that matches, and reads each as a stream.
//
//     file_digest PATTERN...
//
// A pattern is a path whose file name may hold wildcards: "logs\*.txt". Lines are counted by their ends, so that what
// follows the last one is none. Files over 64 MB tell on standard error how far they are. What cannot be read is
// reported there, with the whole status chain, and the other files are still done.
//
// Exit code 0; 1 when something failed; 2 when called wrongly.

#include <cstdio>
#include <exception>
#include <string>

#include <fcntl.h>
#include <io.h>

#include <tam/tam.h>

using namespace tam;

namespace {

enum Exit_code { DONE = 0, FAILED = 1, WRONG_USAGE = 2 };

void print_line(std::FILE* stream, const std::wstring& text)
{
    std::fputws((text + L"\n").c_str(), stream);
}

// Newest first: what this program asked for, then the reasons below it.
void print_failure(const std::wstring& subject, const Tam_status& status)
{
    print_line(stderr, subject + L":");
    std::wstring text;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, text);
        tam_trim(text);
        print_line(stderr, L"  " + text);
    }
}

// A file that tells how far it has been read, when it is large. Others may read it meanwhile, but not write: all
// figures are of the same contents.
class Watched_file : public Tam_file_buffer {
public:
    Watched_file(const std::wstring& path, Tam_status& status)
        : Tam_file_buffer(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN, TAM_FILE_SHARE_READ,
                          status),
          m_path(path)
    {}

    // How often all of the file is going to be read.
    void expect(unsigned long long size, unsigned int passes) { m_expected = size > LARGE ? size * passes : 0; }

    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override
    {
        const unsigned int delivered = Tam_file_buffer::read(wait, position, count, destination, status);
        m_done += delivered;
        if (m_expected != 0 && m_done / (m_expected / STEPS) > m_step) {
            m_step = m_done / (m_expected / STEPS);
            print_line(stderr, m_path + L": " + std::to_wstring(m_step * 100 / STEPS) + L" %");
        }
        return delivered;
    }

private:
    static constexpr unsigned long long LARGE = 64ULL << 20;
    static constexpr unsigned int STEPS = 10;

    std::wstring m_path;
    unsigned long long m_expected = 0; // bytes of all passes; 0: nobody wants to know
    mutable unsigned long long m_done = 0;
    mutable unsigned long long m_step = 0;
};

void digest(const std::wstring& path, Tam_status& status)
{
    Watched_file file(path, status);
    if (!status.ok()) {
        return;
    }
    Tam_buffered_istream stream(file, false, status);
    const unsigned long long size = stream.size(status);
    file.expect(size, 2);
    unsigned int lines = 0;
    if (status.ok()) {
        lines = tam_count_lines(stream, status);
    }
    Tam_crc32 crc;
    if (status.ok()) {
        crc.update(file, status);
    }
    if (status.ok()) {
        std::fwprintf(stdout, L"%08X %14llu %10u  ", crc.result(), size, lines);
        print_line(stdout, path);
    }
}

// False when something failed, which has been reported then.
bool digest_matches(const std::wstring& pattern)
{
    // Set as it stands: the constructor would simplify it. Windows takes slashes too, but a path has one separator.
    Tam_path path;
    path.path_separator(L'/');
    path = pattern;
    path.path_separator(Tam_path::default_path_separator());
    const std::wstring directory = path.root_and_directory();

    bool all_done = true;
    const auto report = [&](const std::wstring& subject, const Tam_status& status) {
        if (!status.ok()) {
            print_failure(subject, status);
            all_done = false;
        }
    };
    Tam_directory_iterator entry(directory, path.filename());
    for (; !entry.end(); ++entry) {
        if (!entry->is_directory) {
            Tam_status status;
            digest(directory + entry->name, status);
            report(directory + entry->name, status);
        }
    }
    report(pattern, entry.status());
    return all_done;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    _setmode(_fileno(stderr), _O_U8TEXT);
    if (argc < 2) {
        print_line(stderr, L"usage: file_digest PATTERN...");
        return WRONG_USAGE;
    }

    // Without the message module the statuses still show their codes and arguments.
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
    if (!status.ok()) {
        print_failure(L"tam_messages.dll", status);
    }

    bool all_done = true;
    for (int i = 1; i < argc; ++i) {
        try {
            all_done &= digest_matches(argv[i]);
        } catch (const std::exception& error) { // such as a path with a server, but no share
            print_line(stderr, std::wstring(argv[i]) + L": " + tam_stow(error.what()));
            all_done = false;
        }
    }
    if (std::fflush(stdout) != 0) {
        print_line(stderr, L"The output could not be written.");
        all_done = false;
    }
    return all_done ? DONE : FAILED;
}
