#include <tests/support/test.h>

using namespace tam;
using tam::test::Locale;

namespace {

// Both forms must agree, whatever the target held.
std::wstring stow(const std::string& in)
{
    std::wstring out(40, L'#');
    tam_stow(in, out);
    EXPECT_EQ(out, tam_stow(in));
    return out;
}

std::string wtos(const std::wstring& in)
{
    std::string out(40, '#');
    tam_wtos(in, out);
    EXPECT_EQ(out, tam_wtos(in));
    return out;
}

} // namespace

TEST(Convert, the_c_locale_maps_bytes_to_characters_of_the_same_value)
{
    std::string narrow;
    std::wstring wide;
    for (int c = 1; c < 0x100; ++c) {
        narrow += static_cast<char>(c);
        wide += static_cast<wchar_t>(c);
    }
    EXPECT_EQ(stow(narrow), wide);
    EXPECT_EQ(wtos(wide), narrow);
    EXPECT_EQ(stow(""), L"");
    EXPECT_EQ(wtos(L""), "");
}

TEST(Convert, the_length_stays_and_what_is_not_converted_is_zero)
{
    EXPECT_EQ(stow(std::string("ab\0cd", 5)), std::wstring(L"ab\0\0\0", 5));
    EXPECT_EQ(wtos(std::wstring(L"ab\0cd", 5)), std::string("ab\0\0\0", 5));
    EXPECT_EQ(wtos(L"ab\u3042cd"), std::string("ab\0\0\0", 5)); // not in this locale

    const Locale japanese("Japanese_Japan.932");
    ASSERT_TRUE(japanese);
    EXPECT_EQ(stow("\x82\xa0x"), std::wstring(L"\u3042x\0", 3));
    EXPECT_EQ(stow("\x82").size(), 1u); // half a character
    EXPECT_EQ(wtos(L"\u3042x"), "\x82\xa0");
    EXPECT_EQ(wtos(L"x\u3042"), std::string("x\0", 2));
    EXPECT_EQ(wtos(L"\u3042"), std::string(1, '\0'));
}
