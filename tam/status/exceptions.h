#pragma once

#include <stdexcept>
#include <string>

#include <windows.h>

#include <tam/detail/export.h>

namespace tam {

/// A call of the platform failed where the operation has no Tam_status to report into, such as a constructor, a lock
/// or an unlock. what() is the call's name with a leading "::", for example "::CreateEvent".
class TAM_API Tam_sys_call_fail : public std::runtime_error {
public:
    /// The failure of that call.
    /// @param call_name  what what() returns
    explicit Tam_sys_call_fail(const std::string& call_name);
    Tam_sys_call_fail(const Tam_sys_call_fail&) noexcept = default;
    Tam_sys_call_fail& operator=(const Tam_sys_call_fail&) noexcept = default;
    ~Tam_sys_call_fail() override;
};

/// A processor or system fault, such as an access violation or a division by zero, as a C++ exception. It is what
/// tam_exception_translator throws; <tam/status/exception_translator.h> says how a thread gets it.
///
/// what() describes the fault in English, in lines that end with CR LF:
///  -# what happened; for an access violation a second line with the address that was accessed:
///     "The memory address accessed is 0x%08llx."
///  -# "Exception code is 0x%08lx."
///  -# "Error occured at address 0x%08llx."
///
/// Addresses have at least eight hexadecimal digits, and all digits of a longer one. The spelling "occured" is kept, and
/// so is the text about a denormal operand for a floating-point division by zero (0xC000008E). A code without a text of
/// its own, stack overflow and illegal instruction among them, reads "An unknown Microsoft structured exception has
/// occurred.". The description of each nested record follows after an empty line and the line "Previous exception...".
class TAM_API Tam_system_exception : public std::runtime_error {
public:
    /// An empty description and code 0.
    Tam_system_exception();

    /// The description and the code of pointers->ExceptionRecord. Without a record, or without pointers: an empty
    /// description and code 0. The second parameter is ignored.
    /// @throws std::bad_alloc  no memory for the description
    Tam_system_exception(const EXCEPTION_POINTERS* pointers, bool);

    Tam_system_exception(const Tam_system_exception&) noexcept = default;
    Tam_system_exception& operator=(const Tam_system_exception&) noexcept = default;
    ~Tam_system_exception() override;

    /// The code of the structured exception, for example 0xC0000005 for an access violation.
    unsigned int code() const noexcept { return m_code; }

private:
    static std::string build_ms_description(EXCEPTION_RECORD* const& record);

    unsigned int m_code = 0;
};

} // namespace tam
