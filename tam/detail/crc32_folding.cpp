#include <tam/detail/crc32_folding.h>

#include <immintrin.h>

#include <tam/detail/crc32_kernels.h>

// The rest of the library runs on every processor of the architecture.
#define TAM_PCLMUL [[gnu::target("pclmul")]]

namespace tam::detail {

namespace {

constexpr std::size_t BLOCK = sizeof(__m128i);
constexpr std::size_t LANES = 4; // so many products are under way while one is made
constexpr std::size_t STRIDE = LANES * BLOCK;

TAM_PCLMUL inline __m128i load(const unsigned char* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

TAM_PCLMUL inline __m128i fold(__m128i block, __m128i factors, __m128i onto)
{
    const __m128i high = _mm_clmulepi64_si128(block, factors, 0x00);
    const __m128i low = _mm_clmulepi64_si128(block, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(high, low), onto);
}

} // namespace

bool can_fold_crc32()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("pclmul") != 0;
}

TAM_PCLMUL unsigned int crc32_by_folding(unsigned int crc, const unsigned char* bytes, std::size_t count)
{
    if (count < STRIDE) {
        return crc32_by_tables(crc, bytes, count);
    }
    __m128i lanes[LANES];
    for (std::size_t i = 0; i < LANES; ++i) {
        lanes[i] = load(bytes + i * BLOCK);
    }
    lanes[0] = _mm_xor_si128(lanes[0], _mm_cvtsi32_si128(static_cast<int>(crc)));
    bytes += STRIDE;
    count -= STRIDE;

    const __m128i by_stride = _mm_set_epi64x(crc32_low_factor(STRIDE), crc32_high_factor(STRIDE));
    for (; count >= STRIDE; count -= STRIDE, bytes += STRIDE) {
        for (std::size_t i = 0; i < LANES; ++i) {
            lanes[i] = fold(lanes[i], by_stride, load(bytes + i * BLOCK));
        }
    }

    const __m128i by_block = _mm_set_epi64x(crc32_low_factor(BLOCK), crc32_high_factor(BLOCK));
    __m128i block = lanes[0];
    for (std::size_t i = 1; i < LANES; ++i) {
        block = fold(block, by_block, lanes[i]);
    }
    for (; count >= BLOCK; count -= BLOCK, bytes += BLOCK) {
        block = fold(block, by_block, load(bytes));
    }

    // The block has the remainder of all before it: as data, it leads to their register.
    unsigned char last[BLOCK];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(last), block);
    return crc32_by_tables(crc32_by_tables(0, last, BLOCK), bytes, count);
}

} // namespace tam::detail
