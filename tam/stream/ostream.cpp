#include <tam/stream/ostream.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include <tam/detail/byte_order.h>
#include <tam/status/codes.h>

namespace tam {

using detail::reversed;

namespace {

template <class Unit>
std::basic_string_view<Unit> line_end(Tam_eol eol)
{
    static constexpr Unit CR_LF[] = {'\r', '\n'};
    switch (eol) {
    case TAM_EOL_CR:
        return {CR_LF, 1};
    case TAM_EOL_LF:
        return {CR_LF + 1, 1};
    case TAM_EOL_CR_LF:
        return {CR_LF, 2};
    default: // TAM_EOL_ANY: the readers' "any of them" names none to write
        return {};
    }
}

} // namespace

Tam_ostream::Tam_ostream(Tam_buffer& buffer, Tam_status& status, Tam_eol eol)
{
    init(buffer, status, eol);
}

Tam_ostream::~Tam_ostream()
{
    detach();
}

void Tam_ostream::init(Tam_buffer& buffer, Tam_status& status, Tam_eol eol)
{
    m_eol = eol;
    m_position = 0;
    buffer.connect_ostream(status);
    if (status.ok()) {
        m_buffer = &buffer;
    }
}

void Tam_ostream::detach()
{
    if (m_buffer != nullptr) {
        std::exchange(m_buffer, nullptr)->disconnect_ostream();
    }
}

void Tam_ostream::write(unsigned int count, const void* data, Tam_status& status)
{
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return;
    }
    m_buffer->write(m_position, count, data, status);
}

void Tam_ostream::write_at(unsigned long long position, unsigned int count, const void* data, Tam_status& status) const
{
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return;
    }
    m_buffer->write(position, count, data, status);
}

void Tam_ostream::write_le(short value, Tam_status& status)
{
    write(sizeof value, &value, status);
}

void Tam_ostream::write_le(unsigned short value, Tam_status& status)
{
    write(sizeof value, &value, status);
}

void Tam_ostream::write_le(int value, Tam_status& status)
{
    write(sizeof value, &value, status);
}

void Tam_ostream::write_le(unsigned int value, Tam_status& status)
{
    write(sizeof value, &value, status);
}

void Tam_ostream::write_le(const long long& value, Tam_status& status)
{
    write(sizeof value, &value, status);
}

void Tam_ostream::write_le(const unsigned long long& value, Tam_status& status)
{
    write(sizeof value, &value, status);
}

void Tam_ostream::write_be(short value, Tam_status& status)
{
    write_le(reversed(value), status);
}

void Tam_ostream::write_be(unsigned short value, Tam_status& status)
{
    write_le(reversed(value), status);
}

void Tam_ostream::write_be(int value, Tam_status& status)
{
    write_le(reversed(value), status);
}

void Tam_ostream::write_be(unsigned int value, Tam_status& status)
{
    write_le(reversed(value), status);
}

void Tam_ostream::write_be(const long long& value, Tam_status& status)
{
    write_le(reversed(value), status);
}

void Tam_ostream::write_be(const unsigned long long& value, Tam_status& status)
{
    write_le(reversed(value), status);
}

void Tam_ostream::writeln(const std::string& line, Tam_status& status)
{
    _write_line(line, status);
}

void Tam_ostream::wwriteln(const std::wstring& line, Tam_status& status)
{
    _write_line(line, status);
}

void Tam_ostream::wwriteln_le(const std::wstring& line, Tam_status& status)
{
    _write_line(line, status);
}

void Tam_ostream::wwriteln_be(const std::wstring& line, Tam_status& status)
{
    try {
        wwriteln_swapped(line, status);
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
}

void Tam_ostream::seek(Tam_seek_mode mode, int offset, Tam_status& status)
{
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return;
    }
    m_buffer->seek(mode, offset, m_position, status);
}

void Tam_ostream::seek(unsigned long long position)
{
    m_position = position;
}

unsigned long long Tam_ostream::tell() const
{
    return m_buffer == nullptr ? 0 : m_position;
}

unsigned long long Tam_ostream::size(Tam_status& status) const
{
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return 0;
    }
    unsigned long long end = 0;
    m_buffer->seek(TAM_SEEK_END, 0, end, status);
    return end;
}

// One write, also of nothing; more than one only for a text that a 32-bit count cannot hold.
void Tam_ostream::_write_text(const void* data, unsigned long long bytes, Tam_status& status)
{
    constexpr unsigned long long MOST = 0xFFFFFFFF;
    const auto* rest = static_cast<const unsigned char*>(data);
    do {
        const auto piece = static_cast<unsigned int>(std::min(bytes, MOST));
        write(piece, rest, status);
        rest += piece;
        bytes -= piece;
    } while (bytes != 0 && status.ok());
}

template <class Unit>
void Tam_ostream::_write_line(const std::basic_string<Unit>& line, Tam_status& status)
{
    _write_text(line.data(), line.size() * sizeof(Unit), status);
    const auto end = line_end<Unit>(m_eol);
    if (!end.empty() && status.ok()) {
        write(static_cast<unsigned int>(end.size() * sizeof(Unit)), end.data(), status);
    }
}

void Tam_ostream::wwriteln_swapped(std::wstring line, Tam_status& status)
{
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return;
    }
    line += line_end<wchar_t>(m_eol);
    for (wchar_t& unit : line) {
        unit = static_cast<wchar_t>(unit << 8 | unit >> 8);
    }
    _write_text(line.data(), line.size() * sizeof(wchar_t), status);
}

} // namespace tam
