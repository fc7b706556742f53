#pragma once

#include <ctime>
#include <string>

namespace tam::detail {

// What the fields of a tm count from.
constexpr int TM_BASE_YEAR = 1900;
constexpr int TM_BASE_MONTH = 1;

// The walk that all formats of dates and times share: replaces result by format, in which append_token(c) is called for
// each % followed by a character c. A % at the very end stands for itself.
template <class Append_token>
void append_format(const std::wstring& format, std::wstring& result, Append_token append_token)
{
    result.clear();
    for (auto next = format.begin(); next != format.end(); ++next) {
        if (*next != L'%' || next + 1 == format.end()) {
            result += *next;
        } else {
            append_token(*++next);
        }
    }
}

// As printf's "%0*d" does: the sign is one of the digits. width is at most 10.
void append_number(std::wstring& text, int value, int width);

// The tokens that Tam_time::to_string() and Tam_date::to_string() describe. What is the same in every locale is made
// here, for speed; wcsftime makes the rest.
void append_time_token(std::wstring& text, wchar_t token, const tm& value);
void append_date_token(std::wstring& text, wchar_t token, const tm& value);

} // namespace tam::detail
