#include <tam/text/number.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <stdexcept>
#include <string_view>

#include <tam/detail/characters.h>

namespace tam {

namespace {

constexpr std::string_view LARGEST_INT32 = "2147483647";
constexpr std::string_view SMALLEST_INT32_MAGNITUDE = "2147483648";

// A text behind its leading white space and sign.
template <class Char>
struct Unsigned_part {
    bool negative;
    std::basic_string_view<Char> rest;
};

template <class Char>
Unsigned_part<Char> skip_space_and_sign(std::basic_string_view<Char> text)
{
    while (!text.empty() && detail::is_space(text.front())) {
        text.remove_prefix(1);
    }
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) {
        text.remove_prefix(1);
    }
    return {negative, text};
}

template <class Char>
bool is_digits(std::basic_string_view<Char> text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](Char c) { return detail::is_digit(c); });
}

template <class Char>
bool is_int32(std::basic_string_view<Char> text)
{
    auto [negative, digits] = skip_space_and_sign(text);
    if (!is_digits(digits)) {
        return false;
    }
    while (!digits.empty() && digits.front() == '0') {
        digits.remove_prefix(1);
    }
    const std::string_view limit = negative ? SMALLEST_INT32_MAGNITUDE : LARGEST_INT32;
    if (digits.size() != limit.size()) {
        return digits.size() < limit.size();
    }
    return !std::lexicographical_compare(limit.begin(), limit.end(), digits.begin(), digits.end());
}

constexpr wchar_t DIGITS[] = L"0123456789abcdef";
constexpr unsigned short SMALLEST_RADIX = 2;
constexpr unsigned short LARGEST_RADIX = 16;
constexpr unsigned short DECIMAL = 10;
constexpr signed char FIRST_PRINTABLE = 0x20;

// Room for the longest text, 64 binary digits and a sign, which is longer than 20 decimal digits with separators.
constexpr std::size_t MAXIMUM_UNITS = sizeof(long long) * CHAR_BIT + 1;

// "00" to "99".
constexpr unsigned int PAIR_VALUES = DECIMAL * DECIMAL;
constexpr auto PAIRS = [] {
    std::array<wchar_t, 2 * PAIR_VALUES> pairs{};
    for (unsigned int value = 0; value < PAIR_VALUES; ++value) {
        pairs[2 * value] = DIGITS[value / DECIMAL];
        pairs[2 * value + 1] = DIGITS[value % DECIMAL];
    }
    return pairs;
}();

// These write before end and return where the digits begin.

wchar_t* write_decimal(unsigned long long magnitude, wchar_t* end)
{
    while (magnitude >= PAIR_VALUES) {
        end = std::copy_n(&PAIRS[2 * (magnitude % PAIR_VALUES)], 2, end - 2) - 2;
        magnitude /= PAIR_VALUES;
    }
    if (magnitude >= DECIMAL) {
        return std::copy_n(&PAIRS[2 * magnitude], 2, end - 2) - 2;
    }
    *--end = DIGITS[magnitude];
    return end;
}

wchar_t* write_power_of_two(unsigned long long magnitude, wchar_t* end, unsigned short radix)
{
    const int shift = std::countr_zero(radix);
    const unsigned int mask = radix - 1U;
    do {
        *--end = DIGITS[magnitude & mask];
        magnitude >>= shift;
    } while (magnitude != 0);
    return end;
}

wchar_t* write_any(unsigned long long magnitude, wchar_t* end, unsigned short radix)
{
    do {
        *--end = DIGITS[magnitude % radix];
        magnitude /= radix;
    } while (magnitude != 0);
    return end;
}

wchar_t* write_grouped(unsigned long long magnitude, wchar_t* end)
{
    const lconv* const locale = std::localeconv();
    wchar_t separator = 0;
    // Signed on purpose: bytes from 0x80 on count as control characters.
    if (static_cast<signed char>(locale->thousands_sep[0]) < FIRST_PRINTABLE ||
        std::mbtowc(&separator, locale->thousands_sep, 1) <= 0) {
        return write_decimal(magnitude, end);
    }
    const unsigned int group = static_cast<unsigned char>(locale->grouping[0]);
    unsigned int in_group = 0;
    for (;;) {
        *--end = DIGITS[magnitude % DECIMAL];
        magnitude /= DECIMAL;
        if (magnitude == 0) {
            return end;
        }
        ++in_group;
        if (in_group == group) {
            *--end = separator;
            in_group = 0;
        }
    }
}

void write(bool negative, unsigned long long magnitude, std::wstring& out, unsigned short radix, bool format)
{
    if (radix < SMALLEST_RADIX || radix > LARGEST_RADIX) {
        out.clear();
        return;
    }
    wchar_t units[MAXIMUM_UNITS];
    wchar_t* const end = units + MAXIMUM_UNITS;
    wchar_t* first;
    if (radix == DECIMAL) {
        first = format ? write_grouped(magnitude, end) : write_decimal(magnitude, end);
    } else if (std::has_single_bit(radix)) {
        first = write_power_of_two(magnitude, end, radix);
    } else {
        first = write_any(magnitude, end, radix);
    }
    if (negative) {
        *--first = L'-';
    }
    out.assign(first, end);
}

} // namespace

bool tam_is_int32(const std::string& text)
{
    return is_int32(std::string_view(text));
}

bool tam_is_int32(const std::wstring& text)
{
    return is_int32(std::wstring_view(text));
}

bool tam_is_number(const std::string& text)
{
    return is_digits(skip_space_and_sign(std::string_view(text)).rest);
}

bool tam_is_number(const std::wstring& text)
{
    return is_digits(skip_space_and_sign(std::wstring_view(text)).rest);
}

int tam_wtoi32(const std::wstring& text)
{
    if (!tam_is_int32(text)) {
        throw std::invalid_argument("tam::tam_wtoi32 number is invalid");
    }
    return ::_wtoi(text.c_str());
}

long long tam_wtoi64(const std::wstring& text)
{
    return ::_wtoi64(text.c_str());
}

void tam_itow(long long value, std::wstring& out, unsigned short radix, bool format)
{
    const auto bits = static_cast<unsigned long long>(value);
    write(value < 0, value < 0 ? 0 - bits : bits, out, radix, format);
}

void tam_itow(unsigned long long value, std::wstring& out, unsigned short radix, bool format)
{
    write(false, value, out, radix, format);
}

} // namespace tam
