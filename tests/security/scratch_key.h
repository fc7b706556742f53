#pragma once

#include <string>

#include <windows.h>

#include <gtest/gtest.h>

#include <tests/support/unique_name.h>

namespace tam::test {

/// A registry key of the test's own.
class Scratch_key {
public:
    explicit Scratch_key(const std::wstring& purpose = L"key") : m_path(L"Software\\" + unique_name(purpose))
    {
        EXPECT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, m_path.c_str(), &m_key), 0);
    }
    ~Scratch_key()
    {
        ::RegCloseKey(m_key);
        ::RegDeleteKeyW(HKEY_CURRENT_USER, m_path.c_str());
    }
    Scratch_key(const Scratch_key&) = delete;
    Scratch_key& operator=(const Scratch_key&) = delete;

    HKEY get() const { return m_key; }
    std::wstring name() const { return L"CURRENT_USER\\" + m_path; }

private:
    std::wstring m_path;
    HKEY m_key = nullptr;
};

} // namespace tam::test
