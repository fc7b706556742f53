#include <tests/support/test.h>

#include <charconv>
#include <initializer_list>
#include <string_view>

using namespace tam;
using tam::test::Locale;
using tam::test::thrown;

namespace {

constexpr unsigned int SEED = 4711;

std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

template <class Integer>
std::wstring itow(Integer value, unsigned short radix = 10, bool format = false)
{
    std::wstring out = L"what was there before";
    tam_itow(value, out, radix, format);
    return out;
}

} // namespace

TEST(Number, judges_texts_as_32_bit_and_as_any_number)
{
    struct Row {
        std::string text;
        bool is_int32;
        bool is_number;
    };
    const Row rows[] = {
        {"2147483647", true, true},
        {"2147483648", false, true},
        {"-2147483648", true, true},
        {"-2147483649", false, true},
        {"+2147483647", true, true},
        {"+2147483648", false, true},
        {"2147483650", false, true},
        {"1999999999", true, true},
        {"000000000002147483647", true, true},
        {"-00000000000000000000", true, true},
        {"  +0002147483647", true, true},
        {"\t\n\v\f\r 7", true, true},
        {"-000123456789012345", false, true},
        {"99999999999", false, true},
        {"", false, false},
        {" \t ", false, false},
        {"+", false, false},
        {"  -", false, false},
        {"+-1", false, false},
        {"- 1", false, false},
        {"12 ", false, false},
        {"12a", false, false},
        {"0x1", false, false},
        {"1.0", false, false},
        {"\xb2", false, false},
        {std::string("12\0", 3), false, false},
        {std::string("\0001", 2), false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(tam_is_int32(row.text), row.is_int32);
        EXPECT_EQ(tam_is_number(row.text), row.is_number);
        if (row.text != "\xb2") {
            EXPECT_EQ(tam_is_int32(widened(row.text)), row.is_int32);
            EXPECT_EQ(tam_is_number(widened(row.text)), row.is_number);
        }
    }
}

TEST(Number, wide_classes_are_those_of_the_run_time)
{
    EXPECT_TRUE(tam_is_int32(L"\u3000\u00a0-7")); // spaces
    EXPECT_EQ(tam_wtoi32(L"\u3000\u00a0-7"), -7);
    EXPECT_TRUE(tam_is_number(L"\u0661\u0662")); // Arabic digits
    EXPECT_FALSE(tam_is_int32(L"\u0661\u0661\u0661\u0661\u0661\u0661\u0661\u0661\u0661\u0661"));
}

TEST(Number, reading_a_text_that_is_no_32_bit_number_throws)
{
    for (const wchar_t* const text : {L"12a", L"", L"2147483648", L"1 "}) {
        EXPECT_EQ(thrown<std::invalid_argument>([&] { tam_wtoi32(text); }), "tam::tam_wtoi32 number is invalid");
    }
    EXPECT_EQ(tam_wtoi32(L" +0002147483647"), 2147483647);
    EXPECT_EQ(tam_wtoi32(L"-2147483648"), std::numeric_limits<int>::min());
}

TEST(Number, reading_64_bits_checks_nothing)
{
    EXPECT_EQ(tam_wtoi64(L"-9223372036854775808"), std::numeric_limits<long long>::min());
    EXPECT_EQ(tam_wtoi64(L"9223372036854775807"), std::numeric_limits<long long>::max());
    EXPECT_EQ(tam_wtoi64(L" 12 apples"), 12);
    EXPECT_EQ(tam_wtoi64(L"apples"), 0);
    EXPECT_EQ(tam_wtoi64(L""), 0);
}

TEST(Number, writes_the_digits_of_every_radix_as_the_standard_library_does)
{
    SCOPED_TRACE(testing::Message() << "seed " << SEED);
    std::mt19937_64 random(SEED);
    std::vector<unsigned long long> magnitudes = {0, 1, 255, ~0ULL, 1ULL << 63, (1ULL << 63) - 1};
    for (unsigned long long power = 10; power < ~0ULL / 10; power *= 10) {
        magnitudes.insert(magnitudes.end(), {power - 1, power, power + 1});
    }
    for (int bits = 1; bits <= 64; ++bits) {
        magnitudes.push_back(random() >> (64 - bits));
    }
    for (unsigned short radix = 2; radix <= 16; ++radix) {
        for (const unsigned long long magnitude : magnitudes) {
            char text[80];
            std::string expected(text, std::to_chars(std::begin(text), std::end(text), magnitude, radix).ptr);
            ASSERT_EQ(itow(magnitude, radix), widened(expected)) << "radix " << radix;
            const auto value = static_cast<long long>(0 - magnitude);
            expected.assign(text, std::to_chars(std::begin(text), std::end(text), value, radix).ptr);
            ASSERT_EQ(itow(value, radix), widened(expected)) << "radix " << radix;
        }
    }
    EXPECT_EQ(itow(-255LL, 16), L"-ff");
    EXPECT_EQ(itow(-7), L"-7"); // a plain int needs no cast
    EXPECT_EQ(itow(0xFFFFFFFFu, 2), std::wstring(32, L'1'));
}

TEST(Number, a_radix_outside_2_to_16_gives_an_empty_text)
{
    for (const auto radix : std::initializer_list<unsigned short>{0, 1, 17, 0xFFFF}) {
        EXPECT_EQ(itow(123LL, radix), L"") << radix;
        EXPECT_EQ(itow(123ULL, radix, true), L"") << radix;
    }
}

TEST(Number, format_groups_decimal_digits_by_the_locale)
{
    EXPECT_EQ(itow(1234567LL, 10, true), L"1234567"); // the "C" locale has no separator
    {
        const Locale english("English");
        ASSERT_TRUE(english);
        EXPECT_EQ(itow(1234567LL, 10, true), L"1,234,567");
        EXPECT_EQ(itow(1234567LL, 10, false), L"1234567");
        EXPECT_EQ(itow(0x1234567LL, 16, true), L"1234567");
        EXPECT_EQ(itow(0LL, 10, true), L"0");
        EXPECT_EQ(itow(999LL, 10, true), L"999");
        EXPECT_EQ(itow(-999LL, 10, true), L"-999");
        EXPECT_EQ(itow(-1000LL, 10, true), L"-1,000");
        EXPECT_EQ(itow(std::numeric_limits<long long>::min(), 10, true), L"-9,223,372,036,854,775,808");
        EXPECT_EQ(itow(~0ULL, 10, true), L"18,446,744,073,709,551,615");
    }
    {
        const Locale german("German_Germany.1252");
        ASSERT_TRUE(german);
        EXPECT_EQ(itow(1234567ULL, 10, true), L"1.234.567");
    }
    // The separator is a no-break space, whose byte counts as negative: no grouping.
    const Locale french("French_France");
    ASSERT_TRUE(french);
    EXPECT_EQ(itow(1234567LL, 10, true), L"1234567");
}

TEST(Number, separator_and_group_size_come_from_their_first_bytes)
{
    // localeconv's fields, for the length of the test.
    struct Numeric_format {
        Numeric_format() : m_separator(m_locale->thousands_sep), m_grouping(m_locale->grouping) {}
        ~Numeric_format() { set(m_separator, m_grouping); }
        void set(char* separator, char* grouping)
        {
            m_locale->thousands_sep = separator;
            m_locale->grouping = grouping;
        }
        lconv* m_locale = std::localeconv();
        char* m_separator;
        char* m_grouping;
    } numeric;
    struct Row {
        std::string separator;
        std::string grouping;
        const wchar_t* text;
    };
    const Row rows[] = {
        {",", "\3\2", L"1,234,567"}, // the second size is never used
        {"'x", "\1", L"1'2'3'4'5'6'7"},
        {" ", "\2", L"1 23 45 67"},
        {"_", "\6", L"1_234567"},
        {"_", "\7", L"1234567"},
        {",", std::string("\0", 1), L"1234567"},
        {",", "\x7f", L"1234567"},
        {",", "\xff", L"1234567"},
        {"\x1f", "\3", L"1234567"},
        {"\x80", "\3", L"1234567"},
        {"\x7f", "\3",
         L"1\x7f"
         L"234\x7f"
         L"567"},
    };
    for (Row row : rows) {
        numeric.set(row.separator.data(), row.grouping.data());
        EXPECT_EQ(itow(1234567LL, 10, true), row.text) << row.separator;
    }
    std::string separator = ",";
    std::string one = "\1";
    numeric.set(separator.data(), one.data());
    EXPECT_EQ(itow(std::numeric_limits<long long>::min(), 10, true), L"-9,2,2,3,3,7,2,0,3,6,8,5,4,7,7,5,8,0,8");
    EXPECT_EQ(itow(~0ULL, 10, true), L"1,8,4,4,6,7,4,4,0,7,3,7,0,9,5,5,1,6,1,5");
}
