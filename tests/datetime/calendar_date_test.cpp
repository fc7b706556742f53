#include <tests/support/test.h>

using namespace tam;

namespace {

constexpr const char* INVALID_DAY = "Invalid day of month.";
constexpr const char* INVALID_WEEKDAY = "Invalid day of week.";
constexpr const char* INVALID_MONTH = "Invalid month of year.";
constexpr const char* INVALID_DATE = "Invalid day, month, year.";

template <class Action>
std::string refusal(Action action)
{
    return tam::test::thrown<std::invalid_argument>(action);
}

void expect_is(const Tam_calendar_date& date, int day, int week, int weekday)
{
    EXPECT_EQ(date.day(), day);
    EXPECT_EQ(date.week(), week);
    EXPECT_EQ(date.weekday(), weekday);
}

} // namespace

TEST(Calendar_date, comes_back_every_year)
{
    const Tam_calendar_date christmas(Tam_time(18, 0, 0, 0), 25, 12);
    expect_is(christmas, 25, 0, 0);
    EXPECT_EQ(christmas.date(1999), Tam_date(25, 12, 1999));
    EXPECT_EQ(christmas.date(-4713), Tam_date(25, 12, -4713));
    EXPECT_EQ(christmas.time(), Tam_time(18, 0, 0, 0));
    const Tam_calendar_date summer_time(Tam_time_period(0, 25, 0, 0, 0), TAM_ORDINAL_LAST, 1, 3);
    expect_is(summer_time, 0, -1, 1);
    EXPECT_EQ(summer_time.date(1999), Tam_date(28, 3, 1999));
    EXPECT_EQ(summer_time.date(2024), Tam_date(31, 3, 2024));
    EXPECT_EQ(summer_time.time(), Tam_time(1, 0, 0, 0));
    Tam_calendar_date copy = christmas;
    copy = summer_time;
    EXPECT_EQ(copy.date(1999), Tam_date(28, 3, 1999));
    EXPECT_EQ(copy.time(), Tam_time(1, 0, 0, 0));
}

TEST(Calendar_date, refuses_in_a_fixed_order)
{
    const Tam_time_period before_midnight(0, -1);
    const Tam_time_period noon(0, 12, 0, 0, 0);
    EXPECT_EQ(refusal([&] { Tam_calendar_date(before_midnight, 0, 0); }), "Negative time of day. ");
    EXPECT_EQ(refusal([&] { Tam_calendar_date(before_midnight, TAM_ORDINAL_FIRST, 0, 0); }), "Negative time of day. ");
    for (const int month : {0, 13, INT_MIN, INT_MAX}) {
        EXPECT_EQ(refusal([&] { Tam_calendar_date(noon, 0, month); }), INVALID_MONTH);
        EXPECT_EQ(refusal([&] { Tam_calendar_date(noon, TAM_ORDINAL_FIRST, 0, month); }), INVALID_MONTH);
    }
    for (const int day : {0, 32, INT_MIN, INT_MAX}) {
        EXPECT_EQ(refusal([&] { Tam_calendar_date(noon, day, 2); }), INVALID_DAY);
    }
    for (const int weekday : {0, 8, INT_MIN, INT_MAX}) {
        EXPECT_EQ(refusal([&] { Tam_calendar_date(noon, TAM_ORDINAL_FIRST, weekday, 2); }), INVALID_WEEKDAY);
    }
    const Tam_calendar_date date(noon, 29, 2);
    for (const int year : {0, -4714, 32767, INT_MIN, INT_MAX}) {
        EXPECT_EQ(refusal([&] { date.date(year); }), "Invalid year.");
    }
    EXPECT_EQ(refusal([&] { date.date(1999); }), INVALID_DATE);
    EXPECT_EQ(date.date(2000), Tam_date(29, 2, 2000));
    EXPECT_EQ(refusal([&] { Tam_calendar_date(noon, TAM_ORDINAL_FIFTH, 2, 2).date(1999); }), "Invalid week of month.");
    EXPECT_EQ(refusal([&] { Tam_calendar_date(noon, static_cast<Tam_ordinal>(INT_MIN), 2, 2).date(1999); }),
              "Invalid Julian day.");
}

TEST(Calendar_date, with_week_0_is_a_day_form_without_a_day)
{
    const Tam_calendar_date date(Tam_time_period(), Tam_ordinal{}, 3, 5);
    expect_is(date, 0, 0, 3);
    EXPECT_EQ(refusal([&] { date.date(1999); }), INVALID_DATE);
}

TEST(Calendar_date, setters_switch_the_form_and_failing_ones_change_nothing)
{
    Tam_calendar_date date(Tam_time_period(), 1, 2);
    date.day(31);
    EXPECT_EQ(refusal([&] { date.date(1999); }), INVALID_DATE);
    date.month(3);
    EXPECT_EQ(date.date(1999), Tam_date(31, 3, 1999));
    date.weekday(TAM_ORDINAL_LAST, 1);
    expect_is(date, 0, -1, 1);
    EXPECT_EQ(date.date(1999), Tam_date(28, 3, 1999));
    EXPECT_EQ(refusal([&] { date.day(0); }), INVALID_DAY);
    EXPECT_EQ(refusal([&] { date.day(32); }), INVALID_DAY);
    EXPECT_EQ(refusal([&] { date.weekday(TAM_ORDINAL_FIRST, 8); }), INVALID_WEEKDAY);
    EXPECT_EQ(refusal([&] { date.month(0); }), INVALID_MONTH);
    EXPECT_EQ(refusal([&] { date.when(Tam_time_period(-1, 0)); }), "Negative time of day.");
    expect_is(date, 0, -1, 1);
    EXPECT_EQ(date.date(1999), Tam_date(28, 3, 1999));
    date.when(Tam_time_period(0, 49, 30, 0, 0));
    EXPECT_EQ(date.time(), Tam_time(1, 30, 0, 0));
    date.day(5);
    expect_is(date, 5, 0, 1);
    EXPECT_EQ(date.date(1999), Tam_date(5, 3, 1999));
}
