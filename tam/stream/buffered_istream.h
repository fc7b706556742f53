#pragma once

#include <tam/stream/istream.h>

namespace tam {

namespace detail {

template <class Units>
class Cache_source;

} // namespace detail

/// An input stream that reads its buffer by blocks of CACHE_SIZE bytes and serves its callers from them.
///
/// What is in the cache is not read again: a change that a writer makes there is not seen.
class TAM_API Tam_buffered_istream : public Tam_istream {
public:
    /// Bytes in a block.
    static constexpr unsigned int CACHE_SIZE = 16384;

    /// A detached stream.
    Tam_buffered_istream() noexcept = default;

    /// Calls init.
    Tam_buffered_istream(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol = TAM_EOL_ANY);

    /// Detaches.
    ~Tam_buffered_istream() override;

    /// Attaches the stream to buffer as one of its buffered readers, at position 0 and with an empty cache. Clears the
    /// status first.
    ///
    /// A stream that is attached already is not detached first: the earlier buffer goes on counting it.
    /// @param status  what the buffer's connect_buffered_istream reports; the stream is then not attached to buffer
    void init(const Tam_buffer& buffer, bool wait, Tam_status& status, Tam_eol eol = TAM_EOL_ANY) override;

    /// Disconnects from the buffer and empties the cache. Does nothing on a detached stream.
    void detach() override;

    /// Reads up to count bytes at the stream's position and moves past them. What is not delivered of destination is
    /// filled with zeros. Clears the status first; a failure after some bytes were delivered is left for the next call.
    /// @param status  TAM_E_STREAM_DETACHED (0xC2000017), TAM_E_END_OF_DATA (0xC2000019), or what the buffer reports;
    ///                clear when count is 0
    /// @return the bytes delivered
    unsigned int read(unsigned int count, void* destination, Tam_status& status) override;

    /// The same at position, through the same cache; the stream's own position stays.
    unsigned int read_at(unsigned long long position, unsigned int count, void* destination,
                         Tam_status& status) const override;

private:
    template <class Units>
    friend class detail::Cache_source; // looks for line ends in the cache itself

    // What the cache holds from position on: count bytes, none when position lies outside.
    const unsigned char* _cached(unsigned long long position, unsigned int& count) const
    {
        const unsigned long long offset = position - m_cache_start;
        if (offset >= m_cache_valid) {
            count = 0;
            return nullptr;
        }
        count = m_cache_valid - static_cast<unsigned int>(offset);
        return m_cache + offset;
    }

    void relocate_buffer(unsigned long long position, Tam_status& status) const;

    mutable unsigned char m_cache[CACHE_SIZE];
    mutable unsigned long long m_cache_start = 0; // position of the cache's first byte
    mutable unsigned int m_cache_valid = 0;       // bytes in the cache
};

} // namespace tam
