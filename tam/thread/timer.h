#pragma once

#include <tam/detail/export.h>

namespace tam {

class Tam_status;

/// Calls a function again and again at a fixed period, on the thread that calls init().
///
///     bool poll(void* queue); // false: enough
///
///     tam::Tam_timer timer;
///     timer.init(&poll, 500, status, 0, &queue); // returns when poll() has returned false
///
/// Ticks come from a waitable timer of the system. The first one is immediate; a tick that falls into a callback comes
/// right after it, and of several such ticks only one comes.
///
/// No operation clears its status: on success it stays as it was.
///
/// A timer belongs to the thread that runs it. The callback may call stop(); a stop by another thread is not allowed
/// while init() runs. The object can be neither copied nor moved.
class TAM_API Tam_timer {
public:
    /// No timer.
    Tam_timer() noexcept = default;

    /// Runs init() with a null argument: construction returns when the timer has finished.
    /// @param count  0: until the callback returns false
    Tam_timer(bool (*callback)(void*), unsigned int period, Tam_status& status, unsigned int count = 0);

    Tam_timer(const Tam_timer&) = delete;
    Tam_timer& operator=(const Tam_timer&) = delete;

    /// Stops a timer that could not be stopped, and reports nothing.
    ~Tam_timer();

    /// Calls the callback at once and then every period, until it has returned false or, with a count, has been called
    /// that often. Then stops the timer. The callback is called at least once.
    ///
    /// Whatever leaves the callback as an exception stops the timer and passes through.
    /// @param callback  returns whether to go on
    /// @param period    in milliseconds. 0 means a single tick: a callback that is to be called again then makes this
    ///                  call **wait for ever**
    /// @param status    not cleared; on failure
    ///   - the system's reason, on top of it TAM_E_TIMER_CREATE (0xC2000065): no timer; the callback is not called
    ///   - the system's reason, on top of it TAM_E_TIMER_SET (0xC2000064): **it goes on all the same**, and waits for
    ///     ever for the first tick unless the timer ticks nevertheless. Periods above 0x7FFFFFFF may be refused
    ///   - the system's reason alone: waiting failed, as it does after the callback has called stop(); the callback is
    ///     not called any more
    ///   - what stop() reports in the end
    /// @param count     0: until the callback returns false
    /// @param argument  passed to the callback
    void init(bool (*callback)(void*), unsigned int period, Tam_status& status, unsigned int count = 0,
              void* argument = nullptr);

    /// Cancels and closes the timer.
    /// @param status  not cleared; on failure
    ///   - the system's last error, on top of it TAM_E_TIMER_NONE (0xC2000067): there is no timer. The last error is
    ///     whatever an earlier call has left; when that is nothing the code stands alone
    ///   - the system's reason, on top of it TAM_E_TIMER_CANCEL (0xC2000068): the timer is kept
    void stop(Tam_status& status);

private:
    void _run(bool (*callback)(void*), Tam_status& status, unsigned int count, void* argument) const;

    void* m_handle = nullptr; // owned; null when there is no timer
};

} // namespace tam
