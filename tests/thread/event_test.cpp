#include <tests/support/test.h>

#include <tests/support/descriptors.h>

using namespace tam;
using namespace std::chrono_literals;
using test::unique_name;

TEST(Event, stays_signalled_until_it_is_reset)
{
    Tam_event event;
    EXPECT_FALSE(event.wait(0));
    EXPECT_FALSE(event.signaled());
    event.signal();
    event.signal();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(event.wait(0));
        EXPECT_TRUE(event.wait(0xFFFFFFFF));
        EXPECT_TRUE(event.signaled());
    }
    event.wait();
    event.reset();
    EXPECT_FALSE(event.wait(1));
    EXPECT_FALSE(event.signaled());
}

TEST(Event, starts_as_it_is_told)
{
    EXPECT_FALSE(Tam_event(false, nullptr).signaled());
    EXPECT_TRUE(Tam_event(true, nullptr).signaled());
    EXPECT_FALSE(Tam_event(0, nullptr).signaled());
    EXPECT_TRUE(Tam_event(unique_name(L"event"), true, nullptr).signaled());
    EXPECT_FALSE(Tam_event(L"", false, nullptr).signaled());
}

TEST(Event, pulse_lets_waiters_go_and_leaves_it_not_signalled)
{
    Tam_event event;
    event.pulse();
    EXPECT_FALSE(event.signaled());
    std::future<bool> waiter = std::async(std::launch::async, [&] { return event.wait(20000); });
    do { // one that comes too early is missed
        event.pulse();
    } while (waiter.wait_for(5ms) != std::future_status::ready);
    EXPECT_TRUE(waiter.get());
    EXPECT_FALSE(event.signaled());
}

TEST(Event, of_a_name_is_shared_and_keeps_its_state)
{
    const std::wstring name = unique_name(L"Shared");
    Tam_event first(name);
    Tam_event second(name, true);
    EXPECT_FALSE(second.signaled());
    first.signal();
    EXPECT_TRUE(second.signaled());
    EXPECT_NE(first.handle(), second.handle());
    EXPECT_FALSE(Tam_event(unique_name(L"shared")).signaled()) << "names are case-sensitive";

    const HANDLE raw = ::OpenEventW(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(raw, nullptr) << "the name is used without addition";
    EXPECT_EQ(::WaitForSingleObject(raw, 0), WAIT_OBJECT_0);
    ::CloseHandle(raw);

    Tam_event literal(L"Local\\tam_test_literal");
    EXPECT_FALSE(literal.signaled()) << "a literal is a name, not a bool";
}

TEST(Event, of_a_bad_name_or_the_name_of_another_object_throws)
{
    const std::wstring name = unique_name(L"both");
    Tam_mutex mutex(name);
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_event event(name); }), "::CreateEvent");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_event event(L"no_such_folder\\event"); }), "::CreateEvent");
    Tam_event event(name + L"_event");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_mutex other(name + L"_event"); }), "::CreateMutex");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_mutex other(L"no_such_folder\\mutex"); }), "::CreateMutex");
}

TEST(Event, takes_its_security_from_the_object_given)
{
    Tam_security open_to_all;
    Tam_event with_null_list(false, &open_to_all);
    const test::Found_list given = test::list_of(with_null_list.handle(), SE_KERNEL_OBJECT);
    EXPECT_TRUE(given.present && given.null);
    const Tam_event with_default;
    const test::Found_list by_default = test::list_of(with_default.handle(), SE_KERNEL_OBJECT);
    EXPECT_FALSE(by_default.present && by_default.null);
}

TEST(Event, is_not_inherited_by_child_processes)
{
    Tam_security security;
    security.security_attributes(true);
    const Tam_event event(false, &security);
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_TRUE(::GetHandleInformation(event.handle(), &flags));
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U);
}

TEST(Event, add_security_associates_once)
{
    Tam_event event;
    Tam_mutex mutex;
    Tam_security of_event;
    Tam_security of_mutex;
    Tam_status status(5);
    event.add_security(of_event, status);
    EXPECT_TRUE(status.is_clear());
    status = 5U;
    mutex.add_security(of_mutex, status);
    EXPECT_TRUE(status.is_clear());
    status = 5U;
    event.add_security(of_event, status);
    EXPECT_EQ(status, 0xC2000078U);
    EXPECT_FALSE(status.has_child());
    mutex.add_security(of_mutex, status);
    EXPECT_EQ(status, 0xC2000078U);
}

TEST(Event, and_the_other_classes_leave_no_handle)
{
    const std::wstring name = unique_name(L"leak");
    const unsigned int before = test::open_handles();
    for (int i = 0; i < 10; ++i) {
        Tam_event event(name);
        Tam_mutex mutex(true);
        Tam_exclusive_lock local(true);
        Tam_exclusive_lock named(name + L"_lock", true);
        Tam_semaphore semaphore(1, 2);
        EXPECT_THROW(Tam_semaphore(3, 2), std::invalid_argument);
        EXPECT_THROW(Tam_exclusive_lock{name}, Tam_sys_call_fail) << "the guard's name belongs to the event";
        // The lock's mutex is made before its event fails.
        const Tam_mutex in_the_way(L"_$LOCK_" + name + L"_half");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_exclusive_lock half(name + L"_half"); }), "::CreateEvent");
    }
    EXPECT_EQ(test::open_handles(), before);
}
