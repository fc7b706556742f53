#pragma once

#include <mutex>

#include <tam/status/exceptions.h>
#include <tam/thread/mutex.h>

namespace tam::detail {

// Holds a mutex for a scope. Unlock by hand on the normal ways out: that reports a failing release. Where an exception
// leaves the scope, it is the one to report, and the release is silent.
//
// The standard's guards end the program when a release fails: their destructors try it again.
class Mutex_guard {
public:
    explicit Mutex_guard(Tam_mutex& mutex) : m_mutex(mutex) { lock(); }
    // For a mutex that the thread holds already.
    Mutex_guard(Tam_mutex& mutex, std::adopt_lock_t) : m_mutex(mutex), m_held(true) {}
    Mutex_guard(const Mutex_guard&) = delete;
    Mutex_guard& operator=(const Mutex_guard&) = delete;
    ~Mutex_guard()
    {
        if (m_held) {
            try {
                m_mutex.unlock();
            } catch (const Tam_sys_call_fail&) {
            }
        }
    }

    void lock()
    {
        m_mutex.lock();
        m_held = true;
    }

    void unlock()
    {
        m_held = false;
        m_mutex.unlock();
    }

    // Leaves the mutex held behind the scope.
    void keep() { m_held = false; }

private:
    Tam_mutex& m_mutex;
    bool m_held = false;
};

} // namespace tam::detail
