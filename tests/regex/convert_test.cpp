#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <tam/regex.h>
#include <tam/text.h>

#include <tests/support/locale.h>

using namespace tam;

namespace {

template <class String>
String regexp_of(const String& wildcard)
{
    String regexp(3, 'x');
    tam_rx_wildcard_to_regexp(wildcard, regexp);
    return regexp;
}

template <class String>
String caseless_of(const String& pattern)
{
    String caseless(3, 'x');
    tam_rx_remove_case(pattern, caseless);
    return caseless;
}

std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

// All texts of up to length units of an alphabet.
std::vector<std::string> all_texts(const std::string& alphabet, std::size_t length)
{
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < length; ++i) {
        for (const char c : alphabet) {
            texts.push_back(texts[i] + c);
        }
    }
    return texts;
}

// A wildcard tried in all ways, straight from its definition.
bool accepts(const char* wildcard, const char* text)
{
    switch (*wildcard) {
    case '\0':
        return *text == '\0';
    case '*':
        return accepts(wildcard + 1, text) || (*text != '\0' && accepts(wildcard, text + 1));
    case '?':
        return *text != '\0' && accepts(wildcard + 1, text + 1);
    case '[': {
        const bool negated = wildcard[1] == '!' || wildcard[1] == '^';
        const char* element = wildcard + (negated ? 2 : 1);
        const char* const close = *element == '\0' ? nullptr : std::strchr(element + 1, ']');
        if (close == nullptr) {
            break;
        }
        bool found = false;
        while (element != close) {
            const bool is_range = element + 2 < close && element[1] == '-';
            const char first = *element;
            const char last = element[is_range ? 2 : 0];
            found |= (first <= *text && *text <= last) || (last <= *text && *text <= first);
            element += is_range ? 3 : 1;
        }
        return *text != '\0' && found != negated && accepts(close + 1, text + 1);
    }
    default:
        break;
    }
    return *wildcard == *text && accepts(wildcard + 1, text + 1);
}

// Matches a narrow pattern and its wide twin against whole texts.
class Twins {
public:
    Twins(const std::string& pattern, const std::wstring& wide_pattern)
    {
        m_narrow.compile(pattern, m_status);
        EXPECT_TRUE(m_status.ok()) << pattern;
        m_wide.compile(wide_pattern, m_status);
        EXPECT_TRUE(m_status.ok()) << pattern;
    }

    static Twins of_wildcard(const std::string& wildcard)
    {
        return {regexp_of(wildcard), regexp_of(widened(wildcard))};
    }

    static Twins without_case(const std::string& pattern)
    {
        return {caseless_of(pattern), caseless_of(widened(pattern))};
    }

    bool match(const std::string& text)
    {
        const bool matches = m_narrow.match(text, m_status);
        EXPECT_EQ(m_wide.match(widened(text), m_status), matches) << m_narrow.pattern() << " on " << text;
        return matches;
    }

private:
    Tam_status m_status;
    Tam_regular_expression m_narrow;
    Tam_wregular_expression m_wide;
};

// Those of the first 128 units that the pattern takes.
std::string ascii_taken_by(Twins pattern)
{
    std::string taken;
    for (char c = 0; static_cast<unsigned char>(c) < 0x80; ++c) {
        if (pattern.match(std::string(1, c))) {
            taken += c;
        }
    }
    return taken;
}

} // namespace

TEST(Wildcard_to_regexp, accepts_what_the_wildcard_does)
{
    const std::vector<std::string> texts = all_texts("ab-]", 3);
    std::vector<std::string> wildcards = all_texts("a*?[]!-", 3);
    for (const char* wildcard :
         {"[a-]", "[]-a]", "[]-]", "[b-a]x", "[^-a]", "[!]a]*", "[!]]", "[[:a]", "[[:alpha:]]", "a[b-]*", "[a-b-]",
          "[*-?]", "**a**b**", "[--a]", "[a--]", "?[!a]?", "[]", "[!]", "[["}) {
        wildcards.push_back(wildcard);
    }
    for (const std::string& wildcard : wildcards) {
        Twins pattern = Twins::of_wildcard(wildcard);
        for (const std::string& text : texts) {
            ASSERT_EQ(pattern.match(text), accepts(wildcard.c_str(), text.c_str())) << wildcard << " on " << text;
        }
    }
}

TEST(Wildcard_to_regexp, takes_all_other_units_as_they_are_and_line_feeds_as_any_unit)
{
    for (unsigned int code = 0; code < 0x100; ++code) {
        const std::string text(1, static_cast<char>(code));
        EXPECT_TRUE(Twins::of_wildcard("?").match(text)) << code;
        EXPECT_TRUE(Twins::of_wildcard("*").match(text + text)) << code;
        if (std::strchr("*?", static_cast<int>(code)) == nullptr || code == 0) {
            EXPECT_EQ(ascii_taken_by(Twins::of_wildcard(text)), code < 0x80 ? text : "") << code;
        }
        if (code < 0x80 && text != "]") {
            std::string both = text == " " ? " " : text + " ";
            std::sort(both.begin(), both.end());
            EXPECT_EQ(ascii_taken_by(Twins::of_wildcard("[ " + text + "]")), both);
        }
    }
    std::wstring any = L"?";
    tam_rx_wildcard_to_regexp(any, any);
    Tam_status status;
    EXPECT_TRUE(Tam_wregular_expression(any, status).match(L"\uffff", status));
}

TEST(Remove_case, matches_what_the_lower_case_pattern_does_with_lower_case_text)
{
    const std::vector<std::string> texts = all_texts("aBbA-", 4);
    for (const std::string pattern : {"aB", "(A|b)*", "[a-bX]+", "[^A]b", "[^a-b]*", "[]a-]{2,3}", "[-A]+", "^(aB?)+$",
                                      "[+--]a", "A{2}.", "[ab-]*b"}) {
        std::string lower_pattern = pattern;
        tam_lower(lower_pattern);
        Twins lower(lower_pattern, widened(lower_pattern));
        Twins caseless = Twins::without_case(pattern);
        for (const std::string& text : texts) {
            std::string lower_text = text;
            tam_lower(lower_text);
            ASSERT_EQ(caseless.match(text), lower.match(lower_text)) << pattern << " on " << text;
        }
    }
}

TEST(Remove_case, makes_the_set_of_the_forms_of_a_unit)
{
    const struct {
        const char* pattern;
        const char* taken;
    } rows[] = {
        {"q", "Qq"},
        {"[a-f]", "ABCDEFabcdef"},
        {"[A-C-e]", "-ABCEabce"}, // a minus behind a range is plain
        {"[Y-b]", "ABYZ[\\]^_`abyz"},
        {"[]-a]", "A]^_`a"},
        {"[\\d-z]", "-0123456789Zz"},
        {"[[:digit:]-z]", "-0123456789Zz"},
        // Escapes, ranges with one as an end, and classes stay as they are.
        {"\\x41", "A"},
        {"\\x4aF*", ""}, // all digits belong to it: the unit is 0xAF
        {"\\101", "A"},
        {"\\q", "q"},
        {"[\\x41x]", "AXx"},
        {"[\\x61-c]", "abc"},
        {"[a-\\x63]", "abc"},
        {"[\\101-C]", "ABC"},
        {"[[:xdigit:]g]", "0123456789ABCDEFGabcdefg"},
        {"[[:lower:]]", "abcdefghijklmnopqrstuvwxyz"},
        {"[\\w]", "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ascii_taken_by(Twins::without_case(row.pattern)), row.taken) << row.pattern;
    }
}

TEST(Remove_case, leaves_a_wrong_pattern_wrong_in_the_same_way)
{
    const auto reason = [](const std::string& pattern) {
        Tam_status status;
        Tam_regular_expression compiled(pattern, status);
        std::wstring text(L"compiles");
        if (!status.ok() && status.end() - status.begin() == 3) {
            status.begin()[2]->to_string(text);
        }
        return text;
    };
    for (const char* pattern :
         {"a\\",        "[",         "[a",      "[^",      "[^]a",    "[a\\",        "[a-",          "[a\\x",
          "a[[:alpha:", "[[:alpha:", "[[:al",   "[[:",     "[[:]",    "[[:Alpha:]]", "[[:al pha:]]", "[A-[:alpha:]]",
          "[A-[.a.]]",  "[f-A]",     "[a-\\d]", "[[.a.]]", "[[=a=]]", "(a",          "a)",           "*a",
          "a{2",        "a{3,2}",    "a|*"}) {
        EXPECT_EQ(reason(caseless_of<std::string>(pattern)), reason(pattern)) << pattern;
    }
}

TEST(Remove_case, asks_the_current_locale)
{
    const test::Locale german("German_Germany.1252");
    ASSERT_TRUE(german);
    Tam_status status;
    const Tam_regular_expression narrow(caseless_of<std::string>("\xe4[\xe0-\xf6]"), status);
    EXPECT_TRUE(narrow.match("\xc4\xd6", status));
    EXPECT_FALSE(narrow.match("\xc4\xd7", status));
    // Upper-case Greek within a range of more than letters; the text's middle lies outside the range.
    const Tam_wregular_expression wide(caseless_of<std::wstring>(L"\u044f[\u03b1-\uffff]+"), status);
    EXPECT_TRUE(wide.match(L"\u042f\u0391\u03a9", status));
    EXPECT_FALSE(wide.match(L"\u042f\u0390", status));
}

TEST(Convert, may_work_on_one_string_and_takes_time_in_proportion)
{
    std::wstring text = L"[a-c]*.TXT";
    tam_rx_wildcard_to_regexp(text, text);
    tam_rx_remove_case(text, text);
    Tam_status status;
    EXPECT_TRUE(Tam_wregular_expression(text, status).match(L"B\n.tXt", status));

    constexpr std::size_t MANY = 300'000; // of which the square takes minutes
    for (const std::string piece : {"[", "[[:", "\\x", "[a-"}) {
        std::string pattern;
        for (std::size_t i = 0; i < MANY; ++i) {
            pattern += piece;
        }
        EXPECT_GE(regexp_of(pattern).size(), pattern.size()) << piece;
        EXPECT_GE(caseless_of(widened(pattern)).size(), pattern.size()) << piece;
    }
}
