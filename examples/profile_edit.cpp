// Changes a profile file. All edits of one call are committed together, or none of them when one fails.
//
//     profile_edit FILE EDIT...
//
// where each EDIT is one of
//
//     get SECTION KEY              shows a value
//     set SECTION KEY VALUE        changes a value, or adds the key; makes the section where there is none
//     delete SECTION KEY           deletes an entry
//     delete-section SECTION
//     rename-section SECTION NAME
//     copy-section SECTION NAME
//     commit                       writes what was changed so far; the file as it was is then in the backup (FILE.bak)
//     abort                        takes back what was changed since the last commit
//     rollback                     takes back the last commit of this call as well
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

void enter(Tam_profile_access& profile, const std::wstring& section, Tam_status& status)
{
    profile.set_current_section(section, status);
}

void enter(Tam_profile_access& profile, const std::wstring& section, const std::wstring& key, Tam_status& status)
{
    enter(profile, section, status);
    if (status.ok()) {
        profile.move_to_key(key, status);
    }
}

void get(Tam_profile_access& profile, wchar_t** argument, Tam_status& status)
{
    enter(profile, argument[0], argument[1], status);
    std::pair<std::wstring, std::wstring> entry;
    if (status.ok()) {
        profile.get_current_entry(entry, status);
    }
    if (status.ok()) {
        print_line(stdout, entry.second);
    }
}

void set(Tam_profile_access& profile, wchar_t** argument, Tam_status& status)
{
    enter(profile, argument[0], status);
    if (status == TAM_E_SECTION_NOT_FOUND) {
        profile.create_new_section(argument[0], status);
        enter(profile, argument[0], status);
    }
    if (status.ok()) {
        profile.move_to_key(argument[1], status);
    }
    if (status.ok()) {
        profile.delete_entry(status);
    } else if (status == TAM_E_END_OF_ENTRIES) {
        status.clear(); // the cursor is where the new entry belongs
    }
    if (status.ok()) {
        profile.insert_entry({argument[1], argument[2]}, status);
    }
}

void delete_entry(Tam_profile_access& profile, wchar_t** argument, Tam_status& status)
{
    enter(profile, argument[0], argument[1], status);
    if (status.ok()) {
        profile.delete_entry(status);
    }
}

void delete_section(Tam_profile_access& profile, wchar_t** argument, Tam_status& status)
{
    enter(profile, argument[0], status);
    if (status.ok()) {
        profile.delete_section(status);
    }
}

void rename_section(Tam_profile_access& profile, wchar_t** argument, Tam_status& status)
{
    enter(profile, argument[0], status);
    if (status.ok()) {
        profile.rename_section(argument[1], status);
    }
}

void copy_section(Tam_profile_access& profile, wchar_t** argument, Tam_status& status)
{
    enter(profile, argument[0], status);
    if (status.ok()) {
        profile.copy_section(argument[1], status);
    }
}

void commit(Tam_profile_access& profile, wchar_t**, Tam_status& status)
{
    profile.commit_changes(status);
}

void abort_edits(Tam_profile_access& profile, wchar_t**, Tam_status& status)
{
    profile.abort_changes(status);
}

void roll_back(Tam_profile_access& profile, wchar_t**, Tam_status& status)
{
    profile.rollback(status);
}

struct Edit {
    const wchar_t* name;
    int arguments;
    void (*run)(Tam_profile_access& profile, wchar_t** argument, Tam_status& status);
};

const Edit EDITS[] = {
    {L"get", 2, &get},
    {L"set", 3, &set},
    {L"delete", 2, &delete_entry},
    {L"delete-section", 1, &delete_section},
    {L"rename-section", 2, &rename_section},
    {L"copy-section", 2, &copy_section},
    {L"commit", 0, &commit},
    {L"abort", 0, &abort_edits},
    {L"rollback", 0, &roll_back},
};

// Null when there is none of that name with all its arguments.
const Edit* find_edit(const std::wstring& name, int arguments_left)
{
    for (const Edit& edit : EDITS) {
        if (name == edit.name && edit.arguments <= arguments_left) {
            return &edit;
        }
    }
    return nullptr;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    _setmode(_fileno(stderr), _O_U8TEXT);
    constexpr int FIRST_EDIT = 2;
    bool is_usage_right = argc > FIRST_EDIT;
    for (int i = FIRST_EDIT; is_usage_right && i < argc;) {
        const Edit* const edit = find_edit(argv[i], argc - i - 1);
        is_usage_right = edit != nullptr;
        i += edit != nullptr ? 1 + edit->arguments : 0;
    }
    if (!is_usage_right) {
        print_line(stderr,
                   L"usage: profile_edit FILE EDIT...\n"
                   L"edits: get SECTION KEY | set SECTION KEY VALUE | delete SECTION KEY | delete-section SECTION |\n"
                   L"       rename-section SECTION NAME | copy-section SECTION NAME | commit | abort | rollback");
        return WRONG_USAGE;
    }

    // Without the message module the statuses still show their codes and arguments.
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
    if (!status.ok()) {
        print_chain(status);
    }

    Tam_profile_access profile(argv[1], TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    for (int i = FIRST_EDIT; status.ok() && i < argc;) {
        const Edit* const edit = find_edit(argv[i], argc - i - 1);
        edit->run(profile, argv + i + 1, status);
        i += 1 + edit->arguments;
    }
    if (status.ok()) {
        profile.commit_changes(status);
    }
    if (!status.ok()) {
        print_chain(status); // what was not committed is dropped
        return FAILED;
    }
    return DONE;
}
