#include <tests/support/test.h>

#include <tests/datetime/tokens.h>

#include <clocale>

using namespace tam;

namespace {

constexpr long long DAY = 86400'000000;

long long total(const Tam_time_period& period)
{
    return period.seconds() * 1000000 + period.microseconds();
}

std::wstring text_of(const Tam_time& time, const std::wstring& format)
{
    std::wstring text = L"old";
    time.to_string(format, text);
    return text;
}

} // namespace

TEST(Time, is_midnight_or_what_it_is_given)
{
    EXPECT_EQ(total(Tam_time()), 0);
    EXPECT_EQ(Tam_time(), Tam_time::min_time());
    EXPECT_EQ(total(Tam_time::max_time()), DAY - 1);
    const Tam_time time(13, 14, 15, 16);
    EXPECT_EQ(time.hours(), 13);
    EXPECT_EQ(time.minutes(), 14);
    EXPECT_EQ(time.seconds(), 15);
    EXPECT_EQ(time.microseconds(), 16);
    tm parts{};
    parts.tm_hour = 13;
    parts.tm_min = 14;
    parts.tm_sec = 15;
    parts.tm_mday = -5;
    EXPECT_EQ(Tam_time(parts, 16), time);
    const tm back = time;
    EXPECT_EQ(back.tm_hour * 10000 + back.tm_min * 100 + back.tm_sec, 131415);
    EXPECT_EQ(back.tm_mday | back.tm_mon | back.tm_year | back.tm_wday | back.tm_yday | back.tm_isdst, 0);
}

TEST(Time, refuses_parts_that_no_clock_shows_and_stays_as_it_was)
{
    const int rows[][4] = {{24, 0, 0, 0}, {-1, 0, 0, 0},      {0, 60, 0, 0}, {0, -1, 0, 0},     {0, 0, 60, 0},
                           {0, 0, -1, 0}, {0, 0, 0, 1000000}, {0, 0, 0, -1}, {INT_MAX, 0, 0, 0}};
    Tam_time time(1, 2, 3, 4);
    for (const auto& row : rows) {
        tm parts{};
        parts.tm_hour = row[0];
        parts.tm_min = row[1];
        parts.tm_sec = row[2];
        for (int way = 0; way < 3; ++way) {
            EXPECT_EQ(tam::test::thrown<std::invalid_argument>([&] {
                          way == 0   ? time.time(row[0], row[1], row[2], row[3])
                          : way == 1 ? time.time(parts, row[3])
                                     : static_cast<void>(Tam_time(row[0], row[1], row[2], row[3]));
                      }),
                      "Invalid argument to Tam_time::set()")
                << row[0] << ":" << row[1] << ":" << row[2] << "." << row[3];
        }
    }
    EXPECT_EQ(time, Tam_time(1, 2, 3, 4));
    time.time(23, 59, 59, 999999);
    EXPECT_EQ(time, Tam_time::max_time());
}

TEST(Time, wraps_into_one_day)
{
    EXPECT_EQ(Tam_time(-3600), Tam_time(23, 0, 0, 0));
    EXPECT_EQ(Tam_time(25 * 3600), Tam_time(1, 0, 0, 0));
    EXPECT_EQ(Tam_time(-25 * 3600), Tam_time(23, 0, 0, 0));
    EXPECT_EQ(Tam_time(86400), Tam_time());
    EXPECT_EQ(Tam_time(-86400), Tam_time());
    EXPECT_EQ(Tam_time(Tam_time_period(0, -1)), Tam_time::max_time());
    EXPECT_EQ(Tam_time::max_time() + Tam_time_period(0, 1), Tam_time());
    EXPECT_EQ(Tam_time() - Tam_time_period(0, 1), Tam_time::max_time());
    EXPECT_EQ(Tam_time(Tam_time_period(LLONG_MAX, 0)), Tam_time(15, 30, 7, 0));
    EXPECT_EQ(Tam_time(Tam_time_period(LLONG_MIN, 0)), Tam_time(8, 29, 52, 0));
    EXPECT_EQ(Tam_time() - Tam_time(23, 0, 0, 0), Tam_time_period(3600, 0));
    EXPECT_EQ(Tam_time() - Tam_time(), Tam_time_period::ZERO);
}

TEST(Time, now_is_the_local_clock)
{
    const auto clock = [] {
        SYSTEMTIME t;
        ::GetLocalTime(&t);
        return Tam_time_period(0, t.wHour, t.wMinute, t.wSecond, t.wMilliseconds * 1000);
    };
    const Tam_time before(clock());
    const Tam_time now = Tam_time::now();
    const Tam_time after(clock());
    // Forward distances, so that midnight may pass meanwhile.
    EXPECT_LE(now - before, after - before);
    EXPECT_EQ(now.microseconds() % 1000, 0);
}

TEST(Time, formats_other_text_as_it_is)
{
    EXPECT_EQ(text_of(Tam_time(15, 4, 9, 999999), L"%%%H%"), L"%15%");
    EXPECT_EQ(text_of(Tam_time(), L""), L"");
}

TEST(Time, formats_each_hour_as_the_run_time_does_in_each_locale)
{
    for (const char* name : {"C", "German_Germany.1252", "Japanese_Japan.932"}) {
        const tam::test::Locale locale(name);
        ASSERT_TRUE(locale) << name;
        for (int hour = 0; hour < 24; ++hour) {
            const Tam_time time(hour, 59 - hour, hour * 2, 0);
            const tm value = time;
            for (const wchar_t token : std::wstring(L"%HIMSXp")) {
                const wchar_t format[] = {L'%', token, 0};
                wchar_t expected[100];
                ASSERT_NE(std::wcsftime(expected, 100, format, &value), 0U);
                ASSERT_EQ(text_of(time, format), expected) << name << " " << hour;
            }
        }
    }
}

TEST(Time, knows_its_tokens_and_refuses_others)
{
    tam::test::expect_format_tokens(Tam_time(1, 2, 3, 4), L"%HIMSXp", std::wstring(L"hPDCuxcz\0", 9), "Tam_time", L"%S",
                                    L"a03");
}
