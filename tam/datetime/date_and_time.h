#pragma once

#include <ctime>
#include <string>

#include <tam/datetime/date.h>
#include <tam/datetime/period.h>
#include <tam/datetime/time.h>
#include <tam/datetime/time_zone.h>
#include <tam/detail/export.h>

namespace tam {

/// A date and a time of day in one of the named time zones.
///
/// It holds the number of its zone and the local time there, as a period from the start of Julian day 0. Comparisons
/// look at universal time; differences do not. Neither the zone of a value made from a period nor the result of adding a
/// period is tested at once: what needs a valid zone throws "Tam_time_zone::get_zone - invalid zone" later, and what
/// needs a valid date, "Invalid Julian day.".
///
/// Failures are thrown as std::invalid_argument with the texts named at the members, and leave the value as it was; those
/// of Tam_date and Tam_time pass through. A value has no lock: several threads may read one, and each may change its own.
class TAM_API Tam_date_and_time {
public:
    /// Numbers of zones.
    using Zones = Tam_time_zone::Zones;

    /// 1 January 1970, midnight, GMT.
    Tam_date_and_time();

    /// assign(date, time, zone).
    Tam_date_and_time(const Tam_date& date, const Tam_time& time, Zones zone) { assign(date, time, zone); }

    /// assign(value, zone).
    Tam_date_and_time(const tm& value, Zones zone) { assign(value, zone); }

    /// The moment that lies that period behind the start of Julian day 0, in the zone's local time.
    /// @param zone  not tested
    /// @throws std::invalid_argument  "Tam_date_and_time::Tam_date_and_time() - time period is not a valid julian day."
    Tam_date_and_time(const Tam_time_period& period, Zones zone);

    Tam_date_and_time(const Tam_date_and_time&) = default;
    Tam_date_and_time& operator=(const Tam_date_and_time&) = default;

    /// The period from the start of Julian day 0; the zone stays.
    /// @throws std::invalid_argument  "Tam_date_and_time::operator=() - time period is not a valid julian day."
    Tam_date_and_time& operator=(const Tam_time_period& period);

    /// assign(value, zone()).
    Tam_date_and_time& operator=(const tm& value);

    /// Becomes that local time of that zone.
    /// @throws std::invalid_argument  "Tam_date_and_time::date_and_time - invalid zone."
    void assign(const Tam_date& date, const Tam_time& time, Zones zone);

    /// The same from a tm, of which tm_year counts from 1900 here, other than in Tam_date. Day, month, year, hour, minute
    /// and second are read.
    /// @throws std::invalid_argument  "Invalid day, month, year.", "Invalid argument to Tam_time::set()", then
    ///                                "Tam_date_and_time::date_and_time - invalid zone."
    void assign(const tm& value, Zones zone);

    /// The local date.
    /// @throws std::invalid_argument  "Invalid Julian day."
    Tam_date date() const;

    /// The local time of day.
    Tam_time time() const { return m_period; }

    /// assign(date, time(), zone()).
    void date(const Tam_date& date) { assign(date, time(), m_zone); }

    /// assign(date(), time, zone()).
    void time(const Tam_time& time) { assign(date(), time, m_zone); }

    /// The number of its zone.
    Zones zone() const noexcept { return m_zone; }

    /// Becomes the local time of another zone at the same moment.
    /// @throws std::invalid_argument  "Tam_date_and_time::zone - invalid zone.", then "Tam_time_zone::get_zone - invalid
    ///                                zone": its own zone is not valid
    void zone(Zones zone);

    /// Becomes the time of zone GMT at the same moment; returns itself.
    /// @throws std::invalid_argument  "Tam_time_zone::get_zone - invalid zone"
    Tam_date_and_time& utc();

    /// The time of zone GMT at the same moment.
    /// @throws std::invalid_argument  "Tam_time_zone::get_zone - invalid zone"
    Tam_date_and_time utc() const;

    /// Whether the zone is one of standard time.
    /// @throws std::invalid_argument  "Tam_time_zone::get_zone - invalid zone"
    bool is_std() const { return Tam_time_zone::get_zone(m_zone).is_std(); }

    /// Whether the zone is one of daylight-saving time.
    /// @throws std::invalid_argument  "Tam_time_zone::get_zone - invalid zone"
    bool is_dst() const { return Tam_time_zone::get_zone(m_zone).is_dst(); }

    /// The local date and time; tm_year counts from 1900, tm_isdst is always 0.
    /// @throws std::invalid_argument  "Invalid Julian day."
    operator tm() const;

    /// From the start of Julian day 0, in local time.
    operator Tam_time_period() const noexcept { return m_period; }

    /// That much later or earlier in the same zone. The range is not tested.
    Tam_date_and_time& operator+=(const Tam_time_period& period) noexcept;
    Tam_date_and_time& operator-=(const Tam_time_period& period) noexcept;
    Tam_date_and_time operator+(const Tam_time_period& period) const noexcept;
    Tam_date_and_time operator-(const Tam_time_period& period) const noexcept;

    /// The difference of the two local times. The zones are ignored, on purpose: 12:00 EST - 17:00 GMT is -5 hours.
    Tam_time_period operator-(const Tam_date_and_time& other) const noexcept { return m_period - other.m_period; }

    /// Comparisons of the moments, in universal time.
    /// @throws std::invalid_argument  "Tam_time_zone::get_zone - invalid zone": of one of the two
    bool operator==(const Tam_date_and_time& other) const { return _universal() == other._universal(); }
    bool operator!=(const Tam_date_and_time& other) const { return !(*this == other); }
    bool operator<(const Tam_date_and_time& other) const { return _universal() < other._universal(); }
    bool operator>(const Tam_date_and_time& other) const { return _universal() > other._universal(); }
    bool operator<=(const Tam_date_and_time& other) const { return !(*this > other); }
    bool operator>=(const Tam_date_and_time& other) const { return !(*this < other); }

    /// Whether the zone and the local time are the same.
    bool is_same_as(const Tam_date_and_time& other) const noexcept
    {
        return m_zone == other.m_zone && m_period == other.m_period;
    }

    /// The system's local time, to the millisecond, in zone Tam_time_zone::local().
    /// @throws std::invalid_argument  "Tam_date_and_time::date_and_time - invalid zone.": the local zone is none of the
    ///                                table
    static Tam_date_and_time now();

    /// The first moment of Tam_date::min_date() and the last of Tam_date::max_date(), in zone Tam_time_zone::local().
    /// @throws std::invalid_argument  "Tam_date_and_time::date_and_time - invalid zone.": the local zone is none of the
    ///                                table
    static Tam_date_and_time min_date_and_time();
    static Tam_date_and_time max_date_and_time();

    /// True for the characters that to_string() takes after a `%`.
    static bool is_format_token(wchar_t token) noexcept;

    /// Replaces result by the format, in which these tokens stand for parts of the local date and time:
    ///
    ///     %%  a percent sign, as is a % at the very end of the format
    ///     %c  as "%X %x"
    ///     %z  abbreviation of the zone; nothing for NO_ZONE
    ///
    /// and all tokens of Tam_time::to_string() and Tam_date::to_string().
    /// @throws std::invalid_argument  "Tam_date_and_time::to_string - invalid format token.": another character after %;
    ///                                "Tam_time_zone::get_zone - invalid zone": %z with an unknown zone; "Invalid Julian
    ///                                day.": a token of the date, of which there is none. result holds the text up to
    ///                                there
    void to_string(const std::wstring& format, std::wstring& result) const;

private:
    Tam_time_period _universal() const { return m_period + Tam_time_zone::get_zone(m_zone).offset(); }

    Zones m_zone = Tam_time_zone::GMT;
    Tam_time_period m_period; // from the start of Julian day 0, local time
};

} // namespace tam
