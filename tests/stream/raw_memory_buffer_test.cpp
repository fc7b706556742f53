#include <tam/stream/raw_memory_buffer.h>

#include <new>
#include <string>

#include <gtest/gtest.h>

#include <tam/stream/ostream.h>
#include <tests/stream/buffer_model.h>
#include <tests/support/chain.h>
#include <tests/support/resources.h>

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

TEST(Raw_memory_buffer, stores_all_of_a_write_or_nothing)
{
    char memory[] = "0123456789";
    Tam_raw_memory_buffer buffer(10, memory, Tam_raw_memory_buffer::KEEP);
    Tam_status status;
    unsigned long long position = 0;
    const auto write = [&](unsigned long long at, unsigned int count) {
        position = at;
        buffer.write(position, count, "abcdefghijk", status);
        return chain(status);
    };
    EXPECT_EQ(write(8, 5), L"C200001A C2000069");
    EXPECT_EQ(position, 8U);
    EXPECT_EQ(std::string(memory), "0123456789");
    EXPECT_EQ(write(7, 1), L"C200001A C2000069"); // stored, but an earlier failure stays
    EXPECT_EQ(position, 8U);
    status.clear();
    EXPECT_EQ(write(8, 2), L"");
    EXPECT_EQ(write(10, 0), L"C2000019");
    status.clear();
    EXPECT_EQ(write(9, 0), L"");
    EXPECT_EQ(write(1, 0xFFFFFFFF), L"C200001A C2000069");
    EXPECT_EQ(std::string(memory), "0123456aab");
}

TEST(Raw_memory_buffer, reads_what_is_left)
{
    char memory[] = "0123456789";
    const Tam_raw_memory_buffer buffer(10, memory, Tam_raw_memory_buffer::KEEP);
    Tam_status status = 5U;
    unsigned long long position = 8;
    char bytes[6] = "?????";
    EXPECT_EQ(buffer.read(true, position, 5, bytes, status), 2U);
    EXPECT_EQ(std::string(bytes), "89???");
    EXPECT_EQ(position, 10U);
    EXPECT_EQ(chain(status), L"5"); // not cleared
    EXPECT_EQ(buffer.read(true, position, 5, bytes, status), 0U);
    EXPECT_EQ(chain(status), L"C2000019");
    status.clear();
    position = 3;
    EXPECT_EQ(buffer.read(false, position, 0, nullptr, status), 0U);
    EXPECT_EQ(chain(status), L""); // unlike a memory buffer
    const Tam_raw_memory_buffer none(0, nullptr, Tam_raw_memory_buffer::KEEP);
    position = 0;
    EXPECT_EQ(none.read(false, position, 1, bytes, status), 0U);
    EXPECT_EQ(chain(status), L"C2000019");
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
    const struct {
        unsigned int mode;
        int offset;
        unsigned long long position;
        unsigned long long expected;
        bool fails;
    } rows[] = {
        {0, 2147483647, 5, 2147483647, false},
        {0, -1, 5, 5, true},
        {2, 1, 5, LARGEST, false},
        {2, 2, 5, 5, true},
        {2, -2147483647 - 1, 5, LARGEST - 1 - 0x80000000, false},
        {1, 0, LARGEST + 1, LARGEST + 1, true},
        {1, -1, LARGEST + 1, LARGEST, false},
        {0xFFFFFFFF, -3, 5, 2, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.mode << ", " << row.offset << ", " << row.position);
        Tam_status status = 5U;
        unsigned long long position = row.position;
        buffer.seek(static_cast<Tam_seek_mode>(row.mode), row.offset, position, status);
        EXPECT_EQ(chain(status), row.fails ? L"C2000018" : L"");
        EXPECT_EQ(position, row.expected);
    }
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

// The stream does not clear a status either, so that a failure keeps what follows from being written.
TEST(Raw_memory_buffer, writes_no_line_end_after_an_earlier_failure)
{
    char memory[] = "......";
    Tam_raw_memory_buffer buffer(6, memory, Tam_raw_memory_buffer::KEEP);
    Tam_status status;
    Tam_ostream stream(buffer, status, TAM_EOL_LF);
    status = 5U;
    stream.writeln("a", status);
    status.clear();
    stream.writeln("b", status);
    EXPECT_EQ(std::string(memory), "ab\n...");
}

} // namespace
} // namespace tam
