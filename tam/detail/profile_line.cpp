#include <tam/detail/profile_line.h>

#include <tam/detail/characters.h>
#include <tam/status/codes.h>

namespace tam::detail {

namespace {

constexpr wchar_t BYTE_ORDER_MARK = 0xFEFF;
constexpr wchar_t HEADER_START = L'[';
constexpr wchar_t HEADER_END = L']';
constexpr wchar_t COMMENT = L';';
constexpr wchar_t SEPARATOR = L'=';
constexpr wchar_t ESCAPE = L'\\';
constexpr std::wstring_view LINE_END = L"\r\n";

// What an escape stands for, if the units behind the backslash are these.
struct Hexadecimal_escape {
    std::wstring_view units;
    wchar_t meaning;
};

constexpr Hexadecimal_escape HEXADECIMAL_ESCAPES[] = {{L"0A", L'\n'}, {L"0D", L'\r'}, {L"5C", ESCAPE}};
constexpr std::size_t HEXADECIMAL_UNITS = 2;

std::wstring_view trimmed(std::wstring_view text)
{
    while (!text.empty() && is_space(text.back())) {
        text.remove_suffix(1);
    }
    while (!text.empty() && is_space(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::wstring unescaped(std::wstring_view text)
{
    std::wstring plain;
    plain.reserve(text.size());
    for (;;) {
        const std::size_t escape = text.find(ESCAPE);
        plain += text.substr(0, escape);
        if (escape == std::wstring_view::npos) {
            return plain;
        }
        text.remove_prefix(escape + 1);
        if (text.starts_with(SEPARATOR)) {
            plain += SEPARATOR;
            text.remove_prefix(1);
            continue;
        }
        // The two units behind any other backslash go with it; one among them escapes nothing.
        const std::wstring_view units = text.substr(0, HEXADECIMAL_UNITS);
        text.remove_prefix(units.size());
        const Hexadecimal_escape* known = nullptr;
        for (const Hexadecimal_escape& candidate : HEXADECIMAL_ESCAPES) {
            if (candidate.units == units) {
                known = &candidate;
            }
        }
        if (known != nullptr) {
            plain += known->meaning;
        } else {
            plain += ESCAPE;
            plain += units;
        }
    }
}

void append_escaped(std::wstring& line, std::wstring_view text)
{
    const auto is_escaped = [](wchar_t unit) {
        return unit == SEPARATOR || unit == L'\n' || unit == L'\r' || unit == ESCAPE;
    };
    for (;;) {
        std::size_t plain = 0;
        while (plain != text.size() && !is_escaped(text[plain])) {
            ++plain;
        }
        line += text.substr(0, plain);
        if (plain == text.size()) {
            return;
        }
        const wchar_t unit = text[plain];
        text.remove_prefix(plain + 1);
        line += ESCAPE;
        if (unit == SEPARATOR) {
            line += SEPARATOR;
        }
        for (const Hexadecimal_escape& candidate : HEXADECIMAL_ESCAPES) {
            if (candidate.meaning == unit) {
                line += candidate.units;
            }
        }
    }
}

} // namespace

bool has_byte_order_mark(std::wstring_view line)
{
    return line.starts_with(BYTE_ORDER_MARK);
}

bool read_profile_line(Tam_istream& stream, std::wstring& line, Tam_status& status)
{
    stream.wreadln(PROFILE_LINE_LIMIT, line, status);
    return was_profile_line_read(status);
}

bool was_profile_line_read(Tam_status& status)
{
    if (status.value() == TAM_E_NO_LINE_END) {
        status.clear();
    }
    return status.ok();
}

bool may_be_profile_header(wchar_t first)
{
    return first == HEADER_START || first == BYTE_ORDER_MARK;
}

bool take_section_name(std::wstring& line)
{
    if (line.size() >= 2 && line[0] == BYTE_ORDER_MARK && line[1] == HEADER_START) {
        line.erase(0, 1);
    }
    if (line.size() < 2 || line.front() != HEADER_START || line.back() != HEADER_END) {
        return false;
    }
    line.pop_back();
    line.erase(0, 1);
    return true;
}

Profile_entry split_profile_line(std::wstring_view line)
{
    if (line.starts_with(COMMENT)) {
        return {std::wstring(line), {}};
    }
    std::size_t separator = line.find(SEPARATOR);
    while (separator != std::wstring_view::npos && separator != 0 && line[separator - 1] == ESCAPE) {
        separator = line.find(SEPARATOR, separator + 1);
    }
    if (separator == std::wstring_view::npos) {
        return {std::wstring(trimmed(line)), {}};
    }
    return {unescaped(trimmed(line.substr(0, separator))), unescaped(trimmed(line.substr(separator + 1)))};
}

void append_profile_header(std::wstring& text, std::wstring_view name)
{
    text += HEADER_START;
    text += name;
    text += HEADER_END;
    text += LINE_END;
}

void append_profile_entry(std::wstring& text, const Profile_entry& entry)
{
    const auto& [key, value] = entry;
    if (key.starts_with(COMMENT)) {
        text += key;
    } else {
        append_escaped(text, key);
        text += SEPARATOR;
        append_escaped(text, value);
    }
    text += LINE_END;
}

void append_profile_blank_line(std::wstring& text)
{
    text += LINE_END;
}

void append_byte_order_mark(std::wstring& text)
{
    text += BYTE_ORDER_MARK;
}

} // namespace tam::detail
