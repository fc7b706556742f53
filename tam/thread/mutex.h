#pragma once

#include <concepts>
#include <string>

#include <tam/detail/export.h>

namespace tam {

class Tam_security;
class Tam_status;

/// A kernel mutex: a lock for the threads of one process or, by name, of several.
///
/// The owning thread may lock it again, and unlocks it as often as it locked. A mutex whose owner ended without
/// unlocking counts as acquired for the next who locks it. Within one process Tam_critical is far cheaper.
///
/// An unnamed mutex is private to its process. A named one is shared by all who construct a mutex of that name, in any
/// process; it lives as long as one of them does. Names are case-sensitive and used exactly as given; one without the
/// prefix `Global\` or `Local\` must have no backslash. The system reads a name up to its first null character.
///
/// Any thread may call any member. `std::lock_guard<Tam_mutex>` and `std::unique_lock<Tam_mutex>` work; a release that fails
/// in their destructors ends the program. The object can be neither copied nor moved.
class TAM_API Tam_mutex {
public:
    /// An unnamed mutex, not owned, with the process's default security.
    Tam_mutex() : Tam_mutex(false) {}

    /// An unnamed mutex.
    /// @param owned     true: the constructing thread owns it from the start
    /// @param security  gives the new mutex's security and is not kept; null means the process's default
    /// @throws Tam_sys_call_fail  "::CreateMutex"
    explicit Tam_mutex(bool owned, Tam_security* security = nullptr);

    /// Creates the mutex of this name, or opens it when there is one already: then owned and security are ignored.
    /// An empty name is passed on as an empty string.
    /// @param owned     true: the constructing thread owns a new mutex from the start
    /// @param security  gives a new mutex's security and is not kept; null means the process's default
    /// @throws Tam_sys_call_fail  "::CreateMutex", also when the name belongs to an object of another kind
    explicit Tam_mutex(const std::wstring& name, bool owned = false, Tam_security* security = nullptr);

    /// The same for a literal, which would become a bool otherwise.
    template <class Name>
    requires std::convertible_to<const Name&, const wchar_t*>
    explicit Tam_mutex(const Name& name, bool owned = false, Tam_security* security = nullptr)
        : Tam_mutex(std::wstring(static_cast<const wchar_t*>(name)), owned, security)
    {}

    Tam_mutex(const Tam_mutex&) = delete;
    Tam_mutex& operator=(const Tam_mutex&) = delete;

    /// Closes the handle; a mutex that is still owned is not released by that.
    ~Tam_mutex();

    /// Waits for ever.
    /// @throws Tam_sys_call_fail  "::WaitForSingleObject failed, reason %d" with the thread's last error
    void lock();

    /// Releases the mutex. A call by a thread that does not own it does nothing, on purpose.
    /// @throws Tam_sys_call_fail  "::ReleaseMutex"
    void unlock();

    /// True when the mutex was acquired. Never waits.
    /// @throws Tam_sys_call_fail  "::WaitForSingleObject"
    bool try_lock();

    /// True when the mutex was acquired within the time; 0xFFFFFFFF waits for ever.
    /// @throws Tam_sys_call_fail  "::WaitForSingleObject"
    bool try_lock(unsigned int milliseconds);

    /// The kernel handle; it stays this object's own.
    void* handle() const noexcept { return m_handle; }

    /// Associates security with this mutex, as a kernel object, so that the mutex's access can be read and set
    /// through it. The mutex itself is not touched yet.
    /// @param status  cleared first; TAM_E_ALREADY_ASSOCIATED (0xC2000078) when security has an association already
    void add_security(Tam_security& security, Tam_status& status);

private:
    void* m_handle; // never null
};

} // namespace tam
