#pragma once

#include <cctype>
#include <cwctype>

namespace tam::detail {

// The C run-time's character classes and case mapping in its current locale, the same for narrow and wide characters.
// The narrow calls take no negative values, which plain char has from 0x80 on.

inline bool is_space(char c)
{
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

inline bool is_space(wchar_t c)
{
    return std::iswspace(c) != 0;
}

inline bool is_digit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

inline bool is_digit(wchar_t c)
{
    return std::iswdigit(c) != 0;
}

inline bool is_hexadecimal_digit(char c)
{
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

inline bool is_hexadecimal_digit(wchar_t c)
{
    return std::iswxdigit(c) != 0;
}

inline char to_upper(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

inline wchar_t to_upper(wchar_t c)
{
    return static_cast<wchar_t>(std::towupper(c));
}

inline char to_lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

inline wchar_t to_lower(wchar_t c)
{
    return static_cast<wchar_t>(std::towlower(c));
}

} // namespace tam::detail
