#include <tests/support/test.h>

#include <tests/stream/buffer_model.h>
#include <tests/stream/seek_cases.h>

namespace tam {
namespace {

using test::Buffer_model;
using test::Buffer_rules;
using test::chain;

constexpr unsigned long long LARGEST = 0x7FFFFFFFFFFFFFFF;

TEST(Raw_memory_buffer, does_what_its_model_does)
{
    Buffer_rules rules;
    rules.writing = Buffer_rules::FIXED_SIZE;
    rules.clears_the_status = false;
    rules.block_size = 1000;
    rules.largest = 11000;
    Buffer_model::Bytes bytes(10000);
    Buffer_model model(rules, bytes);
    Tam_raw_memory_buffer buffer(bytes.size(), bytes.data(), Tam_raw_memory_buffer::KEEP);
    test::Buffer_walk(buffer, model).run(2000);
}

TEST(Raw_memory_buffer, is_as_large_as_it_was_told)
{
    char memory[] = "0123456789";
    Tam_raw_memory_buffer buffer(0xFFFFFFFFFFFFFFFF, memory, Tam_raw_memory_buffer::KEEP);
    Tam_status status;
    unsigned long long position = 2;
    buffer.write(position, 3, "abc", status);
    char bytes[5] = "????";
    position = 1;
    EXPECT_EQ(buffer.read(false, position, 4, bytes, status), 4U);
    EXPECT_EQ(std::string(bytes), "1abc");
    EXPECT_EQ(chain(status), L"");
    position = 0ULL - 3; // the sum of position and count overflows
    buffer.write(position, 5, "abcde", status);
    EXPECT_EQ(chain(status), L"C200001A C2000069");
}

TEST(Raw_memory_buffer, seeks_up_to_the_largest_position)
{
    const Tam_raw_memory_buffer buffer(LARGEST - 1, nullptr, Tam_raw_memory_buffer::KEEP);
    test::expect_seeks(buffer, {{0, 2147483647, 5, 2147483647},
                                {0, -1, 5, 5, true},
                                {2, 1, 5, LARGEST},
                                {2, 2, 5, 5, true},
                                {2, -2147483647 - 1, 5, LARGEST - 1 - 0x80000000},
                                {1, 0, LARGEST + 1, LARGEST + 1, true},
                                {1, -1, LARGEST + 1, LARGEST},
                                {0xFFFFFFFF, -3, 5, 2}});
}

TEST(Raw_memory_buffer, releases_memory_that_it_owns)
{
    const unsigned int blocks = test::heap_blocks();
    {
        const Tam_raw_memory_buffer bytes(10, ::operator new(10), Tam_raw_memory_buffer::DELETE_BYTES);
    }
    {
        const Tam_raw_memory_buffer array(10, new char[10], Tam_raw_memory_buffer::DELETE_ARRAY);
    }
    {
        const Tam_raw_memory_buffer none(0, nullptr, Tam_raw_memory_buffer::DELETE_BYTES);
    }
    EXPECT_EQ(test::heap_blocks(), blocks);
    char* const kept = new char[10];
    {
        const Tam_raw_memory_buffer buffer(10, kept, Tam_raw_memory_buffer::KEEP);
    }
    {
        const Tam_raw_memory_buffer other(10, kept, static_cast<Tam_raw_memory_buffer::Delete_method>(3));
    }
    EXPECT_EQ(test::heap_blocks(), blocks + 1);
    delete[] kept;
}

} // namespace
} // namespace tam
