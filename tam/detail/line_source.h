#pragma once

#include <algorithm>

#include <tam/detail/line_reader.h>
#include <tam/status/status.h>
#include <tam/stream/buffered_istream.h>
#include <tam/stream/istream.h>

// Where read_line gets its pieces from.

namespace tam::detail {

// What a stream's read_at delivers.
template <class Units>
class Read_at_source {
public:
    explicit Read_at_source(const Tam_istream& stream) : m_stream(stream) {}

    Line_piece next(unsigned long long position, unsigned int most_units, Tam_status& status)
    {
        const unsigned int wanted = std::min(most_units, CHUNK) * Units::SIZE;
        unsigned int delivered = 0;
        do {
            const unsigned int rest = wanted - delivered;
            delivered += std::min(m_stream.read_at(position + delivered, rest, m_chunk + delivered, status), rest);
        } while (delivered < Units::SIZE && status.ok());
        return {m_chunk, delivered / Units::SIZE};
    }

private:
    static constexpr unsigned int CHUNK = 78; // units: short lines cost little

    const Tam_istream& m_stream;
    unsigned char m_chunk[CHUNK * Units::SIZE];
};

// The bytes in a buffered stream's cache, where they lie. What is not there comes by way of read_at, which fills the
// cache.
template <class Units>
class Cache_source {
public:
    explicit Cache_source(const Tam_buffered_istream& stream) : m_stream(stream), m_refill(stream) {}

    Line_piece next(unsigned long long position, unsigned int most_units, Tam_status& status)
    {
        unsigned int bytes = 0;
        const unsigned char* const cached = m_stream._cached(position, bytes);
        if (bytes < Units::SIZE) {
            return m_refill.next(position, most_units, status);
        }
        return {cached, std::min(bytes / Units::SIZE, most_units)};
    }

private:
    const Tam_buffered_istream& m_stream;
    Read_at_source<Units> m_refill;
};

} // namespace tam::detail
