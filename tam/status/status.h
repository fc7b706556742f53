#pragma once

#include <tam/detail/export.h>
#include <tam/status/codes.h>
#include <tam/status/status_arg.h>

namespace tam {

/// The one carrier of success and failure in the library.
///
/// Every operation that can fail takes a Tam_status& and reports into it; the caller tests it afterwards:
///
///     Tam_status status;
///     reader.open(L"service.ini", status);
///     if (!status.ok()) ...
///
/// A status holds a 32-bit code, up to MAXIMUM_ARGUMENTS typed arguments for the placeholders of the code's message
/// text, and an owned chain of older statuses. The newest and most specific one leads; what lay beneath it, such as the
/// system's error, follows as child(). Tam_messages_list turns a status into text.
///
/// A code has the layout of a Windows message identifier:
///
///     bits 31..28  severity: 0x0 success, 0x4 information, 0x8 warning, 0xC error; other values are legal and match
///                  none of the four tests
///     bits 27..16  facility: 0 means a Win32 error number, 0x200 a code of this library
///     bits 15..0   number within the facility
///
/// Wherever a code is given as a bare number, a value from 1 to 0xFFFF is a Win32 error number and is stored with
/// 0xC0000000 added; every other value is stored as it is. So Tam_status(5) holds 0xC0000005, and it equals 5.
///
/// A status has no lock: it belongs to one thread at a time. A clear status allocates nothing.
class TAM_API Tam_status {
public:
    /// The most arguments of a status.
    static constexpr unsigned int MAXIMUM_ARGUMENTS = 8;

    /// The bits of a code's three parts.
    static constexpr unsigned int SEVERITY_MASK = 0xF0000000;
    static constexpr unsigned int FACILITY_MASK = 0x0FFF0000;
    static constexpr unsigned int NUMBER_MASK = 0x0000FFFF;

    // Not SEVERITY_SUCCESS and so on: winerror.h has macros of these names.
    /// The severities, where they stand in a code.
    static constexpr unsigned int SUCCESS_SEVERITY = 0x00000000;
    static constexpr unsigned int INFORMATION_SEVERITY = 0x40000000;
    static constexpr unsigned int WARNING_SEVERITY = 0x80000000;
    static constexpr unsigned int ERROR_SEVERITY = 0xC0000000;

    /// A clear status: code 0, no arguments, no chain.
    Tam_status() noexcept {} // not defaulted, so that a constant needs no initialiser

    /// A status with this code, no arguments and no chain.
    Tam_status(unsigned int code) noexcept : m_code(_normalised(code)) {}

    /// A status with this code and clones of the arguments, in order.
    Tam_status(unsigned int code, const Tam_status_arg& a1,
               const Tam_status_arg& a2 = Tam_null_status_arg::NULL_ARGUMENT,
               const Tam_status_arg& a3 = Tam_null_status_arg::NULL_ARGUMENT,
               const Tam_status_arg& a4 = Tam_null_status_arg::NULL_ARGUMENT,
               const Tam_status_arg& a5 = Tam_null_status_arg::NULL_ARGUMENT,
               const Tam_status_arg& a6 = Tam_null_status_arg::NULL_ARGUMENT,
               const Tam_status_arg& a7 = Tam_null_status_arg::NULL_ARGUMENT,
               const Tam_status_arg& a8 = Tam_null_status_arg::NULL_ARGUMENT);

    /// Copies code, arguments and the whole chain.
    Tam_status(const Tam_status& other);

    /// Takes everything; other is left clear.
    Tam_status(Tam_status&& other) noexcept;

    ~Tam_status()
    {
        if (m_count != 0 || m_child != nullptr) {
            _release();
        }
    }

    /// Copies code, arguments and the whole chain. When memory runs out or an argument cannot be cloned, this status
    /// keeps what it held.
    Tam_status& operator=(const Tam_status& other);

    /// Takes everything; other is left clear.
    Tam_status& operator=(Tam_status&& other) noexcept;

    /// Becomes a status with this code, no arguments and no chain.
    Tam_status& operator=(unsigned int code) noexcept;

    /// Becomes a status with this code and clones of the arguments, without a chain. After a failure this status keeps
    /// what it held.
    void assign(unsigned int code, const Tam_status_arg& a1 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a2 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a3 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a4 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a5 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a6 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a7 = Tam_null_status_arg::NULL_ARGUMENT,
                const Tam_status_arg& a8 = Tam_null_status_arg::NULL_ARGUMENT);

    /// Appends a clone of arg; NULL_ARGUMENT adds nothing.
    /// @throws std::overflow_error  "Tam_status::_add_arg - too many arguments.": there are MAXIMUM_ARGUMENTS already;
    ///                              the status is unchanged
    void add_arg(const Tam_status_arg& arg);

    /// Puts newer, with its whole chain, on top of this status. On a clear status: copies newer.
    ///
    /// From head to end the result is: newer, newer's chain, the earlier head, the earlier chain. When memory runs out
    /// or an argument cannot be cloned, the exception passes through and the earlier arguments and chain are back, but
    /// the head carries the new code.
    void push(const Tam_status& newer);

    /// Puts a new head with this code and no arguments on top. On a clear status: assigns the code. A failure leaves
    /// what push(const Tam_status&) says.
    void push(unsigned int code);

    /// Puts a new head with this code and clones of the arguments on top. On a clear status: assigns them. A failure
    /// leaves what push(const Tam_status&) says.
    void push(unsigned int code, const Tam_status_arg& a1,
              const Tam_status_arg& a2 = Tam_null_status_arg::NULL_ARGUMENT,
              const Tam_status_arg& a3 = Tam_null_status_arg::NULL_ARGUMENT,
              const Tam_status_arg& a4 = Tam_null_status_arg::NULL_ARGUMENT,
              const Tam_status_arg& a5 = Tam_null_status_arg::NULL_ARGUMENT,
              const Tam_status_arg& a6 = Tam_null_status_arg::NULL_ARGUMENT,
              const Tam_status_arg& a7 = Tam_null_status_arg::NULL_ARGUMENT,
              const Tam_status_arg& a8 = Tam_null_status_arg::NULL_ARGUMENT);

    /// Removes the head; the next older status takes its place. Without a chain: clears.
    void pop() noexcept;

    /// Code 0, no arguments, no chain.
    void clear() noexcept { *this = 0U; }

    /// The bare Win32 error number when the facility is 0 (the severity is removed), else the whole code.
    unsigned int value() const noexcept { return facility() == 0 ? m_code & NUMBER_MASK : m_code; }

    /// The facility bits where they stand, not shifted down: the library's own codes give 0x02000000.
    unsigned int facility() const noexcept { return m_code & FACILITY_MASK; }

    /// True unless the severity is error: warnings, information and unusual severities count as ok.
    [[nodiscard]] bool ok() const noexcept { return _severity() != ERROR_SEVERITY; }

    /// Whether the severity is the one named; all are false for an unusual one.
    [[nodiscard]] bool is_success() const noexcept { return _severity() == SUCCESS_SEVERITY; }
    [[nodiscard]] bool is_information() const noexcept { return _severity() == INFORMATION_SEVERITY; }
    [[nodiscard]] bool is_warning() const noexcept { return _severity() == WARNING_SEVERITY; }
    [[nodiscard]] bool is_error() const noexcept { return _severity() == ERROR_SEVERITY; }

    /// True when the code is 0 and there are no arguments and no chain.
    [[nodiscard]] bool is_clear() const noexcept { return m_code == 0 && m_count == 0 && m_child == nullptr; }

    /// Whether there is an older status beneath.
    [[nodiscard]] bool has_child() const noexcept { return m_child != nullptr; }

    /// The next older status, owned by this one, or null.
    const Tam_status* child() const noexcept { return m_child; }

    /// The arguments, as a range of pointers that this status owns.
    Tam_status_arg* const* begin() const noexcept { return m_arguments; }
    Tam_status_arg* const* end() const noexcept { return m_arguments + m_count; }

    /// Equal codes; arguments and chains are not compared.
    bool operator==(const Tam_status& other) const noexcept { return m_code == other.m_code; }
    bool operator!=(const Tam_status& other) const noexcept { return m_code != other.m_code; }

    /// Compares with a bare number as it would be stored: a status that holds Win32 error 2 equals 2 and 0xC0000002.
    bool operator==(unsigned int code) const noexcept { return m_code == _normalised(code); }
    bool operator!=(unsigned int code) const noexcept { return m_code != _normalised(code); }

    /// The calling thread's last Win32 error as a code: 0 when there is none, else the error with 0xC0000000 added.
    ///
    /// A failed call is reported with `status = Tam_status::get_last_error();` and a push of the operation's own code.
    static unsigned int get_last_error() noexcept;

private:
    struct Argument_list;

    static constexpr unsigned int _normalised(unsigned int code) noexcept
    {
        return code != 0 && (code & ~NUMBER_MASK) == 0 ? code | ERROR_SEVERITY : code;
    }

    unsigned int _severity() const noexcept { return m_code & SEVERITY_MASK; }

    void _add_arg(const Tam_status_arg& arg);
    void _add_args(const Argument_list& list);
    void _copy_args(const Tam_status& other);
    void _remove_args() noexcept;
    void _move_args(Tam_status& receiver) noexcept;
    void _copy_chain(const Tam_status& other);
    void _delete_child() noexcept;
    template <class Fill>
    void _push(unsigned int code, const Fill& fill);
    void _move_back(Tam_status& older) noexcept;
    void _release() noexcept;

    unsigned int m_code = 0;
    unsigned int m_count = 0;
    Tam_status_arg* m_arguments[MAXIMUM_ARGUMENTS]; // the first m_count are owned
    Tam_status* m_child = nullptr;                  // owned
};

} // namespace tam
