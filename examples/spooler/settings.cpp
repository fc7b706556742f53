#include "settings.h"

#include <utility>

#include <windows.h>

#include "report.h"

using namespace tam;

namespace {

//! [settings]
struct Number {
    const wchar_t* key;
    unsigned int Settings::*value;
    int lowest;
    int highest;
};

constexpr Number NUMBERS[] = {
    {L"Workers", &Settings::workers, 1, 16},
    {L"Period", &Settings::period, 20, 5000},
    {L"ClientLimit", &Settings::client_limit, 100, 60'000},
};

// What the registry or, without a parameter there, the profile has of that key; empty where neither has it.
std::wstring setting(Tam_profile_reader& profile, const std::wstring& service, const wchar_t* key, Tam_status& status)
{
    std::pair<std::wstring, std::wstring> entry;
    profile.move_to_key(key, status);
    if (status.ok()) {
        profile.get_current_entry(entry, status);
    }
    if (status.ok() || status == TAM_E_END_OF_ENTRIES) {
        tam_get_reg_string_parameter(service, key, entry.second, status);
    }
    if (is_caused_by(status, ERROR_FILE_NOT_FOUND)) {
        status.clear();
    }
    return entry.second;
}

} // namespace

Settings read_settings(const std::wstring& profile, const std::wstring& service, Tam_status& status)
{
    Settings settings;
    Tam_profile_reader reader(profile, status);
    if (status.ok()) {
        reader.set_current_section(L"Spooler", status);
    }
    if (status.ok()) {
        settings.folder = setting(reader, service, L"Folder", status);
        const Tam_path path(settings.folder);
        path.directory_form(settings.folder, false);
        if (status.ok() && !path.is_absolute()) {
            status.assign(SPOOLER_E_FOLDER_SETTING, Tam_wstring_status_arg(path.text()));
        }
    }
    for (const Number& number : NUMBERS) {
        const std::wstring text = status.ok() ? setting(reader, service, number.key, status) : L"";
        if (!status.ok() || text.empty()) {
            continue;
        }
        const int value = tam_is_int32(text) ? tam_wtoi32(text) : number.lowest - 1;
        if (value < number.lowest || value > number.highest) {
            status.assign(SPOOLER_E_NUMBER, Tam_wstring_status_arg(std::wstring(number.key)),
                          Tam_wstring_status_arg(text), Tam_int_status_arg(number.lowest, false),
                          Tam_int_status_arg(number.highest, false));
        }
        settings.*number.value = static_cast<unsigned int>(value);
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_SETTINGS, Tam_wstring_status_arg(profile));
    }
    return settings;
}
//! [settings]
