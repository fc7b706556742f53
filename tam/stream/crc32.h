#pragma once

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/istream.h>

namespace tam {

/// The look-up table of CRC-32: entry i is i shifted right eight times, with 0xEDB88320 added by exclusive or each time
/// that the bit shifted out is 1. One byte moves a register by `crc32_table[(register ^ byte) & 0xFF] ^ (register >> 8)`.
/// It is complete before any code runs.
extern TAM_API const unsigned int crc32_table[256];

/// Accumulates the standard CRC-32 (of zlib, Ethernet and PKZIP) over bytes, streams and buffers.
///
///     Tam_crc32 crc;
///     crc.update("123456789", 9);
///     crc.result(); // 0xCBF43926
///
/// Updates add up: pieces in a row give what the whole gives. One thread at a time may use an object.
class TAM_API Tam_crc32 {
public:
    /// Calls reset().
    Tam_crc32() noexcept { reset(); }

    /// Starts again: result() is 0, the CRC of no bytes.
    void reset() noexcept { m_register = 0xFFFFFFFF; }

    /// Adds one byte.
    void update(unsigned char byte) noexcept { m_register = crc32_table[(m_register ^ byte) & 0xFF] ^ m_register >> 8; }

    /// Adds count bytes; with a count of 0, data may be null. Uses what the processor has for it (PCLMULQDQ,
    /// VPCLMULQDQ).
    void update(const void* data, unsigned int count);

    /// Adds all that the stream has, from position 0 to its end, wherever it stands. It is left where its data ends, or
    /// where reading failed. Reads 16384 bytes at a time, until a read delivers none.
    /// @param stream  not null
    /// @param status  what the stream's seek and read make of it; an end of data (TAM_E_END_OF_DATA, 0xC2000019) is
    ///                cleared. After a failure the bytes read before it have been added, and those of the read that
    ///                failed have not.
    void update(Tam_istream* stream, Tam_status& status);

    /// Adds all that the buffer has, by way of an unbuffered stream of its own that waits for a connected writer where
    /// the buffer is safe for threads.
    /// @param status  what the buffer's connect_unbuffered_istream reports, and then nothing is added; else as for a
    ///                stream
    /// @throws Tam_sys_call_fail  the mutex of the buffer's counters failed
    void update(const Tam_buffer& buffer, Tam_status& status);

    /// The CRC of all bytes since the last reset(). Further updates continue it.
    [[nodiscard]] unsigned int result() const noexcept { return ~m_register; }

private:
    unsigned int m_register; // the CRC's complement
};

} // namespace tam
