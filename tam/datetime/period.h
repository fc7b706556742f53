#pragma once

#include <chrono>
#include <string>

// timeval
#ifdef __MINGW32__
#include <sys/time.h>
#else
#include <winsock2.h>
#endif

#include <tam/detail/export.h>

namespace tam {

/// A signed span of time: whole seconds (64 bits) and microseconds (32 bits).
///
/// After each operation the microseconds lie in -999999 to 999999 and have the sign of the seconds when those are not 0,
/// so that a negative period has neither part above 0 and a positive one neither below. The exceptions are products and
/// sums that leave the range of their fields: all arithmetic wraps in two's complement in the width that the operation
/// names, and what has wrapped is normalised as it stands.
///
/// Two periods are compared by their seconds first, then by their microseconds. A period has no lock: several threads
/// may read one, and each may change its own.
class TAM_API Tam_time_period {
public:
    /// How many make one of the larger unit.
    static constexpr int SECONDS_PER_MINUTE = 60;
    static constexpr int SECONDS_PER_HOUR = 3600;
    static constexpr int SECONDS_PER_DAY = 86400;
    static constexpr int MICROSECONDS_PER_SECOND = 1000000;

    /// The period 0.
    static const Tam_time_period ZERO;

    /// The period 0.
    constexpr Tam_time_period() noexcept = default;

    /// set(seconds, microseconds).
    Tam_time_period(long long seconds, int microseconds) { set(seconds, microseconds); }

    /// set(days, hours, minutes, seconds, microseconds).
    Tam_time_period(int days, int hours, int minutes, int seconds, int microseconds)
    {
        set(days, hours, minutes, seconds, microseconds);
    }

    /// set(value).
    Tam_time_period(const timeval& value) { set(value); }

    /// The same span.
    explicit Tam_time_period(std::chrono::microseconds value) noexcept { _set_total(value.count()); }

    /// set(seconds, 0); never throws.
    Tam_time_period& operator=(long long seconds)
    {
        set(seconds, 0);
        return *this;
    }

    /// set(value).
    Tam_time_period& operator=(const timeval& value)
    {
        set(value);
        return *this;
    }

    /// Becomes the sum of both. The microseconds may have any magnitude: whole seconds in them are carried over.
    /// @throws std::invalid_argument  "Invalid time period given to Tam_time_period::set()": one is above and the other
    ///                                below 0; the period is unchanged
    void set(long long seconds, int microseconds);

    /// Becomes the sum of all five; each may have any magnitude.
    ///
    /// hours * 3600 and minutes * 60 are 32-bit products, kept so: more than 596523 hours or 35791394 minutes, of either
    /// sign, wrap. Days do not.
    /// @throws std::invalid_argument  "Invalid time period given to Tam_time_period::set()": one is above and another
    ///                                below 0; the period is unchanged
    void set(int days, int hours, int minutes, int seconds, int microseconds);

    /// set(value.tv_sec, value.tv_usec).
    /// @throws std::invalid_argument  as that does
    void set(const timeval& value);

    /// True for -999999 to 999999.
    static constexpr bool valid_microsecond(int microsecond) noexcept
    {
        return microsecond > -MICROSECONDS_PER_SECOND && microsecond < MICROSECONDS_PER_SECOND;
    }

    /// Whole days, hours, minutes in the period, each of the whole period: a day has 24 hours() and 1440 minutes().
    /// Truncated toward 0: -1 hour has 0 days, -25 hours have -1.
    long long days() const noexcept { return m_seconds / SECONDS_PER_DAY; }
    long long hours() const noexcept { return m_seconds / SECONDS_PER_HOUR; }
    long long minutes() const noexcept { return m_seconds / SECONDS_PER_MINUTE; }

    /// The whole seconds of the period.
    long long seconds() const noexcept { return m_seconds; }

    /// The microseconds beside seconds(), not of the whole period.
    int microseconds() const noexcept { return m_microseconds; }

    /// tv_sec is the low 32 bits of seconds(), sign included; tv_usec is microseconds().
    operator timeval() const noexcept;

    /// The whole period in microseconds; wraps beyond some 292000 years.
    explicit operator std::chrono::microseconds() const noexcept { return std::chrono::microseconds(_total()); }

    /// Adds and subtracts both parts; wraps in their widths.
    Tam_time_period& operator+=(const Tam_time_period& other) noexcept;
    Tam_time_period& operator-=(const Tam_time_period& other) noexcept;

    /// Multiplies the seconds in 64 and the microseconds in 32 bits. The 32-bit product is kept so: with more than
    /// 2147483647 microseconds it wraps, and the result can then have parts of opposite signs.
    Tam_time_period& operator*=(int factor) noexcept;

    /// Divides the whole period in microseconds (64 bits), truncated toward 0. A divisor of 0 is not tested: it is an
    /// integer division by zero, which a thread can have translated (tam_install_exception_translator).
    Tam_time_period& operator/=(int divisor);

    /// The remainder of /=, in microseconds and with the sign of the period: 10 s `%` 3 is 1 us.
    Tam_time_period& operator%=(int divisor);

    /// As the assigning operator of the same name.
    Tam_time_period operator+(const Tam_time_period& other) const noexcept { return Tam_time_period(*this) += other; }
    Tam_time_period operator-(const Tam_time_period& other) const noexcept { return Tam_time_period(*this) -= other; }
    Tam_time_period operator*(int factor) const noexcept { return Tam_time_period(*this) *= factor; }
    Tam_time_period operator/(int divisor) const { return Tam_time_period(*this) /= divisor; }
    Tam_time_period operator%(int divisor) const { return Tam_time_period(*this) %= divisor; }

    /// set(-seconds(), -microseconds()).
    /// @throws std::invalid_argument  "Invalid time period given to Tam_time_period::set()": the parts have opposite
    ///                                signs, or seconds() is the lowest value, whose negative is itself, and
    ///                                microseconds() is not 0
    Tam_time_period operator-() const;

    /// Comparisons, by seconds and then by microseconds.
    bool operator==(const Tam_time_period& other) const noexcept
    {
        return m_seconds == other.m_seconds && m_microseconds == other.m_microseconds;
    }
    bool operator!=(const Tam_time_period& other) const noexcept { return !(*this == other); }
    bool operator<(const Tam_time_period& other) const noexcept
    {
        return m_seconds != other.m_seconds ? m_seconds < other.m_seconds : m_microseconds < other.m_microseconds;
    }
    bool operator>(const Tam_time_period& other) const noexcept { return other < *this; }
    bool operator<=(const Tam_time_period& other) const noexcept { return !(*this > other); }
    bool operator>=(const Tam_time_period& other) const noexcept { return !(*this < other); }

    /// Replaces result by the format, in which these tokens stand for parts of the period:
    ///
    ///     %%  a percent sign, as is a % at the very end of the format
    ///     %C  hundredths of a second, at least two digits
    ///     %D  days()
    ///     %H  hours(), at least two digits
    ///     %M  minutes(), at least two digits
    ///     %S  seconds() modulo 60, at least two digits
    ///     %u  microseconds()
    ///     %P  %D and a blank unless days() is 0, then %H:%M:%S.%C
    ///
    /// "%H" and "%M", also within "%P", are totals of the whole period, kept so: 1 day 02:03:04.5 is "1 26:1563:04.50". Each
    /// number is printed from its low 32 bits, and in a negative period each has its own minus sign, which counts as one
    /// of the two digits.
    /// @throws std::invalid_argument  "Tam_time_period::to_string - invalid format token.": another character after %;
    ///                                result holds the text up to there
    void to_string(const std::wstring& format, std::wstring& result) const;

private:
    void adjust_me() noexcept;
    long long _total() const noexcept;
    void _set_total(long long microseconds) noexcept;

    long long m_seconds = 0;
    int m_microseconds = 0;
};

} // namespace tam
