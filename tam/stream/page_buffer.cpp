#include <tam/stream/page_buffer.h>

#include <tam/detail/page_store.h>
#include <tam/thread/sleep.h>

namespace tam {

Tam_page_buffer::Tam_page_buffer(unsigned int size_hint, unsigned int memory_blocks)
    : m_store(std::make_unique<detail::Page_store>(size_hint, memory_blocks, false))
{}

Tam_page_buffer::~Tam_page_buffer() = default;

void Tam_page_buffer::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    m_store->seek(mode, offset, position, status);
}

unsigned int Tam_page_buffer::read(bool, unsigned long long& position, unsigned int count, void* destination,
                                   Tam_status& status) const
{
    return m_store->read(position, count, destination, status);
}

void Tam_page_buffer::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    m_store->write(position, count, source, status);
}

Tam_page_buffer_mt::Tam_page_buffer_mt(unsigned int size_hint, unsigned int memory_blocks)
    : m_store(std::make_unique<detail::Page_store>(size_hint, memory_blocks, true))
{}

Tam_page_buffer_mt::~Tam_page_buffer_mt() = default;

void Tam_page_buffer_mt::disconnect_ostream()
{
    const Tam_write_lock lock(m_lock);
    Tam_buffer::disconnect_ostream();
}

void Tam_page_buffer_mt::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    const Tam_read_lock lock(m_lock);
    m_store->seek(mode, offset, position, status);
}

unsigned int Tam_page_buffer_mt::read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                                      Tam_status& status) const
{
    {
        const Tam_read_lock lock(m_lock);
        if (position < m_store->length() || !wait || num_ostream() == 0) {
            return m_store->read(position, count, destination, status);
        }
    }
    tam_thread_yield(); // once, and the end of the data is none afterwards
    const Tam_read_lock lock(m_lock);
    const unsigned int done = m_store->read(position, count, destination, status);
    status.clear();
    return done;
}

void Tam_page_buffer_mt::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    const Tam_write_lock lock(m_lock);
    m_store->write(position, count, source, status);
}

} // namespace tam
