#include <tests/support/test.h>

using namespace tam;

namespace {

// All six operations of a pair, against the sign that they must follow.
template <class String>
void expect_order(const String& a, const String& b, int sign)
{
    EXPECT_EQ(tam_string_equal_nc(a, b), sign == 0);
    EXPECT_EQ(tam_string_unequal_nc(a, b), sign != 0);
    EXPECT_EQ(tam_string_less_nc(a, b), sign < 0);
    EXPECT_EQ(tam_string_greater_nc(a, b), sign > 0);
    EXPECT_EQ(tam_string_less_equal_nc(a, b), sign <= 0);
    EXPECT_EQ(tam_string_greater_equal_nc(a, b), sign >= 0);
}

} // namespace

TEST(Compare, orders_texts_without_regard_to_case)
{
    constexpr struct {
        const char* a;
        const char* b;
        int sign;
    } ROWS[] = {
        {"", "", 0},        {"", "a", -1},      {"ABC", "abc", 0},
        {"abc", "ABD", -1}, {"abcd", "ABC", 1}, {"Zebra", "aardvark", 1},
        {"a_", "aB", -1},   {"1", "A", -1},
    };
    for (const auto& row : ROWS) {
        SCOPED_TRACE(testing::Message() << row.a << " and " << row.b);
        const std::string a(row.a);
        const std::string b(row.b);
        expect_order(a, b, row.sign);
        expect_order(b, a, -row.sign);
        expect_order(std::wstring(a.begin(), a.end()), std::wstring(b.begin(), b.end()), row.sign);
    }
}

TEST(Compare, a_text_ends_at_its_first_nul)
{
    expect_order(std::wstring(L"A\0one", 5), std::wstring(L"a\0two", 5), 0);
    expect_order(std::string("A\0one", 5), std::string("a"), 0);
}

TEST(Compare, letters_beyond_ascii_follow_the_locale)
{
    expect_order<std::wstring>(L"\u00c4", L"\u00e4", -1);
    expect_order<std::string>("\xc4", "\xe4", -1);
    const test::Locale german("German_Germany.1252");
    ASSERT_TRUE(german);
    expect_order<std::wstring>(L"\u00c4", L"\u00e4", 0);
    expect_order<std::string>("\xc4", "\xe4", 0);
}
