#include <tam/status/exceptions.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include <tam/detail/rpc_exception.h>

namespace tam {

namespace {

struct Code_text {
    DWORD code;
    const char* text;
};

constexpr char DENORMAL_TEXT[] = "One of the operands in a floating-point operation is denormal. A denormal value is "
                                 "one that is too small to represent as a standard floating-point value.\r\n";
constexpr char UNKNOWN_TEXT[] = "An unknown Microsoft structured exception has occurred.\r\n";

constexpr Code_text CODE_TEXTS[] = {
    {EXCEPTION_DATATYPE_MISALIGNMENT,
     "The thread attempted to read or write data that is misaligned on hardware that does not provide alignment. For "
     "example, 16-bit values must be aligned on 2-byte boundaries, 32-bit values on 4-byte boundaries, and so on.\r\n"},
    {EXCEPTION_BREAKPOINT, "A breakpoint was encountered.\r\n"},
    {EXCEPTION_SINGLE_STEP,
     "A trace trap or other single-instruction mechanism signaled that one instruction has been executed.\r\n"},
    {EXCEPTION_ACCESS_VIOLATION, "The thread attempted to read from or write to a virtual address for which it does "
                                 "not have the appropriate access.\r\n"},
    {EXCEPTION_NONCONTINUABLE_EXCEPTION,
     "The thread attempted to continue execution after a noncontinuable exception occurred.\r\n"},
    {EXCEPTION_ARRAY_BOUNDS_EXCEEDED, "The thread attempted to access an array element that is out of bounds, and the "
                                      "underlying hardware supports bounds checking.\r\n"},
    {EXCEPTION_FLT_DENORMAL_OPERAND, DENORMAL_TEXT},
    // Meant: callers know the division by zero by this text.
    {EXCEPTION_FLT_DIVIDE_BY_ZERO, DENORMAL_TEXT},
    {EXCEPTION_FLT_INEXACT_RESULT,
     "The result of a floating-point operation cannot be represented exactly as a decimal fraction.\r\n"},
    {EXCEPTION_FLT_INVALID_OPERATION,
     "This exception represents any floating-point exception not included in this list.\r\n"},
    {EXCEPTION_FLT_OVERFLOW, "The exponent of a floating-point operation is greater than the magnitude allowed by the "
                             "corresponding type.\r\n"},
    {EXCEPTION_FLT_STACK_CHECK, "The stack overflowed or underflowed as the result of a floating-point operation.\r\n"},
    {EXCEPTION_FLT_UNDERFLOW, "The exponent of a floating-point operation is less than the magnitude allowed by the "
                              "corresponding type.\r\n"},
    {EXCEPTION_INT_DIVIDE_BY_ZERO,
     "The thread attempted to divide an integer value by an integer divisor of zero.\r\n"},
    {EXCEPTION_INT_OVERFLOW,
     "The result of an integer operation caused a carry out of the most significant bit of the result.\r\n"},
    {EXCEPTION_PRIV_INSTRUCTION,
     "The thread attempted to execute an instruction whose operation is not allowed in the current machine mode.\r\n"},
};

constexpr std::size_t LINE_SIZE = 64; // the longest formatted line has 53 characters

EXCEPTION_RECORD* record_of(const EXCEPTION_POINTERS* pointers)
{
    return pointers == nullptr ? nullptr : pointers->ExceptionRecord;
}

const char* text_of(DWORD code)
{
    const auto* const found = std::find_if(std::begin(CODE_TEXTS), std::end(CODE_TEXTS),
                                           [code](const auto& row) { return row.code == code; });
    return found == std::end(CODE_TEXTS) ? UNKNOWN_TEXT : found->text;
}

void append_address(std::string& description, const char* format, ULONG_PTR address)
{
    char line[LINE_SIZE];
    std::snprintf(line, sizeof line, format, static_cast<unsigned long long>(address));
    description += line;
}

} // namespace

Tam_sys_call_fail::Tam_sys_call_fail(const std::string& call_name) : std::runtime_error(call_name) {}

Tam_sys_call_fail::~Tam_sys_call_fail() = default;

Tam_system_exception::Tam_system_exception() : std::runtime_error(std::string()) {}

Tam_system_exception::Tam_system_exception(const EXCEPTION_POINTERS* pointers, bool)
    : std::runtime_error(build_ms_description(record_of(pointers)))
{
    if (const EXCEPTION_RECORD* const record = record_of(pointers)) {
        m_code = record->ExceptionCode;
    }
}

Tam_system_exception::~Tam_system_exception() = default;

// A loop, not a recursion: the thread may have next to no stack left.
std::string Tam_system_exception::build_ms_description(EXCEPTION_RECORD* const& record)
{
    std::string description;
    for (const EXCEPTION_RECORD* current = record; current != nullptr; current = current->ExceptionRecord) {
        if (current != record) {
            description += "\r\nPrevious exception...\r\n";
        }
        description += text_of(current->ExceptionCode);
        if (current->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
            append_address(description, "The memory address accessed is 0x%08llx.\r\n",
                           current->ExceptionInformation[1]);
        }
        char line[LINE_SIZE];
        std::snprintf(line, sizeof line, "Exception code is 0x%08lx.\r\n", current->ExceptionCode);
        description += line;
        append_address(description, "Error occured at address 0x%08llx.\r\n",
                       reinterpret_cast<ULONG_PTR>(current->ExceptionAddress));
    }
    return description;
}

Tam_rpc_exception::Tam_rpc_exception(const EXCEPTION_POINTERS* pointers, bool ignored)
    : Tam_system_exception(pointers, ignored)
{}

Tam_rpc_exception::~Tam_rpc_exception() = default;

} // namespace tam
