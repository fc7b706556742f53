#include <tam/thread/read_write_semaphore.h>

#include <exception>

#include <windows.h>

#include <tam/detail/mutex_guard.h>
#include <tam/detail/win32.h>
#include <tam/security/security.h>
#include <tam/status/exceptions.h>

namespace tam {

namespace {

// For the objects that the caller's security is not meant for.
Tam_security* open_to_all()
{
    static Tam_security security;
    return &security;
}

// Built when the library is loaded. Semaphores of the static build may be earlier still.
[[maybe_unused]] Tam_security* const built_at_load = open_to_all();

Tam_security* open_to_all_if(const Tam_security* security)
{
    return security != nullptr ? open_to_all() : nullptr;
}

} // namespace

Tam_read_write_semaphore::Tam_read_write_semaphore(Tam_security* security)
    : m_state(false, security), m_writer(false, open_to_all_if(security)), m_change(false, open_to_all_if(security))
{}

Tam_read_write_semaphore::Tam_read_write_semaphore(const std::wstring& name, Tam_security* security)
    : m_state(name + L"_$MUTEX", false, security),
      m_writer(name + L"_$WRITE", false, open_to_all_if(security)),
      m_change(name + L"_$EVENT", false, open_to_all_if(security))
{}

Tam_read_write_semaphore::~Tam_read_write_semaphore() = default;

void Tam_read_write_semaphore::read_lock() const
{
    detail::Mutex_guard state(m_state);
    while (!_can_read()) {
        _wait_for_change();
        state.lock();
    }
    ++m_readers;
    state.unlock();
}

bool Tam_read_write_semaphore::try_read_lock() const
{
    detail::Mutex_guard state(m_state);
    const bool can_read = _can_read();
    if (can_read) {
        ++m_readers;
    }
    state.unlock();
    return can_read;
}

// The pulse comes before the change of the count, so that a failing one changes nothing: whom it wakes cannot see the
// counts until m_state is free.
void Tam_read_write_semaphore::read_unlock() const
{
    detail::Mutex_guard state(m_state);
    if (m_readers <= 1 && m_writers == 0) {
        m_change.pulse();
    }
    if (m_readers != 0) {
        --m_readers;
    }
    state.unlock();
}

void Tam_read_write_semaphore::write_lock()
{
    detail::Mutex_guard writer(m_writer);
    detail::Mutex_guard state(m_state);
    while (m_writers == 0 && m_readers != 0) {
        _wait_for_change();
        state.lock();
    }
    ++m_writers;
    writer.keep();
    state.unlock();
}

bool Tam_read_write_semaphore::try_write_lock()
{
    if (!m_writer.try_lock()) {
        return false;
    }
    detail::Mutex_guard writer(m_writer, std::adopt_lock);
    detail::Mutex_guard state(m_state);
    if (m_writers == 0 && m_readers != 0) {
        writer.unlock();
        state.unlock();
        return false;
    }
    ++m_writers;
    writer.keep();
    state.unlock();
    return true;
}

void Tam_read_write_semaphore::write_unlock()
{
    detail::Mutex_guard state(m_state);
    if (m_writers != 0) {
        m_change.pulse();
        --m_writers;
    }
    detail::Mutex_guard writer(m_writer, std::adopt_lock);
    state.unlock();
    writer.unlock();
}

void Tam_read_write_semaphore::add_security(Tam_security& security, Tam_status& status)
{
    m_state.add_security(security, status);
}

// Whether the calling thread, which holds m_state, may read. Only the writing thread gets m_writer while there is a
// writer.
bool Tam_read_write_semaphore::_can_read() const
{
    if (m_writers != 0) {
        if (!m_writer.try_lock()) {
            return false;
        }
        m_writer.unlock();
    }
    return true;
}

// Gives up m_state and waits. Afterwards the caller's guard of m_state locks again, or gives up what is not held any
// more, which does nothing.
void Tam_read_write_semaphore::_wait_for_change() const
{
    if (detail::win32.signal_object_and_wait(m_state.handle(), m_change.handle(), INFINITE, FALSE) == WAIT_FAILED) {
        throw Tam_sys_call_fail("::WaitForSingleObject");
    }
}

Tam_read_lock::Tam_read_lock(const Tam_read_write_semaphore& semaphore) : m_semaphore(semaphore)
{
    semaphore.read_lock();
}

Tam_read_lock::~Tam_read_lock() noexcept(false)
{
    try {
        m_semaphore.read_unlock();
    } catch (const Tam_sys_call_fail&) {
        if (std::uncaught_exceptions() == 0) {
            throw;
        }
    }
}

Tam_write_lock::Tam_write_lock(Tam_read_write_semaphore& semaphore) : m_semaphore(semaphore)
{
    semaphore.write_lock();
}

Tam_write_lock::~Tam_write_lock() noexcept(false)
{
    try {
        m_semaphore.write_unlock();
    } catch (const Tam_sys_call_fail&) {
        if (std::uncaught_exceptions() == 0) {
            throw;
        }
    }
}

} // namespace tam
