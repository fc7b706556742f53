#include <tam/stream/memory_buffer.h>

#include <algorithm>

#include <tam/detail/memory_store.h>
#include <tam/detail/seek.h>
#include <tam/status/codes.h>
#include <tam/thread/sleep.h>

namespace tam {

using detail::Memory_store;

Tam_memory_buffer::Tam_memory_buffer() : m_store(std::make_unique<Memory_store>()) {}

Tam_memory_buffer::~Tam_memory_buffer() = default;

void Tam_memory_buffer::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    detail::seek_in(m_store->length(), mode, offset, position, status);
}

unsigned int Tam_memory_buffer::read(bool, unsigned long long& position, unsigned int count, void* destination,
                                     Tam_status& status) const
{
    status.clear();
    // The low 32 bits alone, as its comment says.
    const auto done = std::min(count, static_cast<unsigned int>(m_store->available(position)));
    if (done == 0) {
        status = TAM_E_END_OF_DATA;
        return 0;
    }
    m_store->copy_from(static_cast<unsigned char*>(destination), done, position);
    position += done;
    return done;
}

void Tam_memory_buffer::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    m_store->write(position, count, source, status);
}

Tam_memory_buffer_mt::Tam_memory_buffer_mt() : m_store(std::make_unique<Memory_store>()) {}

Tam_memory_buffer_mt::~Tam_memory_buffer_mt() = default;

void Tam_memory_buffer_mt::disconnect_ostream()
{
    const Tam_write_lock lock(m_lock);
    Tam_buffer::disconnect_ostream();
}

void Tam_memory_buffer_mt::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    const Tam_read_lock lock(m_lock);
    detail::seek_in(m_store->length(), mode, offset, position, status);
}

unsigned int Tam_memory_buffer_mt::read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                                        Tam_status& status) const
{
    status.clear();
    for (;;) {
        {
            const Tam_read_lock lock(m_lock);
            const auto done =
                static_cast<unsigned int>(std::min<unsigned long long>(count, m_store->available(position)));
            if (done != 0) {
                m_store->copy_from(static_cast<unsigned char*>(destination), done, position);
                position += done;
                return done;
            }
            // The writer can neither write nor leave between these two looks at what it did.
            if (!wait || num_ostream() == 0) {
                status = TAM_E_END_OF_DATA;
                return 0;
            }
        }
        tam_thread_yield();
    }
}

void Tam_memory_buffer_mt::write(unsigned long long& position, unsigned int count, const void* source,
                                 Tam_status& status)
{
    const Tam_write_lock lock(m_lock);
    m_store->write(position, count, source, status);
}

} // namespace tam
