#include <tam/stream/unbuffered_istream.h>

#include <algorithm>
#include <cstring>

#include <tam/status/codes.h>

namespace tam {

Tam_unbuffered_istream::Tam_unbuffered_istream(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol)
    : Tam_istream(buffer, wait, status, eol)
{
    Tam_unbuffered_istream::init(buffer, wait, status, eol);
}

Tam_unbuffered_istream::~Tam_unbuffered_istream()
{
    Tam_unbuffered_istream::detach();
}

void Tam_unbuffered_istream::init(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol)
{
    status.clear();
    buffer.connect_unbuffered_istream(status);
    if (status.ok()) {
        m_buffer = &buffer;
    }
    Tam_istream::init(buffer, wait, status, eol);
}

void Tam_unbuffered_istream::detach()
{
    if (m_buffer != nullptr) {
        m_buffer->disconnect_unbuffered_istream();
        m_buffer = nullptr;
    }
}

unsigned int Tam_unbuffered_istream::read(unsigned int count, void* destination, Tam_status& status)
{
    return _read(m_wait, m_position, count, destination, status);
}

unsigned int Tam_unbuffered_istream::read_at(unsigned long long position, unsigned int count, void* destination,
                                             Tam_status& status) const
{
    return _read(m_wait, position, count, destination, status);
}

unsigned int Tam_unbuffered_istream::read_at_no_blocking(unsigned long long position, unsigned int count,
                                                         void* destination, Tam_status& status)
{
    return _read(false, position, count, destination, status);
}

unsigned int Tam_unbuffered_istream::_read(bool wait, unsigned long long& position, unsigned int count,
                                           void* destination, Tam_status& status) const
{
    unsigned int delivered = 0;
    if (m_buffer == nullptr) {
        status = TAM_E_STREAM_DETACHED;
    } else {
        delivered = std::min(m_buffer->read(wait, position, count, destination, status), count);
    }
    if (delivered != count) {
        std::memset(static_cast<unsigned char*>(destination) + delivered, 0, count - delivered);
    }
    return delivered;
}

} // namespace tam
