#include <tam/detail/crc32_folding.h>

#include <immintrin.h>

#include <tam/detail/crc32_kernels.h>

// As crc32_folding.cpp, but for other processors: a template of both would have to be compiled for one of them.
#define TAM_VPCLMUL [[gnu::target("avx2,vpclmulqdq")]]

namespace tam::detail {

namespace {

constexpr std::size_t LANE = sizeof(__m256i); // two blocks, which are folded side by side
constexpr std::size_t LANES = 4;
constexpr std::size_t STRIDE = LANES * LANE;

TAM_VPCLMUL inline __m256i load(const unsigned char* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

TAM_VPCLMUL inline __m256i fold(__m256i blocks, __m256i factors, __m256i onto)
{
    const __m256i high = _mm256_clmulepi64_epi128(blocks, factors, 0x00);
    const __m256i low = _mm256_clmulepi64_epi128(blocks, factors, 0x11);
    return _mm256_xor_si256(_mm256_xor_si256(high, low), onto);
}

} // namespace

bool can_fold_crc32_wide()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("vpclmulqdq") != 0; // asks the system too
}

TAM_VPCLMUL unsigned int crc32_by_wide_folding(unsigned int crc, const unsigned char* bytes, std::size_t count)
{
    if (count < 2 * STRIDE) {
        return crc32_by_folding(crc, bytes, count);
    }
    __m256i lanes[LANES];
    for (std::size_t i = 0; i < LANES; ++i) {
        lanes[i] = load(bytes + i * LANE);
    }
    lanes[0] = _mm256_xor_si256(lanes[0], _mm256_zextsi128_si256(_mm_cvtsi32_si128(static_cast<int>(crc))));
    bytes += STRIDE;
    count -= STRIDE;

    const __m256i by_stride =
        _mm256_broadcastsi128_si256(_mm_set_epi64x(crc32_low_factor(STRIDE), crc32_high_factor(STRIDE)));
    for (; count >= STRIDE; count -= STRIDE, bytes += STRIDE) {
        for (std::size_t i = 0; i < LANES; ++i) {
            lanes[i] = fold(lanes[i], by_stride, load(bytes + i * LANE));
        }
    }

    // The lanes have the remainder of all before them: as data, they lead to their register.
    unsigned char last[STRIDE];
    for (std::size_t i = 0; i < LANES; ++i) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(last + i * LANE), lanes[i]);
    }
    return crc32_by_folding(crc32_by_folding(0, last, STRIDE), bytes, count);
}

} // namespace tam::detail
