#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <tam/status/codes.h>
#include <tam/stream/buffer.h>
#include <tam/stream/position.h>

namespace tam::test {

/// A buffer over a string, with faults on demand. It derives from Tam_buffer as a caller's buffer does.
class Vector_buffer : public Tam_buffer {
public:
    struct Read {
        bool wait;
        unsigned long long position;
        unsigned int count;
    };

    explicit Vector_buffer(std::string bytes = {}) : data(std::move(bytes)) {}

    void connect_unbuffered_istream(Tam_status& status) const override
    {
        Tam_buffer::connect_unbuffered_istream(status);
        status = refuse_readers;
    }
    void connect_buffered_istream(Tam_status& status) const override
    {
        Tam_buffer::connect_buffered_istream(status);
        status = refuse_readers;
    }

    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override
    {
        const unsigned long long base = mode == TAM_SEEK_START ? 0 : mode == TAM_SEEK_END ? data.size() : position;
        try {
            position = tam_advance(base, offset);
        } catch (const std::exception&) {
            status = TAM_E_POSITION_OUT_OF_RANGE;
        }
    }

    using Tam_buffer::num_buffered_istream;
    using Tam_buffer::num_unbuffered_istream;

    std::string data;
    unsigned int refuse_readers = 0;      ///< what a reader gets instead of a connection
    unsigned long long fail_from = ~0ULL; ///< reading there, before the end, gives TAM_E_READ
    std::function<unsigned int(unsigned long long position)> portion; ///< the most bytes of a read there
    std::function<void()> before_read;
    mutable std::vector<Read> reads;

protected:
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override
    {
        reads.push_back({wait, position, count});
        if (before_read) {
            before_read();
        }
        status.clear();
        std::memset(destination, 0xEE, count); // a buffer may use all of its destination
        if (position >= data.size()) {
            status = TAM_E_END_OF_DATA;
            return 0;
        }
        if (position >= fail_from) {
            status = 1117;
            status.push(TAM_E_READ);
            return 0;
        }
        unsigned long long n = std::min<unsigned long long>({count, data.size() - position, fail_from - position});
        if (portion) {
            n = std::min<unsigned long long>(n, portion(position));
        }
        std::memcpy(destination, data.data() + position, static_cast<std::size_t>(n));
        position += n;
        return static_cast<unsigned int>(n);
    }

    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override
    {
        status.clear();
        data.resize(std::max<std::size_t>(data.size(), static_cast<std::size_t>(position) + count));
        std::copy_n(static_cast<const unsigned char*>(source), count,
                    data.begin() + static_cast<std::ptrdiff_t>(position));
        position += count;
    }
};

} // namespace tam::test
