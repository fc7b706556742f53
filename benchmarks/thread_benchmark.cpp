#include <functional>
#include <stdexcept>

#include <windows.h>

#include <process.h>

#include <benchmarks/benchmarks.h>
#include <tam/detail/handle.h>
#include <tam/status/status.h>
#include <tam/thread/critical.h>
#include <tam/thread/event.h>
#include <tam/thread/mutex.h>
#include <tam/thread/read_write_semaphore.h>
#include <tam/thread/thread.h>

namespace tam::benchmarks {

namespace {

constexpr int THREADS = 50;
constexpr int MESSAGES = 2000;
constexpr int CRITICAL_PAIRS = 1'000'000;
constexpr int KERNEL_PAIRS = 2000;

void check(bool succeeded)
{
    if (!succeeded) {
        throw std::runtime_error("a call of the thread benchmark failed");
    }
}

template <class Action>
std::function<void()> repeated(int count, Action action)
{
    return [count, action] {
        for (int i = 0; i < count; ++i) {
            action();
        }
    };
}

void do_nothing(void*) {}

// The hand-shakes of a thread whose creator makes it known before it enters its function.
struct Raw_thread {
    detail::Kernel_handle started{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    detail::Kernel_handle registered{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};

    static unsigned int __stdcall entry(void* argument)
    {
        const auto& self = *static_cast<Raw_thread*>(argument);
        ::SetEvent(self.started.get());
        ::WaitForSingleObject(self.registered.get(), INFINITE);
        do_nothing(nullptr);
        return 0;
    }

    void run()
    {
        const detail::Kernel_handle thread(
            reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, 0, &entry, this, 0, nullptr)));
        check(static_cast<bool>(thread));
        ::WaitForSingleObject(started.get(), INFINITE);
        ::SetEvent(registered.get());
        ::WaitForSingleObject(thread.get(), INFINITE);
    }
};

void compare_threads()
{
    compare({
        .name = "thread/start_and_wait",
        .unit = "threads",
        .amount = THREADS,
        .ours = repeated(THREADS,
                         [] {
                             Tam_status status;
                             const Tam_thread thread(&do_nothing, nullptr, status);
                             thread.wait(status);
                             check(status.ok());
                         }),
        .peer_name = "_beginthreadex, 2 events",
        .peer = repeated(THREADS, [] { Raw_thread().run(); }),
        .goal = ">= 0.77",
    });
}

// Posts to itself, so that no other thread is waited for.
void compare_messages(void*)
{
    const Tam_thread& self = *tam_thread_this_thread();
    HANDLE ends[2] = {};
    check(::CreatePipe(&ends[0], &ends[1], nullptr, 0) != FALSE);
    const detail::Kernel_handle read_end(ends[0]);
    const detail::Kernel_handle write_end(ends[1]);
    unsigned char record[12] = {};
    compare({
        .name = "thread/post_and_get_message",
        .unit = "messages",
        .amount = MESSAGES,
        .ours = repeated(MESSAGES,
                         [&] {
                             Tam_status status;
                             unsigned int a = 0;
                             unsigned int b = 0;
                             int c = 0;
                             self.post_message(1, 2, -3, status);
                             tam_thread_get_message(a, b, c, status);
                             check(status.ok() && c == -3);
                         }),
        .peer_name = "WriteFile, ReadFile",
        .peer = repeated(MESSAGES,
                         [&] {
                             DWORD moved = 0;
                             check(::WriteFile(write_end.get(), record, sizeof record, &moved, nullptr) != FALSE);
                             check(::ReadFile(read_end.get(), record, sizeof record, &moved, nullptr) != FALSE);
                         }),
        .goal = ">= 0.91",
    });
}

void compare_locks()
{
    Tam_critical critical;
    CRITICAL_SECTION section;
    ::InitializeCriticalSection(&section);
    compare({
        .name = "critical/enter_and_leave",
        .unit = "pairs",
        .amount = CRITICAL_PAIRS,
        .ours = repeated(CRITICAL_PAIRS,
                         [&] {
                             critical.enter();
                             critical.leave();
                         }),
        .peer_name = "critical section",
        .peer = repeated(CRITICAL_PAIRS,
                         [&] {
                             ::EnterCriticalSection(&section);
                             ::LeaveCriticalSection(&section);
                         }),
        .goal = ">= 0.87",
    });
    ::DeleteCriticalSection(&section);

    Tam_mutex mutex;
    const detail::Kernel_handle raw_mutex(::CreateMutexW(nullptr, FALSE, nullptr));
    const auto raw_mutex_pair = [&] {
        ::WaitForSingleObject(raw_mutex.get(), INFINITE);
        ::ReleaseMutex(raw_mutex.get());
    };
    compare({
        .name = "mutex/lock_and_unlock",
        .unit = "pairs",
        .amount = KERNEL_PAIRS,
        .ours = repeated(KERNEL_PAIRS,
                         [&] {
                             mutex.lock();
                             mutex.unlock();
                         }),
        .peer_name = "wait, ReleaseMutex",
        .peer = repeated(KERNEL_PAIRS, raw_mutex_pair),
        .goal = ">= 0.95",
    });

    Tam_event event;
    const detail::Kernel_handle raw_event(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    compare({
        .name = "event/signal_and_wait",
        .unit = "pairs",
        .amount = KERNEL_PAIRS,
        .ours = repeated(KERNEL_PAIRS,
                         [&] {
                             event.signal();
                             event.wait();
                         }),
        .peer_name = "SetEvent, wait",
        .peer = repeated(KERNEL_PAIRS,
                         [&] {
                             ::SetEvent(raw_event.get());
                             ::WaitForSingleObject(raw_event.get(), INFINITE);
                         }),
        .goal = ">= 0.95",
    });

    // The calls that the steps name: two pairs of the mutex and a pulse.
    const Tam_read_write_semaphore semaphore;
    compare({
        .name = "read_write/read_lock_and_unlock",
        .unit = "pairs",
        .amount = KERNEL_PAIRS,
        .ours = repeated(KERNEL_PAIRS, [&] { const Tam_read_lock lock(semaphore); }),
        .peer_name = "2 mutex pairs, PulseEvent",
        .peer = repeated(KERNEL_PAIRS,
                         [&] {
                             raw_mutex_pair();
                             ::WaitForSingleObject(raw_mutex.get(), INFINITE);
                             ::PulseEvent(raw_event.get());
                             ::ReleaseMutex(raw_mutex.get());
                         }),
        .goal = "report",
    });
}

} // namespace

void run_thread_benchmarks()
{
    compare_threads();
    Tam_status status;
    const Tam_thread thread(&compare_messages, nullptr, status);
    thread.wait(status);
    thread.get_failed_status(status);
    check(status.ok());
    compare_locks();
}

} // namespace tam::benchmarks
