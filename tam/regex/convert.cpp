#include <tam/regex/convert.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <tam/detail/characters.h>
#include <tam/detail/escape.h>

namespace tam {

namespace {

using detail::BACKSLASH;

constexpr std::string_view SPECIAL = R"(\^$.[]|()*+?{})";
constexpr std::string_view SPECIAL_IN_SETS = R"(\^-[])";
// The dot matches no line feed. A narrow unit has the low 8 bits of the number.
constexpr std::string_view ANY_UNIT = R"([\0-\xffff])";

template <class Char>
unsigned int code_of(Char c)
{
    return static_cast<std::make_unsigned_t<Char>>(c);
}

template <class Char>
void append_ascii(std::basic_string<Char>& to, std::string_view text)
{
    to.append(text.begin(), text.end());
}

// Appends c so that it stands for itself where the special ones mean something.
template <class Char>
void append_literal(std::basic_string<Char>& to, Char c, std::string_view special)
{
    if (code_of(c) < 0x80 && special.find(static_cast<char>(c)) != special.npos) {
        to += Char(BACKSLASH);
    }
    to += c;
}

template <class Char>
void append_range(std::basic_string<Char>& to, Char first, Char last)
{
    append_literal(to, first, SPECIAL_IN_SETS);
    if (first != last) {
        to += Char('-');
        append_literal(to, last, SPECIAL_IN_SETS);
    }
}

// Appends the set that a wildcard's units between the brackets make.
template <class Char>
void append_set(std::basic_string<Char>& to, std::basic_string_view<Char> units, bool negated)
{
    append_ascii(to, negated ? "[^" : "[");
    for (std::size_t i = 0; i < units.size();) {
        const bool is_range = i + 2 < units.size() && units[i + 1] == '-';
        const auto [first, last] =
            std::minmax(units[i], units[is_range ? i + 2 : i], [](Char a, Char b) { return code_of(a) < code_of(b); });
        append_range(to, first, last);
        i += is_range ? 3 : 1;
    }
    to += Char(']');
}

template <class Char>
void wildcard_to_regexp(std::basic_string_view<Char> wildcard, std::basic_string<Char>& regexp)
{
    std::basic_string<Char> to;
    to.reserve(2 * wildcard.size());
    const std::size_t last_close = wildcard.rfind(Char(']'));
    for (std::size_t i = 0; i < wildcard.size();) {
        const Char c = wildcard[i++];
        if (c == '*') {
            append_ascii(to, ANY_UNIT);
            to += Char('*');
            i = std::min(wildcard.find_first_not_of(Char('*'), i), wildcard.size());
        } else if (c == '?') {
            append_ascii(to, ANY_UNIT);
        } else if (c == '[') {
            const bool negated = i < wildcard.size() && (wildcard[i] == '!' || wildcard[i] == '^');
            const std::size_t first = negated ? i + 1 : i;
            if (last_close == wildcard.npos || last_close <= first) {
                append_literal(to, c, SPECIAL);
                continue;
            }
            const std::size_t close = wildcard.find(Char(']'), first + 1);
            append_set(to, wildcard.substr(first, close - first), negated);
            i = close + 1;
        } else {
            append_literal(to, c, SPECIAL);
        }
    }
    regexp = std::move(to);
}

// Turns one pattern into its caseless form, from left to right.
template <class Char>
class Case_remover {
public:
    explicit Case_remover(const std::basic_string<Char>& pattern)
        : m_from(pattern.data()), m_end(pattern.data() + pattern.size())
    {
        m_to.reserve(4 * pattern.size()); // a letter's set
    }

    std::basic_string<Char> caseless()
    {
        while (m_from != m_end) {
            if (*m_from == '[') {
                _convert_set();
            } else if (*m_from == BACKSLASH) {
                _copy_to(_past_escape(m_from));
            } else if (_has_case(*m_from)) {
                m_to += Char('[');
                _convert_letter();
                m_to += Char(']');
            } else {
                m_to += *m_from++;
            }
        }
        return std::move(m_to);
    }

private:
    static bool _has_case(Char c) { return detail::to_lower(c) != c || detail::to_upper(c) != c; }

    bool _is_at(const Char* at, char c) const { return at != m_end && *at == c; }

    bool _is_at_one_of(const Char* at, std::string_view units) const
    {
        return std::any_of(units.begin(), units.end(), [&](char c) { return _is_at(at, c); });
    }

    void _copy_to(const Char* end)
    {
        m_to.append(m_from, end);
        m_from = end;
    }

    const Char* _past_escape(const Char* at) const
    {
        detail::decode_escape(++at, m_end);
        return at;
    }

    // What may stand in a set as one element, or but for a class as one end of a range.
    struct Element {
        enum Kind { PLAIN, ESCAPE, CLASS } kind;
        const Char* end;
    };

    Element _element(const Char* at) const
    {
        if (*at == BACKSLASH) {
            return {_is_at_one_of(at + 1, "dDsSwW") ? Element::CLASS : Element::ESCAPE, _past_escape(at)};
        }
        if (*at != '[' || !_is_at_one_of(at + 1, ":.=")) {
            return {Element::PLAIN, at + 1};
        }
        at = std::find_if(at + 2, m_end, [](Char c) { return c == ':' || c == ']'; });
        return {Element::CLASS, _is_at(at, ':') && _is_at(at + 1, ']') ? at + 2 : at};
    }

    void _convert_set()
    {
        m_to += *m_from++;
        if (_is_at(m_from, '^')) {
            m_to += *m_from++;
        }
        for (bool is_first = true; m_from != m_end && (is_first || *m_from != ']'); is_first = false) {
            const Element first = _element(m_from);
            if (first.kind != Element::CLASS && _is_at(first.end, '-') && first.end + 1 != m_end &&
                first.end[1] != ']') {
                const Element last = _element(first.end + 1);
                const Char low = *m_from;
                const Char high = first.end[1];
                _copy_to(last.end);
                if (first.kind == Element::PLAIN && last.kind == Element::PLAIN) {
                    _append_other_case(low, high);
                }
            } else if (first.kind == Element::PLAIN) {
                if (*m_from == '-') {
                    m_to += Char(BACKSLASH); // it may have been plain for what stood before it
                }
                _convert_letter();
            } else {
                _copy_to(first.end);
            }
        }
        if (m_from != m_end) {
            m_to += *m_from++;
        }
    }

    // The unit, a letter or not, and its other forms.
    void _convert_letter()
    {
        const Char c = *m_from++;
        const Char lower = detail::to_lower(c);
        const Char upper = detail::to_upper(c);
        m_to += c;
        if (lower != c) {
            m_to += lower;
        }
        if (upper != c && upper != lower) {
            m_to += upper;
        }
    }

    // Appends to a set the forms of a range's letters that lie outside it.
    void _append_other_case(Char low, Char high)
    {
        std::vector<unsigned int> forms;
        const auto add_forms = [&](unsigned int code) {
            for (const Char form :
                 {detail::to_lower(static_cast<Char>(code)), detail::to_upper(static_cast<Char>(code))}) {
                if (code_of(form) < code_of(low) || code_of(form) > code_of(high)) {
                    forms.push_back(code_of(form));
                }
            }
        };
        if (code_of(high) < code_of(low) + SMALL_RANGE) {
            for (unsigned int code = code_of(low); code <= code_of(high); ++code) {
                add_forms(code);
            }
        } else {
            const std::vector<unsigned int>& letters = _letters();
            std::for_each(std::lower_bound(letters.begin(), letters.end(), code_of(low)),
                          std::upper_bound(letters.begin(), letters.end(), code_of(high)), add_forms);
        }
        std::sort(forms.begin(), forms.end());
        forms.erase(std::unique(forms.begin(), forms.end()), forms.end());
        for (auto first = forms.begin(); first != forms.end();) {
            const auto past = std::adjacent_find(first, forms.end(), [](auto a, auto b) { return b != a + 1; });
            const auto last = past == forms.end() ? past - 1 : past;
            append_range(m_to, static_cast<Char>(*first), static_cast<Char>(*last));
            first = last + 1;
        }
    }

    // All units that have a case, in order: a pattern may have many large ranges, which are mostly of others.
    const std::vector<unsigned int>& _letters()
    {
        if (m_letters.empty()) {
            for (unsigned int code = 0; code <= std::numeric_limits<std::make_unsigned_t<Char>>::max(); ++code) {
                if (_has_case(static_cast<Char>(code))) {
                    m_letters.push_back(code);
                }
            }
        }
        return m_letters;
    }

    static constexpr unsigned int SMALL_RANGE = 64; // units: to ask for each costs less than to find all letters

    const Char* m_from;
    const Char* m_end;
    std::basic_string<Char> m_to;
    std::vector<unsigned int> m_letters;
};

} // namespace

void tam_rx_wildcard_to_regexp(const std::string& wildcard, std::string& regexp)
{
    wildcard_to_regexp<char>(wildcard, regexp);
}

void tam_rx_wildcard_to_regexp(const std::wstring& wildcard, std::wstring& regexp)
{
    wildcard_to_regexp<wchar_t>(wildcard, regexp);
}

void tam_rx_remove_case(const std::string& pattern, std::string& caseless)
{
    caseless = Case_remover<char>(pattern).caseless();
}

void tam_rx_remove_case(const std::wstring& pattern, std::wstring& caseless)
{
    caseless = Case_remover<wchar_t>(pattern).caseless();
}

} // namespace tam
