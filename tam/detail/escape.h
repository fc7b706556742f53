#pragma once

#include <array>
#include <type_traits>

#include <tam/detail/characters.h>

namespace tam::detail {

// The escape sequences of quoted text, which regular expressions have too.

constexpr char BACKSLASH = '\\';

struct Escape {
    char character;
    char letter; // behind the backslash
};

constexpr Escape ESCAPES[] = {
    {'"', '"'}, {'\\', '\\'}, {'\r', 'r'}, {'\n', 'n'}, {'\t', 't'}, {'\v', 'v'}, {'\b', 'b'}, {'\f', 'f'}, {'\a', 'a'},
};

constexpr unsigned int ESCAPE_TABLE_SIZE = 128; // all characters and letters of ESCAPES lie below
using Escape_table = std::array<char, ESCAPE_TABLE_SIZE>;

// One column of ESCAPES by the other; 0 where there is none.
constexpr Escape_table escape_table(char Escape::*from, char Escape::*to)
{
    Escape_table table{};
    for (const Escape& escape : ESCAPES) {
        table[static_cast<unsigned char>(escape.*from)] = escape.*to;
    }
    return table;
}

template <class Char>
Char look_up_escape(const Escape_table& table, Char c)
{
    const auto index = static_cast<std::make_unsigned_t<Char>>(c);
    return index < ESCAPE_TABLE_SIZE ? static_cast<Char>(table[index]) : Char(0);
}

template <class Char>
bool is_octal_digit(Char c)
{
    return c >= '0' && c <= '7';
}

template <class Char>
unsigned int hexadecimal_value(Char digit)
{
    constexpr unsigned int FULL_WIDTH_DIFFERENCE = 0xFF10 - 0x30; // U+FF10 is the full-width 0
    unsigned int c = static_cast<std::make_unsigned_t<Char>>(digit);
    if (c >= FULL_WIDTH_DIFFERENCE) {
        c -= FULL_WIDTH_DIFFERENCE;
    }
    if (c <= '9') {
        return c - '0';
    }
    return c - (c >= 'a' ? 'a' : 'A') + 10;
}

// Decodes what follows a backslash at from, before end, by the rules of tam_unquote, and leaves from behind it.
template <class Char>
Char decode_escape(const Char*& from, const Char* end)
{
    constexpr char HEXADECIMAL = 'x';
    constexpr unsigned int HEXADECIMAL_BITS = 4; // a digit
    constexpr unsigned int OCTAL_BITS = 3;
    constexpr int MAXIMUM_OCTAL_DIGITS = 3;
    static constexpr Escape_table CHARACTER_OF_LETTER = escape_table(&Escape::letter, &Escape::character);

    if (from == end) {
        return BACKSLASH;
    }
    unsigned int value = 0; // more digits than it can hold shift out at the top, where they would be cut anyway
    if (is_octal_digit(*from)) {
        for (int digits = 0; digits < MAXIMUM_OCTAL_DIGITS && from != end && is_octal_digit(*from); ++digits) {
            value = (value << OCTAL_BITS) | static_cast<unsigned int>(*from++ - '0');
        }
        return static_cast<Char>(value);
    }
    const Char letter = *from++;
    if (letter == HEXADECIMAL) {
        while (from != end && is_hexadecimal_digit(*from)) {
            value = (value << HEXADECIMAL_BITS) | hexadecimal_value(*from++);
        }
        return static_cast<Char>(value);
    }
    const Char character = look_up_escape(CHARACTER_OF_LETTER, letter);
    return character == 0 ? letter : character;
}

} // namespace tam::detail
