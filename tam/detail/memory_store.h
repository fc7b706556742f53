#pragma once

#include <algorithm>

#include <tam/container/pointer_vector.h>
#include <tam/status/status.h>
#include <tam/stream/memory_buffer.h>

namespace tam::detail {

// The bytes of a memory buffer, in blocks that a table points at. There are blocks for all positions from 0 up to the
// last one; what was not written reads as zeros.
//
// The blocks that one write adds lie side by side in one allocation, a run. Runs come zeroed from the system and are not
// touched: the gap that a write far behind the end leaves costs address space and slots of the table, until somebody
// reads or writes it.
class Memory_store {
public:
    Memory_store();
    ~Memory_store();
    Memory_store(const Memory_store&) = delete;
    Memory_store& operator=(const Memory_store&) = delete;

    unsigned long long length() const { return m_length; }

    // The bytes from position to the end.
    unsigned long long available(unsigned long long position) const
    {
        return position < m_length ? m_length - position : 0;
    }

    // Reads count bytes, which are there.
    void copy_from(unsigned char* destination, unsigned int count, unsigned long long position) const;

    // Tam_memory_buffer::write.
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status);

private:
    static constexpr unsigned int BLOCK_SIZE = Tam_memory_buffer::BLOCK_SIZE;
    static constexpr unsigned int BLOCK_SHIFT = 12;
    static constexpr unsigned int BLOCK_MASK = BLOCK_SIZE - 1;
    static_assert(BLOCK_SIZE == 1U << BLOCK_SHIFT);

    struct Run;

    void create_position(unsigned long long position);
    void copy_to(unsigned long long position, unsigned long long end, const unsigned char* source);
    template <class Use>
    void _for_each_block(unsigned long long position, unsigned long long end, const Use& use) const;

    Tam_ptrvec_impl m_table;   // of the blocks, in order; null behind them
    Run* m_newest = nullptr;   // of the runs, each of which leads to the one before
    unsigned int m_blocks = 0; // in m_table
    unsigned long long m_length = 0;
};

} // namespace tam::detail
