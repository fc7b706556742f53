#include <tam/file/directory_iterator.h>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/file/path.h>
#include <tam/status/codes.h>

namespace tam {

namespace {

constexpr wchar_t SEPARATOR = L'\\';

// A separator in front of the pattern alone would mean the root of the drive, and two of them a server.
std::wstring search_path(const std::wstring& directory, const std::wstring& pattern)
{
    std::wstring path;
    path.reserve(directory.size() + 1 + pattern.size());
    path = directory;
    if (!path.empty() && path.back() != SEPARATOR) {
        path += SEPARATOR;
    }
    return path += pattern;
}

Tam_file_info info_of(const WIN32_FIND_DATAW& found)
{
    return {found.cFileName, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0};
}

} // namespace

Tam_directory_iterator::Tam_directory_iterator(const std::wstring& directory, const std::wstring& pattern)
    : m_directory(directory), m_pattern(pattern)
{
    goto_start();
}

Tam_directory_iterator& Tam_directory_iterator::operator++()
{
    goto_next();
    return *this;
}

bool Tam_directory_iterator::operator==(const Tam_directory_iterator& other) const noexcept
{
    return m_directory == other.m_directory && m_current.name == other.m_current.name;
}

void Tam_directory_iterator::goto_start()
{
    WIN32_FIND_DATAW found;
    const HANDLE search = detail::win32.find_first_file(search_path(m_directory, m_pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        detail::push_last_error(m_status, TAM_E_SEARCH_START, m_directory);
        m_end = true;
        return;
    }
    m_search.reset(search, [](void* handle) { detail::Search_handle(static_cast<HANDLE>(handle)).reset(); });
    m_current = info_of(found);
    while (!m_end && Tam_path::is_dot_directory(m_current.name)) {
        goto_next();
    }
}

void Tam_directory_iterator::goto_next()
{
    if (m_end) {
        return;
    }
    WIN32_FIND_DATAW found;
    if (detail::win32.find_next_file(m_search.get(), &found)) {
        m_begin = m_begin && Tam_path::is_dot_directory(m_current.name);
        m_current = info_of(found);
        return;
    }
    const DWORD error = ::GetLastError();
    m_end = true;
    m_current = {};
    if (error != ERROR_NO_MORE_FILES) {
        detail::push_system_error(m_status, error, TAM_E_SEARCH_NEXT, m_directory);
    }
}

} // namespace tam
