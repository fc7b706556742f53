#include <tests/support/test.h>

using namespace tam;
using test::unique_name;

namespace {

// Whether another thread can acquire the mutex now; it releases it again.
bool free_for_another_thread(Tam_mutex& mutex)
{
    return std::async(std::launch::async,
                      [&] {
                          const bool acquired = mutex.try_lock();
                          if (acquired) {
                              mutex.unlock();
                          }
                          return acquired;
                      })
        .get();
}

} // namespace

TEST(Mutex, belongs_to_its_thread_until_unlocked_as_often_as_locked)
{
    Tam_mutex mutex(true);
    mutex.lock();
    EXPECT_TRUE(mutex.try_lock());
    EXPECT_TRUE(mutex.try_lock(0xFFFFFFFF));
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(free_for_another_thread(mutex)) << i;
        mutex.unlock();
    }
    EXPECT_TRUE(free_for_another_thread(mutex));
}

TEST(Mutex, unlock_by_a_thread_that_does_not_own_it_is_ignored)
{
    Tam_mutex mutex;
    EXPECT_NO_THROW(mutex.unlock());
    mutex.lock();
    std::async(std::launch::async, [&] { mutex.unlock(); }).get();
    EXPECT_FALSE(free_for_another_thread(mutex));
    mutex.unlock();
}

TEST(Mutex, waits_no_longer_than_told)
{
    Tam_mutex mutex(true);
    const auto wait = [&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(mutex.try_lock(60));
        return std::chrono::steady_clock::now() - start;
    };
    const auto waited = std::async(std::launch::async, wait).get();
    EXPECT_GE(waited, std::chrono::milliseconds(44)); // less the system's clock tick
    EXPECT_LT(waited, std::chrono::seconds(10));
}

TEST(Mutex, whose_owner_ended_counts_as_acquired)
{
    Tam_mutex mutex;
    const auto abandon = [&] { std::thread([&] { mutex.lock(); }).join(); };
    abandon();
    EXPECT_TRUE(mutex.try_lock());
    EXPECT_FALSE(free_for_another_thread(mutex));
    mutex.unlock();
    abandon();
    EXPECT_TRUE(mutex.try_lock(1000));
    mutex.unlock();
    abandon();
    EXPECT_NO_THROW(mutex.lock());
    mutex.unlock();
    EXPECT_TRUE(free_for_another_thread(mutex));
}

TEST(Mutex, of_a_name_is_shared)
{
    const std::wstring name = unique_name(L"shared_mutex");
    Tam_mutex first(name, true);
    Tam_mutex second(name);
    EXPECT_FALSE(free_for_another_thread(second));
    second.unlock();
    EXPECT_TRUE(free_for_another_thread(first));

    const HANDLE raw = ::OpenMutexW(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(raw, nullptr) << "the name is used without addition";
    ::CloseHandle(raw);
    EXPECT_EQ(::WaitForSingleObject(first.handle(), 0), WAIT_OBJECT_0);
    first.unlock();
}
