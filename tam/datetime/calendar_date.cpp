#include <tam/datetime/calendar_date.h>

#include <stdexcept>

namespace tam {

namespace {

constexpr int MAX_DAY = 31;

} // namespace

Tam_calendar_date::Tam_calendar_date(const Tam_time_period& time, int day, int month) : m_time(time)
{
    if (time < Tam_time_period::ZERO) {
        throw std::invalid_argument("Negative time of day. ");
    }
    this->month(month);
    this->day(day);
}

Tam_calendar_date::Tam_calendar_date(const Tam_time_period& time, Tam_ordinal week, int weekday, int month)
    : m_time(time)
{
    if (time < Tam_time_period::ZERO) {
        throw std::invalid_argument("Negative time of day. ");
    }
    this->month(month);
    this->weekday(week, weekday);
}

Tam_date Tam_calendar_date::date(int year) const
{
    if (!Tam_date::is_year(year)) {
        throw std::invalid_argument("Invalid year.");
    }
    return m_week != 0 ? Tam_date(m_week, m_weekday, m_month, year) : Tam_date(m_day, m_month, year);
}

void Tam_calendar_date::when(const Tam_time_period& time)
{
    if (time < Tam_time_period::ZERO) {
        throw std::invalid_argument("Negative time of day.");
    }
    m_time = time;
}

void Tam_calendar_date::day(int day)
{
    if (day < 1 || day > MAX_DAY) {
        throw std::invalid_argument("Invalid day of month.");
    }
    m_day = day;
    m_week = Tam_ordinal{};
}

void Tam_calendar_date::weekday(Tam_ordinal week, int weekday)
{
    if (!Tam_date::is_weekday(weekday)) {
        throw std::invalid_argument("Invalid day of week.");
    }
    m_weekday = weekday;
    m_week = week;
    m_day = 0;
}

void Tam_calendar_date::month(int month)
{
    if (!Tam_date::is_month(month)) {
        throw std::invalid_argument("Invalid month of year.");
    }
    m_month = month;
}

} // namespace tam
