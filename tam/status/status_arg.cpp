#include <tam/status/status_arg.h>

#include <cstdlib>

#include <tam/detail/win32.h>
#include <tam/text/number.h>

// The module that this code is linked into: tam.dll, or the program that holds the static library.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace tam {

namespace {

constexpr unsigned short DECIMAL = 10;
constexpr UINT TRUE_STRING = 1;
constexpr UINT FALSE_STRING = 2;
constexpr int STRING_RESOURCE_UNITS = 1024;

} // namespace

Tam_status_arg::~Tam_status_arg() = default;

const GUID Tam_null_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x01}};
const Tam_null_status_arg Tam_null_status_arg::NULL_ARGUMENT;

Tam_null_status_arg::~Tam_null_status_arg() = default;

void Tam_null_status_arg::destroy()
{
    delete this;
}

void Tam_null_status_arg::to_string(std::wstring& out) const
{
    out.clear();
}

GUID Tam_null_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_null_status_arg::clone(const void*) const
{
    return new Tam_null_status_arg(*this);
}

const GUID Tam_int_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x02}};

Tam_int_status_arg::~Tam_int_status_arg() = default;

void Tam_int_status_arg::destroy()
{
    delete this;
}

void Tam_int_status_arg::to_string(std::wstring& out) const
{
    tam_itow(static_cast<long long>(m_value), out, DECIMAL, m_format);
}

GUID Tam_int_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_int_status_arg::clone(const void*) const
{
    return new Tam_int_status_arg(*this);
}

const GUID Tam_uint_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x03}};

Tam_uint_status_arg::~Tam_uint_status_arg() = default;

void Tam_uint_status_arg::destroy()
{
    delete this;
}

void Tam_uint_status_arg::to_string(std::wstring& out) const
{
    tam_itow(static_cast<unsigned long long>(m_value), out, DECIMAL, m_format);
}

GUID Tam_uint_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_uint_status_arg::clone(const void*) const
{
    return new Tam_uint_status_arg(*this);
}

const GUID Tam_bool_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x04}};

Tam_bool_status_arg::~Tam_bool_status_arg() = default;

void Tam_bool_status_arg::destroy()
{
    delete this;
}

void Tam_bool_status_arg::to_string(std::wstring& out) const
{
    wchar_t text[STRING_RESOURCE_UNITS];
    const int length = detail::win32.load_string(reinterpret_cast<HINSTANCE>(&__ImageBase),
                                                 m_value ? TRUE_STRING : FALSE_STRING, text, STRING_RESOURCE_UNITS);
    out.assign(text, static_cast<std::size_t>(length));
}

GUID Tam_bool_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_bool_status_arg::clone(const void*) const
{
    return new Tam_bool_status_arg(*this);
}

const GUID Tam_wstring_status_arg::ID = {0x5b1f6d3a, 0x0c0e, 0x4d7b, {0x9a, 0x51, 0x3e, 0x6c, 0x27, 0x90, 0xd8, 0x05}};

Tam_wstring_status_arg::Tam_wstring_status_arg(const std::string& value)
{
    constexpr auto CANNOT_CONVERT = static_cast<std::size_t>(-1);
    const std::size_t length = std::mbstowcs(nullptr, value.c_str(), 0);
    if (length != CANNOT_CONVERT) {
        m_value.resize(length);
        std::mbstowcs(m_value.data(), value.c_str(), length);
    }
}

Tam_wstring_status_arg::~Tam_wstring_status_arg() = default;

void Tam_wstring_status_arg::destroy()
{
    delete this;
}

void Tam_wstring_status_arg::to_string(std::wstring& out) const
{
    out = m_value;
}

GUID Tam_wstring_status_arg::identity() const
{
    return ID;
}

Tam_status_arg* Tam_wstring_status_arg::clone(const void*) const
{
    return new Tam_wstring_status_arg(*this);
}

} // namespace tam
