#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

class Tam_status;

/// How a Tam_process runs its program. Brace initialisation in this order of fields is part of the interface:
/// `{Tam_process_details::BACKGROUND, true, 5000}`.
struct Tam_process_details {
    // Values of mode.
    static constexpr unsigned int COMPLETE = 0;      ///< the call returns when the program has ended
    static constexpr unsigned int COMPLETE_ALSO = 1; ///< the same as COMPLETE
    static constexpr unsigned int BACKGROUND = 2;    ///< the call returns when the program has started

    /// One of the three above.
    unsigned int mode = COMPLETE;

    /// Whether to wait for the end of a program that was started in the background.
    bool wait = false;

    /// In milliseconds: the limit of that wait, as Tam_process::wait takes it. It does not limit the run of a program
    /// to completion.
    unsigned long long time_out = 0;
};

/// Runs a program, to completion or in the background.
///
/// **Program and arguments.** The program is the path of the file to run; the search path is not searched, and the path
/// must not be quoted. It is also the child's zeroth argument, for which it is put in quotes when it contains a blank,
/// followed by one space and the string of arguments exactly as it was given. The child's run-time library splits that
/// line at blanks, outside double quotes. So the caller quotes whatever must arrive in one piece: to pass the two
/// arguments `C:\My Data\a.txt` and `-v`, give `"C:\My Data\a.txt" -v` with these quotes, and put a backslash before a
/// quote that belongs to an argument. The child's first argument is the first of these arguments. It runs in the
/// caller's current directory and environment and inherits the handles that the caller made inheritable; the library
/// makes none.
///
/// **Copies are shallow.** The copy constructor and the copy assignment copy every member, the handle's value included;
/// the handle is not duplicated, and each of the objects closes it: in its destructor and when it starts another
/// program. So once one object of a copied set is gone, the others hold a handle that is closed, or that by then
/// belongs to something else, which they would wait for, terminate or close. A copy assignment does not close what its
/// target held before, as another copy may still use it. To hand a background process on, move it.
///
/// The end of the object is not the end of the program: it goes on. An object has no lock.
class TAM_API Tam_process {
public:
    /// No process: nothing runs, and the exit code is 0.
    Tam_process() noexcept = default;

    /// Does what start_process does.
    Tam_process(const std::wstring& program, const std::wstring& arguments, const Tam_process_details& details,
                Tam_status& status);

    /// Shares the handle with other: see the class.
    Tam_process(const Tam_process& other) = default;

    /// Shares the handle with other, and drops the one that this object held without closing it: see the class.
    Tam_process& operator=(const Tam_process& other) = default;

    /// Takes over everything; other has no process then.
    Tam_process(Tam_process&& other) noexcept;

    /// Closes the handle that this object held and takes over everything; other has no process then.
    Tam_process& operator=(Tam_process&& other) noexcept;

    /// Closes the handle, shared or not. The program is left alone.
    ~Tam_process();

    /// Runs a program, or starts it in the background.
    ///
    /// A program that cannot be started in the modes COMPLETE and COMPLETE_ALSO is not reported: the result of the
    /// start is not examined, the status stays good, and get_exit_code gives -1. Only a start in the background tells.
    ///
    /// A start that is refused because a program is running already has replaced mode, program and arguments all the
    /// same: these are what the messages of the other operations name from then on, and in another mode than BACKGROUND
    /// get_exit_code gives the code stored last instead of asking for that of the running program, which keeps running
    /// and can be waited for and terminated.
    /// @param program    see the class
    /// @param arguments  see the class
    /// @param details    see there. With another mode nothing is started, and TAM_E_PROCESS_START is reported.
    /// @param status     cleared first
    ///   - TAM_E_PROCESS_STILL_RUNNING (0xC2000060), on top of it TAM_E_PROCESS_START (0xC2000048) with program: this
    ///     object's background program is still running, and nothing is started
    ///   - TAM_E_PROCESS_START (0xC2000048) with program: it could not be started in the background
    ///   - TAM_E_PROCESS_TIME_OUT (0xC2000047) with program and arguments: the wait that details asks for, see wait()
    void start_process(const std::wstring& program, const std::wstring& arguments, const Tam_process_details& details,
                       Tam_status& status);

    /// Waits until the background program has ended. Returns at once when there is none, also after a run to
    /// completion. A wait that the system refuses is not reported.
    /// @param status        cleared first; TAM_E_PROCESS_TIME_OUT (0xC2000047) with program and arguments when the
    ///                      program has not ended within the time
    /// @param milliseconds  only the low 32 bits count: 0 tests without waiting, 0xFFFFFFFF waits for ever, and
    ///                      0x100000000 is 0 again
    void wait(Tam_status& status, unsigned long long milliseconds) const;

    /// Whether there is a background program that has not ended.
    bool is_running() const;

    /// Ends the background program at once, with the exit code 0; nothing of it gets a chance to clean up. It may still
    /// run for a moment when the call returns: wait() for its end. Without a background program nothing happens.
    /// @param status  not cleared; on failure, which can be that the program has ended before, the system's reason, on
    ///                top of it TAM_E_PROCESS_TERMINATE (0xC2000049) with program
    void terminate(Tam_status& status) const;

    /// The exit code of the program that has ended.
    ///
    /// After a run to completion it is the program's 32-bit exit code, sign-extended: -1 is 0xFFFFFFFFFFFFFFFF, and a
    /// program that could not be started, which gives -1 too, cannot be told from it. Of a background program it is the
    /// 32-bit exit code as it is: -1 is 0x00000000FFFFFFFF.
    /// @param status  not cleared, and unchanged after a run to completion. In the mode BACKGROUND:
    ///   - TAM_E_PROCESS_RUNNING (0xC200004B) with program: it is still running, and the result means nothing
    ///   - the system's reason, on top of it TAM_E_PROCESS_EXIT_CODE (0xC200004A) with program: the exit code could not
    ///     be read, also after a failed start, and the result means nothing
    unsigned long long get_exit_code(Tam_status& status) const;

private:
    void _close() noexcept;

    void* m_handle = nullptr; // of the background program; closed by each copy
    std::wstring m_program;
    std::wstring m_arguments;
    unsigned long long m_exit_code = 0; // of the last run to completion
    unsigned int m_mode = Tam_process_details::COMPLETE;
    bool m_background = false; // a start in the background succeeded
};

} // namespace tam
