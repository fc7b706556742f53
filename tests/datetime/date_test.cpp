#include <tests/support/test.h>

#include <tests/datetime/tokens.h>

using namespace tam;
using tam::test::Locale;

namespace {

template <class Action>
std::string refusal(Action action)
{
    return tam::test::thrown<std::invalid_argument>(action);
}

constexpr const char* INVALID_JULIAN_DAY = "Invalid Julian day.";
constexpr const char* INVALID_DATE = "Invalid day, month, year.";
constexpr const char* INVALID_CALCULATION = "Tam_date::calc_julian_day - invalid day, month, year.";

Tam_time_period days(long long count)
{
    return Tam_time_period(count * 86400, 0);
}

Tam_date stepped(Tam_date date, int steps)
{
    for (; steps > 0; --steps) {
        ++date;
    }
    for (; steps < 0; ++steps) {
        --date;
    }
    return date;
}

// A walk through the calendar, day by day.
struct Walk {
    int day = 1;
    int month = 1;
    int year = -4713;
    int day_of_year = 1;
    int weekday = 5; // 1 January 4713 BC was a Thursday: 1 January 1970 is one, 2440550 days later

    bool is_leap() const
    {
        const int y = year < 0 ? year + 1 : year;
        return y % 400 == 0 || (y % 4 == 0 && y % 100 != 0);
    }
    int length() const
    {
        if (month == 2) {
            return is_leap() ? 29 : 28;
        }
        return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
    }
    void step()
    {
        weekday = weekday % 7 + 1;
        ++day_of_year;
        if (++day <= length()) {
            return;
        }
        day = 1;
        if (++month <= 12) {
            return;
        }
        month = 1;
        day_of_year = 1;
        year = year == -1 ? 1 : year + 1;
    }
};

std::wstring text_of(const Tam_date& date, const std::wstring& format)
{
    std::wstring text = L"old";
    date.to_string(format, text);
    return text;
}

std::wstring by_run_time(const tm& value, wchar_t token)
{
    const wchar_t format[] = {L'%', token, 0};
    wchar_t text[1024];
    return std::wstring(text, std::wcsftime(text, 1024, format, &value));
}

class Thread_locale {
public:
    explicit Thread_locale(LCID locale) : m_saved(::GetThreadLocale()) { ::SetThreadLocale(locale); }
    ~Thread_locale() { ::SetThreadLocale(m_saved); }
    Thread_locale(const Thread_locale&) = delete;
    Thread_locale& operator=(const Thread_locale&) = delete;

private:
    LCID m_saved;
};

} // namespace

TEST(Date, agrees_with_a_walk_over_every_valid_day)
{
    Walk walk;
    for (int julian_day = 38; julian_day <= 13688960; ++julian_day, walk.step()) {
        int day = 0;
        int month = 0;
        int year = 0;
        Tam_date::calc_calendar_date(julian_day, day, month, year);
        if (day != walk.day || month != walk.month || year != walk.year ||
            Tam_date::calc_julian_day(day, month, year) != julian_day) {
            FAIL() << julian_day;
        }
        if (julian_day % 97 == 0 || walk.day_of_year > 364) {
            const Tam_date date(julian_day);
            ASSERT_TRUE(date.day() == day && date.month() == month && date.year() == year) << julian_day;
            ASSERT_EQ(date.day_of_year(), walk.day_of_year) << julian_day;
            ASSERT_EQ(date.weekday(), walk.weekday) << julian_day;
            ASSERT_EQ(date.is_leap_year(), walk.is_leap()) << julian_day;
            ASSERT_EQ(Tam_date::days_in_month(month, year), walk.length()) << julian_day;
            ASSERT_EQ(Tam_date::days_in_year(year), walk.is_leap() ? 366 : 365) << julian_day;
            ASSERT_EQ(Tam_date(day, month, year), date);
        }
    }
    EXPECT_TRUE(walk.day == 1 && walk.month == 1 && walk.year == 32767);
}

TEST(Date, takes_the_first_day_of_ad_for_bc)
{
    EXPECT_TRUE(Tam_date(1, 1, 1).is_bc());
    EXPECT_FALSE(Tam_date(1, 1, 1).is_ad());
    EXPECT_TRUE(Tam_date(2, 1, 1).is_ad());
    EXPECT_FALSE(Tam_date(2, 1, 1).is_bc());
    EXPECT_TRUE(Tam_date::min_date().is_bc());
}

TEST(Date, knows_what_is_valid)
{
    for (const int n : {INT_MIN, -4714, 0, 32767, INT_MAX}) {
        EXPECT_FALSE(Tam_date::is_year(n)) << n;
        EXPECT_FALSE(Tam_date::is_leap_year(n)) << n;
        EXPECT_FALSE(Tam_date::is_day_in_month(1, 1, n)) << n;
    }
    for (const int year : {-4713, -1, 1, 32766}) {
        EXPECT_TRUE(Tam_date::is_year(year)) << year;
    }
    for (const int year : {-4713, -401, -5, -1, 4, 400, 1600, 2000, 2024, 32764}) {
        EXPECT_TRUE(Tam_date::is_leap_year(year)) << year;
    }
    // -4716 would be one by the rule, but is not valid; neither is 32768.
    for (const int year : {-4717, -4, -101, -301, 1, 100, 1900, 2100, 2023, 32766, 32768, 40000}) {
        EXPECT_FALSE(Tam_date::is_leap_year(year)) << year;
    }
    EXPECT_TRUE(Tam_date::is_month(1) && Tam_date::is_month(12) && Tam_date::is_weekday(1) && Tam_date::is_weekday(7));
    EXPECT_FALSE(Tam_date::is_month(0) || Tam_date::is_month(13) || Tam_date::is_month(INT_MIN));
    EXPECT_FALSE(Tam_date::is_weekday(0) || Tam_date::is_weekday(8) || Tam_date::is_weekday(INT_MIN));
    EXPECT_TRUE(Tam_date::is_julian_day(38) && Tam_date::is_julian_day(13688960));
    EXPECT_FALSE(Tam_date::is_julian_day(37) || Tam_date::is_julian_day(13688961) || Tam_date::is_julian_day(INT_MIN));
    EXPECT_TRUE(Tam_date::is_day_in_month(29, 2, -1));
    EXPECT_FALSE(Tam_date::is_day_in_month(29, 2, 1900) || Tam_date::is_day_in_month(0, 1, 1999) ||
                 Tam_date::is_day_in_month(32, 1, 1999) || Tam_date::is_day_in_month(1, 0, 1999) ||
                 Tam_date::is_day_in_month(1, 13, 1999) || Tam_date::is_day_in_month(INT_MIN, 1, 1999) ||
                 Tam_date::is_day_in_month(1, INT_MAX, 1999));
    const int inferred[][2] = {{0, 2000}, {50, 2050},   {51, 1951},         {99, 1999},        {100, 100},
                               {-1, -1},  {1999, 1999}, {INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}};
    for (const auto& [given, expected] : inferred) {
        EXPECT_EQ(Tam_date::infer_year(given), expected);
    }
}

TEST(Date, counts_days_of_years_and_months_beyond_the_valid)
{
    EXPECT_EQ(Tam_date::days_in_year(40000), 365);
    EXPECT_EQ(Tam_date::days_in_year(INT_MIN), 365);
    EXPECT_EQ(Tam_date::days_in_month(2, 40000), 28);
    EXPECT_EQ(Tam_date::days_in_month(12, INT_MAX), 31);
    EXPECT_EQ(refusal([] { Tam_date::days_in_year(0); }), "Year 0 never existed.");
    EXPECT_EQ(refusal([] { Tam_date::days_in_month(1, 0); }), "Year 0 never existed.");
    for (const int month : {0, 13, INT_MIN, INT_MAX}) {
        EXPECT_EQ(refusal([&] { Tam_date::days_in_month(month, 0); }), "Not a valid month.");
    }
}

TEST(Date, refuses_days_that_are_none_and_stays_as_it_was)
{
    Tam_date date(5, 6, 1999);
    const int rows[][3] = {{31, 12, -4714}, {1, 1, 32767},   {29, 2, 1999},   {31, 4, 1999},
                           {0, 1, 1999},    {1, 0, 1999},    {1, 13, 1999},   {1, 1, 0},
                           {-1, -1, -1},    {INT_MAX, 1, 1}, {1, INT_MIN, 1}, {1, 1, INT_MIN}};
    for (const auto& [day, month, year] : rows) {
        EXPECT_EQ(refusal([&] { date.date(day, month, year); }), INVALID_DATE);
        EXPECT_EQ(refusal([&] { Tam_date(day, month, year); }), INVALID_DATE);
        EXPECT_EQ(refusal([&] { Tam_date::calc_julian_day(day, month, year); }), INVALID_CALCULATION);
    }
    for (const int julian_day : {37, 13688961, 0, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(refusal([&] { Tam_date{julian_day}; }), INVALID_JULIAN_DAY);
    }
    EXPECT_EQ(date, Tam_date(5, 6, 1999));
    date.date(29, 2, 2000);
    EXPECT_EQ(date.julian_day(), 2451604);
}

struct Beyond_case {
    int julian_day;
    int day;
    int month;
    int year;
};

TEST(Date, has_a_calendar_date_for_every_number)
{
    // Of what lies beyond, no year is a leap year. From -31739 down, days count backwards from a first of January, and
    // from 2147451910 up the sum wraps.
    const Beyond_case rows[] = {{37, 31, 12, -4714},          {0, 24, 11, -4714},
                                {13688961, 1, 1, 32767},      {13689690, 31, 12, 32768},
                                {13689692, 1, 1, 32769},      {-31738, 1, 1, -4800},
                                {-31739, 0, 1, -4800},        {-177834, 1, 1, -5200},
                                {2147451909, 12, 7, 5874811}, {2147451910, -192, 1, -5884410},
                                {INT_MAX, -232, 1, -5884323}, {INT_MIN, -231, 1, -5884323}};
    for (const Beyond_case& row : rows) {
        int day = 0;
        int month = 0;
        int year = 0;
        Tam_date::calc_calendar_date(row.julian_day, day, month, year);
        EXPECT_TRUE(day == row.day && month == row.month && year == row.year)
            << row.julian_day << ": " << day << "." << month << "." << year;
    }
    int day = 7;
    int month = 8;
    int year = 9;
    EXPECT_EQ(refusal([&] { Tam_date::calc_calendar_date(13689691, day, month, year); }), "Not a valid month.");
    EXPECT_TRUE(day == 7 && month == 8 && year == 9);
}

TEST(Date, steps_without_a_test_of_the_range)
{
    Tam_date date = Tam_date::max_date();
    EXPECT_EQ((++date).julian_day(), 13688961);
    EXPECT_EQ(date.day(), 1);
    EXPECT_EQ(date.month(), 1);
    EXPECT_EQ(date.year(), 32767);
    EXPECT_EQ(date.weekday(), 1);
    EXPECT_FALSE(date.is_leap_year());
    EXPECT_EQ(refusal([&] { date.day_of_year(); }), INVALID_CALCULATION);
    EXPECT_EQ(refusal([&] { static_cast<void>(static_cast<tm>(date)); }), INVALID_CALCULATION);
    std::wstring text = L"old";
    EXPECT_EQ(refusal([&] { date.to_string(L"%d", text); }), INVALID_CALCULATION);
    EXPECT_EQ(text, L"old");
    EXPECT_EQ(refusal([&] { date++; }), INVALID_JULIAN_DAY);
    EXPECT_EQ(refusal([&] { date--; }), INVALID_JULIAN_DAY);
    EXPECT_EQ(refusal([&] { date.next(1); }), INVALID_JULIAN_DAY);
    EXPECT_EQ(refusal([&] { date + days(0); }), INVALID_JULIAN_DAY);
    EXPECT_EQ(date.julian_day(), 13688961);
    EXPECT_EQ((--date)--.julian_day(), 13688960);
    EXPECT_EQ(date++.julian_day(), 13688959);
    EXPECT_EQ(date++.julian_day(), 13688960);
    EXPECT_EQ(date.julian_day(), 13688961);
    date = Tam_date::min_date();
    EXPECT_EQ(date--.julian_day(), 38);
    EXPECT_EQ(date.julian_day(), 37);
    EXPECT_EQ(date.year(), -4714);
    EXPECT_EQ(stepped(date, -36).weekday(), 3);
}

TEST(Date, adds_and_subtracts_whole_days)
{
    const Tam_date date(28, 2, 1999);
    EXPECT_EQ(date + days(1), Tam_date(1, 3, 1999));
    EXPECT_EQ(date - days(59), Tam_date(31, 12, 1998));
    EXPECT_EQ(date + Tam_time_period(0, 23, 59, 59, 999999), date);
    EXPECT_EQ(date + Tam_time_period(0, -47, 0, 0, 0), date - days(1));
    EXPECT_EQ(Tam_date::max_date() - Tam_date::min_date(), days(13688922));
    EXPECT_EQ(Tam_date::min_date() - Tam_date::max_date(), days(-13688922));
    Tam_date changed = date;
    EXPECT_EQ(((changed += days(3)) -= days(1)), Tam_date(2, 3, 1999));
    EXPECT_EQ(&(changed = changed), &changed);
    // Too far by one, and by multiples of 2^32 days, which do not wrap into the range.
    EXPECT_EQ(Tam_date::min_date() + days(13688922), Tam_date::max_date());
    for (const long long count : {13688923LL, 1LL << 32, -(1LL << 32), LLONG_MAX / 86400, LLONG_MIN / 86400}) {
        EXPECT_EQ(refusal([&] { Tam_date::min_date() + days(count); }), INVALID_JULIAN_DAY) << count;
        EXPECT_EQ(refusal([&] { Tam_date::max_date() - days(count); }), INVALID_JULIAN_DAY) << count;
        EXPECT_EQ(refusal([&] { changed += days(count); }), INVALID_JULIAN_DAY) << count;
        EXPECT_EQ(refusal([&] { changed -= days(count); }), INVALID_JULIAN_DAY) << count;
    }
    EXPECT_EQ(changed, Tam_date(2, 3, 1999));
}

TEST(Date, finds_the_next_and_previous_weekday)
{
    for (int start = 2440588; start < 2440588 + 14; ++start) {
        for (int weekday = 1; weekday <= 7; ++weekday) {
            int next = start + 1;
            while (Tam_date(next).weekday() != weekday) {
                ++next;
            }
            int previous = start - 1;
            while (Tam_date(previous).weekday() != weekday) {
                --previous;
            }
            ASSERT_EQ(Tam_date(start).next(weekday).julian_day(), next);
            ASSERT_EQ(Tam_date(start).previous(weekday).julian_day(), previous);
        }
    }
    // Only the first step is tested. 31 December 32766 is a Saturday (7), 2 January 4713 BC a Friday (6).
    EXPECT_EQ(Tam_date::max_date().next(7).julian_day(), 13688967);
    EXPECT_EQ(Tam_date(39).previous(6).julian_day(), 32);
    EXPECT_EQ(refusal([] { Tam_date::min_date().previous(1); }), INVALID_JULIAN_DAY);
    EXPECT_EQ((++Tam_date::max_date()).previous(7), Tam_date::max_date());
}

TEST(Date, finds_weekdays_of_a_month)
{
    for (const int year : {-4713, -1, 1900, 1999, 2000, 2015, 32766}) {
        for (int month = 1; month <= 12; ++month) {
            for (int weekday = 1; weekday <= 7; ++weekday) {
                std::vector<Tam_date> found;
                for (int day = 1; day <= Tam_date::days_in_month(month, year); ++day) {
                    if (const Tam_date date(day, month, year); date.weekday() == weekday) {
                        found.push_back(date);
                    }
                }
                const int count = static_cast<int>(found.size());
                for (int n = -6; n <= 6; ++n) {
                    std::optional<Tam_date> expected;
                    const int index = n > 0 ? n - 1 : count + n;
                    if (n != 0 && index >= 0 && index < count) {
                        expected = found[static_cast<unsigned int>(index)];
                    }
                    const bool leaves = n > 0 ? year == -4713 && month == 1 : year == 32766 && month == 12;
                    Tam_date date(1, 1, 1);
                    const std::string text =
                        refusal([&] { date.date(static_cast<Tam_ordinal>(n), weekday, month, year); });
                    if (leaves) {
                        EXPECT_EQ(text, INVALID_JULIAN_DAY);
                    } else if (!expected) {
                        EXPECT_TRUE(text == "Invalid week of month." || text == INVALID_JULIAN_DAY) << text;
                    } else {
                        EXPECT_EQ(text, "threw nothing");
                    }
                    ASSERT_EQ(date, !leaves && expected ? *expected : Tam_date(1, 1, 1))
                        << n << " " << weekday << " " << month << " " << year;
                }
            }
        }
    }
    EXPECT_EQ(Tam_date(TAM_ORDINAL_LAST, 1, 3, 1999), Tam_date(28, 3, 1999));
    EXPECT_EQ(Tam_date(TAM_ORDINAL_FIRST, 2, 2, 1999), Tam_date(1, 2, 1999));
    EXPECT_EQ(refusal([] { Tam_date(TAM_ORDINAL_FIFTH, 2, 2, 1999); }), "Invalid week of month.");
    EXPECT_EQ(refusal([] { Tam_date(Tam_ordinal{}, 2, 2, 1999); }), "Invalid week of month.");
}

TEST(Date, kept_oddities_of_ordinals)
{
    // From Friday 1 January 1999 53 weeks on, and from the last Friday, the 29th, 52 weeks back.
    EXPECT_EQ(Tam_date(static_cast<Tam_ordinal>(54), 6, 1, 1999), Tam_date(7, 1, 2000));
    EXPECT_EQ(Tam_date(static_cast<Tam_ordinal>(-53), 6, 1, 1999), Tam_date(30, 1, 1998));
    for (const int ordinal : {INT_MAX, INT_MIN, 613566758}) {
        EXPECT_EQ(refusal([&] { Tam_date(static_cast<Tam_ordinal>(ordinal), 6, 1, 1999); }), INVALID_JULIAN_DAY);
    }
    const Tam_ordinal first = TAM_ORDINAL_FIRST;
    EXPECT_EQ(refusal([&] { Tam_date(first, 0, 0, 0); }), "Invalid month value.");
    EXPECT_EQ(refusal([&] { Tam_date(first, 0, 13, 0); }), "Invalid month value.");
    EXPECT_EQ(refusal([&] { Tam_date(first, 0, 1, 0); }), "Invalid year value.");
    EXPECT_EQ(refusal([&] { Tam_date(first, 0, 1, 32767); }), "Invalid year value.");
    EXPECT_EQ(refusal([&] { Tam_date(first, 0, 1, 1); }), "Invalid weekday value.");
    EXPECT_EQ(refusal([&] { Tam_date(first, 8, 1, 1); }), "Invalid weekday value.");
}

TEST(Date, infers_the_year_of_a_tm)
{
    tm value{};
    value.tm_mday = 5;
    value.tm_mon = 2;
    value.tm_hour = 99;
    const int rows[][2] = {{99, 1999}, {0, 2000}, {50, 2050}, {51, 1951}, {100, 100}, {1999, 1999}, {-44, -44}};
    for (const auto& [given, year] : rows) {
        value.tm_year = given;
        EXPECT_EQ(Tam_date(value), Tam_date(5, 3, year));
    }
    for (const int month : {-1, 12, INT_MAX, INT_MIN}) {
        value.tm_mon = month;
        EXPECT_EQ(refusal([&] { Tam_date{value}; }), INVALID_DATE);
    }
}

TEST(Date, gives_a_tm_and_the_days_of_the_standard_library)
{
    const tm value = Tam_date(5, 3, -44);
    EXPECT_EQ(value.tm_mday, 5);
    EXPECT_EQ(value.tm_mon, 2);
    EXPECT_EQ(value.tm_year, -1944);
    EXPECT_EQ(value.tm_yday, 63);
    EXPECT_EQ(value.tm_wday, Tam_date(5, 3, -44).weekday() - 1);
    EXPECT_EQ(value.tm_hour | value.tm_min | value.tm_sec | value.tm_isdst, 0);
    using namespace std::chrono;
    EXPECT_EQ(static_cast<sys_days>(Tam_date(5, 3, 1999)), sys_days(5d / March / 1999));
    EXPECT_EQ(Tam_date(sys_days(5d / March / 1999)), Tam_date(5, 3, 1999));
    for (const long long day : {-2440551LL, 11248373LL, 1LL << 32, LLONG_MAX, LLONG_MIN}) {
        EXPECT_EQ(refusal([&] { Tam_date{sys_days(std::chrono::days(day))}; }), INVALID_JULIAN_DAY);
    }
}

TEST(Date, today_is_the_local_date)
{
    const auto clock = [] {
        SYSTEMTIME t;
        ::GetLocalTime(&t);
        return Tam_date(t.wDay, t.wMonth, t.wYear);
    };
    const Tam_date before = clock();
    const Tam_date today = Tam_date::today();
    EXPECT_TRUE(before <= today && today <= clock());
}

TEST(Date, formats_numbers)
{
    EXPECT_EQ(text_of(Tam_date(5, 3, -44), L"%Y-%m-%d"), L"-0044-03-05");
    EXPECT_EQ(text_of(Tam_date(5, 3, 1999), L"%Y|%m|%d|%j|%w|%U|%%"), L"1999|03|05|064|6|09|%");
    EXPECT_EQ(text_of(Tam_date(31, 12, 12345), L"%Y %j"), L"12345 365");
    EXPECT_EQ(text_of(Tam_date(1, 1, 7), L"%Y"), L"0007");
    EXPECT_EQ(text_of(Tam_date(1, 1, -4713), L"%Y %w"), L"-4713 5");
    EXPECT_EQ(text_of(Tam_date(5, 3, 1999), L"on %d%"), L"on 05%");
    EXPECT_EQ(text_of(Tam_date(), L"%%%"), L"%%");
    EXPECT_EQ(text_of(Tam_date(), L""), L"");
    EXPECT_EQ(text_of(Tam_date(), std::wstring(L"a\0b", 3)), std::wstring(L"a\0b", 3));
    std::wstring both = L"%d";
    Tam_date().to_string(both, both);
    EXPECT_EQ(both, L"");
}

TEST(Date, formats_as_the_run_time_does_in_each_locale)
{
    for (const char* name : {"C", "German_Germany.1252", "French_France", "Japanese_Japan.932"}) {
        const Locale locale(name);
        ASSERT_TRUE(locale) << name;
        // Two years, of which one is a leap year, and some far away.
        std::vector<Tam_date> dates = {Tam_date(1, 1, 1901), Tam_date(31, 12, 2999), Tam_date(29, 2, 2400)};
        for (Tam_date date(1, 1, 1999); date.year() < 2001; ++date) {
            dates.push_back(date);
        }
        for (const Tam_date& date : dates) {
            const tm value = date;
            for (const wchar_t token : std::wstring(L"%ABUabdjm")) {
                ASSERT_EQ(text_of(date, std::wstring(L"%") + token), by_run_time(value, token))
                    << name << " " << static_cast<char>(token) << " " << date.julian_day();
            }
        }
    }
    const Locale locale("German_Germany.1252");
    EXPECT_EQ(text_of(Tam_date(5, 3, 1999), L"%A, %d. %B %Y"), L"Freitag, 05. M\u00E4rz 1999");
}

TEST(Date, short_date_follows_the_locale_of_the_thread)
{
    const std::pair<LCID, const wchar_t*> rows[] = {
        {0x409, L"<03/05/1999>"}, {0x407, L"<05.03.1999>"}, {0x809, L"<05/03/1999>"}, {0x411, L"<1999/03/05>"}};
    for (const auto& [locale, expected] : rows) {
        const Thread_locale thread_locale(locale);
        EXPECT_EQ(text_of(Tam_date(5, 3, 1999), L"<%x>"), expected) << locale;
    }
    const Thread_locale thread_locale(0x407);
    EXPECT_EQ(text_of(Tam_date(5, 3, -44), L"%x"), L"05.03.-0044");
}

TEST(Date, knows_its_tokens_and_refuses_others)
{
    tam::test::expect_format_tokens(Tam_date(5, 3, 1999), L"%ABUYabdjmwx", std::wstring(L"qcHXyz \0", 8), "Tam_date",
                                    L"%d", L"a05");
}
