#pragma once

#include <chrono>
#include <ctime>
#include <string>

#include <tam/datetime/period.h>
#include <tam/detail/export.h>

namespace tam {

/// Which of the four or five days of one name in a month is meant. Any number may be cast to it: n above 0 is the n-th
/// from the start of the month, -1 the last, -2 the one before it. 0 is one week after the last, and so never in the
/// month.
enum Tam_ordinal : int {
    TAM_ORDINAL_FIRST = 1,
    TAM_ORDINAL_SECOND = 2,
    TAM_ORDINAL_THIRD = 3,
    TAM_ORDINAL_FOURTH = 4,
    TAM_ORDINAL_FIFTH = 5, ///< not in every month
    TAM_ORDINAL_LAST = -1,
    TAM_ORDINAL_LAST_BUT_ONE = -2,
};

/// A calendar day, without time of day: one Julian Day Number.
///
/// Days are counted in the Gregorian calendar for all years, also those before it was introduced. Years are numbered as
/// historians do: -1 is 1 BC, and there is no year 0. Valid are the days from 1 January 4713 BC (Julian day 38) to 31
/// December 32766 (13688960); the prefix operators ++ and -- can leave that range. Months are 1 to 12, weekdays 1
/// (Sunday) to 7 (Saturday).
///
/// A date beyond the range still has a day(), month() and year(). They are counted as if no year below -4713 or above
/// 32766 were a leap year, so the last days of one have a wrong number, and the very last throws "Not a valid month.".
/// day_of_year(), the conversion to a tm and to_string() throw "Tam_date::calc_julian_day - invalid day, month, year."
/// for years that are not valid.
///
/// Failures are thrown as std::invalid_argument with the texts named below, and leave the date as it was. A date has no
/// lock: several threads may read one, and each may change its own.
class TAM_API Tam_date {
public:
    /// The first and the last valid year and day.
    static constexpr int MIN_YEAR = -4713;
    static constexpr int MAX_YEAR = 32766;
    static constexpr int MIN_JULIAN_DAY = 38;
    static constexpr int MAX_JULIAN_DAY = 13688960;

    /// Of the calendar.
    static constexpr int MONTHS_PER_YEAR = 12;
    static constexpr int DAYS_PER_WEEK = 7;

    /// Julian day of 1 January 1970.
    static constexpr int EPOCH = 2440588;

    /// True for -4713 to 32766, but for 0.
    static constexpr bool is_year(int year) noexcept { return year >= MIN_YEAR && year <= MAX_YEAR && year != 0; }

    /// True for 1 to 12.
    static constexpr bool is_month(int month) noexcept { return month >= 1 && month <= MONTHS_PER_YEAR; }

    /// True for 1 (Sunday) to 7 (Saturday).
    static constexpr bool is_weekday(int weekday) noexcept { return weekday >= 1 && weekday <= DAYS_PER_WEEK; }

    /// True for 38 to 13688960.
    static constexpr bool is_julian_day(int julian_day) noexcept
    {
        return julian_day >= MIN_JULIAN_DAY && julian_day <= MAX_JULIAN_DAY;
    }

    /// Whether a valid year has 366 days; false for a year that is not valid. Of the years BC, -1, -5, -9 ... are those
    /// divisible by 4.
    static constexpr bool is_leap_year(int year) noexcept
    {
        if (!is_year(year)) {
            return false;
        }
        const int astronomical = year < 0 ? year + 1 : year;
        return astronomical % 100 != 0 ? astronomical % 4 == 0 : astronomical % 400 == 0;
    }

    /// Whether there is such a day.
    static bool is_day_in_month(int day, int month, int year) noexcept;

    /// 366 for a leap year, else 365, also when the year is not valid.
    /// @throws std::invalid_argument  "Year 0 never existed."
    static int days_in_year(int year);

    /// Number of days, for any year but 0; one that is not valid counts as no leap year.
    /// @throws std::invalid_argument  "Not a valid month.", then "Year 0 never existed."
    static int days_in_month(int month, int year);

    /// The Julian day of a date.
    /// @throws std::invalid_argument  "Tam_date::calc_julian_day - invalid day, month, year."
    static int calc_julian_day(int day, int month, int year);

    /// The date of a Julian day, which may be any number; beyond the valid ones the result is as the class describes, and
    /// from -31739 down it names no day.
    /// @throws std::invalid_argument  "Not a valid month.": the last day of what would be a leap year if it were a valid
    ///                                one; day, month and year are unchanged
    static void calc_calendar_date(int julian_day, int& day, int& month, int& year);

    /// A two-digit year made whole: 0 to 50 give 2000 to 2050, 51 to 99 give 1951 to 1999. Any other is returned as it is.
    static constexpr int infer_year(int year) noexcept
    {
        if (year >= 0 && year <= 50) {
            return year + 2000;
        }
        return year >= 51 && year <= 99 ? year + 1900 : year;
    }

    /// True for the characters that to_string() takes after a `%`.
    static bool is_format_token(wchar_t token) noexcept;

    /// The system's local date.
    static Tam_date today();

    /// 1 January 4713 BC.
    static Tam_date min_date();

    /// 31 December 32766.
    static Tam_date max_date();

    /// 1 January 1970.
    constexpr Tam_date() noexcept = default;

    /// The day of that number.
    /// @throws std::invalid_argument  "Invalid Julian day."
    Tam_date(int julian_day) : Tam_date(_checked(julian_day)) {}

    /// date(day, month, year).
    Tam_date(int day, int month, int year) { date(day, month, year); }

    /// date(ordinal, weekday, month, year).
    Tam_date(const Tam_ordinal& ordinal, int weekday, int month, int year) { date(ordinal, weekday, month, year); }

    /// The day tm_mday of month tm_mon + 1 of the year infer_year(tm_year). The year is not counted from 1900, on
    /// purpose: 99 is 1999, 0 to 50 are 2000 to 2050, and 100 is the year 100. The other fields are not read.
    /// @throws std::invalid_argument  "Invalid day, month, year."
    Tam_date(const tm& value) { date(value); }

    /// That day, counted from 1 January 1970.
    /// @throws std::invalid_argument  "Invalid Julian day."
    explicit Tam_date(std::chrono::sys_days day);

    /// Becomes that day.
    /// @throws std::invalid_argument  "Invalid day, month, year."
    void date(int day, int month, int year);

    /// Becomes the first, second ... or last day of that name in a month: the last Sunday in March is
    /// date(TAM_ORDINAL_LAST, 1, 3, year).
    ///
    /// Only the number of the month is compared with the result, kept so: an ordinal that leads to the same month of
    /// another year is accepted. The search steps outside the month, so that one from the start of January -4713 or from
    /// the end of December 32766 throws "Invalid Julian day.".
    /// @throws std::invalid_argument  "Invalid month value.", "Invalid year value.", "Invalid weekday value.", then
    ///                                "Invalid Julian day.": the way leads out of the valid days; "Invalid week of
    ///                                month.": the month has no such day
    void date(const Tam_ordinal& ordinal, int weekday, int month, int year);

    /// The day's number; outside the valid ones for a date beyond the range.
    int julian_day() const noexcept { return m_julian_day; }

    /// The day of the month, 1 to 31.
    int day() const;

    /// 1 to 12.
    int month() const;

    /// -4713 to 32766, never 0.
    int year() const;

    /// 1 to 366.
    int day_of_year() const;

    /// 1 (Sunday) to 7 (Saturday).
    int weekday() const noexcept;

    /// Whether year() has 366 days.
    bool is_leap_year() const { return is_leap_year(year()); }

    /// True up to 1 January of AD 1 (Julian day 1721426), on purpose: that day is taken for BC.
    bool is_bc() const noexcept { return m_julian_day <= LAST_DAY_BC; }

    /// True from 2 January of AD 1 on.
    bool is_ad() const noexcept { return !is_bc(); }

    /// tm_year counts from 1900, as usual; the time of day and tm_isdst are 0.
    operator tm() const;

    /// The same day, counted from 1 January 1970.
    explicit operator std::chrono::sys_days() const noexcept
    {
        return std::chrono::sys_days(std::chrono::days(m_julian_day - EPOCH));
    }

    /// That many whole days later or earlier: period.days(), which leaves out a part of a day.
    /// @throws std::invalid_argument  "Invalid Julian day."
    Tam_date operator+(const Tam_time_period& period) const { return _checked(m_julian_day + period.days()); }
    Tam_date operator-(const Tam_time_period& period) const { return _checked(m_julian_day - period.days()); }
    Tam_date& operator+=(const Tam_time_period& period) { return *this = *this + period; }
    Tam_date& operator-=(const Tam_time_period& period) { return *this = *this - period; }

    /// The days from other to this date; negative when other is later.
    Tam_time_period operator-(const Tam_date& other) const;

    /// One day later or earlier, without a test of the range.
    Tam_date& operator++() noexcept
    {
        m_julian_day = _wrapped(1);
        return *this;
    }
    Tam_date& operator--() noexcept
    {
        m_julian_day = _wrapped(-1);
        return *this;
    }

    /// One day later or earlier; returns the date before. That one must be valid, the new one need not be.
    /// @throws std::invalid_argument  "Invalid Julian day."
    Tam_date operator++(int);
    Tam_date operator--(int);

    /// Comparisons of the days.
    bool operator==(const Tam_date& other) const noexcept { return m_julian_day == other.m_julian_day; }
    bool operator!=(const Tam_date& other) const noexcept { return m_julian_day != other.m_julian_day; }
    bool operator<(const Tam_date& other) const noexcept { return m_julian_day < other.m_julian_day; }
    bool operator>(const Tam_date& other) const noexcept { return m_julian_day > other.m_julian_day; }
    bool operator<=(const Tam_date& other) const noexcept { return !(*this > other); }
    bool operator>=(const Tam_date& other) const noexcept { return !(*this < other); }

    /// The first date after this one with that weekday. It may lie beyond the valid range, which is not tested.
    /// @param weekday  1 to 7, which is not tested: no day has any other, and the result means nothing then
    /// @throws std::invalid_argument  "Invalid Julian day.": this date is not valid
    Tam_date next(int weekday) const;

    /// The last date before this one with that weekday. It may lie beyond the valid range, which is not tested but for
    /// the first step.
    /// @param weekday  1 to 7, which is not tested: no day has any other, and the result means nothing then
    /// @throws std::invalid_argument  "Invalid Julian day.": the day before this one is not valid
    Tam_date previous(int weekday) const;

    /// Replaces result by the format, in which these tokens stand for parts of the date:
    ///
    ///     %%  a percent sign, as is a % at the very end of the format
    ///     %a  name of the day, short       %A  name of the day
    ///     %b  name of the month, short     %B  name of the month
    ///     %d  day of the month, 01 to 31   %j  day of the year, 001 to 366
    ///     %m  month, 01 to 12              %U  week of the year, 00 to 53; a week starts on Sunday
    ///     %w  weekday, 1 (Sunday) to 7     %Y  year, at least four digits: 44 BC is -0044
    ///     %x  the short date
    ///
    /// Names are those of the C run-time's current locale (wcsftime). The short date has "%d", "%m" and "%Y" in the order and
    /// with the separator of the calling thread's locale (LOCALE_IDATE, LOCALE_SDATE), or is "%d/%m/%Y" where one of them
    /// cannot be read or the order is not one of the three known.
    /// @throws std::invalid_argument  "Tam_date::to_string - invalid format token.": another character after %; result
    ///                                holds the text up to there
    void to_string(const std::wstring& format, std::wstring& result) const;

protected:
    /// The setter of Tam_date(const tm&).
    void date(const tm& value);

private:
    struct Unchecked {};
    constexpr Tam_date(int julian_day, Unchecked) noexcept : m_julian_day(julian_day) {}

    static constexpr int LAST_DAY_BC = 1721426; // 1 January AD 1 is counted in, on purpose

    static Tam_date _checked(long long julian_day);
    int _wrapped(int days) const noexcept
    {
        return static_cast<int>(static_cast<unsigned int>(m_julian_day) + static_cast<unsigned int>(days));
    }

    int m_julian_day = EPOCH;
};

} // namespace tam
