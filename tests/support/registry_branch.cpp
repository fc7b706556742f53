#include <tests/support/registry_branch.h>

#include <atomic>
#include <stdexcept>

#include <tests/support/unique_name.h>

namespace tam::test {

namespace {

void require(LSTATUS result)
{
    if (result != ERROR_SUCCESS) {
        throw std::runtime_error("the test's registry key: error " + std::to_string(result));
    }
}

std::wstring new_name()
{
    static std::atomic<unsigned int> count = 0;
    return unique_name(L"key_") + std::to_wstring(++count);
}

} // namespace

Registry_branch::Registry_branch() : Registry_branch(HKEY_CURRENT_USER, L"Software") {}

Registry_branch::Registry_branch(HKEY root, const std::wstring& parent)
    : m_root(root), m_name(new_name()), m_path(parent + L"\\" + m_name)
{
    HKEY key = nullptr;
    require(::RegCreateKeyExW(root, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    ::RegCloseKey(key);
}

Registry_branch::~Registry_branch()
{
    ::RegDeleteTreeW(m_root, m_path.c_str());
}

void Registry_branch::create(const std::wstring& key) const
{
    ::RegCloseKey(_open(key));
}

bool Registry_branch::exists(const std::wstring& key) const
{
    HKEY opened = nullptr;
    const LSTATUS result = ::RegOpenKeyExW(m_root, (*this / key).c_str(), 0, KEY_READ, &opened);
    ::RegCloseKey(opened);
    return result == ERROR_SUCCESS;
}

void Registry_branch::set(const std::wstring& key, const std::wstring& name, DWORD type, const std::string& bytes) const
{
    const std::string data = bytes + "\xFF\xFF"; // else a text without a terminator could get the string's
    const HKEY opened = _open(key);
    const LSTATUS result = ::RegSetValueExW(opened, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                                            static_cast<DWORD>(bytes.size()));
    ::RegCloseKey(opened);
    require(result);
}

Registry_branch::Value Registry_branch::get(const std::wstring& key, const std::wstring& name) const
{
    Value value;
    DWORD size = 0;
    const HKEY opened = _open(key);
    value.error = ::RegQueryValueExW(opened, name.c_str(), nullptr, nullptr, nullptr, &size);
    value.bytes.resize(size);
    if (value.error == ERROR_SUCCESS) {
        value.error = ::RegQueryValueExW(opened, name.c_str(), nullptr, &value.type,
                                         reinterpret_cast<BYTE*>(value.bytes.data()), &size);
    }
    ::RegCloseKey(opened);
    return value;
}

HKEY Registry_branch::_open(const std::wstring& key) const
{
    HKEY opened = nullptr;
    const std::wstring path = key.empty() ? m_path : *this / key;
    require(::RegCreateKeyExW(m_root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened, nullptr));
    return opened;
}

} // namespace tam::test
