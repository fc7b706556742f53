#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Makes out the quoted form of in: between double quotes, with a backslash before each double quote and backslash, and
/// `\r \n \t \v \b \f \a` for those control characters. All other characters, the other control characters
/// included, stand for themselves. tam_unquote() gives in back. in and out may be the same string.
TAM_API void tam_quote(const std::string& in, std::string& out);
TAM_API void tam_quote(const std::wstring& in, std::wstring& out);

/// Makes out the text that in is the quoted form of. in and out may be the same string.
///
/// One double quote at each end is removed; when not both are there, the text is decoded as it is. In it
///   - `\t \r \n \f \a \b \v \\` give the characters that tam_quote() writes so;
///   - `\x` and all hexadecimal digits that follow, however many, give one character whose value is the number's low 8
///     (narrow) or 16 (wide) bits, and `\x` without a digit gives the character 0. Full-width digits, which the C
///     run-time counts among the wide ones, have the values of their plain twins;
///   - a backslash and one to three octal digits give the character of that value, cut likewise;
///   - a backslash before any other character is dropped, and as the last character it stays.
///
/// All other characters, double quotes included, stand for themselves.
TAM_API void tam_unquote(const std::string& in, std::string& out);
TAM_API void tam_unquote(const std::wstring& in, std::wstring& out);

} // namespace tam
