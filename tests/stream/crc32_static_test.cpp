#include <tests/support/test.h>

#include <tam/detail/crc32_kernels.h>
#include <tam/detail/crc32_polynomial.h>
#include <tests/stream/crc32_reference.h>

namespace tam {
namespace {

// The constants that Gopal and others publish for these distances. They hold x^n mod P one bit further left.
TEST(Crc32_polynomial, powers_are_the_published_ones)
{
    EXPECT_EQ(detail::crc32_times_x(detail::CRC32_ONE, 4 * 128 + 32), 0x154442BD4 >> 1);
    EXPECT_EQ(detail::crc32_times_x(detail::CRC32_ONE, 4 * 128 - 32), 0x1C6E41596 >> 1);
    EXPECT_EQ(detail::crc32_times_x(detail::CRC32_ONE, 128 + 32), 0x1751997D0 >> 1);
    EXPECT_EQ(detail::crc32_times_x(detail::CRC32_ONE, 128 - 32), 0x0CCAA009E >> 1);
}

struct Kernel {
    const char* name;
    unsigned int (*run)(unsigned int crc, const unsigned char* bytes, std::size_t count);
    bool (*usable)();
};

void PrintTo(const Kernel& kernel, std::ostream* out)
{
    *out << kernel.name;
}

class Crc32_kernel : public testing::TestWithParam<Kernel> {};

TEST_P(Crc32_kernel, gives_what_the_definition_gives)
{
    if (!GetParam().usable()) {
        GTEST_SKIP() << "this processor cannot run it";
    }
    test::expect_crc32_of_every_piece(
        [](const unsigned char* data, unsigned int count) { return ~GetParam().run(0xFFFFFFFF, data, count); });
    const std::string bytes = test::some_bytes(1'000'003);
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
    EXPECT_EQ(~GetParam().run(0xFFFFFFFF, data, bytes.size()), test::crc32_of(bytes));
}

INSTANTIATE_TEST_SUITE_P(each, Crc32_kernel,
                         testing::Values(Kernel{"tables", detail::crc32_by_tables, [] { return true; }},
                                         Kernel{"folding", detail::crc32_by_folding, detail::can_fold_crc32},
                                         Kernel{"wide folding", detail::crc32_by_wide_folding,
                                                detail::can_fold_crc32_wide}));

} // namespace
} // namespace tam
