#include <chrono>
#include <ctime>
#include <iomanip>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <tam/datetime.h>

#include <benchmarks/benchmarks.h>

namespace tam::benchmarks {

namespace {

constexpr unsigned int SEED = 3;
constexpr std::size_t COUNT = 100'000;

struct Calendar_day {
    int day;
    int month;
    int year;
};

// The standard library's calendar behind a function of the same contract: years without a 0, arguments checked.
[[gnu::noinline]] int checked_julian_day(int day, int month, int year)
{
    const std::chrono::year_month_day date(std::chrono::year(year < 0 ? year + 1 : year),
                                           std::chrono::month(static_cast<unsigned int>(month)),
                                           std::chrono::day(static_cast<unsigned int>(day)));
    if (!Tam_date::is_year(year) || !date.ok()) {
        throw std::invalid_argument("no such day");
    }
    return static_cast<int>(std::chrono::sys_days(date).time_since_epoch().count()) + Tam_date::EPOCH;
}

[[gnu::noinline]] void checked_calendar_day(int julian_day, int& day, int& month, int& year)
{
    if (!Tam_date::is_julian_day(julian_day)) {
        throw std::invalid_argument("no such day");
    }
    const std::chrono::year_month_day date = std::chrono::sys_days(std::chrono::days(julian_day - Tam_date::EPOCH));
    day = static_cast<int>(static_cast<unsigned int>(date.day()));
    month = static_cast<int>(static_cast<unsigned int>(date.month()));
    const int astronomical = static_cast<int>(date.year());
    year = astronomical < 1 ? astronomical - 1 : astronomical;
}

void require(bool right)
{
    if (!right) {
        throw std::logic_error("the two ways differ");
    }
}

std::vector<int> julian_days()
{
    std::mt19937 random(SEED);
    std::vector<int> list(COUNT);
    for (int& day : list) {
        day = std::uniform_int_distribution(Tam_date::MIN_JULIAN_DAY, Tam_date::MAX_JULIAN_DAY)(random);
    }
    return list;
}

void compare_conversions(const std::vector<int>& days)
{
    std::vector<Calendar_day> dates(days.size());
    for (std::size_t i = 0; i < days.size(); ++i) {
        Calendar_day& date = dates[i];
        Calendar_day peer{};
        Tam_date::calc_calendar_date(days[i], date.day, date.month, date.year);
        checked_calendar_day(days[i], peer.day, peer.month, peer.year);
        require(date.day == peer.day && date.month == peer.month && date.year == peer.year);
        require(Tam_date::calc_julian_day(date.day, date.month, date.year) == days[i]);
        require(checked_julian_day(date.day, date.month, date.year) == days[i]);
    }
    const auto count = static_cast<double>(days.size());
    compare({"calc_julian_day/any_date", "dates", count,
             [&] {
                 for (const Calendar_day& date : dates) {
                     const int day = Tam_date::calc_julian_day(date.day, date.month, date.year);
                     consume(&day);
                 }
             },
             "sys_days, checked",
             [&] {
                 for (const Calendar_day& date : dates) {
                     const int day = checked_julian_day(date.day, date.month, date.year);
                     consume(&day);
                 }
             },
             ">= 0.5, stretch 1"});
    Calendar_day out{};
    compare({"calc_calendar_date/any_date", "dates", count,
             [&] {
                 for (const int day : days) {
                     Tam_date::calc_calendar_date(day, out.day, out.month, out.year);
                     consume(&out);
                 }
             },
             "year_month_day, checked",
             [&] {
                 for (const int day : days) {
                     checked_calendar_day(day, out.day, out.month, out.year);
                     consume(&out);
                 }
             },
             ">= 0.5, stretch 1"});
    compare({"Tam_date::month/any_date", "dates", count,
             [&] {
                 for (const int day : days) {
                     out.month = Tam_date(day).month();
                     consume(&out);
                 }
             },
             "year_month_day, checked",
             [&] {
                 for (const int day : days) {
                     checked_calendar_day(day, out.day, out.month, out.year);
                     consume(&out);
                 }
             },
             ">= 0.5, stretch 1"});
}

std::wstring by_put_time(const tm& value)
{
    std::wostringstream stream;
    stream << std::put_time(&value, L"%Y-%m-%d %H:%M:%S");
    return stream.str();
}

void compare_formatting()
{
    constexpr int TIMES = 20'000;
    const std::wstring format = L"%Y-%m-%d %H:%M:%S";
    const Tam_date_and_time value(Tam_date(5, 3, 1999), Tam_time(15, 4, 9, 0), Tam_time_zone::GMT);
    std::wstring text;
    value.to_string(format, text);
    require(text == by_put_time(value));
    compare({"to_string/%Y-%m-%d %H:%M:%S", "texts", TIMES,
             [&] {
                 for (int i = 0; i < TIMES; ++i) {
                     value.to_string(format, text);
                     consume(text.data());
                 }
             },
             "std::put_time",
             [&] {
                 for (int i = 0; i < TIMES; ++i) {
                     const std::wstring formatted = by_put_time(value);
                     consume(formatted.data());
                 }
             },
             ">= 2"});
    const tm broken_down = value;
    wchar_t buffer[100];
    compare({"to_string/%Y-%m-%d %H:%M:%S", "texts", TIMES,
             [&] {
                 for (int i = 0; i < TIMES; ++i) {
                     value.to_string(format, text);
                     consume(text.data());
                 }
             },
             "wcsftime, broken down before",
             [&] {
                 for (int i = 0; i < TIMES; ++i) {
                     std::wcsftime(buffer, std::size(buffer), format.c_str(), &broken_down);
                     consume(buffer);
                 }
             },
             ">= 1"});
}

} // namespace

void run_datetime_benchmarks()
{
    compare_conversions(julian_days());
    compare_formatting();
}

} // namespace tam::benchmarks
