#pragma once

#include <concepts>
#include <memory>
#include <string>

#include <tam/detail/export.h>
#include <tam/thread/event.h>
#include <tam/thread/mutex.h>

namespace tam {

class Tam_security;

/// A lock that is taken at once or not at all: there is no waiting for it.
///
/// It belongs to nobody in particular: any thread may unlock what another one locked, on purpose, and the thread that
/// holds it cannot take it again. Two forms:
///  - Process-local: the state is private to the object.
///  - Named: the state is shared by all who construct a lock of that name, in any process. It lives in a kernel event,
///    so a process that ends while it holds the lock leaves it locked, until another unlocks it or the last object of
///    that name is gone.
///
/// Any thread may call any member. The object can be neither copied nor moved.
class TAM_API Tam_exclusive_lock {
public:
    /// Process-local and free.
    Tam_exclusive_lock() : Tam_exclusive_lock(false) {}

    /// Process-local.
    /// @param locked    true: locked from the start
    /// @param security  gives the security of the mutex that guards the state; null means the process's default
    /// @throws Tam_sys_call_fail  "::CreateMutex"
    explicit Tam_exclusive_lock(bool locked, Tam_security* security = nullptr);

    /// Creates the lock of this name, or opens it when there is one already: then its state stays as it is.
    ///
    /// The lock consists of a mutex of exactly this name and of an event with "_$LOCK_" before the name. So a prefix
    /// `Global\` or `Local\` cannot be used: the event's name would have a backslash in the middle, which the system
    /// refuses. When there is no memory for the event, the object is constructed, but its lock can never be taken.
    /// @param locked    the initial state of a new lock
    /// @param security  gives a new mutex's security; null means the process's default. A new event is open to every
    ///                  user in any case
    /// @throws Tam_sys_call_fail  "::CreateMutex" or "::CreateEvent", also when a name belongs to an object of another
    ///                            kind
    explicit Tam_exclusive_lock(const std::wstring& name, bool locked = false, Tam_security* security = nullptr);

    /// The same for a literal, which would become a bool otherwise.
    template <class Name>
    requires std::convertible_to<const Name&, const wchar_t*>
    explicit Tam_exclusive_lock(const Name& name, bool locked = false, Tam_security* security = nullptr)
        : Tam_exclusive_lock(std::wstring(static_cast<const wchar_t*>(name)), locked, security)
    {}

    Tam_exclusive_lock(const Tam_exclusive_lock&) = delete;
    Tam_exclusive_lock& operator=(const Tam_exclusive_lock&) = delete;

    ~Tam_exclusive_lock();

    /// Takes the lock if it is free. Waits at most for other callers' short steps.
    /// @return whether it was free
    /// @throws Tam_sys_call_fail  the guard's or the event's call that failed
    bool try_lock();

    /// Frees the lock, whoever took it.
    /// @throws std::logic_error   "Tam_exclusive_lock::unlock - exclusive lock is not locked"
    /// @throws Tam_sys_call_fail  the guard's or the event's call that failed
    void unlock();

private:
    static constexpr unsigned int NOT_LOCKED = 0xFFFFFFFF;

    void _set_locked(bool locked);

    Tam_mutex m_guard; // held around every operation
    bool m_named;
    unsigned int m_owner = NOT_LOCKED;     // process-local: the thread that took the lock, never compared with a caller
    std::unique_ptr<Tam_event> m_is_taken; // named: signalled while the lock is taken; null when there was no memory
};

} // namespace tam
