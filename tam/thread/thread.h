#pragma once

#include <memory>

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/thread/critical.h>
#include <tam/thread/sleep.h>

namespace tam {

class Tam_security;

/// The last thing that happened to a Tam_thread.
///
///     running --function returns--> finished          running --terminate()--> terminated
///     running --function throws---> failed            running --suspend()--> suspended --resume()--> running
///
/// Control of a thread that has ended already sets the state as well, when the system accepts it; whether the thread is
/// still there is what wait(0, status) tells.
enum Tam_thread_state : unsigned int {
    TAM_THREAD_RUNNING = 1,
    TAM_THREAD_FINISHED = 2,   ///< the function has returned
    TAM_THREAD_FAILED = 3,     ///< an exception of the std::runtime_error family has left the function
    TAM_THREAD_TERMINATED = 4, ///< by terminate()
    TAM_THREAD_SUSPENDED = 5,  ///< by suspend()
};

/// Priorities of the system, relative to that of the process.
enum Tam_thread_priority : unsigned int {
    TAM_THREAD_PRIORITY_HIGHEST = 0,
    TAM_THREAD_PRIORITY_ABOVE_NORMAL = 1,
    TAM_THREAD_PRIORITY_NORMAL = 2,
    TAM_THREAD_PRIORITY_BELOW_NORMAL = 3,
    TAM_THREAD_PRIORITY_LOWEST = 4,
};

/// A thread of the system that runs a function, and control over it.
///
///     void serve(void* queue);
///
///     tam::Tam_thread thread(&serve, &queue, status);
///     if (status.ok()) {
///         thread.post_message(1, 2, -3, status); // serve() gets it from tam_thread_get_message()
///         thread.wait(status);
///     }
///
/// What the function throws:
///  - An exception of the std::runtime_error family, faults of the processor among them
///    (<tam/status/exception_translator.h>), ends the thread, not the process: see get_failed_status().
///  - Any other exception, such as std::logic_error or std::bad_alloc, is not caught: it ends the process through
///    std::terminate().
///
/// A thread that cannot get the exception translator, for want of memory for example, fails in the same way without
/// running its function.
///
/// A thread ends by leaving its function. One that ends by a call of the system (ExitThread) counts as running, and what
/// it needed is never freed.
///
/// Any thread may call any member, also the thread itself, but for the destructor nobody may be inside a call. The
/// object can be neither copied nor moved.
class TAM_API Tam_thread {
public:
    /// Creates and starts the thread. It enters the function after the constructor has made it known to
    /// tam_thread_this_thread(), perhaps before the constructor returns.
    /// @param function  what the thread runs; a null one ends in the state failed, by the access violation
    /// @param argument  passed to the function; not touched here
    /// @param status    cleared first
    ///   - TAM_E_THREAD_CREATE (0xC2000037)  the system made no thread. It stands alone, whatever the reason
    ///   - TAM_E_OUT_OF_MEMORY (0xC2000001)  no memory; there is no thread
    ///   - TAM_E_PIPE_CREATE (0xC200003F)    the thread **runs all the same**, but no message reaches it
    /// @param detach_on_destroy  whether the object may be destroyed while its thread runs, see ~Tam_thread()
    /// @param security  gives the thread's security and is not kept; null means the process's default
    ///
    /// The unsigned int has no effect: the stack has the default size always.
    ///
    /// Without a thread all control reports failure, and messages posted stay in the pipe.
    /// @throws Tam_sys_call_fail  "::CreateEvent", "::WaitForSingleObject" or "::SetEvent"; the function does not run
    Tam_thread(void (*function)(void*), void* argument, Tam_status& status, bool detach_on_destroy = false,
               unsigned int = 0, Tam_security* security = nullptr);

    Tam_thread(const Tam_thread&) = delete;
    Tam_thread& operator=(const Tam_thread&) = delete;

    /// Releases everything but the thread itself.
    ///
    /// A thread that still runs goes on to the end of its function without an object, with detach_on_destroy or without.
    /// It has left the registry then: tam_thread_this_thread() gives null, and a tam_thread_get_message() that waits
    /// fails. A function that has just returned may count as running still: call wait() first.
    /// @throws std::runtime_error  "The Tam_thread was destory whilst the thread was running" (spelling kept), after
    ///                             everything is released: the thread runs and detach_on_destroy was false. Thrown while
    ///                             another exception is under way, it ends the process
    ~Tam_thread() noexcept(false);

    /// Ends the thread at once, wherever it is. Its destructors do not run, and what it had locked, the C run-time's
    /// heap possibly included, stays locked: a last resort. The state becomes terminated. A thread that has ended
    /// already can be terminated too.
    ///
    /// When it fails the thread runs on, and has left the registry as after the destructor; its end is not recorded.
    /// @param status  cleared first; TAM_E_THREAD_TERMINATE (0xC2000039) when the system refuses
    /// @throws std::logic_error  "Tam_thread::terminate - cannot terminate current thread": the thread itself calls
    void terminate(Tam_status& status);

    /// Stops the thread until resume(); the state becomes suspended. The system counts: as many calls of resume() are
    /// needed. A suspended thread keeps what it has locked.
    /// @param status  cleared first; TAM_E_THREAD_SUSPEND (0xC200003A) when the system refuses, for example because the
    ///                thread has ended, or when the thread itself calls: it is not stopped
    void suspend(Tam_status& status);

    /// Takes back one suspend(). The state becomes running, even when more suspensions remain, and when there was none.
    /// @param status  cleared first; TAM_E_THREAD_RESUME (0xC200003B) when the system refuses or the thread itself calls
    void resume(Tam_status& status);

    /// 0 when there never was a thread.
    Tam_thread_state state() const;

    /// Waits for ever for the thread to end. Once it has ended by itself, its state is finished or failed.
    /// @param status  cleared first; TAM_E_THREAD_WAIT (0xC200003C) when waiting failed or the thread itself calls
    void wait(Tam_status& status) const;

    /// Waits at most that long for the thread to end; 0xFFFFFFFF waits for ever.
    /// @param status  cleared first
    ///   - TAM_E_THREAD_WAIT (0xC200003C)  alone: the thread itself calls. The result is true then, although it runs
    ///   - the system's reason, on top of it TAM_E_THREAD_WAIT: waiting failed
    /// @return whether the thread has ended
    bool wait(unsigned int milliseconds, Tam_status& status) const;

    /// Sets how the system prefers the thread to others.
    /// @param priority  any integer may be cast to it
    /// @param status    cleared first
    ///   - TAM_E_THREAD_PRIORITY_UNKNOWN (0xC200003D)  none of Tam_thread_priority; nothing is set
    ///   - TAM_E_THREAD_PRIORITY (0xC200003E)          the system refuses
    void set_priority(Tam_thread_priority priority, Tam_status& status) const;

    /// Queues a message for the thread, which gets it from tam_thread_get_message(). The messages of one poster arrive
    /// in their order. While the queue is full the caller waits until the thread takes a message: for ever if it takes
    /// none any more, because it has ended for example. The system decides how many it holds; 4096 bytes, which are 341
    /// messages, are usual.
    /// @param status  cleared first
    ///   - TAM_E_PIPE_NO_WRITE_END (0xC2000042) or TAM_E_PIPE_WRITE (0xC2000041), on top of it TAM_E_MESSAGE_POST
    ///     (0xC2000040): there is no pipe, or writing failed
    ///   - TAM_E_MESSAGE_POST alone: there was no memory for the pipe, or the message was not written whole
    void post_message(const unsigned int& a, const unsigned int& b, const int& c, Tam_status& status) const;

    /// Copies how the function failed into status: clear unless the state is failed. Then it is TAM_E_THREAD_FAILED
    /// (0xC2000038) with the exception's text, converted from narrow characters in the C run-time's locale; or
    /// TAM_E_OUT_OF_MEMORY (0xC2000001) when there was no memory for that.
    void get_failed_status(Tam_status& status) const;

    /// Associates security with the number that is the thread's id, as if that were a handle of a kernel object: the
    /// system will not find the thread by it. The thread itself is not touched.
    /// @param status  cleared first; then what associating reports
    ///   - TAM_E_SECURITY_HANDLE (0xC2000075)     there is no thread
    ///   - TAM_E_ALREADY_ASSOCIATED (0xC2000078)  security has an association already
    void add_security(Tam_security& security, Tam_status& status);

private:
    friend TAM_API Tam_thread* tam_thread_this_thread();
    friend TAM_API void tam_thread_get_message(unsigned int&, unsigned int&, int&, Tam_status&);

    struct Shared;

    static unsigned int __stdcall thread_entry_function(void* shared) noexcept;
    static void _record_end(Shared& shared, Tam_thread_state state, Tam_status&& failed_status);
    static void get_message(Shared& shared, unsigned int& a, unsigned int& b, int& c, Tam_status& status);

    void _start(Tam_security* security, Tam_status& status);
    bool _leave_registry();
    bool _is_current() const;

    std::shared_ptr<Shared> m_shared; // null when there was no memory for it
    void* m_handle = nullptr;         // owned; null when there is no thread
    unsigned int m_id = 0;
    Tam_thread_state m_state{}; // guarded by m_state_lock
    Tam_status m_failed_status; // guarded by m_state_lock
    const bool m_detach_on_destroy;
    mutable Tam_critical m_state_lock;
};

/// The object of the calling thread; null when it was not started by a Tam_thread or has lost its object. The object
/// stays valid as long as nobody destroys it: who does so beside the running thread must see to it.
TAM_API Tam_thread* tam_thread_this_thread();

/// Takes the next message that was posted to the calling thread, waiting until one arrives.
/// @param a, b, c  as posted; unchanged on failure
/// @param status   cleared first
///   - TAM_E_NOT_A_TAM_THREAD (0xC2000046)  the calling thread was not started by a Tam_thread or has lost its object
///   - TAM_E_PIPE_NO_WRITE_END_TO_READ (0xC2000044) or TAM_E_PIPE_READ (0xC2000043), on top of it TAM_E_MESSAGE_READ
///     (0xC2000045): there is no pipe, reading failed, or the object was destroyed while its thread waited
///   - TAM_E_MESSAGE_READ alone: less than a message was read
TAM_API void tam_thread_get_message(unsigned int& a, unsigned int& b, int& c, Tam_status& status);

/// Does nothing and returns at once.
TAM_API void tam_thread_wait_any();

} // namespace tam
