#pragma once

#include <string>

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/eol.h>
#include <tam/stream/seek_mode.h>

namespace tam {

/// Writes a buffer at a position of its own: bytes, integers in either byte order, lines of 8-bit or UTF-16 text.
///
/// A stream that is attached is its buffer's only writer; another one is refused until it has been detached or
/// destroyed. The buffer is not owned and must outlive the attachment. A detached stream writes nothing and reports
/// TAM_E_STREAM_DETACHED (0xC2000017).
///
/// The line writers put behind the text what the stream's convention says: CR, LF or CR LF, in UTF-16 as code units.
/// Under TAM_EOL_ANY, which takes every line end when reading, and under a value that is no convention, they write no
/// line end at all.
///
/// Each operation is one write of the buffer, except where it says otherwise. The stream leaves status to the buffer,
/// which clears it first and reports its failures there; a raw memory buffer does not clear it. The position follows
/// what the buffer stored, also when the write failed half-way.
///
/// One thread at a time may use a stream. Readers of a buffer that is safe for threads may follow it.
class TAM_API Tam_ostream {
public:
    /// A detached stream.
    Tam_ostream() noexcept = default;

    /// Calls init.
    Tam_ostream(Tam_buffer& buffer, Tam_status& status, Tam_eol eol);

    /// Detaches.
    ~Tam_ostream();

    Tam_ostream(const Tam_ostream&) = delete;
    Tam_ostream& operator=(const Tam_ostream&) = delete;

    /// Attaches the stream to buffer as its writer, at position 0 and with that convention.
    ///
    /// A stream that is attached already is not detached first: the earlier buffer goes on counting it, and when the
    /// new one refuses it, it stays the writer of the earlier one, at position 0 and with the new convention.
    /// @param status  what the buffer's connect_ostream reports, TAM_E_WRITER_CONNECTED (0xC2000033) when it has a
    ///                writer or takes none; the stream is then not attached to it
    void init(Tam_buffer& buffer, Tam_status& status, Tam_eol eol);

    /// Takes the stream from its buffer. Does nothing on a detached stream.
    void detach();

    /// Writes count bytes at the stream's position and moves past them.
    void write(unsigned int count, const void* data, Tam_status& status);

    /// The same at position; the stream's own position stays.
    void write_at(unsigned long long position, unsigned int count, const void* data, Tam_status& status) const;

    /// Writes a little-endian integer.
    void write_le(short value, Tam_status& status);
    void write_le(unsigned short value, Tam_status& status);
    void write_le(int value, Tam_status& status);
    void write_le(unsigned int value, Tam_status& status);
    void write_le(const long long& value, Tam_status& status);
    void write_le(const unsigned long long& value, Tam_status& status);

    /// Writes a big-endian integer.
    void write_be(short value, Tam_status& status);
    void write_be(unsigned short value, Tam_status& status);
    void write_be(int value, Tam_status& status);
    void write_be(unsigned int value, Tam_status& status);
    void write_be(const long long& value, Tam_status& status);
    void write_be(const unsigned long long& value, Tam_status& status);

    /// Writes the bytes of line, then the line end: two writes of the buffer, the second if status is ok after the
    /// first. NULs inside line are text like any other.
    void writeln(const std::string& line, Tam_status& status);

    /// Writes the code units of line in the platform's byte order (little-endian), then the line end: two writes of the
    /// buffer, the second if status is ok after the first.
    void wwriteln(const std::wstring& line, Tam_status& status);

    /// The same as wwriteln.
    void wwriteln_le(const std::wstring& line, Tam_status& status);

    /// Writes line with its line end as big-endian UTF-16, in one write of the buffer.
    /// @param status  also TAM_E_OUT_OF_MEMORY (0xC2000001): no memory for a copy of the line; nothing is written
    void wwriteln_be(const std::wstring& line, Tam_status& status);

    /// Moves the position by way of the buffer's seek. Past the end of the data is allowed.
    void seek(Tam_seek_mode mode, int offset, Tam_status& status);

    /// Sets the position, unchecked.
    void seek(unsigned long long position);

    /// Where the next write goes; 0 when detached.
    unsigned long long tell() const;

    /// The length of the buffer's data in bytes; 0 when status reports a failure.
    unsigned long long size(Tam_status& status) const;

private:
    void _write_text(const void* data, unsigned long long bytes, Tam_status& status);
    template <class Unit>
    void _write_line(const std::basic_string<Unit>& line, Tam_status& status);
    void wwriteln_swapped(std::wstring line, Tam_status& status);

    Tam_buffer* m_buffer = nullptr; // null when detached
    unsigned long long m_position = 0;
    Tam_eol m_eol = TAM_EOL_ANY;
};

} // namespace tam
