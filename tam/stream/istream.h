#pragma once

#include <string>

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/eol.h>
#include <tam/stream/seek_mode.h>

namespace tam {

/// Reads a buffer at a position of its own: bytes, lines of 8-bit or UTF-16 text, integers in either byte order.
///
/// This is the base of Tam_buffered_istream and Tam_unbuffered_istream; the order of its virtual operations is part of
/// the interface, since callers derive streams of their own. A stream is detached until its init attaches it to a
/// buffer, which it does not own and which must outlive the attachment.
///
/// One thread at a time may use a stream. Several streams on several threads may read one buffer that is safe for
/// threads.
///
/// The line readers (readln, wreadln, wreadln_le, wreadln_be and their forms with _at) share these rules:
/// - max counts units: bytes for 8-bit text, 16-bit code units for UTF-16. line is replaced by the text without its
///   line end, which the stream's convention decides.
/// - Of a longer line the first max units come back with TAM_E_NO_LINE_END, and the stream stands behind them, so that
///   the next call goes on in the same line. A line end that comes right after max + 1 units is still seen: the call
///   succeeds with max units and the stream stands before the line end, so that one unit is lost and an empty line
///   follows.
/// - A last line without a line end comes back whole, also with TAM_E_NO_LINE_END. A CR at the very end of the data
///   ends a line under TAM_EOL_ANY.
/// - max + 2 is counted in 32 bits: with max = 0xFFFFFFFE nothing is read and the status is TAM_E_NO_LINE_END, with
///   max = 0xFFFFFFFF at most one unit is read. Memory is taken for the text that arrives, never for max.
/// - They read by way of read_at, 78 units at most in one call; while that delivers nothing, or half a code unit, and
///   no failure, they ask again. An odd byte at the end of UTF-16 data is never delivered.
/// - status is cleared first, and on return holds:
///   - nothing: line is a whole line;
///   - TAM_E_NO_LINE_END (0xC200001C): no line end within max units, or the data ended without one;
///   - TAM_E_END_OF_DATA (0xC2000019): there was nothing left to read;
///   - TAM_E_OUT_OF_MEMORY (0xC2000001): line is empty and the stream's position unchanged;
///   - a failure of read_at; line is what was read before it, and the stream stands behind that.
class TAM_API Tam_istream {
public:
    /// A detached stream at position 0.
    Tam_istream() noexcept = default;

    /// Remembers wait and eol for the derived class; attaches nothing.
    Tam_istream(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol = TAM_EOL_ANY) noexcept;

    virtual ~Tam_istream();

    Tam_istream(const Tam_istream&) = delete;
    Tam_istream& operator=(const Tam_istream&) = delete;

    /// Position 0, wait and eol as given. The derived streams attach the buffer too.
    /// @param wait  passed to every read of the buffer: whether a buffer that is safe for threads may wait for a
    ///              connected writer at the end of the data
    virtual void init(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol = TAM_EOL_ANY);

    /// Takes the stream from its buffer. Does nothing on a detached stream.
    virtual void detach() = 0;

    /// Reads up to count bytes at the stream's position and moves past them. What is not delivered of destination is
    /// filled with zeros.
    /// @return the bytes delivered
    virtual unsigned int read(unsigned int count, void* destination, Tam_status& status) = 0;

    /// The same at position; the stream's own position stays.
    virtual unsigned int read_at(unsigned long long position, unsigned int count, void* destination,
                                 Tam_status& status) const = 0;

    /// Reads the 8-bit line that starts at position; the stream's own position stays.
    virtual void readln_at(unsigned long long position, unsigned int max, std::string& line, Tam_status& status);

    /// Reads the UTF-16 line in the platform's byte order (little-endian) that starts at position; the stream's own
    /// position stays.
    virtual void wreadln_at(unsigned long long position, unsigned int max, std::wstring& line, Tam_status& status);

    /// Reads the little-endian UTF-16 line that starts at position; the stream's own position stays.
    virtual void wreadln_le_at(unsigned long long position, unsigned int max, std::wstring& line, Tam_status& status);

    /// Reads the big-endian UTF-16 line that starts at position; the stream's own position stays.
    virtual void wreadln_be_at(unsigned long long position, unsigned int max, std::wstring& line, Tam_status& status);

    /// Reads the 8-bit line at the stream's position and moves past it. Does not call readln_at.
    void readln(unsigned int max, std::string& line, Tam_status& status);

    /// Reads the UTF-16 line in the platform's byte order (little-endian) at the stream's position and moves past it.
    void wreadln(unsigned int max, std::wstring& line, Tam_status& status);

    /// Reads the little-endian UTF-16 line at the stream's position and moves past it.
    void wreadln_le(unsigned int max, std::wstring& line, Tam_status& status);

    /// Reads the big-endian UTF-16 line at the stream's position and moves past it.
    void wreadln_be(unsigned int max, std::wstring& line, Tam_status& status);

    /// Reads a little-endian integer at the stream's position. What did not arrive of its bytes is 0.
    /// @param status  TAM_E_SHORT_INTEGER (0xC200002A): there were fewer bytes than the value has
    void read_le(short& value, Tam_status& status);
    void read_le(unsigned short& value, Tam_status& status);
    void read_le(int& value, Tam_status& status);
    void read_le(unsigned int& value, Tam_status& status);
    void read_le(long long& value, Tam_status& status);
    void read_le(unsigned long long& value, Tam_status& status);

    /// Reads a big-endian integer at the stream's position. What did not arrive of its bytes is 0.
    /// @param status  TAM_E_SHORT_INTEGER (0xC200002A): there were fewer bytes than the value has
    void read_be(short& value, Tam_status& status);
    void read_be(unsigned short& value, Tam_status& status);
    void read_be(int& value, Tam_status& status);
    void read_be(unsigned int& value, Tam_status& status);
    void read_be(long long& value, Tam_status& status);
    void read_be(unsigned long long& value, Tam_status& status);

    /// Moves the position by way of the buffer's seek.
    /// @param status  TAM_E_STREAM_DETACHED (0xC2000017), or what the buffer reports
    void seek(Tam_seek_mode mode, int offset, Tam_status& status);

    /// Sets the position, unchecked.
    void seek(unsigned long long position);

    /// The next byte to read; 0 when detached.
    unsigned long long tell() const;

    /// The length of the buffer's data in bytes. Clears the status first.
    /// @param status  TAM_E_STREAM_DETACHED (0xC2000017), or what the buffer's seek reports; the result is then 0
    unsigned long long size(Tam_status& status) const;

    /// The line-end convention that the stream was given.
    Tam_eol eol() const noexcept { return m_eol; }

protected:
    const Tam_buffer* m_buffer = nullptr; ///< not owned; null when detached
    unsigned long long m_position = 0;    ///< the next byte to read
    bool m_wait = false;                  ///< as given to init
    Tam_eol m_eol = TAM_EOL_ANY;          ///< as given to init

private:
    template <class Units, class Line>
    unsigned long long _line_at(unsigned long long position, unsigned int max, Line& line, Tam_status& status);
};

} // namespace tam
