#include <tam/stream/raw_memory_buffer.h>

#include <algorithm>
#include <cstring>
#include <new>

#include <tam/detail/failure.h>
#include <tam/detail/seek.h>
#include <tam/status/codes.h>

namespace tam {

Tam_raw_memory_buffer::Tam_raw_memory_buffer(unsigned long long size, void* memory, Delete_method method)
    : m_size(size), m_memory(static_cast<unsigned char*>(memory)), m_method(method)
{}

Tam_raw_memory_buffer::~Tam_raw_memory_buffer()
{
    if (m_method == DELETE_BYTES || m_method == DELETE_ARRAY) {
        ::operator delete(m_memory);
    }
}

void Tam_raw_memory_buffer::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    detail::seek_in(m_size, mode, offset, position, status);
}

unsigned int Tam_raw_memory_buffer::read(bool, unsigned long long& position, unsigned int count, void* destination,
                                         Tam_status& status) const
{
    if (position >= m_size) {
        detail::assign_failure(status, TAM_E_END_OF_DATA);
        return 0;
    }
    const auto done = static_cast<unsigned int>(std::min<unsigned long long>(count, m_size - position));
    if (done != 0) {
        std::memcpy(destination, m_memory + position, done);
        position += done;
    }
    return done;
}

void Tam_raw_memory_buffer::write(unsigned long long& position, unsigned int count, const void* source,
                                  Tam_status& status)
{
    if (position >= m_size) {
        detail::assign_failure(status, TAM_E_END_OF_DATA);
        return;
    }
    if (count > m_size - position) {
        detail::assign_failure(status, TAM_E_FIXED_MEMORY_END);
        detail::push_failure(status, TAM_E_WRITE);
        return;
    }
    if (count != 0) {
        std::memcpy(m_memory + position, source, count);
        position += count;
    }
}

} // namespace tam
