#include "settings.h"

#include <utility>

#include <windows.h>

#include <tam/config.h>
#include <tam/file/path.h>
#include <tam/text.h>

#include "report.h"
#include "spooler_messages.h"

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

constexpr wchar_t FOLDER[] = L"Folder";

void set_number(Settings& settings, const Number& number, const std::wstring& text, Tam_status& status)
{
    const int value = tam_is_int32(text) ? tam_wtoi32(text) : number.lowest - 1;
    if (value < number.lowest || value > number.highest) {
        status.assign(SPOOLER_E_NUMBER, Tam_wstring_status_arg(std::wstring(number.key)), Tam_wstring_status_arg(text),
                      Tam_int_status_arg(number.lowest, false), Tam_int_status_arg(number.highest, false));
        return;
    }
    settings.*number.value = static_cast<unsigned int>(value);
}

void set(Settings& settings, const std::wstring& key, const std::wstring& value, Tam_status& status)
{
    if (tam_string_equal_nc(key, FOLDER)) {
        settings.folder = value;
        return;
    }
    for (const Number& number : NUMBERS) {
        if (tam_string_equal_nc(key, number.key)) {
            set_number(settings, number, value, status);
            return;
        }
    }
    status.assign(SPOOLER_E_UNKNOWN_SETTING, Tam_wstring_status_arg(key));
}

void read_profile(const std::wstring& profile, Settings& settings, Tam_status& status)
{
    Tam_profile_reader reader(profile, status);
    if (status.ok()) {
        reader.set_current_section(L"Spooler", status);
    }
    std::pair<std::wstring, std::wstring> entry;
    while (status.ok() && !reader.end_of_entries()) {
        reader.get_current_entry(entry, status);
        const bool empty_or_comment = entry.first.empty() || entry.first.front() == L';';
        if (status.ok() && !empty_or_comment) {
            set(settings, entry.first, entry.second, status);
        }
        if (status.ok()) {
            reader.move_to_next_entry(status);
        }
    }
}
//! [settings]

// Whether a parameter was read. One that is not there is no failure: the profile's setting holds.
bool is_given(Tam_status& status)
{
    const bool missing = is_caused_by(status, ERROR_FILE_NOT_FOUND);
    if (missing) {
        status.clear();
    }
    return status.ok() && !missing;
}

void read_parameters(const std::wstring& service, Settings& settings, Tam_status& status)
{
    std::wstring folder;
    tam_get_reg_string_parameter(service, FOLDER, folder, status);
    if (is_given(status)) {
        settings.folder = folder;
    }
    for (const Number& number : NUMBERS) {
        unsigned int value = 0;
        if (status.ok()) {
            tam_get_reg_uint_parameter(service, number.key, value, status);
            if (is_given(status)) {
                set_number(settings, number, std::to_wstring(value), status);
            }
        }
    }
}

} // namespace

Settings read_settings(const std::wstring& profile, const std::wstring& service, Tam_status& status)
{
    Settings settings;
    read_profile(profile, settings, status);
    if (status.ok()) {
        read_parameters(service, settings, status);
    }
    while (!settings.folder.empty() && settings.folder.back() == L'\\') {
        settings.folder.pop_back();
    }
    if (status.ok() && !Tam_path(settings.folder).is_absolute()) {
        status.assign(SPOOLER_E_FOLDER_SETTING, Tam_wstring_status_arg(settings.folder));
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_SETTINGS, Tam_wstring_status_arg(profile));
    }
    return settings;
}
