#include <tam/datetime/date.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include <windows.h>

#include <tam/detail/time_format.h>
#include <tam/detail/wrapping.h>

namespace tam {

using namespace detail;

namespace {

constexpr std::wstring_view FORMAT_TOKENS = L"%ABUYabdjmwx";
constexpr int FEBRUARY = 2;
constexpr int DAYS_PER_YEAR = 365;
constexpr int DAYS_PER_4_YEARS = 1461;
constexpr int DAYS_PER_CENTURY = 36524;
constexpr int DAYS_PER_400_YEARS = 146097;

// Astronomers have a year 0, which is 1 BC.
constexpr int astronomical(int year)
{
    return year < 0 ? year + 1 : year;
}

constexpr int historical(int astronomical_year)
{
    return astronomical_year < 1 ? astronomical_year - 1 : astronomical_year;
}

constexpr int length_of_month(int month, int year)
{
    constexpr unsigned char LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return LENGTHS[month - 1] + (month == FEBRUARY && Tam_date::is_leap_year(year) ? 1 : 0);
}

struct Calendar_date {
    int day;
    int month;
    int year;
};

// For days whose year need not be valid. Only valid years are leap years here, which the standard library does not know.
// Out of line, so that the short way of the valid days is inlined where only one part is wanted.
[[gnu::noinline, gnu::cold]] Calendar_date unchecked_calendar_date(int julian_day)
{
    constexpr int DAY_0 = 31738; // days from 1 January of the year -4799 to Julian day 0
    constexpr int YEAR_0 = -4799;
    const int days = wrapping_add(julian_day, DAY_0);
    int rest = days % DAYS_PER_400_YEARS;
    const int century = std::min(rest / DAYS_PER_CENTURY, 3);
    rest -= DAYS_PER_CENTURY * century;
    const int four_years = rest / DAYS_PER_4_YEARS + 25 * century;
    rest %= DAYS_PER_4_YEARS;
    const int year_of_four = std::min(rest / DAYS_PER_YEAR, 3);
    rest -= DAYS_PER_YEAR * year_of_four;
    const int year = historical(400 * (days / DAYS_PER_400_YEARS) + 4 * four_years + year_of_four + YEAR_0);
    int month = 1;
    for (int length = Tam_date::days_in_month(month, year); rest >= length;
         length = Tam_date::days_in_month(month, year)) {
        rest -= length;
        ++month;
    }
    return {rest + 1, month, year};
}

inline Calendar_date calendar_date(int julian_day)
{
    if (!Tam_date::is_julian_day(julian_day)) [[unlikely]] {
        return unchecked_calendar_date(julian_day);
    }
    const std::chrono::year_month_day date = std::chrono::sys_days(std::chrono::days(julian_day - Tam_date::EPOCH));
    return {static_cast<int>(static_cast<unsigned int>(date.day())),
            static_cast<int>(static_cast<unsigned int>(date.month())), historical(static_cast<int>(date.year()))};
}

// Of a day that is there.
int julian_day_of(int day, int month, int year)
{
    const std::chrono::year_month_day date(std::chrono::year(astronomical(year)),
                                           std::chrono::month(static_cast<unsigned int>(month)),
                                           std::chrono::day(static_cast<unsigned int>(day)));
    return static_cast<int>(std::chrono::sys_days(date).time_since_epoch().count()) + Tam_date::EPOCH;
}

Tam_time_period days_period(long long days)
{
    return Tam_time_period(days * Tam_time_period::SECONDS_PER_DAY, 0);
}

// Steps from one weekday forward to another, 0 to 6.
int steps_between(int from, int to)
{
    const long long steps = (static_cast<long long>(to) - from) % Tam_date::DAYS_PER_WEEK;
    return static_cast<int>(steps < 0 ? steps + Tam_date::DAYS_PER_WEEK : steps);
}

} // namespace

bool Tam_date::is_day_in_month(int day, int month, int year) noexcept
{
    return is_month(month) && is_year(year) && day >= 1 && day <= length_of_month(month, year);
}

int Tam_date::days_in_year(int year)
{
    if (year == 0) {
        throw std::invalid_argument("Year 0 never existed.");
    }
    return is_leap_year(year) ? DAYS_PER_YEAR + 1 : DAYS_PER_YEAR;
}

int Tam_date::days_in_month(int month, int year)
{
    if (!is_month(month)) {
        throw std::invalid_argument("Not a valid month.");
    }
    if (year == 0) {
        throw std::invalid_argument("Year 0 never existed.");
    }
    return length_of_month(month, year);
}

int Tam_date::calc_julian_day(int day, int month, int year)
{
    if (!is_day_in_month(day, month, year)) {
        throw std::invalid_argument("Tam_date::calc_julian_day - invalid day, month, year.");
    }
    return julian_day_of(day, month, year);
}

void Tam_date::calc_calendar_date(int julian_day, int& day, int& month, int& year)
{
    const Calendar_date date = calendar_date(julian_day);
    day = date.day;
    month = date.month;
    year = date.year;
}

bool Tam_date::is_format_token(wchar_t token) noexcept
{
    return FORMAT_TOKENS.find(token) != FORMAT_TOKENS.npos;
}

Tam_date Tam_date::today()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    return Tam_date(now.wDay, now.wMonth, now.wYear);
}

Tam_date Tam_date::min_date()
{
    return Tam_date(MIN_JULIAN_DAY);
}

Tam_date Tam_date::max_date()
{
    return Tam_date(MAX_JULIAN_DAY);
}

Tam_date::Tam_date(std::chrono::sys_days day)
    : Tam_date(_checked(wrapping_add<long long>(day.time_since_epoch().count(), EPOCH)))
{}

void Tam_date::date(int day, int month, int year)
{
    if (!is_day_in_month(day, month, year)) {
        throw std::invalid_argument("Invalid day, month, year.");
    }
    m_julian_day = julian_day_of(day, month, year);
}

void Tam_date::date(const Tam_ordinal& ordinal, int weekday, int month, int year)
{
    if (!is_month(month)) {
        throw std::invalid_argument("Invalid month value.");
    }
    if (!is_year(year)) {
        throw std::invalid_argument("Invalid year value.");
    }
    if (!is_weekday(weekday)) {
        throw std::invalid_argument("Invalid weekday value.");
    }
    Tam_date found(1, month, year);
    if (ordinal >= 1) {
        --found;
        found = found.next(weekday) + days_period((static_cast<long long>(ordinal) - 1) * DAYS_PER_WEEK);
    } else {
        found += days_period(days_in_month(month, year));
        found = found.previous(weekday) + days_period((static_cast<long long>(ordinal) + 1) * DAYS_PER_WEEK);
    }
    // The year is not compared, on purpose.
    if (found.month() != month) {
        throw std::invalid_argument("Invalid week of month.");
    }
    *this = found;
}

// The year goes through infer_year, not + 1900: 99 is 1999, 100 is the year 100.
void Tam_date::date(const tm& value)
{
    date(value.tm_mday, wrapping_add(value.tm_mon, TM_BASE_MONTH), infer_year(value.tm_year));
}

int Tam_date::day() const
{
    return calendar_date(m_julian_day).day;
}

int Tam_date::month() const
{
    return calendar_date(m_julian_day).month;
}

int Tam_date::year() const
{
    return calendar_date(m_julian_day).year;
}

int Tam_date::day_of_year() const
{
    return m_julian_day - calc_julian_day(1, 1, year()) + 1;
}

int Tam_date::weekday() const noexcept
{
    return _wrapped(1) % DAYS_PER_WEEK + 1;
}

Tam_date::operator tm() const
{
    const Calendar_date date = calendar_date(m_julian_day);
    tm value{};
    value.tm_mday = date.day;
    value.tm_mon = date.month - TM_BASE_MONTH;
    value.tm_year = date.year - TM_BASE_YEAR;
    value.tm_wday = weekday() - 1;
    value.tm_yday = m_julian_day - calc_julian_day(1, 1, date.year);
    return value;
}

Tam_time_period Tam_date::operator-(const Tam_date& other) const
{
    return Tam_time_period(wrapping_subtract(m_julian_day, other.m_julian_day), 0, 0, 0, 0);
}

Tam_date Tam_date::operator++(int)
{
    const Tam_date before(m_julian_day);
    ++*this;
    return before;
}

Tam_date Tam_date::operator--(int)
{
    const Tam_date before(m_julian_day);
    --*this;
    return before;
}

Tam_date Tam_date::next(int weekday) const
{
    Tam_date start(m_julian_day);
    ++start;
    return Tam_date(start._wrapped(steps_between(start.weekday(), weekday)), Unchecked());
}

Tam_date Tam_date::previous(int weekday) const
{
    const Tam_date start = _checked(m_julian_day - 1LL);
    return Tam_date(start._wrapped(-steps_between(weekday, start.weekday())), Unchecked());
}

void Tam_date::to_string(const std::wstring& format, std::wstring& result) const
{
    const tm value = *this;
    append_format(format, result, [&](wchar_t token) {
        if (!is_format_token(token)) {
            throw std::invalid_argument("Tam_date::to_string - invalid format token.");
        }
        append_date_token(result, token, value);
    });
}

// The test is made in 64 bits: a period of 2^32 days leads out of the range, not around it.
Tam_date Tam_date::_checked(long long julian_day)
{
    if (julian_day < MIN_JULIAN_DAY || julian_day > MAX_JULIAN_DAY) {
        throw std::invalid_argument("Invalid Julian day.");
    }
    return Tam_date(static_cast<int>(julian_day), Unchecked());
}

} // namespace tam
