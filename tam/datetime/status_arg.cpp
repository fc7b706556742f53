#include <tam/datetime/status_arg.h>

namespace tam {

const GUID Tam_time_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x06}};

Tam_time_status_arg::~Tam_time_status_arg() = default;

void Tam_time_status_arg::destroy()
{
    delete this;
}

void Tam_time_status_arg::to_string(std::wstring& out) const
{
    m_value.to_string(L"%X", out);
}

GUID Tam_time_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_time_status_arg::clone(const void*) const
{
    return new Tam_time_status_arg(*this);
}

const GUID Tam_date_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x07}};

Tam_date_status_arg::~Tam_date_status_arg() = default;

void Tam_date_status_arg::destroy()
{
    delete this;
}

void Tam_date_status_arg::to_string(std::wstring& out) const
{
    m_value.to_string(L"%x", out);
}

GUID Tam_date_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_date_status_arg::clone(const void*) const
{
    return new Tam_date_status_arg(*this);
}

const GUID Tam_date_and_time_status_arg::ID = {
    0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x08}};

Tam_date_and_time_status_arg::~Tam_date_and_time_status_arg() = default;

void Tam_date_and_time_status_arg::destroy()
{
    delete this;
}

void Tam_date_and_time_status_arg::to_string(std::wstring& out) const
{
    m_value.to_string(L"%c", out);
}

GUID Tam_date_and_time_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_date_and_time_status_arg::clone(const void*) const
{
    return new Tam_date_and_time_status_arg(*this);
}

} // namespace tam
