#include <tam/stream/buffer.h>

#include <mutex>

#include <tam/status/codes.h>

namespace tam {

Tam_buffer::Tam_buffer() = default;

Tam_buffer::Tam_buffer(const Tam_buffer& other)
{
    const std::lock_guard guard(other.m_mutex);
    m_unbuffered_istreams = other.m_unbuffered_istreams;
    m_buffered_istreams = other.m_buffered_istreams;
    m_ostreams = other.m_ostreams;
}

Tam_buffer::~Tam_buffer() = default;

void Tam_buffer::connect_unbuffered_istream(Tam_status& status) const
{
    status.clear();
    add_unbuffered_istream();
}

void Tam_buffer::disconnect_unbuffered_istream() const
{
    remove_unbuffered_istream();
}

void Tam_buffer::connect_ostream(Tam_status& status)
{
    status.clear();
    const std::lock_guard guard(m_mutex);
    if (m_ostreams != 0) {
        status = TAM_E_WRITER_CONNECTED;
        return;
    }
    ++m_ostreams;
}

void Tam_buffer::disconnect_ostream()
{
    remove_ostream();
}

void Tam_buffer::connect_buffered_istream(Tam_status& status) const
{
    status.clear();
    add_buffered_istream();
}

void Tam_buffer::disconnect_buffered_istream() const
{
    remove_buffered_istream();
}

unsigned int Tam_buffer::num_ostream() const
{
    return _number(m_ostreams);
}

void Tam_buffer::add_unbuffered_istream() const
{
    _add(m_unbuffered_istreams);
}

void Tam_buffer::remove_unbuffered_istream() const
{
    _remove(m_unbuffered_istreams);
}

unsigned int Tam_buffer::num_unbuffered_istream() const
{
    return _number(m_unbuffered_istreams);
}

void Tam_buffer::add_buffered_istream() const
{
    _add(m_buffered_istreams);
}

void Tam_buffer::remove_buffered_istream() const
{
    _remove(m_buffered_istreams);
}

unsigned int Tam_buffer::num_buffered_istream() const
{
    return _number(m_buffered_istreams);
}

void Tam_buffer::add_ostream()
{
    _add(m_ostreams);
}

void Tam_buffer::remove_ostream()
{
    _remove(m_ostreams);
}

void Tam_buffer::_add(unsigned int& counter) const
{
    const std::lock_guard guard(m_mutex);
    ++counter;
}

void Tam_buffer::_remove(unsigned int& counter) const
{
    const std::lock_guard guard(m_mutex);
    if (counter != 0) {
        --counter;
    }
}

unsigned int Tam_buffer::_number(const unsigned int& counter) const
{
    const std::lock_guard guard(m_mutex);
    return counter;
}

} // namespace tam
