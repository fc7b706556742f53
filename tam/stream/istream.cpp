#include <tam/stream/istream.h>

#include <algorithm>
#include <new>
#include <typeinfo>

#include <tam/detail/byte_order.h>
#include <tam/detail/line_reader.h>
#include <tam/detail/line_source.h>
#include <tam/status/codes.h>
#include <tam/stream/buffered_istream.h>

namespace tam {

using detail::Byte_units;
using detail::Wide_units_be;
using detail::Wide_units_le;

namespace {

template <class Value>
void read_value(Tam_istream& stream, Value& value, Tam_status& status)
{
    value = 0;
    if (stream.read(sizeof value, &value, status) < sizeof value) {
        status = TAM_E_SHORT_INTEGER;
    }
}

template <class Value>
void read_reversed(Tam_istream& stream, Value& value, Tam_status& status)
{
    Value read;
    read_value(stream, read, status);
    value = detail::reversed(read);
}

} // namespace

Tam_istream::Tam_istream(const Tam_buffer&, bool wait, Tam_status&, Tam_eol eol) noexcept : m_wait(wait), m_eol(eol) {}

Tam_istream::~Tam_istream() = default;

void Tam_istream::init(const Tam_buffer&, bool wait, Tam_status&, Tam_eol eol)
{
    m_position = 0;
    m_wait = wait;
    m_eol = eol;
}

// Returns the bytes of the line with its end. One function without calls inside: most calls read a short line.
template <class Units, class Line>
[[gnu::flatten]] unsigned long long Tam_istream::_line_at(unsigned long long position, unsigned int max, Line& line,
                                                          Tam_status& status)
{
    try {
        const detail::Whole_text<Units> text(line);
        // A class derived from the buffered stream may have a read_at of its own, which has to be called.
        if (&typeid(*this) == &typeid(Tam_buffered_istream)) {
            detail::Cache_source<Units> source(static_cast<const Tam_buffered_istream&>(*this));
            return detail::read_line<Units>(source, m_eol, position, max, text, status);
        }
        detail::Read_at_source<Units> source(*this);
        return detail::read_line<Units>(source, m_eol, position, max, text, status);
    } catch (const std::bad_alloc&) {
        line.clear();
        status = TAM_E_OUT_OF_MEMORY;
        return 0;
    }
}

void Tam_istream::readln_at(unsigned long long position, unsigned int max, std::string& line, Tam_status& status)
{
    _line_at<Byte_units>(position, max, line, status);
}

void Tam_istream::wreadln_at(unsigned long long position, unsigned int max, std::wstring& line, Tam_status& status)
{
    _line_at<Wide_units_le>(position, max, line, status);
}

void Tam_istream::wreadln_le_at(unsigned long long position, unsigned int max, std::wstring& line, Tam_status& status)
{
    _line_at<Wide_units_le>(position, max, line, status);
}

void Tam_istream::wreadln_be_at(unsigned long long position, unsigned int max, std::wstring& line, Tam_status& status)
{
    _line_at<Wide_units_be>(position, max, line, status);
}

void Tam_istream::readln(unsigned int max, std::string& line, Tam_status& status)
{
    m_position += _line_at<Byte_units>(m_position, max, line, status);
}

void Tam_istream::wreadln(unsigned int max, std::wstring& line, Tam_status& status)
{
    m_position += _line_at<Wide_units_le>(m_position, max, line, status);
}

void Tam_istream::wreadln_le(unsigned int max, std::wstring& line, Tam_status& status)
{
    m_position += _line_at<Wide_units_le>(m_position, max, line, status);
}

void Tam_istream::wreadln_be(unsigned int max, std::wstring& line, Tam_status& status)
{
    m_position += _line_at<Wide_units_be>(m_position, max, line, status);
}

void Tam_istream::read_le(short& value, Tam_status& status)
{
    read_value(*this, value, status);
}

void Tam_istream::read_le(unsigned short& value, Tam_status& status)
{
    read_value(*this, value, status);
}

void Tam_istream::read_le(int& value, Tam_status& status)
{
    read_value(*this, value, status);
}

void Tam_istream::read_le(unsigned int& value, Tam_status& status)
{
    read_value(*this, value, status);
}

void Tam_istream::read_le(long long& value, Tam_status& status)
{
    read_value(*this, value, status);
}

void Tam_istream::read_le(unsigned long long& value, Tam_status& status)
{
    read_value(*this, value, status);
}

void Tam_istream::read_be(short& value, Tam_status& status)
{
    read_reversed(*this, value, status);
}

void Tam_istream::read_be(unsigned short& value, Tam_status& status)
{
    read_reversed(*this, value, status);
}

void Tam_istream::read_be(int& value, Tam_status& status)
{
    read_reversed(*this, value, status);
}

void Tam_istream::read_be(unsigned int& value, Tam_status& status)
{
    read_reversed(*this, value, status);
}

void Tam_istream::read_be(long long& value, Tam_status& status)
{
    read_reversed(*this, value, status);
}

void Tam_istream::read_be(unsigned long long& value, Tam_status& status)
{
    read_reversed(*this, value, status);
}

void Tam_istream::seek(Tam_seek_mode mode, int offset, Tam_status& status)
{
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return;
    }
    m_buffer->seek(mode, offset, m_position, status);
}

void Tam_istream::seek(unsigned long long position)
{
    m_position = position;
}

unsigned long long Tam_istream::tell() const
{
    return m_buffer == nullptr ? 0 : m_position;
}

unsigned long long Tam_istream::size(Tam_status& status) const
{
    status.clear();
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return 0;
    }
    unsigned long long end = 0;
    m_buffer->seek(TAM_SEEK_END, 0, end, status);
    return end;
}

} // namespace tam
