#include <tam/file/directory.h>

#include <algorithm>
#include <cwchar>
#include <stdexcept>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/registry.h>
#include <tam/detail/win32.h>
#include <tam/file/directory_iterator.h>
#include <tam/file/file.h>
#include <tam/file/path.h>
#include <tam/file/type.h>
#include <tam/status/codes.h>

namespace tam {

namespace {

constexpr wchar_t TEMP_VARIABLE[] = L"TMP";
constexpr wchar_t DEFAULT_ENVIRONMENT_KEY[] = L".DEFAULT\\Environment";
constexpr wchar_t LAST_RESORT_DRIVE = L'C';
constexpr std::size_t EXPANSION_SIZE = 256; // with the terminating null

// What a call of the platform writes that tells, of a buffer that is too small, the size needed. Empty when it fails.
template <class Call>
std::wstring text_from(Call call)
{
    std::wstring buffer(EXPANSION_SIZE, L'\0');
    for (;;) {
        const DWORD size = static_cast<DWORD>(buffer.size());
        const DWORD used = call(buffer.data(), size);
        if (used <= size) {
            buffer.resize(used == 0 ? 0 : ::wcsnlen(buffer.data(), size));
            return buffer;
        }
        buffer.resize(used);
    }
}

std::wstring environment_temp()
{
    return text_from([](wchar_t* buffer, DWORD size) {
        return detail::win32.get_environment_variable(TEMP_VARIABLE, buffer, size);
    });
}

std::wstring expanded(const std::wstring& text)
{
    std::wstring result = text_from([&](wchar_t* buffer, DWORD size) {
        return detail::win32.expand_environment_strings(text.c_str(), buffer, size);
    });
    result.resize(std::min(result.size(), EXPANSION_SIZE - 1));
    return result;
}

std::wstring default_user_temp()
{
    detail::Registry_key key;
    detail::Registry_data data;
    if (detail::open_registry_key(HKEY_USERS, DEFAULT_ENVIRONMENT_KEY, KEY_READ, key) != ERROR_SUCCESS ||
        data.query_whole(key, TEMP_VARIABLE) != ERROR_SUCCESS) {
        return {};
    }
    switch (data.type()) {
    case REG_SZ:
        return std::wstring(data.text());
    case REG_EXPAND_SZ:
        return expanded(std::wstring(data.text()));
    default:
        return {};
    }
}

Tam_path find_temp_directory()
{
    for (const std::wstring& directory : {environment_temp(), default_user_temp()}) {
        if (!directory.empty()) {
            return Tam_path(directory, std::wstring());
        }
    }
    return Tam_path(LAST_RESORT_DRIVE, std::wstring(), std::wstring());
}

Tam_directory_iterator search(const std::wstring& mask)
{
    const Tam_path path(mask);
    return Tam_directory_iterator(path.root_and_directory(), path.filename());
}

std::wstring without_trailing_backslash(const std::wstring& path)
{
    return path.substr(0, path.size() - (path.ends_with(L'\\') ? 1 : 0));
}

} // namespace

void Tam_directory::create(const std::wstring& path, Tam_status& status)
{
    if (path.empty()) {
        throw std::invalid_argument("Tam_directory::create - empty path.");
    }
    if (!detail::win32.create_directory(path.c_str(), nullptr)) {
        detail::push_last_error(status, TAM_E_DIRECTORY_CREATE, path);
    }
}

void Tam_directory::remove(const std::wstring& path, Tam_status& status)
{
    if (path.empty()) {
        throw std::invalid_argument("Tam_directory::remove - empty path.");
    }
    if (!detail::win32.remove_directory(path.c_str())) {
        detail::push_last_error(status, TAM_E_DIRECTORY_REMOVE, path);
    }
}

void Tam_directory::rename(const std::wstring& old_dirpath, const std::wstring& new_dirpath, bool overwrite,
                           Tam_status& status)
{
    status.clear();
    if (old_dirpath.empty()) {
        throw std::invalid_argument("Tam_directory::rename - empty old_dirpath.");
    }
    if (new_dirpath.empty()) {
        throw std::invalid_argument("Tam_directory::rename - empty new_dirpath.");
    }
    const std::wstring from = without_trailing_backslash(old_dirpath);
    const std::wstring to = without_trailing_backslash(new_dirpath);
    if (tam_type(from) != TAM_TYPE_DIRECTORY) {
        detail::assign_failure(status, TAM_E_NOT_A_DIRECTORY, from);
    } else if (const Tam_type existing = tam_type(to); existing != TAM_TYPE_NONE) {
        if (!overwrite) {
            detail::assign_failure(status, TAM_E_DIRECTORY_EXISTS, to);
        } else if (existing == TAM_TYPE_DIRECTORY) {
            remove(to, status);
        } else {
            Tam_file::remove(to, status, false);
        }
    }
    if (status.ok() && !detail::win32.move_file(from.c_str(), to.c_str())) {
        status = Tam_status::get_last_error();
    }
    if (!status.ok()) {
        detail::push_failure(status, TAM_E_DIRECTORY_RENAME, from, to);
    }
}

void Tam_directory::list(const std::wstring& mask, Tam_object_vector<std::wstring>& names, unsigned int max)
{
    if (mask.empty()) {
        throw std::invalid_argument("Tam_directory::list - empty mask.");
    }
    Tam_directory_iterator entry = search(mask); // before the list is cleared, which may own mask
    names.clear();
    for (; !entry.end() && entry.status().ok() && names.size() < max; ++entry) {
        names.push_back(entry->name);
    }
}

bool Tam_directory::exist(const std::wstring& mask)
{
    if (mask.empty()) {
        throw std::invalid_argument("Tam_directory::exist - empty mask.");
    }
    return !search(mask).end();
}

const std::wstring& Tam_directory::temp_directory()
{
    static const Tam_path& directory = *new Tam_path(find_temp_directory()); // lives as long as the process
    return directory;
}

} // namespace tam
