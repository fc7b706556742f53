#include <tam/datetime/time.h>

#include <stdexcept>
#include <string_view>

#include <windows.h>

#include <tam/detail/time_format.h>
#include <tam/detail/win32.h>

namespace tam {

namespace {

constexpr std::wstring_view FORMAT_TOKENS = L"%HIMSXp";
constexpr int MICROSECONDS_PER_MILLISECOND = 1000;

} // namespace

Tam_time::Tam_time(int seconds) : Tam_time(Tam_time_period(seconds, 0)) {}

Tam_time::Tam_time(const Tam_time_period& period) : m_period(period)
{
    adjust();
}

void Tam_time::time(int hour, int minute, int second, int microsecond)
{
    if (!valid_hour(hour) || !valid_minute(minute) || !valid_second(second) || !valid_microsecond(microsecond)) {
        throw std::invalid_argument("Invalid argument to Tam_time::set()");
    }
    m_period.set(0, hour, minute, second, microsecond);
}

void Tam_time::time(const tm& value, int microsecond)
{
    time(value.tm_hour, value.tm_min, value.tm_sec, microsecond);
}

Tam_time Tam_time::min_time() noexcept
{
    return {};
}

Tam_time Tam_time::max_time()
{
    return {23, 59, 59, 999999};
}

Tam_time Tam_time::now()
{
    SYSTEMTIME now;
    detail::win32.get_local_time(&now);
    return {now.wHour, now.wMinute, now.wSecond, now.wMilliseconds * MICROSECONDS_PER_MILLISECOND};
}

Tam_time& Tam_time::operator+=(const Tam_time_period& period) noexcept
{
    m_period += period;
    adjust();
    return *this;
}

Tam_time& Tam_time::operator-=(const Tam_time_period& period) noexcept
{
    m_period -= period;
    adjust();
    return *this;
}

Tam_time_period Tam_time::operator-(const Tam_time& other) const noexcept
{
    Tam_time_period distance = m_period - other.m_period;
    if (distance < Tam_time_period::ZERO) {
        distance += Tam_time_period(Tam_time_period::SECONDS_PER_DAY, 0);
    }
    return distance;
}

Tam_time::operator tm() const noexcept
{
    tm value{};
    value.tm_sec = seconds();
    value.tm_min = minutes();
    value.tm_hour = hours();
    return value;
}

bool Tam_time::is_format_token(wchar_t token) noexcept
{
    return FORMAT_TOKENS.find(token) != FORMAT_TOKENS.npos;
}

void Tam_time::to_string(const std::wstring& format, std::wstring& result) const
{
    const tm value = *this;
    detail::append_format(format, result, [&](wchar_t token) {
        if (!is_format_token(token)) {
            throw std::invalid_argument("Tam_time::to_string - invalid format token.");
        }
        detail::append_time_token(result, token, value);
    });
}

// Into one day: whole days go, and what is then below midnight belongs to the day before.
void Tam_time::adjust() noexcept
{
    const long long days = m_period.days();
    if (days != 0) {
        m_period -= Tam_time_period(days * Tam_time_period::SECONDS_PER_DAY, 0);
    }
    if (m_period < Tam_time_period::ZERO) {
        m_period += Tam_time_period(Tam_time_period::SECONDS_PER_DAY, 0);
    }
}

} // namespace tam
