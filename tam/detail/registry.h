#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <windows.h>

#include <tam/detail/handle.h>

// What the library's functions on the registry are made of. Results are system errors, ERROR_SUCCESS among them.

namespace tam::detail {

// The path that a key and a subkey make: with a backslash between them, unless subkey is empty.
std::wstring registry_path(const std::wstring& key, const std::wstring& subkey);

unsigned int open_registry_key(void* root, const std::wstring& path, REGSAM access, Registry_key& key);

// Creates the key with all keys above it where they are missing.
unsigned int create_registry_key(void* root, const std::wstring& path, REGSAM access, Registry_key& key);

// The data of a value, whoever wrote it: text may lack its terminator, have several, or an odd number of bytes.
class Registry_data {
public:
    static constexpr DWORD FIRST_QUERY_BYTES = 1024;

    // Asks once, for at most that many bytes (at most FIRST_QUERY_BYTES). The type is known when there is more data, too:
    // then the result is ERROR_MORE_DATA.
    unsigned int query(const Registry_key& key, const std::wstring& name, DWORD limit_bytes = FIRST_QUERY_BYTES);

    // Asks again, with as much memory as the data is said to need, until all of it is there: it may have grown meanwhile.
    // Throws std::bad_alloc.
    unsigned int query_whole(const Registry_key& key, const std::wstring& name);

    DWORD type() const { return m_type; }
    DWORD size_bytes() const { return m_size_bytes; }

    // The data as 16-bit units; an odd byte at the end is left out.
    std::wstring_view units() const { return {_buffer(), m_size_bytes / sizeof(wchar_t)}; }

    // The units before the first terminator, or all of them.
    std::wstring_view text() const { return units().substr(0, units().find(L'\0')); }

private:
    const wchar_t* _buffer() const { return m_large ? m_large.get() : m_first; }
    unsigned int _query(const Registry_key& key, const std::wstring& name, wchar_t* buffer, DWORD limit_bytes);

    wchar_t m_first[FIRST_QUERY_BYTES / sizeof(wchar_t)]; // spares most values an allocation
    std::unique_ptr<wchar_t[]> m_large;                   // instead of m_first, where that is too small
    DWORD m_type = REG_NONE;
    DWORD m_size_bytes = 0;
};

} // namespace tam::detail
