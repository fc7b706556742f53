#include <tam/detail/time_format.h>

#include <cwchar>
#include <iterator>
#include <string_view>

#include <tam/detail/win32.h>

namespace tam::detail {

namespace {

constexpr int DECIMAL = 10;
constexpr int MAXIMUM_WIDTH = 11;            // a 32-bit number with its sign
constexpr std::size_t FORMATTED_SIZE = 1024; // characters that one token can become
constexpr int SEPARATOR_SIZE = 10;           // with the null character
constexpr int ORDER_SIZE = 2;
constexpr int HOURS_PER_HALF_DAY = 12;
constexpr int DAYS_PER_WEEK = 7;

void append_by_run_time(std::wstring& text, wchar_t token, const tm& value)
{
    const wchar_t format[] = {L'%', token, L'\0'};
    wchar_t formatted[FORMATTED_SIZE];
    text.append(formatted, std::wcsftime(formatted, FORMATTED_SIZE, format, &value));
}

// The tokens of the thread's short date in their order, as LOCALE_IDATE numbers them.
std::wstring_view short_date_tokens(wchar_t order)
{
    switch (order) {
    case L'0':
        return L"mdY";
    case L'1':
        return L"dmY";
    case L'2':
        return L"Ymd";
    default:
        return {};
    }
}

// The separator is text, even one with a percent sign.
void append_short_date(std::wstring& text, const tm& value)
{
    const LCID locale = ::GetThreadLocale();
    wchar_t separator[SEPARATOR_SIZE];
    wchar_t order[ORDER_SIZE];
    std::wstring_view tokens;
    if (win32.get_locale_info(locale, LOCALE_SDATE, separator, SEPARATOR_SIZE) > 0 &&
        win32.get_locale_info(locale, LOCALE_IDATE, order, ORDER_SIZE) > 0) {
        tokens = short_date_tokens(order[0]);
    }
    const bool is_known = !tokens.empty();
    if (!is_known) {
        tokens = L"dmY";
    }
    const std::wstring_view between = is_known ? separator : L"/";
    append_date_token(text, tokens[0], value);
    text += between;
    append_date_token(text, tokens[1], value);
    text += between;
    append_date_token(text, tokens[2], value);
}

} // namespace

void append_number(std::wstring& text, int value, int width)
{
    wchar_t digits[MAXIMUM_WIDTH];
    wchar_t* const end = std::end(digits);
    wchar_t* first = end;
    // Unsigned, since the lowest number has no positive counterpart.
    auto rest = static_cast<unsigned int>(value);
    if (value < 0) {
        rest = 0 - rest;
        --width;
    }
    do {
        *--first = static_cast<wchar_t>(L'0' + rest % DECIMAL);
        rest /= DECIMAL;
    } while (rest != 0);
    while (end - first < width) {
        *--first = L'0';
    }
    if (value < 0) {
        *--first = L'-';
    }
    text.append(first, end);
}

void append_time_token(std::wstring& text, wchar_t token, const tm& value)
{
    switch (token) {
    case L'%':
        text += L'%';
        break;
    case L'H':
        append_number(text, value.tm_hour, 2);
        break;
    case L'I':
        append_number(text, (value.tm_hour + HOURS_PER_HALF_DAY - 1) % HOURS_PER_HALF_DAY + 1, 2);
        break;
    case L'M':
        append_number(text, value.tm_min, 2);
        break;
    case L'S':
        append_number(text, value.tm_sec, 2);
        break;
    default:
        append_by_run_time(text, token, value);
    }
}

void append_date_token(std::wstring& text, wchar_t token, const tm& value)
{
    switch (token) {
    case L'%':
        text += L'%';
        break;
    case L'U':
        append_number(text, (value.tm_yday + DAYS_PER_WEEK - value.tm_wday) / DAYS_PER_WEEK, 2);
        break;
    case L'Y': {
        const int year = value.tm_year + TM_BASE_YEAR;
        append_number(text, year, year < 0 ? 5 : 4);
        break;
    }
    case L'd':
        append_number(text, value.tm_mday, 2);
        break;
    case L'j':
        append_number(text, value.tm_yday + 1, 3);
        break;
    case L'm':
        append_number(text, value.tm_mon + TM_BASE_MONTH, 2);
        break;
    case L'w':
        append_number(text, value.tm_wday + 1, 1);
        break;
    case L'x':
        append_short_date(text, value);
        break;
    default:
        append_by_run_time(text, token, value);
    }
}

} // namespace tam::detail
