#pragma once

#include <string>

#include <windows.h>

#include <tests/support/time_limit.h>

namespace tam::test {

/// The path of the program of child.cpp; it has no blank.
inline std::wstring child_program()
{
    wchar_t path[MAX_PATH];
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring own = path;
    return own.substr(0, own.rfind(L'\\') + 1) + L"process_child.exe";
}

/// A name that no other test and process uses.
inline std::wstring unique_name()
{
    static int count = 0;
    return L"tam_test_" + std::to_wstring(::GetCurrentProcessId()) + L"_" + std::to_wstring(++count);
}

} // namespace tam::test
