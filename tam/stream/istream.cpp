#include <tam/stream/istream.h>

#include <algorithm>
#include <new>
#include <typeinfo>

#include <tam/detail/byte_order.h>
#include <tam/detail/line_reader.h>
#include <tam/status/codes.h>
#include <tam/stream/buffered_istream.h>

namespace tam {

using detail::Byte_units;
using detail::Line_piece;
using detail::Wide_units_be;
using detail::Wide_units_le;

namespace {

// Gets the pieces of a line by way of a stream's read_at.
template <class Units>
class Read_at_source {
public:
    explicit Read_at_source(const Tam_istream& stream) : m_stream(stream) {}

    Line_piece next(unsigned long long position, unsigned int most_units, Tam_status& status)
    {
        const unsigned int wanted = std::min(most_units, CHUNK) * Units::SIZE;
        unsigned int delivered = 0;
        do {
            delivered +=
                std::min(m_stream.read_at(position + delivered, wanted - delivered, m_chunk + delivered, status),
                         wanted - delivered);
        } while (delivered < Units::SIZE && status.ok());
        return {m_chunk, delivered / Units::SIZE};
    }

private:
    static constexpr unsigned int CHUNK = 78; // units: short lines cost little

    const Tam_istream& m_stream;
    unsigned char m_chunk[CHUNK * Units::SIZE];
};

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

// Returns the bytes of the line with its end.
template <class Units, class Line>
unsigned long long Tam_istream::_line_at(unsigned long long position, unsigned int max, Line& line, Tam_status& status)
{
    // Serves the cache's bytes where they lie. What is not there comes by way of read_at, which fills the cache.
    struct Cache_source {
        explicit Cache_source(const Tam_buffered_istream& stream) : m_stream(stream), m_refill(stream) {}

        Line_piece next(unsigned long long from, unsigned int most_units, Tam_status& failure)
        {
            unsigned int bytes = 0;
            const unsigned char* const cached = m_stream._cached(from, bytes);
            if (bytes < Units::SIZE) {
                return m_refill.next(from, most_units, failure);
            }
            return {cached, std::min(bytes / Units::SIZE, most_units)};
        }

        const Tam_buffered_istream& m_stream;
        Read_at_source<Units> m_refill;
    };

    try {
        // A class derived from the buffered stream may have a read_at of its own, which has to be called.
        if (&typeid(*this) == &typeid(Tam_buffered_istream)) {
            Cache_source source(static_cast<const Tam_buffered_istream&>(*this));
            return detail::read_line<Units>(source, m_eol, position, max, line, status);
        }
        Read_at_source<Units> source(*this);
        return detail::read_line<Units>(source, m_eol, position, max, line, status);
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
