#include <tam/thread/semaphore.h>

#include <stdexcept>

#include <tam/detail/mutex_guard.h>

namespace tam {

Tam_semaphore::Tam_semaphore(unsigned int initial, unsigned int maximum) : m_available(initial), m_maximum(maximum)
{
    if (initial > maximum) {
        throw std::invalid_argument("Initial value more than maximum on semaphore.");
    }
}

Tam_semaphore::~Tam_semaphore() = default;

void Tam_semaphore::lock(unsigned int n)
{
    _check_request(n);
    detail::Mutex_guard guard(m_guard);
    while (m_available < n) {
        guard.unlock();
        m_freed.wait();
        guard.lock();
    }
    _take(n);
    guard.unlock();
}

bool Tam_semaphore::try_lock(unsigned int n)
{
    _check_request(n);
    detail::Mutex_guard guard(m_guard);
    const bool can_take = m_available >= n;
    if (can_take) {
        _take(n);
    }
    guard.unlock();
    return can_take;
}

void Tam_semaphore::unlock(unsigned int n)
{
    detail::Mutex_guard guard(m_guard);
    const unsigned int available = m_available + n;
    if (available > m_maximum) {
        throw std::invalid_argument("Unlocking too much on semaphore.");
    }
    m_freed.signal();
    m_available = available;
    guard.unlock();
}

unsigned int Tam_semaphore::count() const
{
    detail::Mutex_guard guard(m_guard);
    const unsigned int held = m_maximum - m_available;
    guard.unlock();
    return held;
}

void Tam_semaphore::_check_request(unsigned int n) const
{
    if (n > m_maximum) {
        throw std::invalid_argument("Requested more than maximum on semaphore.");
    }
}

// The event is reset first, so that nothing is taken when that fails.
void Tam_semaphore::_take(unsigned int n)
{
    if (m_available == n) {
        m_freed.reset();
    }
    m_available -= n;
}

} // namespace tam
