#include <tam/text/quote.h>

#include <algorithm>

#include <tam/detail/escape.h>

namespace tam {

namespace {

using detail::BACKSLASH;
using detail::Escape_table;
using detail::look_up_escape;

constexpr char QUOTE = '"';

// 0 where there is none.
constexpr Escape_table LETTER_OF_CHARACTER = detail::escape_table(&detail::Escape::character, &detail::Escape::letter);

template <class Char>
void quote(const std::basic_string<Char>& in, std::basic_string<Char>& out)
{
    if (&in == &out) {
        const std::basic_string<Char> copy(in);
        quote(copy, out);
        return;
    }
    const auto escapes =
        std::count_if(in.begin(), in.end(), [](Char c) { return look_up_escape(LETTER_OF_CHARACTER, c) != 0; });
    out.resize(in.size() + static_cast<std::size_t>(escapes) + 2);
    Char* to = out.data();
    *to++ = QUOTE;
    for (const Char c : in) {
        const Char letter = look_up_escape(LETTER_OF_CHARACTER, c);
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
        *to++ = c == BACKSLASH ? detail::decode_escape(from, end) : c;
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
