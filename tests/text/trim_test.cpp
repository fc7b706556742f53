#include <tests/support/test.h>

using namespace tam;
using tam::test::Locale;

namespace {

template <class String>
String trimmed(String text)
{
    tam_trim(text);
    return text;
}

template <class String>
String upper(String text)
{
    tam_upper(text);
    return text;
}

template <class String>
String lower(String text)
{
    tam_lower(text);
    return text;
}

} // namespace

TEST(Trim, takes_white_space_off_both_ends_only)
{
    constexpr struct {
        const char* text;
        const char* left;
        bool blank;
    } ROWS[] = {
        {"", "", true},
        {" ", "", true},
        {" \t\n\v\f\r ", "", true},
        {"a", "a", false},
        {" a", "a", false},
        {"a ", "a", false},
        {"\r\n a \t b \n", "a \t b", false},
        {"\x1f\x85", "\x1f\x85", false},
        {" \xe4 ", "\xe4", false},
    };
    for (const auto& row : ROWS) {
        const std::string text(row.text);
        EXPECT_EQ(trimmed(text), row.left) << text;
        EXPECT_EQ(tam_is_blank(text), row.blank) << text;
        if (text.find_first_of("\x85\xe4") == text.npos) {
            const std::string left(row.left);
            EXPECT_EQ(trimmed(std::wstring(text.begin(), text.end())), std::wstring(left.begin(), left.end()));
            EXPECT_EQ(tam_is_blank(std::wstring(text.begin(), text.end())), row.blank) << text;
        }
    }
    EXPECT_EQ(trimmed(std::wstring(L" \0 ", 3)), std::wstring(1, L'\0'));
    EXPECT_FALSE(tam_is_blank(std::string(1, '\0')));
}

TEST(Trim, white_space_is_what_the_run_time_says)
{
    EXPECT_EQ(trimmed<std::wstring>(L"\u3000\u00a0x\u2028\u2003"), L"x");
    EXPECT_EQ(trimmed<std::wstring>(L"\ufeffx\u200b"), L"\ufeffx\u200b");
    EXPECT_EQ(trimmed<std::string>("\xa0x"), "\xa0x");
    const Locale german("German_Germany.1252");
    ASSERT_TRUE(german);
    EXPECT_EQ(trimmed<std::string>("\xa0x"), "x");
}

TEST(Case, changes_every_character_in_place)
{
    EXPECT_EQ(upper<std::wstring>(L"aZ1_\u00e4\xd800"), L"AZ1_\u00e4\xd800");
    EXPECT_EQ(lower<std::wstring>(L"aZ1_\u00c4\xd800"), L"az1_\u00c4\xd800");
    EXPECT_EQ(upper(std::string("a\0z\xe4", 4)), std::string("A\0Z\xe4", 4));
    EXPECT_EQ(lower(std::string("A\0Z\xc4", 4)), std::string("a\0z\xc4", 4));
    EXPECT_EQ(upper(std::wstring()), L"");
    const Locale german("German_Germany.1252");
    ASSERT_TRUE(german);
    EXPECT_EQ(upper<std::wstring>(L"\u00e4\u00df\u0436"), L"\u00c4\u00df\u0416");
    EXPECT_EQ(lower<std::wstring>(L"\u00c4\u0416"), L"\u00e4\u0436");
    EXPECT_EQ(upper<std::string>("\xe4"), "\xc4");
    EXPECT_EQ(lower<std::string>("\xc4"), "\xe4");
}
