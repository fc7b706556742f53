#include <tam/stream/position.h>

#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tam {
namespace {

constexpr int LEAST = std::numeric_limits<int>::min();
constexpr int MOST = std::numeric_limits<int>::max();

template <class Exception, class Operation>
void expect_throw(const char* text, Operation operation)
{
    try {
        operation();
        ADD_FAILURE() << "nothing thrown instead of: " << text;
    } catch (const std::exception& e) {
        EXPECT_TRUE(typeid(e) == typeid(Exception)) << typeid(e).name();
        EXPECT_STREQ(e.what(), text);
    }
}

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
    expect_throw<std::overflow_error>("Stream position too large.", [] { tam_advance(0x7FFFFFFFFFFFFFFF, 1); });
    expect_throw<std::overflow_error>("Stream position too large.", [] { tam_advance(0x8000000000000000, 0); });
    expect_throw<std::overflow_error>("Stream position too large.", [] { tam_advance(0xFFFFFFFFFFFFFFFF, MOST); });
    expect_throw<std::underflow_error>("Stream position going negative.", [] { tam_advance(3, -4); });
    expect_throw<std::underflow_error>("Stream position going negative.", [] { tam_advance(0x7FFFFFFF, LEAST); });
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
    expect_throw<std::overflow_error>("Stream offset too positive", [] { tam_difference(0x80000000, 0); });
    expect_throw<std::overflow_error>("Stream offset too negative", [] { tam_difference(0, 0x80000001); });
    expect_throw<std::overflow_error>("Stream offset too negative", [] { tam_difference(0, 0xFFFFFFFFFFFFFFFF); });
}

} // namespace
} // namespace tam
