#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <tests/support/resources.h>

namespace tam::test {

/// What threads leave behind goes when they have ended, a little after anybody can see that. A critical section opens a
/// handle when threads meet at it for the first time, and keeps it: the library's own, and those of the run-time.
inline void expect_handles(unsigned int before)
{
    constexpr unsigned int CRITICAL_SECTIONS = 4;
    for (int i = 0; i < 500 && open_handles() > before + CRITICAL_SECTIONS; ++i) {
        ::Sleep(10);
    }
    EXPECT_LE(open_handles(), before + CRITICAL_SECTIONS);
}

} // namespace tam::test
