#pragma once

#include <tam/stream/istream.h>

namespace tam {

/// An input stream that passes every read to its buffer.
class TAM_API Tam_unbuffered_istream : public Tam_istream {
public:
    /// A detached stream.
    Tam_unbuffered_istream() noexcept = default;

    /// Calls init.
    Tam_unbuffered_istream(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol = TAM_EOL_ANY);

    /// Detaches.
    ~Tam_unbuffered_istream() override;

    /// Attaches the stream to buffer as one of its unbuffered readers, at position 0. Clears the status first.
    ///
    /// A stream that is attached already is not detached first: the earlier buffer goes on counting it.
    /// @param status  what the buffer's connect_unbuffered_istream reports; the stream is then not attached to buffer
    void init(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol = TAM_EOL_ANY) override;

    /// Disconnects from the buffer. Does nothing on a detached stream.
    void detach() override;

    /// Reads up to count bytes at the stream's position and moves past them. What is not delivered of destination is
    /// filled with zeros.
    /// @param status  TAM_E_STREAM_DETACHED (0xC2000017), or what the buffer's read makes of it
    /// @return the bytes delivered
    unsigned int read(unsigned int count, void* destination, Tam_status& status) override;

    /// The same at position; the stream's own position stays.
    unsigned int read_at(unsigned long long position, unsigned int count, void* destination,
                         Tam_status& status) const override;

protected:
    /// As read_at, but never waits for a writer.
    virtual unsigned int read_at_no_blocking(unsigned long long position, unsigned int count, void* destination,
                                             Tam_status& status);

private:
    unsigned int _read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                       Tam_status& status) const;
};

} // namespace tam
