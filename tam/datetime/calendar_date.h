#pragma once

#include <tam/datetime/date.h>
#include <tam/datetime/period.h>
#include <tam/datetime/time.h>
#include <tam/detail/export.h>

namespace tam {

/// A day that comes back every year, with a time of day: a day of a month, or a weekday of a month such as the last
/// Sunday in March.
///
/// Failures are thrown as std::invalid_argument with the texts named below, and leave the object as it was. It has no
/// lock: several threads may read one, and each may change its own.
class TAM_API Tam_calendar_date {
public:
    /// The day form.
    /// @param time   since midnight, not below 0; it may exceed one day
    /// @param day    1 to 31, whichever the month: date() tells whether a year has it
    /// @param month  1 to 12
    /// @throws std::invalid_argument  "Negative time of day. " with that blank at its end, "Invalid month of year.", then
    ///                                "Invalid day of month."
    Tam_calendar_date(const Tam_time_period& time, int day, int month);

    /// The weekday form.
    /// @param time     since midnight, not below 0; it may exceed one day
    /// @param week     which of the month, not tested; 0 makes a day form with day 0, whose date() always throws
    /// @param weekday  1 (Sunday) to 7
    /// @param month    1 to 12
    /// @throws std::invalid_argument  "Negative time of day. " with that blank at its end, "Invalid month of year.", then
    ///                                "Invalid day of week."
    Tam_calendar_date(const Tam_time_period& time, Tam_ordinal week, int weekday, int month);

    /// The day in that year.
    /// @throws std::invalid_argument  "Invalid year.", then as the constructors of Tam_date: "Invalid day, month, year.",
    ///                                "Invalid week of month." or "Invalid Julian day." when the year has no such day
    Tam_date date(int year) const;

    /// Sets the time of day, which may exceed one day.
    /// @throws std::invalid_argument  "Negative time of day.", here without a blank at its end
    void when(const Tam_time_period& time);

    /// Sets the day of the month, 1 to 31, and makes this the day form.
    /// @throws std::invalid_argument  "Invalid day of month."
    void day(int day);

    /// Sets the weekday and makes this the weekday form, with day() 0.
    /// @param week     which of the month, not tested; 0 makes a day form without a day
    /// @param weekday  1 (Sunday) to 7
    /// @throws std::invalid_argument  "Invalid day of week."
    void weekday(Tam_ordinal week, int weekday);

    /// Sets the month, 1 to 12; nothing else changes.
    /// @throws std::invalid_argument  "Invalid month of year."
    void month(int month);

    /// The time of day, wrapped into one day: 25 hours are 01:00.
    Tam_time time() const { return m_time; }

    /// The day of the month; 0 in the weekday form.
    int day() const noexcept { return m_day; }

    /// Which weekday of the month; 0 in the day form.
    Tam_ordinal week() const noexcept { return m_week; }

    /// 1 (Sunday) to 7; without meaning in the day form.
    int weekday() const noexcept { return m_weekday; }

private:
    Tam_time_period m_time;
    int m_day = 0;
    int m_weekday = 0;
    Tam_ordinal m_week = Tam_ordinal{}; // not 0: the weekday form
    int m_month = 0;
};

} // namespace tam
