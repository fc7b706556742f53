#pragma once

#include <tam/detail/export.h>
#include <tam/thread/event.h>
#include <tam/thread/mutex.h>

namespace tam {

/// A counting semaphore of one process, whose callers take and give back several units at once.
///
/// Waiters are not served in order: every unlock() wakes all of them, and whoever comes first takes what it wants. A
/// waiter that wants more units than are free, while some are free, looks again and again without sleeping.
///
/// Any thread may call any member, and units may be given back by another thread than took them. The object can be
/// neither copied nor moved.
class TAM_API Tam_semaphore {
public:
    /// Starts with initial of maximum units free.
    /// @throws Tam_sys_call_fail      "::CreateMutex" or "::CreateEvent"
    /// @throws std::invalid_argument  "Initial value more than maximum on semaphore."
    Tam_semaphore(unsigned int initial, unsigned int maximum);

    Tam_semaphore(const Tam_semaphore&) = delete;
    Tam_semaphore& operator=(const Tam_semaphore&) = delete;

    ~Tam_semaphore();

    /// Takes n units, waiting as long as it takes. n may be 0.
    /// @throws std::invalid_argument  "Requested more than maximum on semaphore."; nothing is taken
    /// @throws Tam_sys_call_fail      the guard's or the event's call that failed
    void lock(unsigned int n);

    /// Takes n units if they are free now. Never waits for units.
    /// @return whether they were free
    /// @throws as lock() does; in particular a request beyond the maximum throws and does not give false
    bool try_lock(unsigned int n);

    /// Gives back n units and wakes all waiters.
    ///
    /// The sum of the free units and n is computed in 32 bits: where it passes 0xFFFFFFFF it begins at 0 again, and it
    /// is that remainder that is compared with the maximum and stored.
    /// @throws std::invalid_argument  "Unlocking too much on semaphore.": more units would be free than maximum();
    ///                                nothing is changed
    /// @throws Tam_sys_call_fail      the guard's or the event's call that failed
    void unlock(unsigned int n);

    /// Units held at the moment, not units free.
    /// @throws Tam_sys_call_fail  the guard's call that failed
    unsigned int count() const;

    /// As constructed.
    unsigned int maximum() const noexcept { return m_maximum; }

private:
    void _check_request(unsigned int n) const;
    void _take(unsigned int n);

    mutable Tam_mutex m_guard; // never held while waiting
    Tam_event m_freed;         // a hint only: set by every unlock, reset when nothing is left
    unsigned int m_available;  // guarded by m_guard
    unsigned int m_maximum;
};

} // namespace tam
