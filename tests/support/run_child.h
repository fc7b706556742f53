#pragma once

#include <string>

#include <gtest/gtest.h>

#include <windows.h>

namespace tam::test {

/// Runs a program that lies beside this one to its end and gives its exit code. After a minute it is terminated.
inline DWORD run_child(const std::wstring& name, const std::wstring& arguments)
{
    constexpr DWORD LIMIT = 60000;
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command = program;
    command = L"\"" + command.substr(0, command.rfind(L'\\')) + L"\\" + name + L".exe\" " + arguments;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    EXPECT_TRUE(
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process));
    if (::WaitForSingleObject(process.hProcess, LIMIT) != WAIT_OBJECT_0) {
        ADD_FAILURE() << "the child did not end";
        ::TerminateProcess(process.hProcess, 1000);
        ::WaitForSingleObject(process.hProcess, LIMIT);
    }
    DWORD code = STILL_ACTIVE;
    ::GetExitCodeProcess(process.hProcess, &code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return code;
}

} // namespace tam::test
