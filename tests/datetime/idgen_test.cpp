#include <tests/support/test.h>

#include <cstdio>

using namespace tam;

namespace {

struct Parts {
    unsigned int day = 0;
    unsigned int second = 0;
    unsigned int number = 0;
};

Parts next()
{
    std::string id = "old";
    tam_idgen_date_time_number(id);
    Parts parts;
    char rest = 0;
    EXPECT_EQ(std::sscanf(id.c_str(), "%u.%u.%u%c", &parts.day, &parts.second, &parts.number, &rest), 3) << id;
    char again[40];
    std::snprintf(again, sizeof again, "%u.%u.%u", parts.day, parts.second, parts.number);
    EXPECT_EQ(id, again);
    return parts;
}

} // namespace

TEST(Idgen, gives_day_second_of_the_minute_and_number)
{
    const Tam_date day_before = Tam_date::today();
    const Tam_time before = Tam_time::now();
    const Parts first = next();
    const Tam_time after = Tam_time::now();
    EXPECT_TRUE(day_before <= Tam_date(static_cast<int>(first.day)) &&
                Tam_date(static_cast<int>(first.day)) <= Tam_date::today());
    // From the second before to the second after, over the minute's end when need be.
    const auto from_before = (first.second + 60 - static_cast<unsigned int>(before.seconds())) % 60;
    EXPECT_LE(static_cast<long long>(from_before), (after - before).seconds() + 1);
    EXPECT_LT(first.second, 60U);
    EXPECT_EQ(next().number, first.number + 1);
}

TEST(Idgen, never_repeats_a_number)
{
    constexpr int THREADS = 8;
    constexpr int CALLS = 2000;
    const unsigned int first = next().number;
    std::vector<std::vector<unsigned int>> numbers(THREADS);
    std::vector<std::thread> threads;
    for (auto& list : numbers) {
        threads.emplace_back([&list] {
            for (int i = 0; i < CALLS; ++i) {
                list.push_back(next().number);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<unsigned int> all;
    for (const auto& list : numbers) {
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
        all.insert(list.begin(), list.end());
    }
    EXPECT_EQ(all.size(), static_cast<std::size_t>(THREADS * CALLS));
    EXPECT_EQ(*all.begin(), first + 1);
    EXPECT_EQ(*all.rbegin(), first + THREADS * CALLS);
}
