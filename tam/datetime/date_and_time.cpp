#include <tam/datetime/date_and_time.h>

#include <chrono>
#include <optional>
#include <stdexcept>

#include <windows.h>

#include <tam/detail/time_format.h>
#include <tam/detail/wrapping.h>

namespace tam {

using namespace detail;

namespace {

constexpr int MICROSECONDS_PER_MILLISECOND = 1000;

// In all 64 bits.
bool has_valid_day(const Tam_time_period& period)
{
    const long long day = period.days();
    return day >= Tam_date::MIN_JULIAN_DAY && day <= Tam_date::MAX_JULIAN_DAY;
}

} // namespace

Tam_date_and_time::Tam_date_and_time() : Tam_date_and_time(Tam_date(), Tam_time(), Tam_time_zone::GMT) {}

Tam_date_and_time::Tam_date_and_time(const Tam_time_period& period, Zones zone) : m_zone(zone), m_period(period)
{
    if (!has_valid_day(period)) {
        throw std::invalid_argument("Tam_date_and_time::Tam_date_and_time() - time period is not a valid julian day.");
    }
}

Tam_date_and_time& Tam_date_and_time::operator=(const Tam_time_period& period)
{
    if (!has_valid_day(period)) {
        throw std::invalid_argument("Tam_date_and_time::operator=() - time period is not a valid julian day.");
    }
    m_period = period;
    return *this;
}

Tam_date_and_time& Tam_date_and_time::operator=(const tm& value)
{
    assign(value, m_zone);
    return *this;
}

void Tam_date_and_time::assign(const Tam_date& date, const Tam_time& time, Zones zone)
{
    if (!Tam_time_zone::valid_zone(zone)) {
        throw std::invalid_argument("Tam_date_and_time::date_and_time - invalid zone.");
    }
    m_period = Tam_time_period(date.julian_day(), 0, 0, 0, 0) + time;
    m_zone = zone;
}

void Tam_date_and_time::assign(const tm& value, Zones zone)
{
    const Tam_date date(value.tm_mday, wrapping_add(value.tm_mon, TM_BASE_MONTH),
                        wrapping_add(value.tm_year, TM_BASE_YEAR));
    assign(date, Tam_time(value, 0), zone);
}

Tam_date Tam_date_and_time::date() const
{
    // By way of the calendar, which has 64 bits for the day.
    return Tam_date(std::chrono::sys_days(std::chrono::days(m_period.days() - Tam_date::EPOCH)));
}

void Tam_date_and_time::zone(Zones zone)
{
    if (!Tam_time_zone::valid_zone(zone)) {
        throw std::invalid_argument("Tam_date_and_time::zone - invalid zone.");
    }
    m_period = _universal() - Tam_time_zone::get_zone(zone).offset();
    m_zone = zone;
}

Tam_date_and_time& Tam_date_and_time::utc()
{
    m_period = _universal();
    m_zone = Tam_time_zone::GMT;
    return *this;
}

Tam_date_and_time Tam_date_and_time::utc() const
{
    return Tam_date_and_time(*this).utc();
}

Tam_date_and_time::operator tm() const
{
    tm value = date();
    const Tam_time time_of_day = time();
    value.tm_sec = time_of_day.seconds();
    value.tm_min = time_of_day.minutes();
    value.tm_hour = time_of_day.hours();
    return value;
}

Tam_date_and_time& Tam_date_and_time::operator+=(const Tam_time_period& period) noexcept
{
    m_period += period;
    return *this;
}

Tam_date_and_time& Tam_date_and_time::operator-=(const Tam_time_period& period) noexcept
{
    m_period -= period;
    return *this;
}

Tam_date_and_time Tam_date_and_time::operator+(const Tam_time_period& period) const noexcept
{
    return Tam_date_and_time(*this) += period;
}

Tam_date_and_time Tam_date_and_time::operator-(const Tam_time_period& period) const noexcept
{
    return Tam_date_and_time(*this) -= period;
}

Tam_date_and_time Tam_date_and_time::now()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    return {Tam_date(now.wDay, now.wMonth, now.wYear),
            Tam_time(now.wHour, now.wMinute, now.wSecond, now.wMilliseconds * MICROSECONDS_PER_MILLISECOND),
            Tam_time_zone::local()};
}

Tam_date_and_time Tam_date_and_time::min_date_and_time()
{
    return {Tam_date::min_date(), Tam_time::min_time(), Tam_time_zone::local()};
}

Tam_date_and_time Tam_date_and_time::max_date_and_time()
{
    return {Tam_date::max_date(), Tam_time::max_time(), Tam_time_zone::local()};
}

bool Tam_date_and_time::is_format_token(wchar_t token) noexcept
{
    return token == L'c' || token == L'z' || Tam_time::is_format_token(token) || Tam_date::is_format_token(token);
}

void Tam_date_and_time::to_string(const std::wstring& format, std::wstring& result) const
{
    const tm time_value = time();
    std::optional<tm> date_value; // made when it is asked for: what has no valid date still has a time
    const auto append_date = [&](wchar_t token) {
        if (!date_value) {
            date_value = date();
        }
        append_date_token(result, token, *date_value);
    };
    append_format(format, result, [&](wchar_t token) {
        if (!is_format_token(token)) {
            throw std::invalid_argument("Tam_date_and_time::to_string - invalid format token.");
        }
        if (token == L'z') {
            if (m_zone != Tam_time_zone::NO_ZONE) {
                result += Tam_time_zone::get_zone(m_zone).name();
            }
        } else if (token == L'c') {
            append_time_token(result, L'X', time_value);
            result += L' ';
            append_date(L'x');
        } else if (Tam_time::is_format_token(token)) {
            append_time_token(result, token, time_value);
        } else {
            append_date(token);
        }
    });
}

} // namespace tam
