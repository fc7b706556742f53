#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Replaces out by value's digits in the radix, lower-case, with a leading "-" when value is negative.
/// @param radix   2 to 16
/// @param format  in radix 10, group the digits as the C run-time's current locale does
TAM_API void tam_itow(long long value, std::wstring& out, unsigned short radix, bool format);
TAM_API void tam_itow(unsigned long long value, std::wstring& out, unsigned short radix, bool format);

} // namespace tam
