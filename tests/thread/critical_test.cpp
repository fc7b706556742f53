#include <tests/support/test.h>

using namespace tam;
using namespace std::chrono_literals;

TEST(Critical, keeps_other_threads_out_until_left_as_often_as_entered)
{
    Tam_critical section(true);
    section.enter();
    std::future<void> other = std::async(std::launch::async, [&] { const std::lock_guard guard(section); });
    EXPECT_EQ(other.wait_for(50ms), std::future_status::timeout);
    section.leave();
    EXPECT_EQ(other.wait_for(50ms), std::future_status::timeout);
    section.unlock();
    EXPECT_EQ(other.wait_for(10s), std::future_status::ready);
}

TEST(Sleep, lasts_at_least_about_the_time_given)
{
    const auto start = std::chrono::steady_clock::now();
    tam_thread_yield();
    tam_thread_sleep(0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    tam_thread_sleep(60);
    // The system's clock tick, 16 ms, may be cut off.
    EXPECT_GE(std::chrono::steady_clock::now() - start, 44ms);
}

static_assert(!std::is_copy_constructible_v<Tam_critical> && !std::is_copy_constructible_v<Tam_event> &&
              !std::is_copy_constructible_v<Tam_mutex> && !std::is_copy_constructible_v<Tam_exclusive_lock> &&
              !std::is_copy_constructible_v<Tam_semaphore>);
