#include <tam/regex/regular_expression.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <tests/regex/both.h>
#include <tests/support/chain.h>
#include <tests/support/time_limit.h>

namespace tam {
namespace {

constexpr bool LINES = true; // line borders

struct Case {
    const char* pattern;
    std::string text;
    long long start = -1; // no match
    std::size_t shortest = 0;
    std::size_t longest = 0;
    bool whole = false;
    bool line_borders = false;
    std::size_t from = 0;
};

const Case CASES[] = {
    {"abc", "xabcx", 1, 3, 3},
    {"", "ab", 0, 0, 0},
    {"", "", 0, 0, 0, true},
    {"a*", "baa", 0, 0, 0},
    {"a+", "baa", 1, 1, 2},
    {"a|ab|abc", "xabc", 1, 1, 3},
    {"abcd|c", "abcd", 0, 4, 4, true}, // the leftmost, not the one that ends first
    {"abcd|c", "abce", 2, 1, 1},
    {"a{2}", "aaa", 0, 2, 2},
    {"a{2,}", "aaa", 0, 2, 3, true},
    {"a{1,2}", "aaa", 0, 1, 2},
    {"a{0}b", "ab", 1, 1, 1},
    {"(ab){2}", "ababab", 0, 4, 4},
    {"x{2}{3}", "xxxxxxx", 0, 6, 6},
    {"x*?", "xx", 0, 0, 2, true},
    {"(|a)b", "ab", 0, 2, 2, true},
    {"(a|b)*abb", "babbabb", 0, 4, 7, true},
    {"(a*)*b", "aaac"},
    {"(a|aa)+$", "aaab"},
    {"x*$", "xxy", 3, 0, 0},
    {"a.c|b", "xa\nc b", 5, 1, 1},
    {"[]a]+", "x]a", 1, 1, 2},
    {"[^]a]", "]ab", 2, 1, 1},
    {"[a-]+", "x-a", 1, 1, 2},
    {"[a-c-e]+", "d-e", 1, 1, 2},
    {"[--/]", ".", 0, 1, 1, true},
    {"[^a]", "\n", 0, 1, 1, true},
    {"[[:digit:][:upper:]]+", "abC4", 2, 1, 2},
    {"[\\d.-]+", "x1.-", 1, 1, 3},
    {"[\\D]", "1a", 1, 1, 1},
    {"[\\b]", "x\b", 1, 1, 1},
    {".", "\n\r", 1, 1, 1},
    {"\\w+\\W\\s", "a_9-\t", 0, 5, 5, true},
    {"\\S\\d", "  x7", 2, 2, 2},
    {"\\x41\\101\\n", "AA\n", 0, 3, 3, true},
    {"\\.\\B\\q", ".Bq", 0, 3, 3, true},
    {"a\\", "a\\", 0, 2, 2, true},
    {"a]}", "a]}", 0, 3, 3, true},
    {"^b", "ab"},
    {"a$", "ab"},
    {"b$", "ab", 1, 1, 1},
    {"(^a|b)c", "acbc", 0, 2, 2},
    {"(^|-)x", "a-x", 1, 2, 2},
    {"^a", "\na"},
    {"^a", "b\na", 2, 1, 1, false, LINES},
    {"a$", "a\nb", 0, 1, 1, false, LINES},
    {"^$", "a\n\nb", 2, 0, 0, false, LINES},
    {"^$", "a\n", 2, 0, 0, false, LINES},
    {"^a\n^b$", "a\nb", 0, 3, 3, true, LINES},
    {"\\bfoo\\b", "xfoo foo", 5, 3, 3},
    {"\\b", "  ab", 2, 0, 0},
    {"a\\b", "a_ a", 3, 1, 1},
    {"b\\b*c", "bc", 0, 2, 2, true},
    // What lies before from is seen, but takes no part in a match.
    {"a", "banana", 3, 1, 1, false, false, 2},
    {"^b", "ab", -1, 0, 0, false, false, 1},
    {"^b", "\nb", 1, 1, 1, false, LINES, 1},
    {"\\b", "ab cd", 2, 0, 0, false, false, 1},
    {"\\ba", "aa a", 3, 1, 1, false, false, 1},
    {"a*", "aa", 2, 0, 0, true, false, 2},
    {"[a-z]+na", "banana", 3, 3, 3, true, false, 3},
};

struct Fault {
    std::string pattern;
    unsigned int position;
    const char* reason;
};

const Fault FAULTS[] = {
    {"*a", 0, "nothing to repeat"},
    {"a|*b", 2, "nothing to repeat"},
    {"(+a)", 1, "nothing to repeat"},
    {"a||?", 3, "nothing to repeat"},
    {"{1}", 0, "nothing to repeat"},
    {"a(b(c)", 1, "missing )"},
    {std::string(100000, '('), 99999, "missing )"},
    {"a)b", 1, "unmatched )"},
    {"x[a", 1, "missing ]"},
    {"[]", 0, "missing ]"},
    {"[^]", 0, "missing ]"},
    {"ab{", 2, "invalid repeat"},
    {"a{x}", 1, "invalid repeat"},
    {"a{1", 1, "invalid repeat"},
    {"a{,2}", 1, "invalid repeat"},
    {"a{2,1}", 1, "invalid repeat"},
    {"a{10000}", 1, "invalid repeat"},
    {"a{1,4294967297}", 1, "invalid repeat"},
    {"[xb-a]", 2, "invalid range"},
    {"[a-\\d]", 1, "invalid range"},
    {"[[:alpah:]]", 1, "unknown class"},
    {"[[:alpha]", 1, "unknown class"},
    {"[x[.a.]]", 2, "collating elements are not supported"},
    {"[[=a=]]", 1, "collating elements are not supported"},
};

template <class Kind>
class Regular_expression : public testing::Test {};
TYPED_TEST_SUITE(Regular_expression, test::Both);

TYPED_TEST(Regular_expression, finds_the_leftmost_match)
{
    Tam_status status;
    for (const Case& row : CASES) {
        SCOPED_TRACE(std::string(row.pattern) + " in " + row.text);
        const auto text = TypeParam::text(row.text);
        const typename TypeParam::Expression expression(TypeParam::text(row.pattern), status, row.line_borders);
        ASSERT_EQ(test::chain(status), L"");
        const bool found = row.start >= 0;
        const std::size_t expected = found ? static_cast<std::size_t>(row.start) : 0;
        std::size_t start = 99;
        std::size_t length = 99;
        EXPECT_EQ(expression.search(text, row.from, start, length, status), found);
        EXPECT_EQ(start, expected);
        EXPECT_EQ(length, row.shortest);
        EXPECT_EQ(expression.search_longest(text, row.from, start, length, status), found);
        EXPECT_EQ(start, expected);
        EXPECT_EQ(length, row.longest);
        EXPECT_EQ(expression.match(text, status), row.whole);
        EXPECT_TRUE(status.is_clear());
    }
}

TYPED_TEST(Regular_expression, keeps_its_pattern_when_a_new_one_is_wrong)
{
    Tam_status status;
    typename TypeParam::Expression expression(TypeParam::text("ok"), status);
    for (const Fault& row : FAULTS) {
        const std::wstring pattern(row.pattern.begin(), row.pattern.end());
        const std::wstring reason(row.reason, row.reason + std::char_traits<char>::length(row.reason));
        expression.compile(TypeParam::text(row.pattern), status);
        EXPECT_EQ(test::chain(status),
                  L"C200005E(" + pattern + L", " + std::to_wstring(row.position) + L", " + reason + L")");
        EXPECT_EQ(expression.pattern(), TypeParam::text("ok"));
    }
    for (const char* const pattern : {"a{9999}b", "((a{1000}){1000}){1000}", "(a{0,9999}){0,9999}", "(a|b){5000}"}) {
        expression.compile(TypeParam::text(pattern), status);
        EXPECT_EQ(test::chain(status),
                  L"C200005F(" + std::wstring(pattern, pattern + std::string(pattern).size()) + L")");
    }
    EXPECT_TRUE(expression.match(TypeParam::text("ok"), status));
}

TYPED_TEST(Regular_expression, takes_patterns_up_to_its_bound)
{
    const test::Time_limit limit(20000);
    Tam_status status;
    typename TypeParam::Expression expression;
    const auto matches = [&](const std::string& pattern, const std::string& text) {
        expression.compile(TypeParam::text(pattern), status);
        EXPECT_EQ(test::chain(status), L"") << pattern.substr(0, 50);
        return expression.match(TypeParam::text(text), status);
    };
    EXPECT_TRUE(matches("a{9999}", std::string(9999, 'a')));
    EXPECT_FALSE(matches("a{9999}", std::string(9998, 'a')));
    EXPECT_TRUE(matches("(a?){0,3333}", std::string(300, 'a')));
    EXPECT_TRUE(matches(std::string(100000, '(') + "a" + std::string(100000, ')'), "a"));
    EXPECT_TRUE(matches("a" + std::string(100000, '*'), "aaa"));
    EXPECT_TRUE(matches("((a{1000}){1000}){0}", ""));
}

TYPED_TEST(Regular_expression, without_a_pattern_reports_that)
{
    typename TypeParam::Expression moved_from;
    Tam_status status;
    typename TypeParam::Expression expression(TypeParam::text("a+"), status);
    std::size_t start = 9;
    std::size_t length = 9;
    EXPECT_FALSE(expression.search(TypeParam::text("aa"), 3, start, length, status));
    EXPECT_EQ(test::chain(status), L"C2000018");
    EXPECT_EQ(start + length, 0U);

    const auto copy = expression;
    moved_from = std::move(expression);
    expression = std::move(moved_from);
    EXPECT_TRUE(expression.match(TypeParam::text("aa"), status));
    EXPECT_TRUE(copy.match(TypeParam::text("aa"), status));
    EXPECT_FALSE(moved_from.compiled());
    EXPECT_EQ(moved_from.pattern(), TypeParam::text(""));
    EXPECT_FALSE(moved_from.match(TypeParam::text("aa"), status));
    EXPECT_EQ(test::chain(status), L"C2000066");
    EXPECT_FALSE(moved_from.search(TypeParam::text("aa"), 0, start, length, status));
    EXPECT_EQ(test::chain(status), L"C2000066");
}

// An automaton of this pattern has as many states as there are strings of 17 a's and b's: its table overflows again and
// again.
TYPED_TEST(Regular_expression, finds_matches_when_its_cache_overflows)
{
    std::mt19937 random(5);
    std::string letters(60000, 'b');
    for (char& letter : letters) {
        letter = random() % 2 == 0 ? 'a' : 'b';
    }
    Tam_status status;
    const typename TypeParam::Expression whole(TypeParam::text("(a|b)*a(a|b){16}"), status);
    const typename TypeParam::Expression none(TypeParam::text("a(a|b){16}c"), status);
    const auto text = TypeParam::text(letters);
    std::size_t start = 0;
    std::size_t length = 0;
    EXPECT_TRUE(whole.search_longest(text, 1, start, length, status));
    EXPECT_EQ(start, 1U);
    EXPECT_EQ(length, letters.rfind('a', letters.size() - 17) + 16);
    for (std::size_t cut = 0; cut != 4; ++cut) {
        EXPECT_EQ(whole.match(text.substr(cut), status), letters[letters.size() - 17] == 'a');
    }
    EXPECT_FALSE(none.search(text, 0, start, length, status));
    const auto ended = TypeParam::text(letters + "c");
    EXPECT_EQ(none.search(ended, 0, start, length, status), letters[letters.size() - 17] == 'a');
}

TYPED_TEST(Regular_expression, serves_many_threads_at_once)
{
    Tam_status status;
    const typename TypeParam::Expression expression(TypeParam::text("\\b[a-z]+([0-9]{2}|x+)\\b"), status);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread != 20; ++thread) {
        threads.emplace_back([&, thread] {
            const auto own = thread % 2 == 0 ? expression : typename TypeParam::Expression(expression);
            const auto text = TypeParam::text(std::string(thread, ' ') + "abc " + std::string(thread + 1, 'd') + "42 ");
            for (int i = 0; i != 2000; ++i) {
                Tam_status own_status;
                std::size_t start = 0;
                std::size_t length = 0;
                const bool found = own.search(text, 0, start, length, own_status);
                wrong += found && start == thread + 4 && length == thread + 3 ? 0 : 1;
            }
        });
    }
    std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
    EXPECT_EQ(wrong, 0);
}

TEST(Regular_expression_units, of_narrow_text_are_bytes_with_the_classes_of_ascii)
{
    Tam_status status;
    EXPECT_TRUE(Tam_regular_expression("[\xE0-\xFF]\\W[^\\w]\\xE4", status).match("\xE4\xE4\xE4\xE4", status));
    EXPECT_FALSE(Tam_regular_expression("[[:alpha:][:space:][:print:][:cntrl:]]", status).match("\xA0", status));
    EXPECT_TRUE(Tam_regular_expression(std::string("a\0b", 3), status).match(std::string("a\0b", 3), status));
}

TEST(Regular_expression_units, of_wide_text_are_code_units_with_the_classes_of_the_run_time)
{
    Tam_status status;
    EXPECT_TRUE(Tam_wregular_expression(L"\\w[\u0400-\u04FF]\\x20AC\\D..", status)
                    .match(L"\u00E4\u0416\u20AC\u20AC\U0001F600", status));
    EXPECT_TRUE(Tam_wregular_expression(L"[[:upper:]][[:lower:]]\\s", status).match(L"\u00C4\u00E4\u2003", status));
    EXPECT_FALSE(Tam_wregular_expression(L"a", status).match(L"\u0161", status)); // 0x61 in its low byte
}

} // namespace
} // namespace tam
