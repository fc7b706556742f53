// Shows what a profile file holds: its sections, the entries of one section, or one value.
//
//     profile_query FILE [SECTION [KEY]]
//
// Exit code 0; 1 with the whole status chain on standard error when something failed; 2 when called wrongly.

#include <cstdio>
#include <string>
#include <utility>

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
void print_chain(const Tam_status& status)
{
    std::wstring text;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, text);
        tam_trim(text);
        print_line(stderr, text);
    }
}

void list_sections(const Tam_profile_reader& reader, Tam_status& status)
{
    Tam_object_vector<std::wstring> names;
    reader.get_section_list(names, status);
    for (const std::wstring& name : names) {
        print_line(stdout, name);
    }
}

void list_entries(Tam_profile_reader& reader, const std::wstring& section, Tam_status& status)
{
    reader.set_current_section(section, status);
    std::pair<std::wstring, std::wstring> entry;
    while (status.ok() && !reader.end_of_entries()) {
        reader.get_current_entry(entry, status);
        const bool is_comment = entry.first.starts_with(L';');
        const bool is_blank = entry.first.empty() && entry.second.empty();
        print_line(stdout, is_comment || is_blank ? entry.first : entry.first + L" = " + entry.second);
        reader.move_to_next_entry(status);
    }
}

void show_value(Tam_profile_reader& reader, const std::wstring& section, const std::wstring& key, Tam_status& status)
{
    reader.set_current_section(section, status);
    if (status.ok()) {
        reader.move_to_key(key, status);
    }
    std::pair<std::wstring, std::wstring> entry;
    if (status.ok()) {
        reader.get_current_entry(entry, status);
    }
    if (status.ok()) {
        print_line(stdout, entry.second);
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    _setmode(_fileno(stderr), _O_U8TEXT);
    if (argc < 2 || argc > 4) {
        print_line(stderr, L"usage: profile_query FILE [SECTION [KEY]]");
        return WRONG_USAGE;
    }

    // Without the message module the statuses still show their codes and arguments.
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
    if (!status.ok()) {
        print_chain(status);
    }

    Tam_profile_reader reader(argv[1], status);
    if (status.ok()) {
        if (argc == 2) {
            list_sections(reader, status);
        } else if (argc == 3) {
            list_entries(reader, argv[2], status);
        } else {
            show_value(reader, argv[2], argv[3], status);
        }
    }
    if (!status.ok()) {
        print_chain(status);
        return FAILED;
    }
    return DONE;
}
