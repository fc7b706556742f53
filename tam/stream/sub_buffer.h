#pragma once

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/position.h>
#include <tam/stream/seek_mode.h>

namespace tam {

/// A read-only window on the bytes from start to end of another buffer, whose position 0 is start.
///
/// The underlying buffer is not owned and must outlive this one. Its streams are not counted as this buffer's, nor this
/// one's as its. As many threads may use the window as may use the underlying buffer. It cannot be copied.
class TAM_API Tam_sub_buffer : public Tam_buffer {
public:
    /// The end of a window that goes to wherever the underlying buffer ends.
    static constexpr unsigned long long OPEN_END = TAM_MAXIMUM_POSITION;

    /// A window of length bytes. One that ends exactly at OPEN_END is an open one.
    /// @throws std::invalid_argument  "Tam_sub_buffer::Tam_sub_buffer - length is less than zero"
    /// @throws std::overflow_error    "Stream position too large.": it would end above TAM_MAXIMUM_POSITION
    Tam_sub_buffer(const Tam_buffer& buffer, unsigned long long start, int length);

    /// A window up to, and without, the position end; OPEN_END: up to the end of the underlying buffer.
    /// @throws std::invalid_argument  "Tam_sub_buffer::Tam_sub_buffer - end value is less than start value"
    Tam_sub_buffer(const Tam_buffer& buffer, unsigned long long start, unsigned long long end);

    ~Tam_sub_buffer() override;

    Tam_sub_buffer(const Tam_sub_buffer&) = delete;
    Tam_sub_buffer& operator=(const Tam_sub_buffer&) = delete;

    /// Refuses every writer.
    /// @param status  always TAM_E_WRITER_CONNECTED (0xC2000033)
    void connect_ostream(Tam_status& status) override;

    /// Moves position by offset bytes from where mode says; the end is that of the window, also where the underlying
    /// buffer is shorter. Past the end is allowed.
    /// @param status  cleared first. On failure position is unchanged, and status is
    ///   - TAM_E_POSITION_OUT_OF_RANGE (0xC2000018): the new position would be before the window or, counted in the
    ///     underlying buffer, above TAM_MAXIMUM_POSITION; mode is none of the three; or the underlying buffer's seek to
    ///     its end threw
    ///   - what the underlying buffer's seek to its end reports
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position, and none beyond the window.
    /// @param wait    passed to the underlying buffer
    /// @param status  cleared first
    ///   - TAM_E_END_OF_DATA (0xC2000019): position is not in the window
    ///   - TAM_E_READ (0xC200001B): the underlying buffer's read threw
    ///   - what the underlying buffer's read reports
    /// @return the bytes delivered. position moves past them only when status is ok
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// Writes nothing.
    /// @param status  always TAM_E_WRITE (0xC200001A)
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    unsigned long long _base(Tam_seek_mode mode, unsigned long long position, Tam_status& status) const;

    const Tam_buffer& m_buffer;
    const unsigned long long m_start; // in m_buffer, as m_end
    const unsigned long long m_end;
};

} // namespace tam
