#pragma once

/// @file
/// Dates and times as arguments of a status. Each argument keeps a copy of the value it is made from.

#include <string>

#include <tam/datetime/date.h>
#include <tam/datetime/date_and_time.h>
#include <tam/datetime/time.h>
#include <tam/detail/export.h>
#include <tam/status/status_arg.h>

namespace tam {

/// A time of day; renders as Tam_time::to_string() with "%X", the locale's form.
class TAM_API Tam_time_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    Tam_time_status_arg(const Tam_time& value) : m_value(value) {}
    Tam_time_status_arg(const Tam_time_status_arg&) = default;
    Tam_time_status_arg& operator=(const Tam_time_status_arg&) = default;
    ~Tam_time_status_arg() override;

    /// The value that it was made from.
    const Tam_time& value() const { return m_value; }

    void destroy() override;
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    Tam_time m_value;
};

/// A date; renders as Tam_date::to_string() with "%x", the locale's short form.
class TAM_API Tam_date_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    Tam_date_status_arg(const Tam_date& value) : m_value(value) {}
    Tam_date_status_arg(const Tam_date_status_arg&) = default;
    Tam_date_status_arg& operator=(const Tam_date_status_arg&) = default;
    ~Tam_date_status_arg() override;

    /// The value that it was made from.
    const Tam_date& value() const { return m_value; }

    void destroy() override;

    /// Sets out to the text.
    /// @throws std::invalid_argument  as Tam_date::to_string() does for a date beyond the valid range
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    Tam_date m_value;
};

/// A date and time; renders as Tam_date_and_time::to_string() with "%c", the locale's forms without the zone.
class TAM_API Tam_date_and_time_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    Tam_date_and_time_status_arg(const Tam_date_and_time& value) : m_value(value) {}
    Tam_date_and_time_status_arg(const Tam_date_and_time_status_arg&) = default;
    Tam_date_and_time_status_arg& operator=(const Tam_date_and_time_status_arg&) = default;
    ~Tam_date_and_time_status_arg() override;

    /// The value that it was made from.
    const Tam_date_and_time& value() const { return m_value; }

    void destroy() override;

    /// Sets out to the text.
    /// @throws std::invalid_argument  as Tam_date_and_time::to_string() does for a date beyond the valid range
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    Tam_date_and_time m_value;
};

} // namespace tam
