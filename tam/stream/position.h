#pragma once

#include <tam/detail/export.h>

namespace tam {

/// The largest position that tam_advance reaches by a positive offset, 2^63 - 1.
inline constexpr unsigned long long TAM_MAXIMUM_POSITION = 0x7FFFFFFFFFFFFFFF;

/// The position offset bytes after (or, when negative, before) position.
/// @throws std::overflow_error   "Stream position too large.": offset is 0 or more and the result would exceed
///                               TAM_MAXIMUM_POSITION
/// @throws std::underflow_error  "Stream position going negative.": offset is negative and goes before 0
TAM_API unsigned long long tam_advance(unsigned long long position, int offset);

/// a - b in bytes, from -2^31 to 2^31 - 1.
/// @throws std::overflow_error  "Stream offset too positive": a - b exceeds 2^31 - 1;
///                              "Stream offset too negative": b - a exceeds 2^31 (this too is an overflow_error)
TAM_API int tam_difference(unsigned long long a, unsigned long long b);

} // namespace tam
