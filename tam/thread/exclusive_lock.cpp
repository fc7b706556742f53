#include <tam/thread/exclusive_lock.h>

#include <new>
#include <stdexcept>

#include <windows.h>

#include <tam/detail/mutex_guard.h>
#include <tam/security/security.h>

namespace tam {

namespace {

constexpr wchar_t EVENT_PREFIX[] = L"_$LOCK_";

std::unique_ptr<Tam_event> make_event(const std::wstring& name, bool signaled)
{
    Tam_security open_to_all;
    return std::unique_ptr<Tam_event>(new (std::nothrow) Tam_event(EVENT_PREFIX + name, signaled, &open_to_all));
}

} // namespace

Tam_exclusive_lock::Tam_exclusive_lock(bool locked, Tam_security* security)
    : m_guard(false, security), m_named(false), m_owner(locked ? ::GetCurrentThreadId() : NOT_LOCKED)
{}

Tam_exclusive_lock::Tam_exclusive_lock(const std::wstring& name, bool locked, Tam_security* security)
    : m_guard(name, false, security), m_named(true), m_is_taken(make_event(name, locked))
{}

Tam_exclusive_lock::~Tam_exclusive_lock() = default;

bool Tam_exclusive_lock::try_lock()
{
    detail::Mutex_guard guard(m_guard);
    const bool can_take = m_named ? m_is_taken != nullptr && !m_is_taken->signaled() : m_owner == NOT_LOCKED;
    if (can_take) {
        _set_locked(true);
    }
    guard.unlock();
    return can_take;
}

void Tam_exclusive_lock::unlock()
{
    detail::Mutex_guard guard(m_guard);
    const bool was_locked = m_named ? m_is_taken != nullptr && m_is_taken->signaled() : m_owner != NOT_LOCKED;
    if (was_locked) {
        _set_locked(false);
    }
    guard.unlock();
    if (!was_locked) {
        throw std::logic_error("Tam_exclusive_lock::unlock - exclusive lock is not locked");
    }
}

void Tam_exclusive_lock::_set_locked(bool locked)
{
    if (!m_named) {
        m_owner = locked ? ::GetCurrentThreadId() : NOT_LOCKED;
    } else if (locked) {
        m_is_taken->signal();
    } else {
        m_is_taken->reset();
    }
}

} // namespace tam
