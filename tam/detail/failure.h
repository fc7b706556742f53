#pragma once

#include <new>
#include <string>

#include <tam/status/status.h>

namespace tam::detail {

inline Tam_wstring_status_arg as_status_arg(const std::wstring& text)
{
    return {text};
}

inline Tam_wstring_status_arg as_status_arg(const std::string& text)
{
    return {text};
}

inline Tam_uint_status_arg as_status_arg(unsigned int number)
{
    return {number, false};
}

inline Tam_int_status_arg as_status_arg(int number)
{
    return {number, false};
}

// Reports a failure of the library's own: status becomes this code with these arguments.
template <class... Arguments>
void assign_failure(Tam_status& status, unsigned int code, const Arguments&... arguments)
{
    status.assign(code, as_status_arg(arguments)...);
}

// Puts the library's code with these arguments on what status reports already.
template <class... Arguments>
void push_failure(Tam_status& status, unsigned int code, const Arguments&... arguments)
{
    if constexpr (sizeof...(arguments) == 0) {
        status.push(code);
    } else {
        status.push(code, as_status_arg(arguments)...);
    }
}

// Reports a failed call of the platform whose result is the error: the system's reason underneath, the library's code
// on top, where callers look first.
template <class... Arguments>
void push_system_error(Tam_status& status, unsigned int error, unsigned int code, const Arguments&... arguments)
{
    status = error;
    push_failure(status, code, arguments...);
}

// The same for a call that leaves its reason as the thread's last error. Nothing may come between the call and this.
template <class... Arguments>
void push_last_error(Tam_status& status, unsigned int code, const Arguments&... arguments)
{
    push_system_error(status, Tam_status::get_last_error(), code, arguments...);
}

// Runs an operation for which memory that runs out is a failure like others.
template <class Operation>
void report_lack_of_memory(Tam_status& status, Operation operation)
{
    try {
        operation();
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
}

// Clears status and runs the operation, for which memory that runs out is a failure like others.
template <class Operation>
void run(Tam_status& status, const Operation& operation)
{
    status.clear();
    report_lack_of_memory(status, operation);
}

} // namespace tam::detail
