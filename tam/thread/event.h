#pragma once

#include <concepts>
#include <string>

#include <tam/detail/export.h>

namespace tam {

class Tam_security;
class Tam_status;

/// A kernel event with manual reset: once signalled it stays signalled, and every wait succeeds, until reset().
///
/// An unnamed event is private to its process. A named one is shared by all who construct an event of that name, in
/// any process; it lives as long as one of them does. Names are case-sensitive and used exactly as given; one without
/// the prefix `Global\` or `Local\` must have no backslash. The system reads a name up to its first null character.
///
/// Any thread may call any member. All time-outs are in milliseconds: 0 tests without waiting, 0xFFFFFFFF waits for
/// ever. The object can be neither copied nor moved.
class TAM_API Tam_event {
public:
    /// An unnamed event, not signalled, with the process's default security.
    Tam_event() : Tam_event(false) {}

    /// An unnamed event.
    /// @param signaled  the initial state
    /// @param security  gives the new event's security and is not kept; null means the process's default
    /// @throws Tam_sys_call_fail  "::CreateEvent"
    explicit Tam_event(bool signaled, Tam_security* security = nullptr);

    /// Creates the event of this name, or opens it when there is one already: then signaled and security are ignored.
    /// An empty name is passed on as an empty string.
    /// @param signaled  the initial state of a new event
    /// @param security  gives a new event's security and is not kept; null means the process's default
    /// @throws Tam_sys_call_fail  "::CreateEvent", also when the name belongs to an object of another kind
    explicit Tam_event(const std::wstring& name, bool signaled = false, Tam_security* security = nullptr);

    /// The same for a literal, which would become a bool otherwise.
    template <class Name>
    requires std::convertible_to<const Name&, const wchar_t*>
    explicit Tam_event(const Name& name, bool signaled = false, Tam_security* security = nullptr)
        : Tam_event(std::wstring(static_cast<const wchar_t*>(name)), signaled, security)
    {}

    Tam_event(const Tam_event&) = delete;
    Tam_event& operator=(const Tam_event&) = delete;

    ~Tam_event();

    /// Makes the event not signalled.
    /// @throws Tam_sys_call_fail  "::ResetEvent"
    void reset();

    /// Makes the event signalled; all who wait go on.
    /// @throws Tam_sys_call_fail  "::SetEvent"
    void signal();

    /// Lets go the threads that wait at this moment and leaves the event not signalled. A thread that is about to wait
    /// misses it.
    /// @throws Tam_sys_call_fail  "::PulseEvent"
    void pulse();

    /// Waits for ever for the signalled state.
    /// @throws Tam_sys_call_fail  "::WaitForSingleObject"
    void wait();

    /// True when the event was signalled within the time.
    /// @throws Tam_sys_call_fail  "::WaitForSingleObject"
    bool wait(unsigned int milliseconds);

    /// True when the event is signalled now.
    /// @throws Tam_sys_call_fail  "::WaitForSingleObject"
    bool signaled() const;

    /// The kernel handle; it stays this object's own.
    void* handle() const noexcept { return m_handle; }

    /// Associates security with this event, as a kernel object, so that the event's access can be read and set
    /// through it. The event itself is not touched yet.
    /// @param status  cleared first; TAM_E_ALREADY_ASSOCIATED (0xC2000078) when security has an association already
    void add_security(Tam_security& security, Tam_status& status);

private:
    void* m_handle; // never null
};

} // namespace tam
