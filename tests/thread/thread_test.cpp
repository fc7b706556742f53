#include <tests/support/test.h>

#include <tests/support/descriptors.h>
#include <tests/support/run_child.h>
#include <tests/thread/handles.h>

using namespace tam;
using test::chain;

namespace {

constexpr unsigned int LONG_ENOUGH = 20000;

// Not noexcept itself, although it has one that throws.
static_assert(!std::is_nothrow_destructible_v<Tam_thread>);

using Action = std::function<void()>;

void run_action(void* action)
{
    (*static_cast<Action*>(action))();
}

void return_at_once(void*) {}

void wait_for_event(void* event)
{
    static_cast<Tam_event*>(event)->wait();
}

std::wstring failed_status(const Tam_thread& thread)
{
    Tam_status status(5);
    thread.get_failed_status(status);
    return chain(status);
}

// What becomes of a thread that runs action.
struct Outcome {
    Tam_thread_state state;
    std::wstring failed_status;
};

Outcome outcome_of(Action action)
{
    Tam_status status(5);
    const Tam_thread thread(&run_action, &action, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(thread.wait(LONG_ENOUGH, status));
    EXPECT_EQ(chain(status), L"");
    return {thread.state(), failed_status(thread)};
}

// Of a pointer that the compiler knows nothing about.
[[gnu::noipa]] int value_at(const volatile int* address)
{
    return *address;
}

class Thread : public test::Limited {
protected:
    Tam_status m_status{5};
};

} // namespace

TEST_F(Thread, runs_its_function_and_is_finished_then)
{
    Tam_event go;
    Tam_thread thread(&wait_for_event, &go, m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(thread.state(), TAM_THREAD_RUNNING);
    m_status = 5;
    EXPECT_FALSE(thread.wait(0, m_status));
    EXPECT_EQ(chain(m_status), L"");
    go.signal();
    m_status = 5;
    thread.wait(m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(thread.state(), TAM_THREAD_FINISHED);
    EXPECT_TRUE(thread.wait(0, m_status));
    EXPECT_EQ(failed_status(thread), L"");
}

TEST_F(Thread, is_known_to_its_function_from_the_start)
{
    EXPECT_EQ(tam_thread_this_thread(), nullptr);
    for (int i = 0; i < 100; ++i) {
        Tam_thread* seen = nullptr;
        const Tam_thread thread([](void* result) { *static_cast<Tam_thread**>(result) = tam_thread_this_thread(); },
                                &seen, m_status);
        thread.wait(m_status);
        ASSERT_EQ(seen, &thread);
    }
}

TEST_F(Thread, fails_with_the_text_of_a_runtime_error)
{
    const Outcome error = outcome_of([] { throw std::range_error("out of r\u00e4nge"); });
    EXPECT_EQ(error.state, TAM_THREAD_FAILED);
    EXPECT_EQ(error.failed_status.substr(0, 18), L"C2000038(out of r\u00c3");
    const Outcome call = outcome_of([] { throw Tam_sys_call_fail("::CreateEvent"); });
    EXPECT_EQ(call.state, TAM_THREAD_FAILED);
    EXPECT_EQ(call.failed_status, L"C2000038(::CreateEvent)");
    EXPECT_EQ(outcome_of([] { throw std::runtime_error(""); }).failed_status, L"C2000038()");
}

TEST_F(Thread, fails_with_the_description_of_a_fault)
{
    const std::wstring access =
        L"C2000038(The thread attempted to read from or write to a virtual address for which it "
        L"does not have the appropriate access.\r\nThe memory address accessed is 0x00000008.\r\n";
    const Outcome read = outcome_of([] { value_at(reinterpret_cast<const int*>(8)); });
    EXPECT_EQ(read.state, TAM_THREAD_FAILED);
    EXPECT_EQ(read.failed_status.substr(0, access.size()), access);

    const std::wstring raised =
        L"C2000038(The thread attempted to divide an integer value by an integer divisor of zero.";
    const Outcome division = outcome_of([] { ::RaiseException(EXCEPTION_INT_DIVIDE_BY_ZERO, 0, 0, nullptr); });
    EXPECT_EQ(division.failed_status.substr(0, raised.size()), raised);

    const Tam_thread thread(nullptr, nullptr, m_status);
    thread.wait(m_status);
    EXPECT_EQ(thread.state(), TAM_THREAD_FAILED);
}

TEST_F(Thread, ends_the_process_by_any_other_exception)
{
    constexpr DWORD ABORTED = 3;
    EXPECT_EQ(test::run_child(L"thread_child", L"logic_error"), ABORTED);
}

TEST_F(Thread, goes_on_without_its_object_when_that_may_be)
{
    struct Seen {
        Tam_event reading;
        Tam_event done;
        std::wstring while_waiting;
        std::wstring afterwards;
        Tam_thread* self = reinterpret_cast<Tam_thread*>(1);
    } seen;
    const unsigned int handles = test::open_handles();
    Action action = [&] {
        unsigned int a = 0;
        unsigned int b = 0;
        int c = 0;
        Tam_status status;
        seen.reading.signal();
        tam_thread_get_message(a, b, c, status);
        seen.while_waiting = chain(status);
        tam_thread_get_message(a, b, c, status);
        seen.afterwards = chain(status);
        seen.self = tam_thread_this_thread();
        seen.done.signal();
    };
    {
        const Tam_thread thread(&run_action, &action, m_status, true);
        seen.reading.wait();
        ::Sleep(30); // it waits for a message by then; if not, the second look-up finds no object either
    }
    ASSERT_TRUE(seen.done.wait(LONG_ENOUGH));
    EXPECT_EQ(seen.while_waiting, L"C2000045 C2000043");
    EXPECT_EQ(seen.afterwards, L"C2000046");
    EXPECT_EQ(seen.self, nullptr);
    test::expect_handles(handles);
}

TEST_F(Thread, that_runs_must_not_lose_its_object_otherwise)
{
    Tam_event go;
    Tam_event done;
    const unsigned int handles = test::open_handles();
    Action action = [&] {
        go.wait();
        done.signal();
    };
    const auto destroy = [&] { delete new Tam_thread(&run_action, &action, m_status, false); };
    EXPECT_EQ(test::thrown<std::runtime_error>(destroy), "The Tam_thread was destory whilst the thread was running");
    // Everything was released before: others can start, look up and end, and so does the thread itself.
    EXPECT_EQ(outcome_of([] {}).state, TAM_THREAD_FINISHED);
    go.signal();
    ASSERT_TRUE(done.wait(LONG_ENOUGH));
    test::expect_handles(handles);
}

TEST_F(Thread, can_be_terminated_by_others)
{
    Tam_event entered;
    Tam_event never;
    const unsigned int handles = test::open_handles();
    Action action = [&] {
        entered.signal();
        never.wait();
    };
    {
        Tam_thread thread(&run_action, &action, m_status);
        entered.wait();
        thread.terminate(m_status);
        EXPECT_EQ(chain(m_status), L"");
        EXPECT_EQ(thread.state(), TAM_THREAD_TERMINATED);
        EXPECT_TRUE(thread.wait(LONG_ENOUGH, m_status));
        EXPECT_EQ(failed_status(thread), L"");
    }
    test::expect_handles(handles);

    Tam_thread ended(&return_at_once, nullptr, m_status);
    ended.wait(m_status);
    ended.terminate(m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(ended.state(), TAM_THREAD_TERMINATED) << "the last thing that happened";

    const Outcome self = outcome_of([] {
        Tam_status status(5);
        EXPECT_EQ(test::thrown<std::logic_error>([&] { tam_thread_this_thread()->terminate(status); }),
                  "Tam_thread::terminate - cannot terminate current thread");
        EXPECT_EQ(chain(status), L"");
    });
    EXPECT_EQ(self.state, TAM_THREAD_FINISHED);
}

// Not while it reads messages: Wine then loses a handle, and where the thread has just begun to, a lock of its own.
TEST_F(Thread, leaves_nothing_behind_when_it_is_terminated)
{
    const unsigned int handles = test::open_handles();
    for (int i = 0; i < 30; ++i) {
        Tam_event entered;
        Action action = [&] {
            entered.signal();
            tam_thread_sleep(0xFFFFFFFF);
        };
        Tam_thread thread(&run_action, &action, m_status);
        if (i % 2 == 0) {
            entered.wait();
        }
        thread.terminate(m_status);
        ASSERT_EQ(chain(m_status), L"");
        ASSERT_TRUE(thread.wait(LONG_ENOUGH, m_status));
    }
    test::expect_handles(handles);
}

TEST_F(Thread, stands_still_while_it_is_suspended)
{
    std::atomic<unsigned int> steps = 0;
    std::atomic<bool> is_enough = false;
    Action action = [&] {
        while (!is_enough) {
            ++steps;
            tam_thread_this_thread()->state(); // so that it is in the library's locks most of the time
        }
    };
    Tam_thread thread(&run_action, &action, m_status);
    const auto moves = [&] {
        const unsigned int before = steps;
        for (int i = 0; i < 30 && steps == before; ++i) {
            ::Sleep(i);
        }
        return steps != before;
    };
    EXPECT_TRUE(moves());
    for (int i = 0; i < 50; ++i) {
        m_status = 5;
        thread.suspend(m_status);
        ASSERT_EQ(chain(m_status), L"");
        EXPECT_EQ(thread.state(), TAM_THREAD_SUSPENDED);
        EXPECT_EQ(tam_thread_this_thread(), nullptr) << "it holds none of the locks";
        m_status = 5;
        thread.resume(m_status);
        ASSERT_EQ(chain(m_status), L"");
        EXPECT_EQ(thread.state(), TAM_THREAD_RUNNING);
    }
    thread.suspend(m_status);
    thread.suspend(m_status);
    thread.resume(m_status);
    EXPECT_EQ(thread.state(), TAM_THREAD_RUNNING) << "although one suspension remains";
    EXPECT_FALSE(moves());
    thread.resume(m_status);
    EXPECT_TRUE(moves());
    is_enough = true;
    thread.wait(m_status);
    EXPECT_EQ(thread.state(), TAM_THREAD_FINISHED);
    m_status = 5;
    thread.suspend(m_status);
    EXPECT_EQ(chain(m_status), L"C200003A");
    EXPECT_EQ(thread.state(), TAM_THREAD_FINISHED);
}

TEST_F(Thread, refuses_control_of_itself)
{
    const Outcome outcome = outcome_of([] {
        Tam_thread& self = *tam_thread_this_thread();
        Tam_status status(5);
        self.suspend(status);
        EXPECT_EQ(chain(status), L"C200003A");
        status = 5;
        self.resume(status);
        EXPECT_EQ(chain(status), L"C200003B");
        status = 5;
        self.wait(status);
        EXPECT_EQ(chain(status), L"C200003C");
        for (const unsigned int milliseconds : {0U, 1U, 0xFFFFFFFFU}) {
            status = 5;
            EXPECT_TRUE(self.wait(milliseconds, status)) << "although it runs";
            EXPECT_EQ(chain(status), L"C200003C");
        }
        EXPECT_EQ(self.state(), TAM_THREAD_RUNNING);
    });
    EXPECT_EQ(outcome.state, TAM_THREAD_FINISHED);
}

TEST_F(Thread, gets_the_five_priorities)
{
    outcome_of([] {
        const Tam_thread& self = *tam_thread_this_thread();
        const auto set = [&](int value) {
            Tam_status status(5);
            self.set_priority(static_cast<Tam_thread_priority>(value), status);
            return chain(status);
        };
        const int priorities[] = {2, 1, 0, -1, -2};
        for (int value = 0; value < 5; ++value) {
            EXPECT_EQ(set(value), L"");
            EXPECT_EQ(::GetThreadPriority(::GetCurrentThread()), priorities[value]);
        }
        for (const int value : {5, 6, -1, INT_MAX, INT_MIN}) {
            EXPECT_EQ(set(value), L"C200003D") << value;
            EXPECT_EQ(::GetThreadPriority(::GetCurrentThread()), -2);
        }
    });
}

TEST_F(Thread, of_another_kind_has_no_messages)
{
    unsigned int a = 1;
    unsigned int b = 2;
    int c = 3;
    tam_thread_get_message(a, b, c, m_status);
    EXPECT_EQ(chain(m_status), L"C2000046");
    EXPECT_EQ(a, 1U);
    EXPECT_EQ(b, 2U);
    EXPECT_EQ(c, 3);
    tam_thread_wait_any();
}

// More than the pipe holds, so that posters wait.
TEST_F(Thread, gets_every_message_of_many_posters_whole)
{
    constexpr unsigned int POSTERS = 4;
    constexpr unsigned int MESSAGES = 200;
    std::array<unsigned int, POSTERS> next{};
    Action receive = [&] {
        for (unsigned int i = 0; i < POSTERS * MESSAGES; ++i) {
            unsigned int poster = POSTERS;
            unsigned int number = 0;
            int check = 0;
            Tam_status status;
            tam_thread_get_message(poster, number, check, status);
            ASSERT_EQ(chain(status), L"");
            ASSERT_LT(poster, POSTERS);
            ASSERT_EQ(number, next[poster]++);
            ASSERT_EQ(check, -static_cast<int>(poster + number));
        }
    };
    const Tam_thread receiver(&run_action, &receive, m_status);
    std::atomic<unsigned int> posters = 0;
    Action post = [&] {
        const unsigned int poster = posters++;
        for (unsigned int number = 0; number < MESSAGES; ++number) {
            Tam_status status;
            receiver.post_message(poster, number, -static_cast<int>(poster + number), status);
            ASSERT_EQ(chain(status), L"");
        }
    };
    std::vector<std::unique_ptr<Tam_thread>> threads;
    for (unsigned int i = 0; i < POSTERS; ++i) {
        threads.push_back(std::make_unique<Tam_thread>(&run_action, &post, m_status));
    }
    for (const auto& thread : threads) {
        EXPECT_TRUE(thread->wait(LONG_ENOUGH, m_status));
    }
    EXPECT_TRUE(receiver.wait(LONG_ENOUGH, m_status));
    for (const unsigned int count : next) {
        EXPECT_EQ(count, MESSAGES);
    }
}

TEST_F(Thread, is_created_with_the_security_given)
{
    // Whether the thread has an access list of its own: a default one is none here.
    const auto check = [](void* result) {
        const test::Found_list found = test::list_of(::GetCurrentThread(), SE_KERNEL_OBJECT);
        *static_cast<bool*>(result) = found.present && found.null;
    };
    Tam_security security;
    for (Tam_security* const given : {&security, static_cast<Tam_security*>(nullptr)}) {
        bool is_open_to_all = false;
        const Tam_thread thread(check, &is_open_to_all, m_status, false, 12345, given);
        EXPECT_EQ(chain(m_status), L"");
        thread.wait(m_status);
        EXPECT_EQ(is_open_to_all, given != nullptr);
    }
    Tam_thread thread(&return_at_once, nullptr, m_status);
    m_status = 5;
    thread.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"");
    thread.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000078");
    thread.wait(m_status);
}

TEST_F(Thread, leaves_nothing_behind)
{
    const auto run_some = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const Tam_thread thread(&return_at_once, nullptr, m_status, i % 2 == 0);
            thread.post_message(1, 2, 3, m_status);
            thread.wait(m_status);
            ASSERT_EQ(thread.state(), TAM_THREAD_FINISHED);
        }
    };
    run_some(10);
    const unsigned int handles = test::open_handles();
    const unsigned int blocks = test::heap_blocks();
    run_some(1000);
    test::expect_handles(handles);
    EXPECT_LE(test::heap_blocks(), blocks + 2) << "of the run-time's own";
}

TEST_F(Thread, may_end_while_its_object_is_destroyed)
{
    const unsigned int handles = test::open_handles();
    std::atomic<int> ended = 0;
    Action action = [&] { ++ended; };
    int thrown = 0;
    for (int i = 0; i < 200; ++i) {
        try {
            const Tam_thread thread(&run_action, &action, m_status, i % 2 == 0);
            if (i % 3 == 0) {
                tam_thread_yield();
            }
        } catch (const std::runtime_error&) {
            ++thrown;
        }
    }
    for (int i = 0; i < 1000 && ended != 200; ++i) {
        ::Sleep(10);
    }
    EXPECT_EQ(ended, 200);
    EXPECT_LE(thrown, 100);
    test::expect_handles(handles);
}
