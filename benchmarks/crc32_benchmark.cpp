#include <benchmarks/benchmarks.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include <zlib.h>

#include <tam/detail/crc32_kernels.h>
#include <tam/stream.h>

namespace tam::benchmarks {

namespace {

constexpr unsigned int LARGE = 16 << 20;
constexpr unsigned int SMALL = 256;
constexpr unsigned int TIMES = 8; // a run is long beside the clock's step
constexpr const char* PEER = "zlib crc32";

using Bytes = std::vector<unsigned char>;

Bytes bytes_without_pattern(std::size_t count)
{
    Bytes bytes(count);
    std::uint32_t state = 1;
    for (unsigned char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

unsigned int crc_by_tam(const unsigned char* bytes, unsigned int count)
{
    Tam_crc32 crc;
    crc.update(bytes, count);
    return crc.result();
}

unsigned int crc_by_tables(const unsigned char* bytes, unsigned int count)
{
    return ~detail::crc32_by_tables(0xFFFFFFFF, bytes, count);
}

unsigned int crc_by_folding(const unsigned char* bytes, unsigned int count)
{
    return ~detail::crc32_by_folding(0xFFFFFFFF, bytes, count);
}

unsigned int crc_by_zlib(const unsigned char* bytes, unsigned int count)
{
    return static_cast<unsigned int>(::crc32(0, bytes, count));
}

using Way = unsigned int (*)(const unsigned char* bytes, unsigned int count);

// All of the bytes, in pieces of so many.
void run(Way crc_of, const Bytes& bytes, unsigned int piece)
{
    for (unsigned int time = 0; time < TIMES; ++time) {
        for (std::size_t start = 0; start < bytes.size(); start += piece) {
            const unsigned int crc = crc_of(bytes.data() + start, piece);
            consume(&crc);
        }
    }
}

void compare_with_zlib(const char* name, Way ours, const Bytes& bytes, unsigned int piece, const char* goal)
{
    if (ours(bytes.data(), piece) != crc_by_zlib(bytes.data(), piece)) {
        throw std::runtime_error("two CRCs of the same bytes differ");
    }
    compare({name, "bytes", static_cast<double>(bytes.size()) * TIMES, [&] { run(ours, bytes, piece); }, PEER,
             [&] { run(crc_by_zlib, bytes, piece); }, goal});
}

} // namespace

void run_crc32_benchmarks()
{
    const Bytes bytes = bytes_without_pattern(LARGE);
    compare_with_zlib("crc32/16_MB", crc_by_tam, bytes, LARGE, ">= 3, stretch 5");
    compare_with_zlib("crc32/256_bytes", crc_by_tam, bytes, SMALL, ">= 1");
    if (detail::can_fold_crc32()) {
        compare_with_zlib("crc32/16_MB/128_bits_at_once", crc_by_folding, bytes, LARGE, ">= 3");
    }
    compare_with_zlib("crc32/16_MB/tables_alone", crc_by_tables, bytes, LARGE, ">= 1");
    compare_with_zlib("crc32/256_bytes/tables_alone", crc_by_tables, bytes, SMALL, ">= 1");
}

} // namespace tam::benchmarks
