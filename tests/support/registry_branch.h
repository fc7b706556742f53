#pragma once

#include <string>

#include <windows.h>

namespace tam::test {

/// A key of the test's own, in `HKEY_CURRENT_USER\Software` unless it is given another place; removed with everything
/// below at the end of the scope. All access is by raw calls.
class Registry_branch {
public:
    struct Value {
        LSTATUS error = ERROR_SUCCESS;
        DWORD type = REG_NONE;
        std::string bytes;

        bool operator==(const Value&) const = default;
    };

    Registry_branch();
    Registry_branch(HKEY root, const std::wstring& parent);
    ~Registry_branch();
    Registry_branch(const Registry_branch&) = delete;
    Registry_branch& operator=(const Registry_branch&) = delete;

    /// The branch's path below its root.
    const std::wstring& path() const { return m_path; }

    /// The path of a key in the branch.
    std::wstring operator/(const std::wstring& key) const { return m_path + L"\\" + key; }

    /// The branch's last part alone.
    const std::wstring& name() const { return m_name; }

    /// Creates a key in the branch. All keys below are relative to the branch; empty is the branch itself.
    void create(const std::wstring& key) const;
    bool exists(const std::wstring& key) const;

    /// Writes a value with exactly these bytes.
    void set(const std::wstring& key, const std::wstring& name, DWORD type, const std::string& bytes) const;

    /// The value as it is stored.
    Value get(const std::wstring& key, const std::wstring& name) const;

private:
    HKEY _open(const std::wstring& key) const;

    HKEY m_root;
    std::wstring m_name;
    std::wstring m_path;
};

/// The bytes of 16-bit text. A literal's own terminator is not part of it.
inline std::string bytes_of(const std::wstring& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

} // namespace tam::test
