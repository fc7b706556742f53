#pragma once

#include <cstddef>

#include <tam/detail/export.h>

namespace tam {

/// A lock for the threads of one process: the system's critical section.
///
/// The cheapest lock of the library: without contention it makes no system call. The thread that is inside may enter
/// again, and leaves as often as it entered. Any thread may call any member; no operation reports a failure.
///
/// `std::lock_guard<Tam_critical>` works. The object can be neither copied nor moved.
class TAM_API Tam_critical {
public:
    /// A critical section that nobody is inside.
    Tam_critical() : Tam_critical(false) {}

    /// A critical section of its own.
    /// @param entered  true: the constructing thread is inside from the start and must leave once
    explicit Tam_critical(bool entered);

    Tam_critical(const Tam_critical&) = delete;
    Tam_critical& operator=(const Tam_critical&) = delete;

    /// No thread may be inside or waiting.
    ~Tam_critical();

    /// Waits as long as it takes.
    void enter();

    /// Only the thread that is inside may leave.
    void leave();

    /// The same as enter(), under the name that the other locks use.
    void lock() { enter(); }

    /// The same as leave(), under the name that the other locks use.
    void unlock() { leave(); }

private:
    // Stands in for a CRITICAL_SECTION, which would bring <windows.h> into every header that has a lock.
    static constexpr std::size_t SECTION_SIZE = sizeof(void*) == 8 ? 40 : 24;
    alignas(void*) unsigned char m_section[SECTION_SIZE];
};

} // namespace tam
