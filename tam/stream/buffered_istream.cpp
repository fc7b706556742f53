#include <tam/stream/buffered_istream.h>

#include <algorithm>
#include <cstring>

#include <tam/status/codes.h>

namespace tam {

Tam_buffered_istream::Tam_buffered_istream(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol)
    : Tam_istream(buffer, wait, status, eol)
{
    Tam_buffered_istream::init(buffer, wait, status, eol);
}

Tam_buffered_istream::~Tam_buffered_istream()
{
    Tam_buffered_istream::detach();
}

void Tam_buffered_istream::init(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol)
{
    status.clear();
    buffer.connect_buffered_istream(status);
    if (status.ok()) {
        m_buffer = &buffer;
    }
    Tam_istream::init(buffer, wait, status, eol);
    m_cache_start = 0;
    m_cache_valid = 0;
}

void Tam_buffered_istream::detach()
{
    if (m_buffer != nullptr) {
        m_buffer->disconnect_buffered_istream();
        m_buffer = nullptr;
        m_cache_valid = 0;
    }
}

unsigned int Tam_buffered_istream::read(unsigned int count, void* destination, Tam_status& status)
{
    const unsigned int delivered = Tam_buffered_istream::read_at(m_position, count, destination, status);
    m_position += delivered;
    return delivered;
}

unsigned int Tam_buffered_istream::read_at(unsigned long long position, unsigned int count, void* destination,
                                           Tam_status& status) const
{
    status.clear();
    auto* const bytes = static_cast<unsigned char*>(destination);
    unsigned int delivered = 0;
    while (delivered < count) {
        unsigned int available = 0;
        const unsigned char* cached = _cached(position + delivered, available);
        if (available == 0) {
            relocate_buffer(position + delivered, status);
            if (!status.ok()) {
                break;
            }
            cached = _cached(position + delivered, available);
            if (available == 0) {
                status = TAM_E_END_OF_DATA;
                break;
            }
        }
        const unsigned int piece = std::min(available, count - delivered);
        std::memcpy(bytes + delivered, cached, piece);
        delivered += piece;
    }
    if (delivered != count) {
        std::memset(bytes + delivered, 0, count - delivered);
        if (delivered != 0) {
            status.clear();
        }
    }
    return delivered;
}

void Tam_buffered_istream::relocate_buffer(unsigned long long position, Tam_status& status) const
{
    m_cache_start = position;
    m_cache_valid = 0;
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
        return;
    }
    m_cache_valid = std::min(m_buffer->read(m_wait, position, CACHE_SIZE, m_cache, status), CACHE_SIZE);
}

} // namespace tam
