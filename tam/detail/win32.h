#pragma once

// The platform calls that can fail, and those that tests answer in the platform's place. Library code makes them through
// detail::win32:
//
//     if (!detail::win32.set_end_of_file(handle)) ...
//
// In tam.dll that is the call itself. In the static build it goes through a table of function pointers whose entries a
// test swaps for the length of a scope (tests/support/swap.h). Another call is one more line in win32_calls.inc.

#include <windows.h>

#include <aclapi.h>
#include <lm.h>
#include <process.h>
#include <winsvc.h>

namespace tam::detail {

#ifdef TAM_STATIC

struct Win32_calls {
#define TAM_WIN32_CALL(name, function) decltype(&::function) name = &::function;
#include <tam/detail/win32_calls.inc>
#undef TAM_WIN32_CALL
};

extern Win32_calls win32;

#else

struct Win32_calls {
#define TAM_WIN32_CALL(name, function)                                                                                 \
    template <class... Arguments>                                                                                      \
    static auto name(Arguments... arguments)                                                                           \
    {                                                                                                                  \
        return ::function(arguments...);                                                                               \
    }
#include <tam/detail/win32_calls.inc>
#undef TAM_WIN32_CALL
};

inline constexpr Win32_calls win32{};

#endif

} // namespace tam::detail
