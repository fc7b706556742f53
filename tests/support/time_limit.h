#pragma once

#include <cstdio>
#include <thread>

#include <gtest/gtest.h>

#include <windows.h>

namespace tam::test {

/// Ends the program when the scope takes longer: what waits for ever in a call cannot be stopped otherwise.
class Time_limit {
public:
    explicit Time_limit(DWORD milliseconds)
        : m_thread([this, milliseconds] {
              ::SetEvent(m_started);
              if (::WaitForSingleObject(m_done, milliseconds) == WAIT_TIMEOUT) {
                  std::fputs("the test did not end within its time\n", stderr);
                  std::fflush(stderr);
                  ::TerminateProcess(::GetCurrentProcess(), 1);
              }
          })
    {
        // The thread must not open handles of its own while a test counts them.
        ::WaitForSingleObject(m_started, milliseconds);
    }
    ~Time_limit()
    {
        ::SetEvent(m_done);
        m_thread.join();
        ::CloseHandle(m_done);
        ::CloseHandle(m_started);
    }

private:
    const HANDLE m_started = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE m_done = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread m_thread;
};

/// A test that may block.
class Limited : public testing::Test {
    const Time_limit m_limit{40000};
};

} // namespace tam::test
