#include <tests/support/test.h>

#include <tests/datetime/tokens.h>

using namespace tam;

namespace {

using Zone = Tam_time_zone;

constexpr const char* INVALID_ZONE = "Tam_date_and_time::date_and_time - invalid zone.";
constexpr const char* UNKNOWN_ZONE = "Tam_time_zone::get_zone - invalid zone";
constexpr const char* INVALID_JULIAN_DAY = "Invalid Julian day.";

template <class Action>
std::string refusal(Action action)
{
    return tam::test::thrown<std::invalid_argument>(action);
}

Tam_time_period hours(int count)
{
    return Tam_time_period(0, count, 0, 0, 0);
}

Tam_date_and_time at(int hour, Zone::Zones zone)
{
    return Tam_date_and_time(Tam_date(5, 3, 1999), Tam_time(hour, 0, 0, 0), zone);
}

// By way of a period, for which the zone is not tested.
Tam_date_and_time noon_in(Zone::Zones zone)
{
    return Tam_date_and_time(static_cast<Tam_time_period>(at(12, Zone::GMT)), zone);
}

tm broken_down(int year, int month, int day, int hour)
{
    tm value{};
    value.tm_year = year;
    value.tm_mon = month;
    value.tm_mday = day;
    value.tm_hour = hour;
    value.tm_isdst = 1;
    return value;
}

std::wstring text_of(const Tam_date_and_time& value, const std::wstring& format)
{
    std::wstring text = L"old";
    value.to_string(format, text);
    return text;
}

} // namespace

TEST(Date_and_time, is_the_start_of_1970_or_what_it_is_given)
{
    EXPECT_TRUE(Tam_date_and_time().is_same_as(Tam_date_and_time(Tam_date(1, 1, 1970), Tam_time(), Zone::GMT)));
    const Tam_date_and_time value(Tam_date(5, 3, -44), Tam_time(1, 2, 3, 4), Zone::EDT);
    EXPECT_EQ(value.date(), Tam_date(5, 3, -44));
    EXPECT_EQ(value.time(), Tam_time(1, 2, 3, 4));
    EXPECT_EQ(value.zone(), Zone::EDT);
    EXPECT_TRUE(value.is_dst());
    EXPECT_FALSE(value.is_std());
    EXPECT_EQ(static_cast<Tam_time_period>(value), Tam_time_period(Tam_date(5, 3, -44).julian_day(), 1, 2, 3, 4));
    EXPECT_TRUE(Tam_date_and_time(static_cast<Tam_time_period>(value), Zone::EDT).is_same_as(value));
}

TEST(Date_and_time, counts_the_year_of_a_tm_from_1900)
{
    const Tam_date_and_time value(broken_down(99, 2, 5, 12), Zone::EST);
    EXPECT_TRUE(value.is_same_as(at(12, Zone::EST)));
    const tm back = value;
    EXPECT_EQ(back.tm_year, 99);
    EXPECT_EQ(back.tm_mon, 2);
    EXPECT_EQ(back.tm_mday, 5);
    EXPECT_EQ(back.tm_hour, 12);
    EXPECT_EQ(back.tm_min | back.tm_sec | back.tm_isdst, 0);
    EXPECT_EQ(back.tm_wday, 5);
    EXPECT_EQ(back.tm_yday, 63);
    EXPECT_EQ(Tam_date_and_time(broken_down(-1944, 2, 5, 0), Zone::GMT).date(), Tam_date(5, 3, -44));
    Tam_date_and_time assigned = at(1, Zone::JST);
    assigned = broken_down(99, 2, 5, 12);
    EXPECT_TRUE(assigned.is_same_as(at(12, Zone::JST)));
    EXPECT_EQ(refusal([&] { assigned = broken_down(99, INT_MAX, 5, 24); }), "Invalid day, month, year.");
    EXPECT_EQ(refusal([&] { assigned = broken_down(INT_MAX, 2, 5, 24); }), "Invalid day, month, year.");
    EXPECT_EQ(refusal([&] { assigned.assign(broken_down(99, 2, 5, 24), Zone::NO_ZONE); }),
              "Invalid argument to Tam_time::set()");
    EXPECT_EQ(refusal([&] { assigned.assign(broken_down(99, 2, 5, 23), Zone::NO_ZONE); }), INVALID_ZONE);
    EXPECT_TRUE(assigned.is_same_as(at(12, Zone::JST)));
}

TEST(Date_and_time, refuses_unknown_zones_and_stays_as_it_was)
{
    for (const int number : {0, 4, 24, 50, 76, -1, INT_MIN, INT_MAX}) {
        const auto zone = static_cast<Zone::Zones>(number);
        Tam_date_and_time value = at(12, Zone::EST);
        EXPECT_EQ(refusal([&] { value.assign(Tam_date(), Tam_time(), zone); }), INVALID_ZONE);
        EXPECT_EQ(refusal([&] { Tam_date_and_time(Tam_date(), Tam_time(), zone); }), INVALID_ZONE);
        EXPECT_EQ(refusal([&] { value.zone(zone); }), "Tam_date_and_time::zone - invalid zone.");
        EXPECT_TRUE(value.is_same_as(at(12, Zone::EST)));
    }
}

TEST(Date_and_time, takes_periods_of_valid_days_only)
{
    const auto from_day = [](long long day) { return Tam_time_period(day * 86400, 0); };
    const auto make = [&](const Tam_time_period& period) {
        return refusal([&] { Tam_date_and_time(period, Zone::GMT); });
    };
    Tam_date_and_time value = at(12, Zone::EST);
    for (const Tam_time_period& period :
         {from_day(37), from_day(38) - Tam_time_period(0, 1), from_day(13688961), Tam_time_period(), -from_day(38),
          from_day((1LL << 32) + 38), Tam_time_period(LLONG_MAX, 0), Tam_time_period(LLONG_MIN, 0)}) {
        EXPECT_EQ(make(period), "Tam_date_and_time::Tam_date_and_time() - time period is not a valid julian day.");
        EXPECT_EQ(refusal([&] { value = period; }),
                  "Tam_date_and_time::operator=() - time period is not a valid julian day.");
    }
    EXPECT_TRUE(value.is_same_as(at(12, Zone::EST)));
    value = from_day(13688961) - Tam_time_period(0, 1);
    EXPECT_EQ(value.date(), Tam_date::max_date());
    EXPECT_EQ(value.time(), Tam_time::max_time());
    EXPECT_EQ(value.zone(), Zone::EST);
    EXPECT_EQ(make(from_day(38)), "threw nothing");
}

TEST(Date_and_time, made_from_a_period_can_have_a_zone_that_is_none)
{
    for (const int number : {0, 4, INT_MIN}) {
        const auto zone = static_cast<Zone::Zones>(number);
        Tam_date_and_time value = noon_in(zone);
        const Tam_date_and_time same = value;
        EXPECT_EQ(value.zone(), zone);
        EXPECT_EQ(refusal([&] { value.utc(); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { same.utc(); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { value.zone(Zone::EST); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { value.is_std(); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { value.is_dst(); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { static_cast<void>(value == at(12, Zone::GMT)); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { static_cast<void>(at(12, Zone::GMT) < value); }), UNKNOWN_ZONE);
        EXPECT_EQ(refusal([&] { value.date(Tam_date()); }), INVALID_ZONE);
        EXPECT_EQ(refusal([&] { value.time(Tam_time()); }), INVALID_ZONE);
        EXPECT_TRUE(value.is_same_as(same));
        EXPECT_EQ(text_of(value, L"%H %d %%"), L"12 05 %");
    }
}

TEST(Date_and_time, replaces_one_half)
{
    Tam_date_and_time value = at(12, Zone::EST);
    value.date(Tam_date(6, 3, 1999));
    EXPECT_TRUE(value.is_same_as(Tam_date_and_time(Tam_date(6, 3, 1999), Tam_time(12, 0, 0, 0), Zone::EST)));
    value.time(Tam_time(1, 2, 3, 4));
    EXPECT_TRUE(value.is_same_as(Tam_date_and_time(Tam_date(6, 3, 1999), Tam_time(1, 2, 3, 4), Zone::EST)));
}

TEST(Date_and_time, converts_between_zones)
{
    Tam_date_and_time value = at(12, Zone::EST);
    value.zone(Zone::GMT);
    EXPECT_TRUE(value.is_same_as(at(17, Zone::GMT)));
    value.zone(Zone::JST);
    EXPECT_TRUE(value.is_same_as(Tam_date_and_time(Tam_date(6, 3, 1999), Tam_time(2, 0, 0, 0), Zone::JST)));
    const Tam_date_and_time late = at(23, Zone::EST);
    EXPECT_TRUE(late.utc().is_same_as(Tam_date_and_time(Tam_date(6, 3, 1999), Tam_time(4, 0, 0, 0), Zone::GMT)));
    EXPECT_TRUE(late.is_same_as(at(23, Zone::EST)));
    value = late;
    EXPECT_EQ(&value.utc(), &value);
    EXPECT_TRUE(value.is_same_as(late.utc()));
}

TEST(Date_and_time, compares_moments_and_ignores_zones_in_differences)
{
    const Tam_date_and_time a = at(12, Zone::EST);
    const Tam_date_and_time b = at(17, Zone::GMT);
    EXPECT_TRUE(a == b && a <= b && a >= b);
    EXPECT_FALSE(a != b || a < b || a > b || a.is_same_as(b));
    EXPECT_EQ(a - b, hours(-5));
    const Tam_date_and_time later = a + Tam_time_period(0, 1);
    EXPECT_TRUE(later > b && later >= b && later != b && b < later && b <= later);
    EXPECT_FALSE(later < b || later <= b || later == b || b > later || b >= later);
    EXPECT_FALSE(at(12, Zone::EST).is_same_as(at(12, Zone::CDT)));
    EXPECT_FALSE(at(12, Zone::EST).is_same_as(at(13, Zone::EST)));
}

TEST(Date_and_time, moves_in_its_zone_without_a_test_of_the_range)
{
    Tam_date_and_time value = at(12, Zone::EST);
    EXPECT_TRUE(
        (value + hours(13)).is_same_as(Tam_date_and_time(Tam_date(6, 3, 1999), Tam_time(1, 0, 0, 0), Zone::EST)));
    EXPECT_TRUE(((value += hours(3)) -= hours(4)).is_same_as(at(11, Zone::EST)));
    EXPECT_TRUE((value - hours(11)).is_same_as(at(0, Zone::EST)));
    // 2^32 days later there is no date, but still a time.
    value += Tam_time_period((1LL << 32) * 86400, 0);
    EXPECT_EQ(value.time(), Tam_time(11, 0, 0, 0));
    EXPECT_EQ(refusal([&] { value.date(); }), INVALID_JULIAN_DAY);
    EXPECT_EQ(refusal([&] { static_cast<void>(static_cast<tm>(value)); }), INVALID_JULIAN_DAY);
    std::wstring text;
    EXPECT_EQ(refusal([&] { value.to_string(L"%H %d", text); }), INVALID_JULIAN_DAY);
    EXPECT_EQ(text, L"11 ");
    EXPECT_EQ(value.utc().time(), Tam_time(16, 0, 0, 0));
    EXPECT_EQ(refusal([&] { (value = at(12, Zone::EST)) -= Tam_time_period(LLONG_MAX, 0), value.date(); }),
              INVALID_JULIAN_DAY);
}

TEST(Date_and_time, now_is_the_local_clock)
{
    const auto clock = [] {
        SYSTEMTIME t;
        ::GetLocalTime(&t);
        return Tam_date_and_time(Tam_date(t.wDay, t.wMonth, t.wYear),
                                 Tam_time(t.wHour, t.wMinute, t.wSecond, t.wMilliseconds * 1000), Zone::local());
    };
    if (Zone::local() == Zone::NO_ZONE) {
        GTEST_SKIP() << "the machine's zone is none of the table";
    }
    const Tam_date_and_time before = clock();
    const Tam_date_and_time now = Tam_date_and_time::now();
    EXPECT_TRUE(before <= now && now <= clock());
    EXPECT_EQ(now.zone(), Zone::local());
    EXPECT_TRUE(
        Tam_date_and_time::min_date_and_time().is_same_as(Tam_date_and_time(Tam_date(38), Tam_time(), Zone::local())));
    EXPECT_TRUE(Tam_date_and_time::max_date_and_time().is_same_as(
        Tam_date_and_time(Tam_date(13688960), Tam_time(23, 59, 59, 999999), Zone::local())));
}

TEST(Date_and_time, formats)
{
    const Tam_date_and_time value(Tam_date(5, 3, -44), Tam_time(15, 4, 9, 0), Zone::MEST);
    EXPECT_EQ(text_of(value, L"%Y-%m-%d %H:%M:%S %z"), L"-0044-03-05 15:04:09 MEST");
    EXPECT_EQ(text_of(value, L"%I %p %X|%w %j %U%%%"), L"03 PM 15:04:09|" + text_of(value, L"%w") + L" 064 09%%");
    EXPECT_EQ(text_of(at(12, Zone::GMT), L"%A %a %B %b %w"), L"Friday Fri March Mar 6");
    EXPECT_EQ(text_of(at(12, Zone::GMT), L""), L"");
    const LCID saved = ::GetThreadLocale();
    ::SetThreadLocale(0x407);
    {
        const tam::test::Locale locale("German_Germany.1252");
        std::wstring time;
        Tam_time(12, 0, 0, 0).to_string(L"%X", time);
        EXPECT_EQ(text_of(at(12, Zone::GMT), L"%c|%x"), time + L" 05.03.1999|05.03.1999");
        EXPECT_EQ(text_of(at(12, Zone::GMT), L"%B"), L"M\u00E4rz");
    }
    ::SetThreadLocale(saved);
    EXPECT_EQ(text_of(noon_in(Zone::NO_ZONE), L"<%z>"), L"<>");
    std::wstring text;
    EXPECT_EQ(refusal([&] { noon_in(static_cast<Zone::Zones>(4)).to_string(L"a%z", text); }), UNKNOWN_ZONE);
    EXPECT_EQ(text, L"a");
}

TEST(Date_and_time, knows_its_tokens_and_refuses_others)
{
    tam::test::expect_format_tokens(at(12, Zone::GMT), L"cz%HIMSXpABUYabdjmwx", std::wstring(L"qCDuPyZ \0", 9),
                                    "Tam_date_and_time", L"%d", L"a05");
}
