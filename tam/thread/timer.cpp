#include <tam/thread/timer.h>

#include <utility>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/status/status.h>

namespace tam {

// Delegates, so that the timer is stopped when the callback throws.
Tam_timer::Tam_timer(bool (*callback)(void*), unsigned int period, Tam_status& status, unsigned int count) : Tam_timer()
{
    init(callback, period, status, count, nullptr);
}

Tam_timer::~Tam_timer()
{
    if (m_handle != nullptr) {
        Tam_status ignored;
        stop(ignored);
        detail::Kernel_handle(m_handle).reset(); // of a timer that cannot be cancelled
    }
}

void Tam_timer::init(bool (*callback)(void*), unsigned int period, Tam_status& status, unsigned int count,
                     void* argument)
{
    detail::Kernel_handle timer(detail::win32.create_waitable_timer(nullptr, FALSE, nullptr));
    if (!timer) {
        detail::push_last_error(status, TAM_E_TIMER_CREATE);
        return;
    }
    // One that could not be cancelled makes room.
    detail::Kernel_handle(std::exchange(m_handle, timer.release())).reset();

    constexpr LARGE_INTEGER AT_ONCE{};
    if (!detail::win32.set_waitable_timer(m_handle, &AT_ONCE, static_cast<LONG>(period), nullptr, nullptr, FALSE)) {
        detail::push_last_error(status, TAM_E_TIMER_SET);
    }
    try {
        _run(callback, status, count, argument);
    } catch (...) {
        Tam_status ignored;
        stop(ignored);
        throw;
    }
    stop(status);
}

void Tam_timer::_run(bool (*callback)(void*), Tam_status& status, unsigned int count, void* argument) const
{
    bool goes_on = true;
    for (unsigned int ticks = 0; goes_on && (count == 0 || ticks < count); ++ticks) {
        // The callback may have closed the timer.
        if (detail::win32.wait_for_single_object(m_handle, INFINITE) == WAIT_FAILED) {
            status = Tam_status::get_last_error();
            return;
        }
        goes_on = callback(argument);
    }
}

void Tam_timer::stop(Tam_status& status)
{
    if (m_handle == nullptr) {
        detail::push_last_error(status, TAM_E_TIMER_NONE);
    } else if (!detail::win32.cancel_waitable_timer(m_handle)) {
        detail::push_last_error(status, TAM_E_TIMER_CANCEL);
    } else {
        detail::Kernel_handle(std::exchange(m_handle, nullptr)).reset();
    }
}

} // namespace tam
