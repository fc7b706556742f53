#pragma once

#include <memory>

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/seek_mode.h>
#include <tam/thread/read_write_semaphore.h>

namespace tam {

namespace detail {

class Page_store;

} // namespace detail

/// A buffer that grows as it is written and keeps a limited part of its bytes in memory; the rest lies in a temporary
/// file, the swap file.
///
/// It is made for data of unknown size that is written from front to back, once, and then read in any order. Its limit is
/// a number of blocks of BLOCK_SIZE bytes. Data that fits the limit never touches the disk. The length only grows.
///
/// These rules show, and say what limit to choose and when another buffer is the better one:
///  - **Changing data that has been in the swap file is not safe.** A block goes to the swap file once, the first time
///    that it has to leave memory. Read back in and written to again, it keeps the change while it stays in memory; when
///    it leaves again the change is lost, without a report, and the contents of the first time come back. So choose a
///    limit that holds all blocks that are written to after others were used. The block in which one write ends and the
///    next goes on is such a block when anything is read in between: then write whole blocks. Where all of the data may
///    change, use a memory buffer or a file buffer.
///  - **Start at the front.** Block i is given its memory at place i of the region that the constructor reserves, until
///    as many blocks as the limit have memory. Until then nothing can be written at position limit * BLOCK_SIZE or
///    behind: such a write gives TAM_E_OUT_OF_MEMORY (0xC2000001). Once the first limit blocks are written, a write may
///    leave any gap. Gaps read as zeros.
///  - Blocks leave memory in the order of their positions, from a hand that goes round the data, and not by how recently
///    they were used. A limit a little below what a program uses again and again helps little. The hand of a read goes
///    round the blocks that have data; that of a write goes one further when the data ends at the end of a block.
///  - **A read never reports that the swap file failed.** It tries again until it succeeds; while the disk or a network
///    drive stays away, it does not return. Where a program must not hang, choose a limit that holds all data, or a
///    file buffer. A write reports the failure and can be repeated.
///  - The swap file lies in Tam_directory::temp_directory() under a name of Tam_file::temp_name("buf"); nobody else can
///    open it. It is made when the first block leaves memory and deleted by the destructor. A process that is killed
///    leaves it behind.
///
/// Address space for the whole limit is reserved at once, memory taken block by block and kept until the end. Each
/// started 8 MiB of data has a table of 24 KiB.
///
/// One thread at a time uses a page buffer; Tam_page_buffer_mt is the twin for several. Operations clear their status
/// first.
class TAM_API Tam_page_buffer : public Tam_buffer {
public:
    /// Bytes in a block.
    static constexpr unsigned int BLOCK_SIZE = 8192;

    /// The limit of a buffer whose size hint is more than it may hold in memory.
    static constexpr unsigned int FALLBACK_MEMORY_BLOCKS = 16;

    /// The highest limit, 1 TiB.
    static constexpr unsigned int MAXIMUM_MEMORY_BLOCKS = 1U << 27;

    /// The most blocks of a buffer, 16 TiB.
    static constexpr unsigned int MAXIMUM_BLOCKS = 1U << 31;

    /// An empty buffer.
    ///
    /// A reservation that fails is reported by the first write, as TAM_E_OUT_OF_MEMORY.
    /// @param size_hint      the bytes to expect. More than memory_blocks blocks hold make the limit
    ///                       FALLBACK_MEMORY_BLOCKS, be that lower or higher than memory_blocks
    /// @param memory_blocks  the limit: the most blocks in memory. With 0 (and no hint) nothing can be written; above
    ///                       MAXIMUM_MEMORY_BLOCKS it counts as that
    /// @throws Tam_sys_call_fail  "::CreateMutex"
    explicit Tam_page_buffer(unsigned int size_hint = 0, unsigned int memory_blocks = 128);

    /// Gives back the memory and deletes the swap file. That it could not be deleted is not reported.
    ~Tam_page_buffer() override;

    Tam_page_buffer(const Tam_page_buffer&) = delete;
    Tam_page_buffer& operator=(const Tam_page_buffer&) = delete;

    /// Moves position by offset bytes from where mode says; a mode beyond TAM_SEEK_END counts as TAM_SEEK_CURRENT. Past
    /// the end of the data is allowed.
    /// @param status  TAM_E_POSITION_OUT_OF_RANGE (0xC2000018), position unchanged: the new one would be before 0 or
    ///                above TAM_MAXIMUM_POSITION
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position, less only at the end of the data, and moves position past them. Tries again
    /// for as long as the swap file fails.
    /// @param wait    ignored
    /// @param status  TAM_E_END_OF_DATA (0xC2000019): position is at or past the end of the data, whatever count is
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// Writes count bytes at position and moves position past what was written. Bytes written before a failure stay
    /// written, and a block that could not be moved to or from the swap file is where it was.
    /// @param status
    ///   - TAM_E_OUT_OF_MEMORY (0xC2000001)  the system's error beneath: it gave no memory. Alone: the address space
    ///     could not be reserved, the position is behind the limit too early or in block MAXIMUM_BLOCKS or later, or the
    ///     block table cannot grow
    ///   - TAM_E_WRITE (0xC200001A)  the swap file could not be opened (beneath: what Tam_file::open reports),
    ///     positioned (TAM_E_SEEK, the system's error), read (TAM_E_READ, the system's error, or TAM_E_END_OF_DATA) or
    ///     written (the system's error); alone: it was read or written in part, there is no temporary directory, or the
    ///     limit is 0
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    std::unique_ptr<detail::Page_store> m_store;
};

/// Tam_page_buffer for several threads: readers among themselves and one writer, with the rules of Tam_page_buffer.
///
/// A read/write semaphore guards the bytes: read and seek hold the read lock, write and disconnect_ostream the write lock.
/// So a steady stream of readers can hold a writer off, and a read that tries again while the swap file fails holds it off
/// as long. From the first block that left memory on, readers also take turns, block by block.
///
/// Every operation can throw what Tam_read_write_semaphore throws.
class TAM_API Tam_page_buffer_mt : public Tam_buffer {
public:
    /// As Tam_page_buffer.
    /// @throws Tam_sys_call_fail  "::CreateMutex" or "::CreateEvent"
    explicit Tam_page_buffer_mt(unsigned int size_hint = 0, unsigned int memory_blocks = 128);
    ~Tam_page_buffer_mt() override;

    Tam_page_buffer_mt(const Tam_page_buffer_mt&) = delete;
    Tam_page_buffer_mt& operator=(const Tam_page_buffer_mt&) = delete;

    /// Takes back a connect_ostream under the write lock. A reader that waits at the end of the data sees all that was
    /// written before.
    void disconnect_ostream() override;

    /// As Tam_page_buffer::seek.
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads as Tam_page_buffer::read does.
    /// @param wait    at the end of the data, and with an output stream connected: give up the lock, yield the processor
    ///                once, and read what there is then, **which may be nothing, with a clear status**. It does not wait
    ///                for longer; a caller that follows a writer calls again
    /// @param status  TAM_E_END_OF_DATA (0xC2000019): position is at or past the end of the data and the read did not wait
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// As Tam_page_buffer::write.
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    Tam_read_write_semaphore m_lock;
    std::unique_ptr<detail::Page_store> m_store;
};

} // namespace tam
