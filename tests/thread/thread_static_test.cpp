#include <tests/support/test.h>

#include <cerrno>

#include <tlhelp32.h>

#include <tam/detail/win32.h>
#include <tests/support/failing_new.h>
#include <tests/thread/handles.h>

using namespace tam;
using detail::win32;
using test::chain;
using test::failing;
using test::Swap;

namespace {

constexpr unsigned int LONG_ENOUGH = 20000;

int run_time_error = 0;
DWORD failing_thread = 0; // the only one whose calls fail
int events_to_make = 0;
std::atomic<int> functions_run = 0;

std::uintptr_t no_thread(void*, unsigned int, unsigned int(__stdcall*)(void*), void*, unsigned int, unsigned int*)
{
    errno = run_time_error;
    return 0;
}

HANDLE WINAPI make_some_events(SECURITY_ATTRIBUTES* attributes, BOOL manual, BOOL initial, const wchar_t* name)
{
    if (events_to_make-- > 0) {
        return ::CreateEventW(attributes, manual, initial, name);
    }
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

BOOL WINAPI refuse(HANDLE)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI refuse_set(HANDLE handle)
{
    return ::GetCurrentThreadId() == failing_thread ? refuse(handle) : ::SetEvent(handle);
}

DWORD WINAPI refuse_wait(HANDLE handle, DWORD milliseconds)
{
    if (::GetCurrentThreadId() != failing_thread) {
        return ::WaitForSingleObject(handle, milliseconds);
    }
    ::SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}

BOOL WINAPI short_write(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*)
{
    *written = 11;
    return TRUE;
}

BOOL WINAPI no_write(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*)
{
    *written = 0;
    return FALSE;
}

BOOL WINAPI short_read(HANDLE, void*, DWORD, DWORD* read, OVERLAPPED*)
{
    *read = 11;
    return TRUE;
}

BOOL WINAPI no_read(HANDLE, void*, DWORD, DWORD* read, OVERLAPPED*)
{
    *read = 0;
    return FALSE;
}

void count_run(void*)
{
    ++functions_run;
}

void wait_for_event(void* event)
{
    static_cast<Tam_event*>(event)->wait();
}

// Gets one message and puts what is reported into the string that it is given.
void get_message(void* result)
{
    unsigned int a = 1;
    unsigned int b = 2;
    int c = 3;
    Tam_status status(5);
    tam_thread_get_message(a, b, c, status);
    *static_cast<std::wstring*>(result) = chain(status);
    EXPECT_TRUE(a == 1 && b == 2 && c == 3);
}

// What action puts into a status that is not clear.
template <class Action>
std::wstring reported(Action action)
{
    Tam_status status(5);
    action(status);
    return chain(status);
}

unsigned int threads_of_process()
{
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    unsigned int count = 0;
    for (BOOL found = ::Thread32First(snapshot, &entry); found; found = ::Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1U : 0U;
    }
    ::CloseHandle(snapshot);
    return count;
}

// Those that earlier tests left to themselves would change what a test counts: they free memory, and open handles where
// they meet others at a lock.
void wait_for_other_threads()
{
    constexpr unsigned int OWN = 2; // this one and that of the time limit
    for (int i = 0; i < 1000 && threads_of_process() > OWN; ++i) {
        ::Sleep(10);
    }
    ASSERT_EQ(threads_of_process(), OWN);
}

class Thread_calls : public test::Limited {
protected:
    Thread_calls()
    {
        wait_for_other_threads();
        functions_run = 0;
        failing_thread = ::GetCurrentThreadId();
        // The run-time opens handles at the first exception.
        EXPECT_THROW(throw std::runtime_error("first"), std::runtime_error);
    }
    Tam_status m_status{5};
};

} // namespace

TEST_F(Thread_calls, that_make_no_thread_end_in_one_code_whatever_the_reason)
{
    const unsigned int handles = test::open_handles();
    for (const int error : {EAGAIN, EINVAL, EMFILE, 0}) {
        const Swap begin(win32.begin_thread, &no_thread);
        run_time_error = error;
        m_status = 5;
        Tam_thread thread(&count_run, nullptr, m_status);
        EXPECT_EQ(chain(m_status), L"C2000037") << error;
        EXPECT_EQ(thread.state(), 0U);
        EXPECT_EQ(reported([&](Tam_status& status) { thread.wait(status); }), L"C200003C");
        EXPECT_EQ(reported([&](Tam_status& status) { EXPECT_FALSE(thread.wait(0, status)); }), L"C200003C 6");
        EXPECT_EQ(reported([&](Tam_status& status) { thread.terminate(status); }), L"C2000039");
        EXPECT_EQ(reported([&](Tam_status& status) { thread.suspend(status); }), L"C200003A");
        EXPECT_EQ(reported([&](Tam_status& status) { thread.resume(status); }), L"C200003B");
        EXPECT_EQ(reported([&](Tam_status& status) { thread.set_priority(TAM_THREAD_PRIORITY_NORMAL, status); }),
                  L"C200003E");
        EXPECT_EQ(
            reported([&](Tam_status& status) { thread.set_priority(static_cast<Tam_thread_priority>(5), status); }),
            L"C200003D");
        EXPECT_EQ(reported([&](Tam_status& status) { thread.post_message(1, 2, 3, status); }), L"");
        EXPECT_EQ(reported([&](Tam_status& status) { thread.get_failed_status(status); }), L"");
        Tam_security security;
        EXPECT_EQ(reported([&](Tam_status& status) { thread.add_security(security, status); }), L"C2000075");
        EXPECT_EQ(thread.state(), 0U);
    }
    EXPECT_EQ(test::open_handles(), handles);
    EXPECT_EQ(functions_run, 0);
}

TEST_F(Thread_calls, of_its_events_throw_and_leave_nothing)
{
    const unsigned int handles = test::open_handles();
    const auto construct = [&] { const Tam_thread thread(&count_run, nullptr, m_status, true); };
    for (int made = 0; made < 2; ++made) {
        const Swap create(win32.create_event, &make_some_events);
        events_to_make = made;
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>(construct), "::CreateEvent");
    }
    {
        const Swap wait(win32.wait_for_single_object, &refuse_wait);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>(construct), "::WaitForSingleObject");
    }
    {
        const Swap set(win32.set_event, &refuse_set);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>(construct), "::SetEvent");
    }
    test::expect_handles(handles);
    EXPECT_EQ(functions_run, 0);
    EXPECT_EQ(tam_thread_this_thread(), nullptr) << "the locks are free";
}

TEST_F(Thread_calls, that_run_out_of_memory_leave_no_thread)
{
    const unsigned int handles = test::open_handles();
    for (unsigned int nth = 1;; ++nth) {
        const long long blocks = test::live_blocks();
        bool failed = false;
        {
            Tam_status status(5);
            std::optional<test::Failing_new> failing(std::in_place, nth);
            Tam_thread thread(&count_run, nullptr, status);
            failed = failing->failed();
            failing.reset();
            if (!failed) {
                ASSERT_GT(nth, 1U);
                thread.wait(status);
                break;
            }
            EXPECT_EQ(chain(status), L"C2000001");
            EXPECT_EQ(reported([&](Tam_status& s) { thread.wait(s); }), L"C200003C");
            if (nth == 1) {
                EXPECT_EQ(reported([&](Tam_status& s) { thread.post_message(1, 2, 3, s); }), L"C2000040");
            }
        }
        EXPECT_EQ(test::live_blocks(), blocks);
        EXPECT_EQ(test::open_handles(), handles);
    }
    EXPECT_EQ(functions_run, 1);
}

TEST_F(Thread_calls, without_a_pipe_run_without_messages)
{
    const auto create = failing<0>(win32.create_pipe);
    std::wstring received;
    const Tam_thread thread(&get_message, &received, m_status);
    EXPECT_EQ(chain(m_status), L"C200003F");
    EXPECT_EQ(reported([&](Tam_status& status) { thread.post_message(1, 2, 3, status); }), L"C2000040 C2000042");
    thread.wait(m_status);
    EXPECT_EQ(thread.state(), TAM_THREAD_FINISHED);
    EXPECT_EQ(received, L"C2000045 C2000044");
}

TEST_F(Thread_calls, that_move_a_message_are_reported)
{
    std::wstring received;
    {
        const Swap read(win32.read_file, &no_read);
        const Tam_thread thread(&get_message, &received, m_status);
        thread.wait(m_status);
        EXPECT_EQ(received, L"C2000045 C2000043");
    }
    {
        const Swap read(win32.read_file, &short_read);
        const Tam_thread thread(&get_message, &received, m_status);
        thread.wait(m_status);
        EXPECT_EQ(received, L"C2000045");
        const Swap write(win32.write_file, &no_write);
        EXPECT_EQ(reported([&](Tam_status& status) { thread.post_message(1, 2, 3, status); }), L"C2000040 C2000041");
        const Swap short_one(win32.write_file, &short_write);
        EXPECT_EQ(reported([&](Tam_status& status) { thread.post_message(1, 2, 3, status); }), L"C2000040");
    }
}

TEST_F(Thread_calls, of_control_are_reported_and_change_nothing)
{
    Tam_event go;
    Tam_thread thread(&wait_for_event, &go, m_status);
    const auto suspend = failing<0, 0xFFFFFFFF>(win32.suspend_thread);
    const auto resume = failing<0, 0xFFFFFFFF>(win32.resume_thread);
    const auto priority = failing<0>(win32.set_thread_priority);
    EXPECT_EQ(reported([&](Tam_status& status) { thread.suspend(status); }), L"C200003A");
    EXPECT_EQ(reported([&](Tam_status& status) { thread.resume(status); }), L"C200003B");
    EXPECT_EQ(reported([&](Tam_status& status) { thread.set_priority(TAM_THREAD_PRIORITY_LOWEST, status); }),
              L"C200003E");
    {
        const Swap wait(win32.wait_for_single_object, &refuse_wait);
        EXPECT_EQ(reported([&](Tam_status& status) { thread.wait(status); }), L"C200003C");
        EXPECT_EQ(reported([&](Tam_status& status) { EXPECT_FALSE(thread.wait(7, status)); }), L"C200003C 6");
    }
    EXPECT_EQ(thread.state(), TAM_THREAD_RUNNING);
    go.signal();
    thread.wait(m_status);
}

TEST_F(Thread_calls, that_do_not_terminate_take_the_thread_from_the_registry)
{
    Tam_event go;
    const unsigned int handles = test::open_handles();
    {
        const auto refusal = failing<0>(win32.terminate_thread);
        Tam_thread thread(&wait_for_event, &go, m_status);
        EXPECT_EQ(reported([&](Tam_status& status) { thread.terminate(status); }), L"C2000039");
        EXPECT_EQ(thread.state(), TAM_THREAD_RUNNING);
        go.signal();
        thread.wait(m_status);
        EXPECT_EQ(thread.state(), TAM_THREAD_RUNNING) << "its end is not recorded";
    }
    test::expect_handles(handles);
}

namespace {

Tam_event* terminating = nullptr;

// The thread gets all the time in the world to end by itself, while its terminator holds the locks.
BOOL WINAPI let_it_end_meanwhile(HANDLE, DWORD)
{
    terminating->signal();
    ::Sleep(50);
    return TRUE;
}

} // namespace

TEST_F(Thread_calls, that_terminate_are_not_overtaken_by_the_threads_own_end)
{
    Tam_event go;
    terminating = &go;
    const unsigned int handles = test::open_handles();
    {
        const Swap slow(win32.terminate_thread, &let_it_end_meanwhile);
        Tam_thread thread(&wait_for_event, &go, m_status);
        thread.terminate(m_status);
        EXPECT_EQ(chain(m_status), L"");
        EXPECT_TRUE(thread.wait(LONG_ENOUGH, m_status));
        EXPECT_EQ(thread.state(), TAM_THREAD_TERMINATED);
    }
    test::expect_handles(handles);
}

TEST_F(Thread_calls, of_fault_translation_fail_the_thread)
{
    const auto slot = failing<0>(win32.fls_set_value);
    const Tam_thread thread(&count_run, nullptr, m_status);
    EXPECT_EQ(chain(m_status), L"");
    thread.wait(m_status);
    EXPECT_EQ(thread.state(), TAM_THREAD_FAILED);
    EXPECT_EQ(reported([&](Tam_status& status) { thread.get_failed_status(status); }), L"C2000038(::FlsSetValue)");
    EXPECT_EQ(functions_run, 0);
}

namespace {

std::optional<test::Failing_new> no_memory_left;

// Whoever asks for its text has no memory left.
class Error_without_memory : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    const char* what() const noexcept override
    {
        no_memory_left.emplace(1U, test::Failing_new::ALL);
        return "too long a text to be kept without an allocation";
    }
};

} // namespace

TEST_F(Thread_calls, that_record_a_failure_without_memory_say_so)
{
    const Tam_thread thread([](void*) { throw Error_without_memory("text"); }, nullptr, m_status);
    thread.wait(m_status);
    no_memory_left.reset();
    EXPECT_EQ(thread.state(), TAM_THREAD_FAILED);
    EXPECT_EQ(reported([&](Tam_status& status) { thread.get_failed_status(status); }), L"C2000001");
}

namespace {

// It does what it says that it did not, so that the test ends.
BOOL WINAPI set_and_refuse(HANDLE timer, const LARGE_INTEGER* due, LONG period, PTIMERAPCROUTINE routine,
                           void* argument, BOOL resume)
{
    EXPECT_EQ(due->QuadPart, 0);
    EXPECT_EQ(period, 1);
    EXPECT_TRUE(routine == nullptr && argument == nullptr && !resume);
    EXPECT_TRUE(::SetWaitableTimer(timer, due, period, routine, argument, resume));
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

bool count_tick(void* ticks)
{
    ++*static_cast<int*>(ticks);
    return true;
}

} // namespace

TEST_F(Thread_calls, of_a_timer_are_reported_over_the_last_error)
{
    const unsigned int handles = test::open_handles();
    int ticks = 0;
    std::optional<Swap<decltype(win32.cancel_waitable_timer)>> cancel;
    {
        Tam_timer timer;
        {
            const auto create = failing<ERROR_ACCESS_DENIED>(win32.create_waitable_timer);
            timer.init(&count_tick, 1, m_status, 2, &ticks);
            EXPECT_EQ(chain(m_status), L"C2000065 5");
            EXPECT_EQ(ticks, 0);
        }
        {
            const Swap set(win32.set_waitable_timer, &set_and_refuse);
            timer.init(&count_tick, 1, m_status, 2, &ticks);
            EXPECT_EQ(chain(m_status), L"C2000064 87");
            EXPECT_EQ(ticks, 2) << "it went on";
        }
        {
            const Swap wait(win32.wait_for_single_object, &refuse_wait);
            timer.init(&count_tick, 1, m_status, 2, &ticks);
            EXPECT_EQ(chain(m_status), L"6");
            EXPECT_EQ(ticks, 2);
        }
        EXPECT_EQ(test::open_handles(), handles);
        cancel.emplace(win32.cancel_waitable_timer, &refuse);
        timer.init(&count_tick, 1, m_status, 2, &ticks);
        EXPECT_EQ(chain(m_status), L"C2000068 5");
        EXPECT_EQ(test::open_handles(), handles + 1) << "the timer is kept";
        timer.init(&count_tick, 1, m_status, 1, &ticks);
        EXPECT_EQ(test::open_handles(), handles + 1) << "there is one at a time";
        EXPECT_EQ(ticks, 5);
    }
    EXPECT_EQ(test::open_handles(), handles);
}
