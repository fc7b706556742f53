#pragma once

/// @file
/// Numbers as text. White space and digits are what the C run-time takes for them in its current locale; the wide
/// digits include more than 0 to 9 (Arabic ones, superscripts).

#include <concepts>
#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Whether text is a signed 32-bit decimal number: white space, an optional "+" or "-", and digits only, whose value
/// after any number of leading zeros lies from -2147483648 to 2147483647. Anything behind the digits, white space
/// included, makes it none.
///
/// The value is judged by the digits' characters; ten digits that begin with one other than 0 to 9 are too large.
TAM_API bool tam_is_int32(const std::string& text);
TAM_API bool tam_is_int32(const std::wstring& text);

/// Whether text is white space, an optional "+" or "-", and at least one digit and nothing else, of whatever length
/// and value.
TAM_API bool tam_is_number(const std::string& text);
TAM_API bool tam_is_number(const std::wstring& text);

/// The number in text, as the C run-time's _wtoi reads it.
/// @throws std::invalid_argument  "tam::tam_wtoi32 number is invalid": not tam_is_int32(text)
TAM_API int tam_wtoi32(const std::wstring& text);

/// The number at the start of text, as the C run-time's _wtoi64 reads it: unchecked, 0 where there is none. A number
/// too large for 64 bits gives what that run-time makes of it.
TAM_API long long tam_wtoi64(const std::wstring& text);

/// Replaces out by value's digits in the radix, lower-case, with a leading "-" when value is negative.
///
/// With format and radix 10 the digits are grouped from the right by the C run-time's current locale: the separator is
/// the first character of its thousands_sep, and the first byte of its grouping is the size of every group; 0 does not
/// group. A thousands_sep whose first byte is a control character or 0x80 and above does not group either.
///
/// @param radix   2 to 16; out becomes empty with any other
/// @param format  whether to group digits; without effect unless radix is 10
TAM_API void tam_itow(long long value, std::wstring& out, unsigned short radix, bool format);
TAM_API void tam_itow(unsigned long long value, std::wstring& out, unsigned short radix, bool format);

/// The same for the other types of integers.
template <std::integral Integer>
void tam_itow(Integer value, std::wstring& out, unsigned short radix, bool format)
{
    if constexpr (std::signed_integral<Integer>) {
        tam_itow(static_cast<long long>(value), out, radix, format);
    } else {
        tam_itow(static_cast<unsigned long long>(value), out, radix, format);
    }
}

} // namespace tam
