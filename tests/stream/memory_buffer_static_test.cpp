#include <tests/support/test.h>

#include <tests/support/failing_new.h>

namespace tam {
namespace {

using test::chain;
using test::Failing_new;

template <class Buffer>
class Memory_buffer_without_memory : public testing::Test {};

using Buffers = testing::Types<Tam_memory_buffer, Tam_memory_buffer_mt>;
TYPED_TEST_SUITE(Memory_buffer_without_memory, Buffers);

TYPED_TEST(Memory_buffer_without_memory, cannot_be_made)
{
    const unsigned int blocks = test::heap_blocks();
    const unsigned int failures = test::fail_each_allocation([] {}, [] { const TypeParam buffer; },
                                                             [&](unsigned int, bool thrown) {
                                                                 EXPECT_TRUE(thrown);
                                                                 EXPECT_EQ(test::heap_blocks(), blocks);
                                                             });
    EXPECT_GT(failures, 1U); // the store and its table
    EXPECT_EQ(test::heap_blocks(), blocks);
}

// The table of blocks grows when position 4 MiB comes into reach.
TYPED_TEST(Memory_buffer_without_memory, keeps_its_bytes_when_its_table_cannot_grow)
{
    constexpr unsigned long long BEHIND = 5'000'000;
    const unsigned int blocks = test::heap_blocks();
    {
        TypeParam buffer;
        Tam_status status;
        unsigned long long position = 0;
        buffer.write(position, 3, "abc", status);
        const struct {
            unsigned int failures;
            const wchar_t* expected;
        } rows[] = {
            {1, L"C200001A C2000001"}, {Failing_new::ALL, L"C2000001"}, // no memory for a second code either
        };
        for (const auto& row : rows) {
            const unsigned int before = test::heap_blocks();
            position = BEHIND;
            {
                const Failing_new failing(1, row.failures);
                buffer.write(position, 3, "xyz", status);
            }
            EXPECT_EQ(chain(status), row.expected);
            EXPECT_EQ(position, BEHIND);
            status.clear();
            EXPECT_EQ(test::heap_blocks(), before);
        }
        char bytes[9];
        position = 0;
        EXPECT_EQ(buffer.read(false, position, 9, bytes, status), 3U);
        position = BEHIND;
        buffer.write(position, 3, "xyz", status);
        EXPECT_EQ(chain(status), L"");
        position = BEHIND - 1;
        EXPECT_EQ(buffer.read(false, position, 9, bytes, status), 4U);
        EXPECT_EQ(std::string(bytes, 4), std::string("\0xyz", 4));
        position = 0;
        EXPECT_EQ(buffer.read(false, position, 4, bytes, status), 4U);
        EXPECT_EQ(std::string(bytes, 4), std::string("abc\0", 4));
    }
    EXPECT_EQ(test::heap_blocks(), blocks);
}

} // namespace
} // namespace tam
