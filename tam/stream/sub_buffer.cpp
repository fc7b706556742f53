#include <tam/stream/sub_buffer.h>

#include <algorithm>
#include <exception>
#include <stdexcept>

#include <tam/detail/failure.h>
#include <tam/status/codes.h>

namespace tam {

namespace {

unsigned long long end_of(unsigned long long start, int length)
{
    if (length < 0) {
        throw std::invalid_argument("Tam_sub_buffer::Tam_sub_buffer - length is less than zero");
    }
    return tam_advance(start, length);
}

} // namespace

Tam_sub_buffer::Tam_sub_buffer(const Tam_buffer& buffer, unsigned long long start, int length)
    : Tam_sub_buffer(buffer, start, end_of(start, length))
{}

Tam_sub_buffer::Tam_sub_buffer(const Tam_buffer& buffer, unsigned long long start, unsigned long long end)
    : m_buffer(buffer), m_start(start), m_end(end)
{
    if (end < start) {
        throw std::invalid_argument("Tam_sub_buffer::Tam_sub_buffer - end value is less than start value");
    }
}

Tam_sub_buffer::~Tam_sub_buffer() = default;

void Tam_sub_buffer::connect_ostream(Tam_status& status)
{
    detail::assign_failure(status, TAM_E_WRITER_CONNECTED);
}

void Tam_sub_buffer::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    status.clear();
    unsigned long long sought = 0;
    try {
        const unsigned long long base = _base(mode, position, status);
        if (!status.ok()) {
            return;
        }
        sought = tam_advance(base, offset);
    } catch (...) {
        detail::assign_failure(status, TAM_E_POSITION_OUT_OF_RANGE);
        return;
    }
    if (sought < m_start) {
        detail::assign_failure(status, TAM_E_POSITION_OUT_OF_RANGE);
        return;
    }
    position = sought - m_start;
}

unsigned int Tam_sub_buffer::read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                                  Tam_status& status) const
{
    status.clear();
    unsigned long long absolute = m_start + position;
    // An open window is not cut off at OPEN_END, but no position lies before its start.
    if (absolute < m_start || (m_end != OPEN_END && absolute >= m_end)) {
        detail::assign_failure(status, TAM_E_END_OF_DATA);
        return 0;
    }
    if (m_end != OPEN_END) {
        count = static_cast<unsigned int>(std::min<unsigned long long>(count, m_end - absolute));
    }
    unsigned int done = 0;
    try {
        done = m_buffer.read(wait, absolute, count, destination, status);
    } catch (...) {
        detail::assign_failure(status, TAM_E_READ);
    }
    if (status.ok()) {
        position += done;
    }
    return done;
}

void Tam_sub_buffer::write(unsigned long long&, unsigned int, const void*, Tam_status& status)
{
    detail::assign_failure(status, TAM_E_WRITE);
}

// What an offset counts from, in the underlying buffer.
unsigned long long Tam_sub_buffer::_base(Tam_seek_mode mode, unsigned long long position, Tam_status& status) const
{
    switch (mode) {
    case TAM_SEEK_START:
        return m_start;
    case TAM_SEEK_CURRENT:
        if (m_start + position < m_start) { // no such position
            break;
        }
        return m_start + position;
    case TAM_SEEK_END: {
        unsigned long long end = m_end;
        if (end == OPEN_END) {
            m_buffer.seek(TAM_SEEK_END, 0, end, status);
        }
        return end;
    }
    }
    detail::assign_failure(status, TAM_E_POSITION_OUT_OF_RANGE);
    return 0;
}

} // namespace tam
