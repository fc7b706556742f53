#pragma once

#include <cstddef>

namespace tam::detail {

// The ways to move the register of a CRC-32 over count bytes at any address. All give the same result; a faster one
// leaves what is too short for it to the next slower one.

// For every processor.
unsigned int crc32_by_tables(unsigned int crc, const unsigned char* bytes, std::size_t count);

// For processors that multiply polynomials (PCLMULQDQ).
unsigned int crc32_by_folding(unsigned int crc, const unsigned char* bytes, std::size_t count);
bool can_fold_crc32();

// For those that multiply two pairs of them at once (VPCLMULQDQ with AVX2).
unsigned int crc32_by_wide_folding(unsigned int crc, const unsigned char* bytes, std::size_t count);
bool can_fold_crc32_wide();

} // namespace tam::detail
