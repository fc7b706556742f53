#include <tam/text/number.h>

#include <climits>
#include <clocale>
#include <cstdlib>

namespace tam {

namespace {

constexpr wchar_t DIGITS[] = L"0123456789abcdef";
constexpr unsigned short DECIMAL = 10;
constexpr signed char FIRST_PRINTABLE = 0x20;
constexpr std::size_t MAXIMUM_UNITS = 2 * sizeof(long long) * CHAR_BIT; // binary digits, each with a separator

void write(bool negative, unsigned long long magnitude, std::wstring& out, unsigned short radix, bool format)
{
    wchar_t separator = 0;
    int group = 0;
    if (format && radix == DECIMAL) {
        const lconv* const locale = std::localeconv();
        if (static_cast<signed char>(locale->thousands_sep[0]) >= FIRST_PRINTABLE
            && std::mbtowc(&separator, locale->thousands_sep, 1) > 0) {
            group = static_cast<unsigned char>(locale->grouping[0]);
        }
    }
    wchar_t units[MAXIMUM_UNITS];
    wchar_t* const end = units + MAXIMUM_UNITS;
    wchar_t* first = end;
    int in_group = 0;
    do {
        if (group != 0 && in_group == group) {
            *--first = separator;
            in_group = 0;
        }
        *--first = DIGITS[magnitude % radix];
        magnitude /= radix;
        ++in_group;
    } while (magnitude != 0);
    if (negative) {
        *--first = L'-';
    }
    out.assign(first, end);
}

} // namespace

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
