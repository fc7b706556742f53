#pragma once

#include <cstddef>

#include <tam/detail/crc32_polynomial.h>

namespace tam::detail {

// Folding, after V. Gopal and others, "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction", Intel,
// 2009: a block B that has n bits between its start and that of a later block contributes B * x^n to the remainder, so
// it may be replaced by anything congruent to that, added to the later block.
//
// A block of 128 bits is H * x^64 + L, with H in its low half, since memory and register are reflected. The product of
// two reflected halves comes out one bit low, that is multiplied by x, so that the factors of H and L are x^(n + 63) and
// x^(n - 1). Reduced modulo P, such a factor is of degree below 32 and lies in the high half of its 64 bits.
consteval long long crc32_fold_factor(unsigned int exponent)
{
    return static_cast<long long>(static_cast<unsigned long long>(crc32_times_x(CRC32_ONE, exponent)) << 32);
}

// Of H and of L, over a distance of so many bytes.
consteval long long crc32_high_factor(std::size_t bytes)
{
    return crc32_fold_factor(static_cast<unsigned int>(8 * bytes + 63));
}

consteval long long crc32_low_factor(std::size_t bytes)
{
    return crc32_fold_factor(static_cast<unsigned int>(8 * bytes - 1));
}

} // namespace tam::detail
