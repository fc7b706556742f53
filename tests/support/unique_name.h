#pragma once

#include <string>

#include <windows.h>

namespace tam::test {

/// A name for a kernel object or a registry key that no other process of the tests uses.
inline std::wstring unique_name(const std::wstring& purpose)
{
    return L"tam_test_" + std::to_wstring(::GetCurrentProcessId()) + L"_" + purpose;
}

} // namespace tam::test
