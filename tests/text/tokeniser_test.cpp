#include <tests/support/test.h>

using namespace tam;

namespace {

using Tokens = std::vector<std::wstring>;

Tokens tokens_of(const Tam_tokeniser& tokeniser, const std::wstring& text)
{
    Tam_object_vector<std::wstring> tokens;
    tokens.push_back(L"an earlier token");
    tokeniser.tokenise(text, tokens);
    return {tokens.begin(), tokens.end()};
}

Tokens tokens_of(const wchar_t* separators, const wchar_t* ignore, const wchar_t* terminators, const wchar_t* terminals,
                 bool include_separators, bool allow_empty_tokens, const std::wstring& text)
{
    return tokens_of(Tam_tokeniser(separators, ignore, terminators, terminals, include_separators, allow_empty_tokens),
                     text);
}

} // namespace

TEST(Tokeniser, splits_at_blanks_and_tabs_up_to_a_line_feed_by_default)
{
    const Tam_tokeniser tokeniser;
    EXPECT_EQ(tokeniser.separators(), L" \t");
    EXPECT_EQ(tokeniser.ignore(), L"");
    EXPECT_EQ(tokeniser.terminators(), L"\n");
    EXPECT_EQ(tokeniser.terminals(), L"");
    EXPECT_FALSE(tokeniser.include_separators());
    EXPECT_FALSE(tokeniser.allow_empty_tokens());
    EXPECT_EQ(tokens_of(tokeniser, L"a  b\tc"), (Tokens{L"a", L"b", L"c"}));
    EXPECT_EQ(tokens_of(tokeniser, L"a b\nc d"), (Tokens{L"a", L"b"}));
    EXPECT_EQ(tokens_of(tokeniser, L"\na"), Tokens{});
    EXPECT_EQ(tokens_of(tokeniser, L" \t "), Tokens{});
    EXPECT_EQ(tokens_of(tokeniser, L""), Tokens{});
}

TEST(Tokeniser, keeps_quoted_stretches_with_their_quotes)
{
    const Tam_tokeniser tokeniser;
    EXPECT_EQ(tokens_of(tokeniser, L"x \"y z\" w"), (Tokens{L"x", L"\"y z\"", L"w"}));
    EXPECT_EQ(tokens_of(tokeniser, L"a\"b c\"d e"), (Tokens{L"a\"b c\"d", L"e"}));
    EXPECT_EQ(tokens_of(tokeniser, L"\"a\\\" b\" c"), (Tokens{L"\"a\\\" b\"", L"c"}));
    EXPECT_EQ(tokens_of(tokeniser, L"\"a \nb\tc"), (Tokens{L"\"a \nb\tc"}));
    EXPECT_EQ(tokens_of(tokeniser, L"\"a\\"), (Tokens{L"\"a\\"}));
    // Before a quote outside quotes a backslash means nothing; nor does a quote in a set.
    EXPECT_EQ(tokens_of(tokeniser, L"a\\\"b c"), (Tokens{L"a\\\"b c"}));
    EXPECT_EQ(tokens_of(L"\" ", L"\"", L"\"", L"\"", false, false, L"a\"b c\" d"), (Tokens{L"a\"b c\"", L"d"}));
    // A doubled backslash does not hide the second one from the quote behind it.
    EXPECT_EQ(tokens_of(tokeniser, L"\"a\\\\\" b"), (Tokens{L"\"a\\\\\" b"}));
}

TEST(Tokeniser, empty_tokens_stand_between_and_behind_separators_and_terminals)
{
    EXPECT_EQ(tokens_of(L" ", L"", L"\n", L"", false, true, L"a  b "), (Tokens{L"a", L"", L"b", L""}));
    EXPECT_EQ(tokens_of(L" ", L"", L"\n", L"=", false, true, L"a =b="), (Tokens{L"a", L"", L"=", L"b", L"=", L""}));
    EXPECT_EQ(tokens_of(L" ", L"", L"\n", L"", false, true, L"\n"), Tokens{L""});
    EXPECT_EQ(tokens_of(L" ", L"", L"\n", L"", false, true, L""), Tokens{});
}

TEST(Tokeniser, a_character_in_several_sets_acts_by_the_first_of_them)
{
    for (const wchar_t* const c : {L",", L"\u3000"}) { // of the first 128 and of the others
        const std::wstring text = L"a" + std::wstring(c) + L"b";
        EXPECT_EQ(tokens_of(c, c, c, c, false, true, text), Tokens{L"a"});
        EXPECT_EQ(tokens_of(c, c, L"", c, false, true, text), Tokens{L"ab"});
        EXPECT_EQ(tokens_of(c, L"", L"", c, true, true, text), (Tokens{L"a" + std::wstring(c), L"b"}));
        EXPECT_EQ(tokens_of(L"", L"", L"", c, false, true, text), (Tokens{L"a", c, L"b"}));
        EXPECT_EQ(tokens_of(L"", L"", L"", L"", false, true, text), Tokens{text});
    }
}

TEST(Tokeniser, can_be_copied_and_changed)
{
    const Tam_tokeniser original(L"1", L"2", L"3", L"4", true, true);
    Tam_tokeniser copy(original);
    copy.separators(L";");
    copy.ignore(L"!");
    copy.terminators(L".");
    copy.terminals(L"\u00b7");
    copy.include_separators(false);
    copy.allow_empty_tokens(false);
    EXPECT_EQ(tokens_of(copy, L"a!b;;c\u00b7d.e"), (Tokens{L"ab", L"c", L"\u00b7", L"d"}));
    EXPECT_EQ(tokens_of(original, L"a12b4c3d"), (Tokens{L"a1", L"b", L"4", L"c"}));
    copy = original;
    EXPECT_EQ(tokens_of(copy, L"a12b4c3d"), (Tokens{L"a1", L"b", L"4", L"c"}));
}

TEST(Tokeniser, the_text_may_be_one_of_the_tokens_that_it_replaces)
{
    Tam_object_vector<std::wstring> tokens;
    tokens.push_back(L"a text that is long enough to lie outside its string");
    Tam_tokeniser().tokenise(tokens.at(0), tokens);
    EXPECT_EQ(tokens.size(), 11u);
    EXPECT_EQ(tokens.back(), L"string");
}

TEST(Tokeniser, keeps_every_character_when_separators_are_included)
{
    std::wstring text;
    for (unsigned int c = 1; c < 0x10000; ++c) {
        if (c != L'"' && c != L'\n') {
            text += static_cast<wchar_t>(c);
            text += c % 3 == 0 ? L" " : L"";
        }
    }
    const Tam_tokeniser tokeniser(L" \u4e00", L"", L"\n", L"=\u4e01", true, false);
    std::wstring joined;
    for (const std::wstring& token : tokens_of(tokeniser, text)) {
        joined += token;
    }
    EXPECT_EQ(joined, text);
}
