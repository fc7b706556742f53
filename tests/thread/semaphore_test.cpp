#include <tests/support/test.h>

using namespace tam;
using namespace std::chrono_literals;

namespace {

constexpr unsigned int LARGEST = 0xFFFFFFFF;

} // namespace

TEST(Semaphore, counts_the_units_held)
{
    struct Row {
        unsigned int initial;
        unsigned int maximum;
        unsigned int held;
    };
    for (const Row& row :
         {Row{2, 2, 0}, Row{0, 2, 2}, Row{0, 0, 0}, Row{1, 3, 2}, Row{LARGEST, LARGEST, 0}, Row{0, LARGEST, LARGEST}}) {
        const Tam_semaphore semaphore(row.initial, row.maximum);
        EXPECT_EQ(semaphore.count(), row.held) << row.initial << " of " << row.maximum;
        EXPECT_EQ(semaphore.maximum(), row.maximum);
    }
    for (const Row& row : {Row{3, 2, 0}, Row{1, 0, 0}, Row{LARGEST, LARGEST - 1, 0}}) {
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { Tam_semaphore(row.initial, row.maximum); }),
                  "Initial value more than maximum on semaphore.");
    }
}

TEST(Semaphore, takes_and_gives_back_several_units_at_once)
{
    Tam_semaphore semaphore(2, 2);
    semaphore.lock(1);
    EXPECT_EQ(semaphore.count(), 1U);
    EXPECT_EQ(test::thrown<std::invalid_argument>([&] { semaphore.unlock(2); }), "Unlocking too much on semaphore.");
    EXPECT_EQ(semaphore.count(), 1U);
    EXPECT_FALSE(semaphore.try_lock(2));
    EXPECT_EQ(semaphore.count(), 1U);
    EXPECT_TRUE(semaphore.try_lock(1));
    EXPECT_FALSE(semaphore.try_lock(1));
    EXPECT_TRUE(semaphore.try_lock(0));
    semaphore.lock(0);
    EXPECT_EQ(semaphore.count(), 2U);
    semaphore.unlock(2);
    EXPECT_EQ(semaphore.count(), 0U);
    semaphore.unlock(0);
    semaphore.lock(2);
    EXPECT_EQ(semaphore.count(), 2U);
}

TEST(Semaphore, refuses_a_request_beyond_the_maximum_whatever_is_free)
{
    Tam_semaphore semaphore(1, 2);
    for (const unsigned int n : {3U, LARGEST}) {
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { semaphore.lock(n); }),
                  "Requested more than maximum on semaphore.");
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { semaphore.try_lock(n); }),
                  "Requested more than maximum on semaphore.");
    }
    EXPECT_EQ(semaphore.count(), 1U);
}

TEST(Semaphore, adds_the_units_given_back_in_32_bits)
{
    Tam_semaphore semaphore(2, 2);
    semaphore.unlock(LARGEST); // 2 + (2^32 - 1) is 1
    EXPECT_EQ(semaphore.count(), 1U);
    Tam_semaphore full(0, LARGEST);
    full.unlock(LARGEST);
    EXPECT_EQ(full.count(), 0U);
}

TEST(Semaphore, a_waiter_gets_its_units_when_enough_have_come_together)
{
    Tam_semaphore semaphore(0, 3);
    std::future<void> waiter = std::async(std::launch::async, [&] { semaphore.lock(2); });
    EXPECT_EQ(waiter.wait_for(30ms), std::future_status::timeout);
    semaphore.unlock(1);
    EXPECT_EQ(waiter.wait_for(30ms), std::future_status::timeout);
    EXPECT_EQ(semaphore.count(), 2U) << "nothing is taken in parts";
    EXPECT_TRUE(semaphore.try_lock(1)) << "waiters are passed by those who want few";
    semaphore.unlock(2);
    EXPECT_EQ(waiter.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(semaphore.count(), 3U);
}

TEST(Semaphore, an_unlock_serves_all_waiters_that_it_has_units_for)
{
    Tam_semaphore semaphore(0, 3);
    std::vector<std::future<void>> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.push_back(std::async(std::launch::async, [&] { semaphore.lock(1); }));
    }
    semaphore.unlock(3);
    for (auto& waiter : waiters) {
        EXPECT_EQ(waiter.wait_for(10s), std::future_status::ready);
    }
    EXPECT_EQ(semaphore.count(), 3U);
}

TEST(Semaphore, never_gives_out_more_than_its_maximum)
{
    constexpr unsigned int MAXIMUM = 4;
    Tam_semaphore semaphore(MAXIMUM, MAXIMUM);
    std::atomic<unsigned int> held = 0;
    const auto take = [&](unsigned int seed) {
        std::mt19937 random(seed);
        for (int i = 0; i < 100; ++i) {
            const unsigned int n = 1 + random() % MAXIMUM;
            if (random() % 4 != 0) {
                semaphore.lock(n);
            } else if (!semaphore.try_lock(n)) {
                continue;
            }
            EXPECT_LE(held += n, MAXIMUM);
            tam_thread_yield();
            held -= n;
            semaphore.unlock(n);
        }
    };
    std::vector<std::future<void>> threads;
    for (unsigned int seed = 1; seed <= 4; ++seed) {
        threads.push_back(std::async(std::launch::async, take, seed));
    }
    for (auto& thread : threads) {
        thread.get();
    }
    EXPECT_EQ(semaphore.count(), 0U);
}
