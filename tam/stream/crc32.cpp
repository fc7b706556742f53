#include <tam/stream/crc32.h>

#include <algorithm>

#include <tam/detail/crc32_kernels.h>
#include <tam/detail/crc32_polynomial.h>
#include <tam/status/codes.h>
#include <tam/stream/unbuffered_istream.h>

namespace tam {

namespace {

constexpr unsigned int STREAM_PIECE = 16384;

consteval unsigned int entry(unsigned int byte)
{
    return detail::crc32_times_x(byte, 8);
}

using Kernel = unsigned int (*)(unsigned int crc, const unsigned char* bytes, std::size_t count);

Kernel fastest_kernel()
{
    if (detail::can_fold_crc32() && detail::can_fold_crc32_wide()) {
        return detail::crc32_by_wide_folding;
    }
    return detail::can_fold_crc32() ? detail::crc32_by_folding : detail::crc32_by_tables;
}

} // namespace

// An array of the language cannot be computed as a whole.
#define TAM_4_ENTRIES(i) entry(i), entry((i) + 1), entry((i) + 2), entry((i) + 3)
#define TAM_16_ENTRIES(i) TAM_4_ENTRIES(i), TAM_4_ENTRIES((i) + 4), TAM_4_ENTRIES((i) + 8), TAM_4_ENTRIES((i) + 12)
#define TAM_64_ENTRIES(i)                                                                                              \
    TAM_16_ENTRIES(i), TAM_16_ENTRIES((i) + 16), TAM_16_ENTRIES((i) + 32), TAM_16_ENTRIES((i) + 48)

constinit const unsigned int crc32_table[256] = {TAM_64_ENTRIES(0), TAM_64_ENTRIES(64), TAM_64_ENTRIES(128),
                                                 TAM_64_ENTRIES(192)};

#undef TAM_64_ENTRIES
#undef TAM_16_ENTRIES
#undef TAM_4_ENTRIES

void Tam_crc32::update(const void* data, unsigned int count)
{
    static const Kernel kernel = fastest_kernel();
    m_register = kernel(m_register, static_cast<const unsigned char*>(data), count);
}

void Tam_crc32::update(Tam_istream* stream, Tam_status& status)
{
    stream->seek(TAM_SEEK_START, 0, status);
    unsigned char piece[STREAM_PIECE];
    for (unsigned int delivered = 1; status.ok() && delivered != 0;) {
        // A stream of the caller's own may claim more than it was asked for.
        delivered = std::min(stream->read(STREAM_PIECE, piece, status), STREAM_PIECE);
        if (status.ok()) {
            update(piece, delivered);
        }
    }
    if (status == TAM_E_END_OF_DATA) {
        status.clear();
    }
}

void Tam_crc32::update(const Tam_buffer& buffer, Tam_status& status)
{
    Tam_unbuffered_istream stream(buffer, true, status, TAM_EOL_CR_LF);
    if (status.ok()) {
        update(&stream, status);
    }
}

} // namespace tam
