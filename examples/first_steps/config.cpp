// Edits a profile file, takes the edit back, and reads the file.
//
// Prints:
//     Port = 2525
//     Port = 25

#include <iostream>
#include <string>
#include <utility>

#include <windows.h>

#include <tam/config.h>
#include <tam/file.h>
#include <tam/status.h>

using namespace tam;

namespace {

void show_port(const std::wstring& file, Tam_status& status)
{
    std::pair<std::wstring, std::wstring> entry;
    Tam_profile_reader reader(file, status);
    if (status.ok()) {
        reader.set_current_section(L"Listener", status);
    }
    if (status.ok()) {
        reader.move_to_key(L"port", status); // letter case does not count
    }
    if (status.ok()) {
        reader.get_current_entry(entry, status);
        std::wcout << entry.first << L" = " << entry.second << L'\n';
    }
}

void set_port(Tam_profile_access& profile, const std::wstring& port, Tam_status& status)
{
    profile.set_current_section(L"Listener", status);
    if (status.ok() && !profile.end_of_entries()) {
        profile.delete_entry(status);
    }
    if (status.ok()) {
        profile.insert_entry({L"Port", port}, status);
    }
    if (status.ok()) {
        profile.commit_changes(status); // from here on the file has it
    }
}

} // namespace

int main()
{
    Tam_status status;
    const std::wstring file =
        Tam_directory::temp_directory() + L"first_steps_" + std::to_wstring(GetCurrentProcessId()) + L".ini";
    Tam_profile_access profile(file, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, status);
    if (status.ok()) {
        profile.create_new_section(L"Listener", status);
    }
    if (status.ok()) {
        set_port(profile, L"25", status);
    }
    if (status.ok()) {
        set_port(profile, L"2525", status);
    }
    if (status.ok()) {
        show_port(file, status);
    }
    if (status.ok()) {
        profile.rollback(status); // back to before the last commit
    }
    if (status.ok()) {
        show_port(file, status);
    }
    const int exit_code = status.ok() ? 0 : 1;
    profile.close(status);
    Tam_file::remove(file, status, false);
    return exit_code;
}
