#include <tam/detail/registry.h>

#include <tam/detail/win32.h>

namespace tam::detail {

namespace {

// Of a longer path the platform would take the beginning alone, and so another key.
constexpr std::size_t MAXIMUM_PATH_UNITS = 32766;

} // namespace

std::wstring registry_path(const std::wstring& key, const std::wstring& subkey)
{
    if (subkey.empty()) {
        return key;
    }
    std::wstring path;
    path.reserve(key.size() + 1 + subkey.size());
    path += key;
    path += L'\\';
    path += subkey;
    return path;
}

unsigned int open_registry_key(void* root, const std::wstring& path, REGSAM access, Registry_key& key)
{
    if (path.size() > MAXIMUM_PATH_UNITS) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    HKEY opened = nullptr;
    const LSTATUS result = win32.reg_open_key_ex(static_cast<HKEY>(root), path.c_str(), 0, access, &opened);
    if (result == ERROR_SUCCESS) {
        key.reset(opened);
    }
    return static_cast<unsigned int>(result);
}

unsigned int create_registry_key(void* root, const std::wstring& path, REGSAM access, Registry_key& key)
{
    if (path.size() > MAXIMUM_PATH_UNITS) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    HKEY created = nullptr;
    const LSTATUS result = win32.reg_create_key_ex(static_cast<HKEY>(root), path.c_str(), 0, nullptr,
                                                   REG_OPTION_NON_VOLATILE, access, nullptr, &created, nullptr);
    if (result == ERROR_SUCCESS) {
        key.reset(created);
    }
    return static_cast<unsigned int>(result);
}

unsigned int Registry_data::query(const Registry_key& key, const std::wstring& name, DWORD limit_bytes)
{
    return _query(key, name, m_first, limit_bytes);
}

unsigned int Registry_data::query_whole(const Registry_key& key, const std::wstring& name)
{
    DWORD limit_bytes = FIRST_QUERY_BYTES;
    unsigned int error = query(key, name);
    while (error == ERROR_MORE_DATA && m_size_bytes > limit_bytes) {
        limit_bytes = m_size_bytes;
        m_large =
            std::make_unique_for_overwrite<wchar_t[]>(limit_bytes / sizeof(wchar_t) + limit_bytes % sizeof(wchar_t));
        error = _query(key, name, m_large.get(), limit_bytes);
    }
    return error;
}

unsigned int Registry_data::_query(const Registry_key& key, const std::wstring& name, wchar_t* buffer,
                                   DWORD limit_bytes)
{
    m_size_bytes = limit_bytes;
    return static_cast<unsigned int>(win32.reg_query_value_ex(key.get(), name.c_str(), nullptr, &m_type,
                                                              reinterpret_cast<BYTE*>(buffer), &m_size_bytes));
}

} // namespace tam::detail
