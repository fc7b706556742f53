#pragma once

#include <string>

#include <tam/detail/export.h>
#include <tam/thread/event.h>
#include <tam/thread/mutex.h>

namespace tam {

class Tam_security;
class Tam_status;

/// A lock that many readers or one writer can hold at a time. Tam_read_lock and Tam_write_lock hold it for a scope.
///
/// What its callers can rely on, and what they have to expect:
///  - **Readers come first.** A writer that waits for readers does not stop new readers; a steady stream of them can hold
///    it off for ever. Writers take turns among themselves in the system's order. Nothing is queued beyond that.
///  - The thread that holds the write lock may take it again, gives it back as often, and may take read locks.
///  - A thread that holds a read lock and calls write_lock() waits for ever, since it waits for itself.
///  - There are no time-outs; try_read_lock() and try_write_lock() do not wait for other holders.
///  - Waiters are woken by a pulse of an event: one that has given up the guarding mutex but does not wait yet would
///    miss it, and sleep until the next read_unlock() that leaves no lock held or the next write_unlock(). Giving up the
///    mutex and beginning to wait are therefore one call of the system (SignalObjectAndWait), which closes that window
///    as far as the system does both in one step; it does not promise to.
///  - A thread that ends while it holds a lock leaves it counted.
///
/// An unnamed semaphore is private to its process. The named form shares its two mutexes and its event with all who
/// construct a semaphore of that name, in any process: "_$MUTEX", "_$WRITE" and "_$EVENT" behind the name. **The counts of
/// readers and writers are each object's own.** So objects of one name exclude each other's writers, while a writer of
/// one object does not see the readers of another, nor those its writer.
///
/// Any thread may call any member. A call of the system that fails throws Tam_sys_call_fail with one of the texts
/// "::WaitForSingleObject failed, reason %d", "::WaitForSingleObject", "::ReleaseMutex" and "::PulseEvent", and leaves the
/// lock as it was; with "::ReleaseMutex" alone the operation has taken place. Without contention read_lock() and
/// read_unlock() take two calls each, the last read_unlock() a third one; write_lock() takes three and write_unlock() four.
/// The object can be neither copied nor moved.
class TAM_API Tam_read_write_semaphore {
public:
    /// Unnamed, with the process's default security.
    Tam_read_write_semaphore() : Tam_read_write_semaphore(static_cast<Tam_security*>(nullptr)) {}

    /// Unnamed.
    /// @param security  gives the security of the mutex that guards the counters and is not kept; the other two kernel
    ///                  objects are then open to every user. Null means the process's default for all three
    /// @throws Tam_sys_call_fail  "::CreateMutex" or "::CreateEvent"
    explicit Tam_read_write_semaphore(Tam_security* security);

    /// Creates the three kernel objects of this name, or opens those that are there already: their security stays.
    ///
    /// Suffixes are put behind the name, so that the prefixes `Global\` and `Local\` work; any other backslash is refused
    /// by the system.
    /// @param security  as for the unnamed form
    /// @throws Tam_sys_call_fail  "::CreateMutex" or "::CreateEvent", also when a name belongs to an object of another
    ///                            kind
    explicit Tam_read_write_semaphore(const std::wstring& name, Tam_security* security = nullptr);

    Tam_read_write_semaphore(const Tam_read_write_semaphore&) = delete;
    Tam_read_write_semaphore& operator=(const Tam_read_write_semaphore&) = delete;

    /// Closes the kernel objects. No thread may hold the lock or wait for it.
    ~Tam_read_write_semaphore();

    /// Takes a read lock, waiting as long as another thread holds the write lock.
    void read_lock() const;

    /// Gives back a read lock, whichever thread took it. Without any it changes nothing and reports nothing.
    void read_unlock() const;

    /// Takes a read lock unless another thread holds the write lock.
    /// @return whether it was taken
    bool try_read_lock() const;

    /// Takes the write lock, waiting for the writers before and until no reader holds the lock.
    void write_lock();

    /// Gives back the write lock once. For the thread that holds it only: a call by another one takes one off the count
    /// all the same.
    void write_unlock();

    /// Takes the write lock if no other thread holds it and there is no reader, or if the calling thread holds it.
    /// @return whether it was taken
    bool try_write_lock();

    /// Associates security with the mutex that guards the counters, as Tam_mutex::add_security() does. The other two
    /// kernel objects are left as they are.
    /// @param status  cleared first; TAM_E_ALREADY_ASSOCIATED (0xC2000078) when security has an association already
    void add_security(Tam_security& security, Tam_status& status);

private:
    bool _can_read() const;
    void _wait_for_change() const;

    mutable Tam_mutex m_state;          // guards the counters; taken after m_writer, never held while waiting
    mutable Tam_mutex m_writer;         // owned by the writing thread, once for each of its write locks
    mutable Tam_event m_change;         // pulsed, never left signalled
    unsigned int m_writers = 0;         // write locks held, more than 1 only when the writing thread nests
    mutable unsigned int m_readers = 0; // read locks held
};

/// Holds a read lock for a scope.
class TAM_API Tam_read_lock {
public:
    /// Waits for the lock as Tam_read_write_semaphore::read_lock() does, and throws as it does.
    /// @param semaphore  not owned; must outlive this object
    explicit Tam_read_lock(const Tam_read_write_semaphore& semaphore);

    Tam_read_lock(const Tam_read_lock&) = delete;
    Tam_read_lock& operator=(const Tam_read_lock&) = delete;

    /// Throws what read_unlock() throws, but nothing while another exception is under way: that is the one to report.
    ~Tam_read_lock() noexcept(false);

private:
    const Tam_read_write_semaphore& m_semaphore;
};

/// Holds the write lock for a scope.
class TAM_API Tam_write_lock {
public:
    /// Waits for the lock as Tam_read_write_semaphore::write_lock() does, and throws as it does.
    /// @param semaphore  not owned; must outlive this object
    explicit Tam_write_lock(Tam_read_write_semaphore& semaphore);

    Tam_write_lock(const Tam_write_lock&) = delete;
    Tam_write_lock& operator=(const Tam_write_lock&) = delete;

    /// Throws what write_unlock() throws, but nothing while another exception is under way: that is the one to report.
    ~Tam_write_lock() noexcept(false);

private:
    Tam_read_write_semaphore& m_semaphore;
};

} // namespace tam
