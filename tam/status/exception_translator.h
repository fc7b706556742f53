#pragma once

#include <windows.h>

#include <tam/detail/export.h>

/// @file
/// Faults as C++ exceptions.
///
/// A thread that has called tam_install_exception_translator() can catch access violations, divisions by zero, stack
/// overflows and what RaiseException raises as Tam_system_exception:
///
///     tam::tam_install_exception_translator();
///     try {
///         serve(request);
///     } catch (const tam::Tam_system_exception& fault) {
///         log(fault.what());
///     }
///
/// Each thread that wants this calls it for itself, best as the first thing it does. Threads that did not keep the
/// behaviour that they had. C++ exceptions, and events for a debugger such as OutputDebugString, pass untouched, and so
/// does a fault that a structured handler below the catching function takes for itself. On the way up the destructors of
/// all frames run, those of the faulting function too.
///
/// With GCC the code that can fault is compiled with
///
///     -fnon-call-exceptions
///
/// Without that flag a fault can only be caught when it happens below a call that the compiler expects to throw: in
/// RaiseException, in code reached through a null function pointer, in another module. A fault directly in a function
/// with try blocks or destructors then ends in std::terminate.
///
/// Limits with GCC:
///  - std::terminate also follows where the faulting function has handlers or destructors of its own but the compiler
///    was sure that the instruction throws nothing: inline assembly, built-in functions such as memcpy and wcslen, calls
///    of functions it found not to throw, everything below noexcept. Destructors are noexcept, so that deleting a wild
///    pointer ends the program.
///  - Faults are seen in the process's last-chance filter (SetUnhandledExceptionFilter), which the first install on a
///    thread puts in place; other faults go on to the filter that was there before. A filter that the program sets later
///    replaces it until a thread installs again. A debugger gets the fault instead of the filter.
///  - A structured handler above the catching function that takes the fault (in system code that calls back) comes before
///    the catch clause.
///  - After it has caught a stack overflow the thread calls tam_install_exception_translator() again, before the stack
///    may overflow once more: the guard page that notices it is used up. The function whose call did not fit, or that
///    used a local variable beyond the end, is left without its destructors and handlers; those of its callers run.
///  - A translator that returns ends the program (std::terminate).
///
/// With a compiler that has _set_se_translator, these functions are that, and its options and rules hold (/EHa).

namespace tam {

/// Installs tam_exception_translator for the calling thread.
/// @return the translator that the thread had before, a `void (*)(unsigned int, EXCEPTION_POINTERS*)`, or null for none;
///         give it to tam_set_exception_translator() to put it back
/// @throws std::bad_alloc     no memory for the thread's entry; nothing is installed
/// @throws Tam_sys_call_fail  "::FlsAlloc", "::TlsAlloc", "::FlsSetValue": the system has no more entries; nothing is
///                            installed
TAM_API void* tam_install_exception_translator();

/// Installs a translator for the calling thread, or with null none.
/// @param translator  a `void (*)(unsigned int, EXCEPTION_POINTERS*)` that throws. It runs on the thread that faulted, as
///                    if the faulting instruction had called it. What it is given is valid until the next fault on the
///                    same thread
/// @return and throws as tam_install_exception_translator() does
TAM_API void* tam_set_exception_translator(void* translator);

/// Throws the structured exception in pointers as Tam_system_exception, and never returns.
///
/// When the record's code is an RPC status value the object is of a class derived from it that only the library knows.
/// Those are 0, 5, 14, 87, 122, 164, 1130, 1700 to 1728, 1730, 1732 to 1737, 1739 to 1749, 1754 to 1762, 1764 to 1771,
/// 1791, 1806, 1817 to 1820, 1822 to 1824, 1826, 1898 and 1900. The gaps, such as 1729, 1731 and 1738, are meant.
/// @param code      not read: the record tells
/// @param pointers  with an ExceptionRecord; without one a Tam_system_exception with code 0 and no text is thrown
/// @throws std::bad_alloc  no memory for the description
[[noreturn]] TAM_API void tam_exception_translator(unsigned int code, EXCEPTION_POINTERS* pointers);

} // namespace tam
