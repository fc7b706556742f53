#pragma once

#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/seek_mode.h>
#include <tam/thread/mutex.h>

namespace tam {

/// A store of bytes, addressed by 64-bit positions from 0 to TAM_MAXIMUM_POSITION.
///
/// A buffer has no position of its own: the caller passes one into each operation, which moves it. Bytes are read and
/// written through streams (Tam_buffered_istream, Tam_unbuffered_istream, Tam_ostream); a buffer counts those that are
/// connected to it and accepts any number of readers, but one writer at a time.
///
/// The counters may be used by any thread at any time. Whether the bytes may be depends on the buffer. The order of the
/// virtual operations is part of the interface: callers derive buffers of their own.
///
/// Every operation that uses the counters can throw Tam_sys_call_fail, when their mutex fails.
class TAM_API Tam_buffer {
public:
    virtual ~Tam_buffer();

    /// Counts a reader without a cache. Clears the status; never reports a failure.
    virtual void connect_unbuffered_istream(Tam_status& status) const;

    /// Takes back a connect_unbuffered_istream. At 0 the counter stays 0.
    virtual void disconnect_unbuffered_istream() const;

    /// Counts the writer. Clears the status first.
    /// @param status  TAM_E_WRITER_CONNECTED (0xC2000033): there is a writer already
    virtual void connect_ostream(Tam_status& status);

    /// Takes back a connect_ostream. At 0 the counter stays 0.
    virtual void disconnect_ostream();

    /// Counts a reader with a cache. Clears the status; never reports a failure.
    virtual void connect_buffered_istream(Tam_status& status) const;

    /// Takes back a connect_buffered_istream. At 0 the counter stays 0.
    virtual void disconnect_buffered_istream() const;

    /// Moves position by offset bytes from where mode says. Past the end of the data is allowed.
    /// @param status  TAM_E_POSITION_OUT_OF_RANGE (0xC2000018), position unchanged: the new one would be before 0 or
    ///                above TAM_MAXIMUM_POSITION
    virtual void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const = 0;

    /// Connected writers; at most 1 by way of connect_ostream.
    unsigned int num_ostream() const;

    Tam_buffer& operator=(const Tam_buffer&) = delete;

protected:
    /// A buffer that no stream is connected to.
    Tam_buffer();

    /// Starts with the connection counts of other, although its streams are not connected to the copy.
    Tam_buffer(const Tam_buffer& other);

    /// Reads up to count bytes at position into destination and moves position past them. A read that reaches the end
    /// of the data delivers less; one that starts there delivers nothing and gives TAM_E_END_OF_DATA (0xC2000019).
    /// @param wait  whether a buffer that is safe for threads may wait for a connected writer at the end of the data
    /// @return the bytes delivered
    virtual unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                              Tam_status& status) const = 0;

    /// Writes count bytes from source at position and moves position past them.
    virtual void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) = 0;

    /// The counters themselves, for the operations above in derived classes; at 0 a counter stays 0.
    void add_unbuffered_istream() const;
    void remove_unbuffered_istream() const;
    unsigned int num_unbuffered_istream() const;
    void add_buffered_istream() const;
    void remove_buffered_istream() const;
    unsigned int num_buffered_istream() const;
    void add_ostream();
    void remove_ostream();

private:
    // What reads and writes a buffer by way of this base.
    friend class Tam_buffered_istream;
    friend class Tam_unbuffered_istream;
    friend class Tam_ostream;
    friend class Tam_sub_buffer;

    void _add(unsigned int& counter) const;
    void _remove(unsigned int& counter) const;
    unsigned int _number(const unsigned int& counter) const;

    mutable Tam_mutex m_mutex; // guards the counters
    mutable unsigned int m_unbuffered_istreams = 0;
    mutable unsigned int m_buffered_istreams = 0;
    unsigned int m_ostreams = 0;
};

} // namespace tam
