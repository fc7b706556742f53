#pragma once

#include <ctime>
#include <string>

#include <tam/datetime/period.h>
#include <tam/detail/export.h>

namespace tam {

/// A time of day: a period since midnight that is kept within one day by wrapping, so that 23:00 plus two hours is
/// 01:00. It knows no date and no zone.
///
/// A time has no lock: several threads may read one, and each may change its own.
class TAM_API Tam_time {
public:
    /// Midnight.
    constexpr Tam_time() noexcept = default;

    /// That many seconds after midnight, wrapped into one day: -3600 is 23:00.
    Tam_time(int seconds);

    /// time(hour, minute, second, microsecond).
    Tam_time(int hour, int minute, int second, int microsecond) { time(hour, minute, second, microsecond); }

    /// time(value, microsecond).
    Tam_time(const tm& value, int microsecond) { time(value, microsecond); }

    /// The period since midnight, wrapped into one day: -25 hours is 23:00.
    Tam_time(const Tam_time_period& period);

    /// Becomes this time of day.
    /// @throws std::invalid_argument  "Invalid argument to Tam_time::set()": a part is not valid; the time is unchanged
    void time(int hour, int minute, int second, int microsecond);

    /// time(value.tm_hour, value.tm_min, value.tm_sec, microsecond); the other fields are not read.
    /// @throws std::invalid_argument  as that does; a leap second, 60, is not valid
    void time(const tm& value, int microsecond);

    /// True for 0 to 23.
    static constexpr bool valid_hour(int hour) noexcept { return hour >= 0 && hour <= 23; }

    /// True for 0 to 59.
    static constexpr bool valid_minute(int minute) noexcept { return minute >= 0 && minute <= 59; }

    /// True for 0 to 59.
    static constexpr bool valid_second(int second) noexcept { return second >= 0 && second <= 59; }

    /// True for 0 to 999999. Negative values are not valid here, unlike for a period.
    static constexpr bool valid_microsecond(int microsecond) noexcept
    {
        return microsecond >= 0 && microsecond < Tam_time_period::MICROSECONDS_PER_SECOND;
    }

    /// 00:00:00.000000
    static Tam_time min_time() noexcept;

    /// 23:59:59.999999
    static Tam_time max_time();

    /// The system's local time of day, to the millisecond.
    static Tam_time now();

    /// The hour of the day, 0 to 23.
    int hours() const noexcept { return static_cast<int>(m_period.hours()); }

    /// The minute of the hour, 0 to 59.
    int minutes() const noexcept { return static_cast<int>(m_period.minutes() % 60); }

    /// The second of the minute, 0 to 59.
    int seconds() const noexcept { return static_cast<int>(m_period.seconds() % 60); }

    /// The microsecond of the second, 0 to 999999.
    int microseconds() const noexcept { return m_period.microseconds(); }

    /// True from 12:00:00.000000 on.
    bool is_pm() const noexcept { return hours() >= 12; }
    /// True before that.
    bool is_am() const noexcept { return !is_pm(); }

    /// That period later or earlier, wrapped into one day.
    Tam_time& operator+=(const Tam_time_period& period) noexcept;
    Tam_time& operator-=(const Tam_time_period& period) noexcept;
    Tam_time operator+(const Tam_time_period& period) const noexcept { return Tam_time(*this) += period; }
    Tam_time operator-(const Tam_time_period& period) const noexcept { return Tam_time(*this) -= period; }

    /// How long it takes from other forward to this time of day, over midnight when need be: 0 to just under 24 hours.
    Tam_time_period operator-(const Tam_time& other) const noexcept;

    /// Comparisons, midnight first.
    bool operator==(const Tam_time& other) const noexcept { return m_period == other.m_period; }
    bool operator!=(const Tam_time& other) const noexcept { return m_period != other.m_period; }
    bool operator<(const Tam_time& other) const noexcept { return m_period < other.m_period; }
    bool operator<=(const Tam_time& other) const noexcept { return m_period <= other.m_period; }
    bool operator>(const Tam_time& other) const noexcept { return m_period > other.m_period; }
    bool operator>=(const Tam_time& other) const noexcept { return m_period >= other.m_period; }

    /// tm_hour, tm_min and tm_sec; every other field is 0.
    operator tm() const noexcept;

    /// The period since midnight.
    operator Tam_time_period() const noexcept { return m_period; }

    /// True for the characters that to_string() takes after a `%`.
    static bool is_format_token(wchar_t token) noexcept;

    /// Replaces result by the format, in which these tokens stand for what the C run-time's wcsftime makes of them in
    /// its current locale:
    ///
    ///     %%  a percent sign, as is a % at the very end of the format
    ///     %H  hour, 00 to 23         %I  hour, 01 to 12
    ///     %M  minute                 %S  second
    ///     %p  the locale's AM or PM  %X  the locale's time of day
    ///
    /// @throws std::invalid_argument  "Tam_time::to_string - invalid format token.": another character after %; result
    ///                                holds the text up to there
    void to_string(const std::wstring& format, std::wstring& result) const;

private:
    void adjust() noexcept;

    Tam_time_period m_period; // 0 s <= m_period < 86400 s
};

} // namespace tam
