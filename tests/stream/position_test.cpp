#include <tests/support/test.h>

namespace tam {
namespace {

constexpr int LEAST = std::numeric_limits<int>::min();
constexpr int MOST = std::numeric_limits<int>::max();

TEST(Position, advance_moves_up_to_the_limits)
{
    EXPECT_EQ(tam_advance(0, 0), 0U);
    EXPECT_EQ(tam_advance(3, -3), 0U);
    EXPECT_EQ(tam_advance(5, MOST), 0x80000004U);
    EXPECT_EQ(tam_advance(0x80000000, LEAST), 0U);
    EXPECT_EQ(tam_advance(0x7FFFFFFFFFFFFFFE, 1), 0x7FFFFFFFFFFFFFFFU);
    EXPECT_EQ(tam_advance(0xFFFFFFFFFFFFFFFF, -1), 0xFFFFFFFFFFFFFFFEU);
}

TEST(Position, advance_throws_beyond_them)
{
    EXPECT_EQ(test::thrown<std::overflow_error>([] { tam_advance(0x7FFFFFFFFFFFFFFF, 1); }),
              "Stream position too large.");
    EXPECT_EQ(test::thrown<std::overflow_error>([] { tam_advance(0x8000000000000000, 0); }),
              "Stream position too large.");
    EXPECT_EQ(test::thrown<std::overflow_error>([] { tam_advance(0xFFFFFFFFFFFFFFFF, MOST); }),
              "Stream position too large.");
    EXPECT_EQ(test::thrown<std::underflow_error>([] { tam_advance(3, -4); }), "Stream position going negative.");
    EXPECT_EQ(test::thrown<std::underflow_error>([] { tam_advance(0x7FFFFFFF, LEAST); }),
              "Stream position going negative.");
}

TEST(Position, difference_covers_all_of_an_int)
{
    EXPECT_EQ(tam_difference(7, 7), 0);
    EXPECT_EQ(tam_difference(0x17FFFFFFF, 0x100000000), MOST);
    EXPECT_EQ(tam_difference(0, 0x80000000), LEAST);
    EXPECT_EQ(tam_difference(0xFFFFFFFFFFFFFFFE, 0xFFFFFFFFFFFFFFFF), -1);
}

TEST(Position, difference_throws_an_overflow_either_way)
{
    EXPECT_EQ(test::thrown<std::overflow_error>([] { tam_difference(0x80000000, 0); }), "Stream offset too positive");
    EXPECT_EQ(test::thrown<std::overflow_error>([] { tam_difference(0, 0x80000001); }), "Stream offset too negative");
    EXPECT_EQ(test::thrown<std::overflow_error>([] { tam_difference(0, 0xFFFFFFFFFFFFFFFF); }),
              "Stream offset too negative");
}

} // namespace
} // namespace tam
