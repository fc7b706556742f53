#pragma once

#include <memory>

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/seek_mode.h>
#include <tam/thread/read_write_semaphore.h>

namespace tam {

namespace detail {
class Memory_store;
}

/// A buffer in memory that grows as it is written.
///
/// Memory is taken in blocks of BLOCK_SIZE bytes for every position up to the last one written, gaps included, which
/// read as zeros. So a write far behind the end takes memory for all that lies in between. Nothing is given back before
/// the buffer is destroyed. The buffer can hold somewhat less than 8 TiB.
///
/// One thread at a time uses a memory buffer; Tam_memory_buffer_mt is the twin for several. Neither can be copied.
class TAM_API Tam_memory_buffer : public Tam_buffer {
public:
    /// Bytes in a block.
    static constexpr unsigned int BLOCK_SIZE = 4096;

    /// An empty buffer.
    /// @throws std::bad_alloc
    Tam_memory_buffer();

    ~Tam_memory_buffer() override;

    Tam_memory_buffer(const Tam_memory_buffer&) = delete;
    Tam_memory_buffer& operator=(const Tam_memory_buffer&) = delete;

    /// Moves position by offset bytes from where mode says. Past the end of the data is allowed.
    /// @param status  cleared first; TAM_E_POSITION_OUT_OF_RANGE (0xC2000018), position unchanged: the new one would be
    ///                before 0 or above TAM_MAXIMUM_POSITION
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position and moves position past them.
    ///
    /// What is left to read is counted in 32 bits: more than 4 GiB before the end of the data a read delivers at most
    /// what is left beyond a multiple of 4 GiB, and exactly at such a multiple nothing at all. Who keeps that much data
    /// reads it from Tam_memory_buffer_mt, which has no such limit.
    /// @param wait    ignored
    /// @param status  cleared first; TAM_E_END_OF_DATA (0xC2000019): nothing was left to read, or count is 0, which
    ///                counts as the end of the data wherever position is
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// Writes count bytes at position and moves position past them; a position behind the end leaves a gap of zeros.
    ///
    /// A write that ends with a block takes the next block too. A write that fails leaves the length and position
    /// as they were; bytes that it was to replace may have been replaced where reading source failed.
    /// @param status  cleared first; on failure TAM_E_WRITE (0xC200001A) on top of
    ///   - TAM_E_OUT_OF_MEMORY (0xC2000001): no memory for the blocks, or no buffer can be that long; it stands alone
    ///     where there is no memory for TAM_E_WRITE either
    ///   - TAM_E_EXCEPTION (0xC200006B) with its text: a standard exception, such as the one that a fault in source
    ///     becomes on a thread with an exception translator
    ///   - TAM_E_UNKNOWN_EXCEPTION (0xC200006A): any other exception
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    const std::unique_ptr<detail::Memory_store> m_store;
};

/// Tam_memory_buffer for several threads: some read while one writes, and readers can wait for the writer.
///
/// A read lock is held in seek and read, a write lock in write and disconnect_ostream; a failing call of the system in
/// one of these locks throws Tam_sys_call_fail. Tam_read_write_semaphore lets readers come first, so that many readers
/// that poll at the end of the data slow the writer down.
class TAM_API Tam_memory_buffer_mt : public Tam_buffer {
public:
    /// Bytes in a block.
    static constexpr unsigned int BLOCK_SIZE = Tam_memory_buffer::BLOCK_SIZE;

    /// An empty buffer.
    /// @throws std::bad_alloc, Tam_sys_call_fail
    Tam_memory_buffer_mt();

    ~Tam_memory_buffer_mt() override;

    Tam_memory_buffer_mt(const Tam_memory_buffer_mt&) = delete;
    Tam_memory_buffer_mt& operator=(const Tam_memory_buffer_mt&) = delete;

    /// Takes back a connect_ostream. A reader that waits at the end of the data sees all that was written before.
    void disconnect_ostream() override;

    /// As Tam_memory_buffer::seek.
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position and moves position past them. There is no limit to what is left to read.
    /// @param wait    at the end of the data, yield the processor and try again for as long as an output stream is
    ///                connected. A read of 0 bytes counts as being there: it returns only when no stream is connected
    /// @param status  cleared first; TAM_E_END_OF_DATA (0xC2000019): nothing was left to read, or count is 0, and there
    ///                was nothing to wait for
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// As Tam_memory_buffer::write.
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    Tam_read_write_semaphore m_lock;
    const std::unique_ptr<detail::Memory_store> m_store;
};

} // namespace tam
