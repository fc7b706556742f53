#include <tam/text/quote.h>

#include <algorithm>
#include <array>
#include <type_traits>

#include <tam/detail/characters.h>

namespace tam {

namespace {

constexpr char QUOTE = '"';
constexpr char BACKSLASH = '\\';
constexpr char HEXADECIMAL = 'x';

constexpr unsigned int HEXADECIMAL_BITS = 4; // a digit
constexpr unsigned int OCTAL_BITS = 3;
constexpr int MAXIMUM_OCTAL_DIGITS = 3;
constexpr unsigned int FULL_WIDTH_DIFFERENCE = 0xFF10 - 0x30; // U+FF10 is the full-width 0

constexpr struct {
    char character;
    char letter; // behind the backslash
} ESCAPES[] = {
    {'"', '"'}, {'\\', '\\'}, {'\r', 'r'}, {'\n', 'n'}, {'\t', 't'}, {'\v', 'v'}, {'\b', 'b'}, {'\f', 'f'}, {'\a', 'a'},
};

constexpr unsigned int TABLE_SIZE = 128; // all characters and letters of ESCAPES lie below
using Table = std::array<char, TABLE_SIZE>;

// 0 where there is none.
constexpr Table LETTER_OF_CHARACTER = [] {
    Table table{};
    for (const auto& escape : ESCAPES) {
        table[static_cast<unsigned char>(escape.character)] = escape.letter;
    }
    return table;
}();

constexpr Table CHARACTER_OF_LETTER = [] {
    Table table{};
    for (const auto& escape : ESCAPES) {
        table[static_cast<unsigned char>(escape.letter)] = escape.character;
    }
    return table;
}();

template <class Char>
Char look_up(const Table& table, Char c)
{
    const auto index = static_cast<std::make_unsigned_t<Char>>(c);
    return index < TABLE_SIZE ? static_cast<Char>(table[index]) : Char(0);
}

template <class Char>
void quote(const std::basic_string<Char>& in, std::basic_string<Char>& out)
{
    if (&in == &out) {
        const std::basic_string<Char> copy(in);
        quote(copy, out);
        return;
    }
    const auto escapes =
        std::count_if(in.begin(), in.end(), [](Char c) { return look_up(LETTER_OF_CHARACTER, c) != 0; });
    out.resize(in.size() + static_cast<std::size_t>(escapes) + 2);
    Char* to = out.data();
    *to++ = QUOTE;
    for (const Char c : in) {
        const Char letter = look_up(LETTER_OF_CHARACTER, c);
        if (letter == 0) {
            *to++ = c;
        } else {
            *to++ = BACKSLASH;
            *to++ = letter;
        }
    }
    *to = QUOTE;
}

template <class Char>
bool is_octal_digit(Char c)
{
    return c >= '0' && c <= '7';
}

template <class Char>
unsigned int hexadecimal_value(Char digit)
{
    unsigned int c = static_cast<std::make_unsigned_t<Char>>(digit);
    if (c >= FULL_WIDTH_DIFFERENCE) {
        c -= FULL_WIDTH_DIFFERENCE;
    }
    if (c <= '9') {
        return c - '0';
    }
    return c - (c >= 'a' ? 'a' : 'A') + 10;
}

// Decodes what follows a backslash at from, before end, and leaves from behind it.
template <class Char>
Char decode(const Char*& from, const Char* end)
{
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
        while (from != end && detail::is_hexadecimal_digit(*from)) {
            value = (value << HEXADECIMAL_BITS) | hexadecimal_value(*from++);
        }
        return static_cast<Char>(value);
    }
    const Char character = look_up(CHARACTER_OF_LETTER, letter);
    return character == 0 ? letter : character;
}

template <class Char>
void unquote(const std::basic_string<Char>& in, std::basic_string<Char>& out)
{
    const bool quoted = in.size() >= 2 && in.front() == QUOTE && in.back() == QUOTE;
    out.assign(in, quoted ? 1 : 0, quoted ? in.size() - 2 : in.size());
    const std::size_t first = out.find(Char(BACKSLASH));
    if (first == out.npos) {
        return;
    }
    // In place: what a sequence gives is never longer than the sequence.
    Char* to = out.data() + first;
    const Char* from = to;
    const Char* const end = out.data() + out.size();
    while (from != end) {
        const Char c = *from++;
        *to++ = c == BACKSLASH ? decode(from, end) : c;
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
}

} // namespace

void tam_quote(const std::string& in, std::string& out)
{
    quote(in, out);
}

void tam_quote(const std::wstring& in, std::wstring& out)
{
    quote(in, out);
}

void tam_unquote(const std::string& in, std::string& out)
{
    unquote(in, out);
}

void tam_unquote(const std::wstring& in, std::wstring& out)
{
    unquote(in, out);
}

} // namespace tam
