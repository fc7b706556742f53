#include <tam/datetime/period.h>

#include <stdexcept>

#include <tam/detail/time_format.h>
#include <tam/detail/wrapping.h>

namespace tam {

using namespace detail;

namespace {

constexpr int MICROSECONDS_PER_HUNDREDTH = 10000;

bool same_signs(long long a, int b)
{
    return (a >= 0 && b >= 0) || (a <= 0 && b <= 0);
}

[[noreturn]] void refuse_period()
{
    throw std::invalid_argument("Invalid time period given to Tam_time_period::set()");
}

// Numbers are printed from their low 32 bits.
void append_total(std::wstring& text, long long number, int width)
{
    append_number(text, static_cast<int>(number), width);
}

} // namespace

constinit const Tam_time_period Tam_time_period::ZERO;

void Tam_time_period::set(long long seconds, int microseconds)
{
    if (!same_signs(seconds, microseconds)) {
        refuse_period();
    }
    m_seconds = seconds;
    m_microseconds = microseconds;
    adjust_me();
}

void Tam_time_period::set(int days, int hours, int minutes, int seconds, int microseconds)
{
    const bool none_below = days >= 0 && hours >= 0 && minutes >= 0 && seconds >= 0 && microseconds >= 0;
    const bool none_above = days <= 0 && hours <= 0 && minutes <= 0 && seconds <= 0 && microseconds <= 0;
    if (!none_below && !none_above) {
        refuse_period();
    }
    // The products of hours and minutes are 32 bits wide on purpose.
    m_seconds = static_cast<long long>(days) * SECONDS_PER_DAY + microseconds / MICROSECONDS_PER_SECOND +
                static_cast<long long>(wrapping_multiply(hours, SECONDS_PER_HOUR)) +
                static_cast<long long>(wrapping_multiply(minutes, SECONDS_PER_MINUTE)) + seconds;
    m_microseconds = microseconds % MICROSECONDS_PER_SECOND;
    adjust_me();
}

void Tam_time_period::set(const timeval& value)
{
    set(value.tv_sec, static_cast<int>(value.tv_usec));
}

Tam_time_period::operator timeval() const noexcept
{
    timeval value{};
    value.tv_sec = static_cast<int>(m_seconds);
    value.tv_usec = m_microseconds;
    return value;
}

Tam_time_period& Tam_time_period::operator+=(const Tam_time_period& other) noexcept
{
    m_seconds = wrapping_add(m_seconds, other.m_seconds);
    m_microseconds = wrapping_add(m_microseconds, other.m_microseconds);
    adjust_me();
    return *this;
}

Tam_time_period& Tam_time_period::operator-=(const Tam_time_period& other) noexcept
{
    m_seconds = wrapping_subtract(m_seconds, other.m_seconds);
    m_microseconds = wrapping_subtract(m_microseconds, other.m_microseconds);
    adjust_me();
    return *this;
}

Tam_time_period& Tam_time_period::operator*=(int factor) noexcept
{
    m_seconds = wrapping_multiply(m_seconds, static_cast<long long>(factor));
    m_microseconds = wrapping_multiply(m_microseconds, factor);
    adjust_me();
    return *this;
}

Tam_time_period& Tam_time_period::operator/=(int divisor)
{
    _set_total(wrapping_divide(_total(), static_cast<long long>(divisor)));
    return *this;
}

Tam_time_period& Tam_time_period::operator%=(int divisor)
{
    _set_total(wrapping_remainder(_total(), static_cast<long long>(divisor)));
    return *this;
}

Tam_time_period Tam_time_period::operator-() const
{
    return Tam_time_period(wrapping_negate(m_seconds), wrapping_negate(m_microseconds));
}

void Tam_time_period::to_string(const std::wstring& format, std::wstring& result) const
{
    const long long second = m_seconds % SECONDS_PER_MINUTE;
    const int hundredths = m_microseconds / MICROSECONDS_PER_HUNDREDTH;
    append_format(format, result, [&](wchar_t token) {
        switch (token) {
        case L'%':
            result += L'%';
            break;
        case L'C':
            append_total(result, hundredths, 2);
            break;
        case L'D':
            append_total(result, days(), 1);
            break;
        case L'H':
            append_total(result, hours(), 2);
            break;
        case L'M':
            append_total(result, minutes(), 2);
            break;
        case L'S':
            append_total(result, second, 2);
            break;
        case L'u':
            append_total(result, m_microseconds, 1);
            break;
        case L'P':
            if (days() != 0) {
                append_total(result, days(), 1);
                result += L' ';
            }
            append_total(result, hours(), 2);
            result += L':';
            append_total(result, minutes(), 2);
            result += L':';
            append_total(result, second, 2);
            result += L'.';
            append_total(result, hundredths, 2);
            break;
        default:
            throw std::invalid_argument("Tam_time_period::to_string - invalid format token.");
        }
    });
}

// Carries whole seconds out of the microseconds and makes the signs agree. Meant: the borrow works on the microseconds
// before they are reduced, so that a wrapped product can keep parts of opposite signs.
void Tam_time_period::adjust_me() noexcept
{
    long long seconds = wrapping_add(m_seconds, static_cast<long long>(m_microseconds / MICROSECONDS_PER_SECOND));
    int microseconds = m_microseconds;
    if (seconds < 0 && microseconds > 0) {
        ++seconds;
        microseconds -= MICROSECONDS_PER_SECOND;
    } else if (seconds > 0 && microseconds < 0) {
        --seconds;
        microseconds += MICROSECONDS_PER_SECOND;
    }
    if (seconds != m_seconds) {
        m_seconds = seconds;
        m_microseconds = microseconds % MICROSECONDS_PER_SECOND;
    }
}

long long Tam_time_period::_total() const noexcept
{
    return wrapping_add(wrapping_multiply(m_seconds, static_cast<long long>(MICROSECONDS_PER_SECOND)),
                        static_cast<long long>(m_microseconds));
}

void Tam_time_period::_set_total(long long microseconds) noexcept
{
    m_seconds = microseconds / MICROSECONDS_PER_SECOND;
    m_microseconds = static_cast<int>(microseconds % MICROSECONDS_PER_SECOND);
}

} // namespace tam
