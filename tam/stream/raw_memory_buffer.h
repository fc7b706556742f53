#pragma once

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/seek_mode.h>

namespace tam {

/// A buffer over memory of the caller's, of a fixed size: reads and writes go straight to it.
///
/// All of the memory is data from the start. One thread at a time uses the buffer. It cannot be copied.
///
/// Unlike other buffers, read and write do not clear the status that they are given; they only report failures in it.
class TAM_API Tam_raw_memory_buffer : public Tam_buffer {
public:
    /// What the destructor does with the memory; any other value keeps it.
    enum Delete_method : unsigned int {
        KEEP = 0,         ///< it stays the caller's, and must outlive the buffer
        DELETE_BYTES = 1, ///< gives it to `operator delete`: it comes from `operator new`
        DELETE_ARRAY = 2, ///< the same: for an array of a type without a destructor that came from new[]
    };

    /// A buffer over size bytes at memory, which may be null when size is 0. Copies nothing.
    Tam_raw_memory_buffer(unsigned long long size, void* memory, Delete_method method);

    /// Releases the memory as the delete method says.
    ~Tam_raw_memory_buffer() override;

    Tam_raw_memory_buffer(const Tam_raw_memory_buffer&) = delete;
    Tam_raw_memory_buffer& operator=(const Tam_raw_memory_buffer&) = delete;

    /// Moves position by offset bytes from where mode says; the end is the size. Past the end is allowed.
    /// @param status  cleared first; TAM_E_POSITION_OUT_OF_RANGE (0xC2000018), position unchanged: the new one would be
    ///                before 0 or above TAM_MAXIMUM_POSITION
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position and moves position past them.
    /// @param wait    ignored
    /// @param status  TAM_E_END_OF_DATA (0xC2000019): position is not below the size; not cleared otherwise
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// Writes all of count bytes at position and moves position past them, or nothing.
    /// @param status  not cleared first, and left as it is when the write succeeds;
    ///   - TAM_E_END_OF_DATA (0xC2000019): position is not below the size, also for a count of 0
    ///   - TAM_E_FIXED_MEMORY_END (0xC2000069) and TAM_E_WRITE (0xC200001A) on top: the bytes do not fit
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    const unsigned long long m_size;
    unsigned char* const m_memory;
    const Delete_method m_method;
};

} // namespace tam
