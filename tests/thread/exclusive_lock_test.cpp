#include <tests/support/test.h>

#include <tests/support/run_child.h>

using namespace tam;
using test::unique_name;

namespace {

void expect_not_locked(Tam_exclusive_lock& lock)
{
    EXPECT_EQ(test::thrown<std::logic_error>([&] { lock.unlock(); }),
              "Tam_exclusive_lock::unlock - exclusive lock is not locked");
}

// What exclusive_lock_child says about the lock of that name: 1 when it got it and left it locked, 0 when not.
DWORD try_lock_in_another_process(const std::wstring& name)
{
    return test::run_child(L"exclusive_lock_child", name);
}

} // namespace

TEST(Exclusive_lock, is_taken_once_and_not_even_again_by_its_thread)
{
    Tam_exclusive_lock local;
    Tam_exclusive_lock named(unique_name(L"lock"));
    for (Tam_exclusive_lock* lock : {&local, &named}) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(lock->try_lock());
            EXPECT_FALSE(lock->try_lock());
            lock->unlock();
        }
        expect_not_locked(*lock);
        expect_not_locked(*lock);
        EXPECT_TRUE(lock->try_lock()) << "the guard was released";
    }
}

TEST(Exclusive_lock, starts_locked_when_told)
{
    Tam_security security;
    Tam_exclusive_lock local(true, &security);
    Tam_exclusive_lock named(unique_name(L"locked"), true, &security);
    for (Tam_exclusive_lock* lock : {&local, &named}) {
        EXPECT_FALSE(lock->try_lock());
        lock->unlock();
        expect_not_locked(*lock);
    }
}

TEST(Exclusive_lock, may_be_unlocked_by_any_thread)
{
    Tam_exclusive_lock local(true);
    Tam_exclusive_lock named(unique_name(L"any_thread"), true);
    for (Tam_exclusive_lock* lock : {&local, &named}) {
        std::async(std::launch::async, [&] { lock->unlock(); }).get();
        EXPECT_TRUE(lock->try_lock());
    }
}

TEST(Exclusive_lock, of_a_name_is_one_lock_in_two_objects)
{
    const std::wstring name = unique_name(L"two");
    Tam_exclusive_lock first(name);
    Tam_exclusive_lock second(name, true);
    EXPECT_TRUE(first.try_lock()) << "an opened lock keeps its state";
    EXPECT_FALSE(second.try_lock());
    second.unlock();
    expect_not_locked(first);
    EXPECT_TRUE(second.try_lock());
    EXPECT_FALSE(first.try_lock());
}

TEST(Exclusive_lock, of_a_name_is_one_lock_in_two_processes)
{
    const std::wstring name = unique_name(L"processes");
    Tam_exclusive_lock lock(name);
    ASSERT_TRUE(lock.try_lock());
    EXPECT_EQ(try_lock_in_another_process(name), 0U);
    lock.unlock();
    EXPECT_EQ(try_lock_in_another_process(name), 1U);
    EXPECT_FALSE(lock.try_lock()) << "the process that took it ended without unlocking";
    lock.unlock();
    EXPECT_TRUE(lock.try_lock());
}

TEST(Exclusive_lock, is_made_of_a_mutex_and_an_event_of_documented_names)
{
    const std::wstring name = unique_name(L"names");
    const Tam_exclusive_lock lock(name, true);
    const HANDLE mutex = ::OpenMutexW(SYNCHRONIZE, FALSE, name.c_str());
    const HANDLE event = ::OpenEventW(SYNCHRONIZE, FALSE, (L"_$LOCK_" + name).c_str());
    EXPECT_EQ(::WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "the guard is not owned";
    EXPECT_EQ(::WaitForSingleObject(event, 0), WAIT_OBJECT_0) << "signalled while taken";
    ::ReleaseMutex(mutex);
    ::CloseHandle(mutex);
    ::CloseHandle(event);
    EXPECT_THROW(Tam_exclusive_lock(L"Local\\" + name), Tam_sys_call_fail);
}

TEST(Exclusive_lock, is_held_by_one_of_many_threads)
{
    Tam_exclusive_lock lock;
    std::atomic<int> inside = 0;
    std::atomic<int> taken = 0;
    const auto take = [&] {
        for (int i = 0; i < 300; ++i) {
            if (lock.try_lock()) {
                EXPECT_EQ(++inside, 1);
                ++taken;
                --inside;
                lock.unlock();
            }
        }
    };
    std::vector<std::future<void>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(std::async(std::launch::async, take));
    }
    for (auto& thread : threads) {
        thread.get();
    }
    EXPECT_GT(taken, 0);
    EXPECT_TRUE(lock.try_lock());
}
