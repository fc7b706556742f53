#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/support/failing_new.h>

using namespace tam;
using detail::win32;
using test::failing;
using test::Swap;

namespace {} // namespace

TEST(Kernel_objects, throw_the_name_of_the_call_that_failed)
{
    Tam_event event;
    Tam_mutex mutex;
    {
        const auto create_event = failing<ERROR_ACCESS_DENIED>(win32.create_event);
        const auto create_mutex = failing<ERROR_ACCESS_DENIED>(win32.create_mutex);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_event unnamed; }), "::CreateEvent");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_event named(L"name"); }), "::CreateEvent");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_mutex unnamed; }), "::CreateMutex");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_mutex named(L"name"); }), "::CreateMutex");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_exclusive_lock lock; }), "::CreateMutex");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_semaphore semaphore(3, 2); }), "::CreateMutex")
            << "made before the check";
    }
    const auto set = failing<ERROR_INVALID_HANDLE>(win32.set_event);
    const auto reset = failing<ERROR_INVALID_HANDLE>(win32.reset_event);
    const auto pulse = failing<ERROR_INVALID_HANDLE>(win32.pulse_event);
    const auto release = failing<ERROR_INVALID_HANDLE>(win32.release_mutex);
    const auto wait = failing<ERROR_INVALID_HANDLE, WAIT_FAILED>(win32.wait_for_single_object);
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { event.signal(); }), "::SetEvent");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { event.reset(); }), "::ResetEvent");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { event.pulse(); }), "::PulseEvent");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { event.wait(); }), "::WaitForSingleObject");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { event.wait(7); }), "::WaitForSingleObject");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { event.signaled(); }), "::WaitForSingleObject");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { mutex.try_lock(); }), "::WaitForSingleObject");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { mutex.try_lock(7); }), "::WaitForSingleObject");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { mutex.lock(); }), "::WaitForSingleObject failed, reason 6");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { mutex.unlock(); }), "::ReleaseMutex");
}

TEST(Kernel_objects, a_mutex_that_is_not_owned_is_not_reported)
{
    Tam_mutex mutex;
    const auto release = failing<ERROR_NOT_OWNER>(win32.release_mutex);
    EXPECT_NO_THROW(mutex.unlock());
}

// The waits of the event with a time-out ask for success; all others for anything but a time-out.
TEST(Kernel_objects, differ_in_what_they_take_for_success)
{
    Tam_event event;
    Tam_mutex mutex;
    const auto wait = failing<ERROR_SUCCESS, WAIT_ABANDONED>(win32.wait_for_single_object);
    EXPECT_FALSE(event.wait(7));
    EXPECT_TRUE(event.signaled());
    EXPECT_TRUE(mutex.try_lock());
    EXPECT_TRUE(mutex.try_lock(7));
    EXPECT_NO_THROW(mutex.lock());
}

TEST(Semaphore, is_unchanged_and_usable_after_a_failed_call)
{
    Tam_semaphore semaphore(2, 3);
    {
        const auto set = failing<ERROR_INVALID_HANDLE>(win32.set_event);
        const auto reset = failing<ERROR_INVALID_HANDLE>(win32.reset_event);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { semaphore.unlock(1); }), "::SetEvent");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { semaphore.lock(2); }), "::ResetEvent");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { semaphore.try_lock(2); }), "::ResetEvent");
    }
    {
        const auto wait = failing<ERROR_INVALID_HANDLE, WAIT_FAILED>(win32.wait_for_single_object);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { semaphore.lock(1); }),
                  "::WaitForSingleObject failed, reason 6");
    }
    // From another thread: the guard was released.
    std::future<unsigned int> held = std::async(std::launch::async, [&] { return semaphore.count(); });
    ASSERT_EQ(held.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(held.get(), 1U);
    {
        const auto release = failing<ERROR_INVALID_HANDLE>(win32.release_mutex);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { semaphore.count(); }), "::ReleaseMutex");
        EXPECT_THROW(semaphore.unlock(3), std::invalid_argument) << "the first failure is the one reported";
    }
}

TEST(Semaphore, whose_event_fails_leaves_no_handle)
{
    const unsigned int before = test::open_handles();
    const auto create_event = failing<ERROR_ACCESS_DENIED>(win32.create_event);
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_semaphore semaphore(1, 1); }), "::CreateEvent");
    EXPECT_EQ(test::open_handles(), before);
}

TEST(Exclusive_lock, reports_a_failing_guard_and_event)
{
    Tam_exclusive_lock local;
    Tam_exclusive_lock named(test::unique_name(L"failing"));
    {
        const auto release = failing<ERROR_INVALID_HANDLE>(win32.release_mutex);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { local.try_lock(); }), "::ReleaseMutex");
    }
    {
        const auto set = failing<ERROR_INVALID_HANDLE>(win32.set_event);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { named.try_lock(); }), "::SetEvent");
    }
    EXPECT_TRUE(named.try_lock());
    const auto reset = failing<ERROR_INVALID_HANDLE>(win32.reset_event);
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { named.unlock(); }), "::ResetEvent");
    EXPECT_FALSE(named.try_lock());
}

TEST(Exclusive_lock, whose_event_finds_no_memory_can_never_be_taken)
{
    const std::wstring name = test::unique_name(L"memory");
    const unsigned int handles = test::open_handles();
    const unsigned int blocks = test::heap_blocks();
    bool without_event = false;
    for (unsigned int n = 1;; ++n) {
        const test::Failing_new failure(n);
        try {
            Tam_exclusive_lock lock(name, true);
            if (!failure.failed()) {
                break;
            }
            without_event = true;
            EXPECT_FALSE(lock.try_lock());
            EXPECT_THROW(lock.unlock(), std::logic_error);
            EXPECT_FALSE(lock.try_lock());
        } catch (const std::bad_alloc&) { // no memory for the event's name
        }
    }
    EXPECT_TRUE(without_event);
    EXPECT_EQ(test::open_handles(), handles);
    EXPECT_EQ(test::heap_blocks(), blocks);
}

// The order of the calls: guard, event with open security, and nothing of the caller's security on the event.
TEST(Exclusive_lock, gives_the_callers_security_to_the_mutex_alone)
{
    static SECURITY_ATTRIBUTES* of_mutex;
    static void* of_event;
    of_mutex = nullptr;
    of_event = nullptr;
    const Swap create_mutex(
        win32.create_mutex, +[](SECURITY_ATTRIBUTES* attributes, BOOL owned, const wchar_t* name) WINAPI -> HANDLE {
            of_mutex = attributes;
            return ::CreateMutexW(attributes, owned, name);
        });
    const Swap create_event(
        win32.create_event,
        +[](SECURITY_ATTRIBUTES* attributes, BOOL manual, BOOL signaled, const wchar_t* name) WINAPI -> HANDLE {
            EXPECT_TRUE(manual);
            EXPECT_TRUE(signaled);
            BOOL present = FALSE;
            BOOL defaulted = FALSE;
            ACL* list = nullptr;
            EXPECT_TRUE(::GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &present, &list, &defaulted));
            EXPECT_TRUE(present);
            EXPECT_EQ(list, nullptr);
            of_event = attributes->lpSecurityDescriptor;
            return ::CreateEventW(attributes, manual, signaled, name);
        });
    Tam_security security;
    SECURITY_ATTRIBUTES* const attributes = security.security_attributes(false);
    const Tam_exclusive_lock lock(test::unique_name(L"security"), true, &security);
    EXPECT_EQ(of_mutex, attributes);
    EXPECT_NE(of_event, nullptr);
    EXPECT_NE(of_event, attributes->lpSecurityDescriptor);
}
