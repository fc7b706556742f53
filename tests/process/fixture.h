#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <windows.h>

namespace tam::test {

/// Ends the program when the scope takes longer: what waits for ever in a call cannot be stopped otherwise.
class Time_limit {
public:
    explicit Time_limit(std::chrono::seconds limit)
        : m_thread([this, limit] {
              std::unique_lock lock(m_mutex);
              if (!m_ended.wait_for(lock, limit, [this] { return m_done; })) {
                  std::fputs("the test did not end within its time\n", stderr);
                  std::fflush(stderr);
                  ::TerminateProcess(::GetCurrentProcess(), 1);
              }
          })
    {}
    ~Time_limit()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_done = true;
        }
        m_ended.notify_one();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_done = false;
    std::thread m_thread;
};

/// A test that may block.
class Limited : public testing::Test {
    const Time_limit m_limit{std::chrono::seconds(40)};
};

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
