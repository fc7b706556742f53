#include <tests/support/test.h>

#include <cstdint>

#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

using test::Vector_buffer;

// Each promise that both streams make, tested on both.
template <class Stream>
class Istream : public testing::Test {
public:
    static constexpr bool BUFFERED = std::is_same_v<Stream, Tam_buffered_istream>;

    unsigned int connected() const
    {
        return BUFFERED ? buffer.num_buffered_istream() : buffer.num_unbuffered_istream();
    }

    Vector_buffer buffer{"0123456789"};
    Tam_status status;
    char bytes[16];
};

using Streams = testing::Types<Tam_buffered_istream, Tam_unbuffered_istream>;
TYPED_TEST_SUITE(Istream, Streams);

TYPED_TEST(Istream, connects_until_it_is_detached_or_destroyed)
{
    {
        TypeParam stream(this->buffer, false, this->status);
        EXPECT_EQ(this->connected(), 1U);
        stream.seek(3);
        EXPECT_EQ(stream.tell(), 3U);
        stream.detach();
        stream.detach();
        EXPECT_EQ(this->connected(), 0U);
        EXPECT_EQ(stream.tell(), 0U);
        stream.init(this->buffer, false, this->status);
        EXPECT_EQ(this->connected(), 1U);
        EXPECT_EQ(stream.tell(), 0U);
        stream.init(this->buffer, false, this->status); // does not detach first
        EXPECT_EQ(this->connected(), 2U);
    }
    EXPECT_EQ(this->connected(), 1U);
}

TYPED_TEST(Istream, stays_detached_when_the_buffer_refuses_it)
{
    this->buffer.refuse_readers = TAM_E_NO_FILE;
    TypeParam stream(this->buffer, false, this->status);
    EXPECT_EQ(this->status.value(), 0xC2000031U);
    EXPECT_EQ(stream.size(this->status), 0U);
    EXPECT_EQ(this->status.value(), 0xC2000017U);
}

TYPED_TEST(Istream, reports_that_it_is_detached)
{
    TypeParam stream(this->buffer, false, this->status);
    EXPECT_EQ(stream.read(2, this->bytes, this->status), 2U);
    stream.detach();
    const auto detached = [this] { return std::exchange(this->status, Tam_status()) == 0xC2000017U; };
    EXPECT_EQ(stream.read(2, this->bytes, this->status), 0U);
    EXPECT_TRUE(detached());
    EXPECT_EQ(std::string(this->bytes, 2), std::string(2, '\0'));
    EXPECT_EQ(stream.read_at(0, 1, this->bytes, this->status), 0U);
    EXPECT_TRUE(detached());
    stream.seek(TAM_SEEK_START, 0, this->status);
    EXPECT_TRUE(detached());
    std::string line = "x";
    stream.readln(5, line, this->status);
    EXPECT_EQ(line, "");
    EXPECT_TRUE(detached());
}

TYPED_TEST(Istream, reads_at_its_position_and_elsewhere)
{
    TypeParam stream(this->buffer, true, this->status);
    EXPECT_EQ(stream.read(4, this->bytes, this->status), 4U);
    EXPECT_EQ(std::string(this->bytes, 4), "0123");
    EXPECT_EQ(stream.read_at(8, 6, this->bytes, this->status), 2U);
    EXPECT_EQ(std::string(this->bytes, 6), std::string("89\0\0\0\0", 6));
    EXPECT_TRUE(this->status.is_clear());
    EXPECT_EQ(stream.tell(), 4U);
    EXPECT_EQ(stream.read_at(10, 1, this->bytes, this->status), 0U);
    EXPECT_EQ(this->status.value(), 0xC2000019U);
    EXPECT_EQ(stream.read(16, this->bytes, this->status), 6U);
    EXPECT_EQ(std::string(this->bytes, 16), std::string("456789\0\0\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(stream.tell(), 10U);
    EXPECT_TRUE(this->buffer.reads.front().wait);
}

TYPED_TEST(Istream, seeks_through_its_buffer)
{
    TypeParam stream(this->buffer, false, this->status);
    stream.seek(TAM_SEEK_END, -3, this->status);
    EXPECT_EQ(stream.tell(), 7U);
    stream.seek(TAM_SEEK_CURRENT, 100, this->status);
    EXPECT_EQ(stream.tell(), 107U);
    stream.seek(TAM_SEEK_START, -1, this->status);
    EXPECT_EQ(this->status.value(), 0xC2000018U);
    EXPECT_EQ(stream.tell(), 107U);
    EXPECT_EQ(stream.size(this->status), 10U);
    EXPECT_TRUE(this->status.is_clear());
    stream.seek(0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(stream.tell(), 0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(stream.read(2, this->bytes, this->status), 0U);
    EXPECT_EQ(this->status.value(), 0xC2000019U);
}

TYPED_TEST(Istream, reads_integers_in_both_byte_orders)
{
    this->buffer.data = std::string("\x81\x02\x03\x04\x05\x06\x07\x88", 8);
    TypeParam stream(this->buffer, false, this->status);
    const auto expect = [&]<class Value>(Value, unsigned long long little, unsigned long long big) {
        Value value = 0x55;
        stream.seek(0);
        stream.read_le(value, this->status);
        EXPECT_EQ(value, static_cast<Value>(little));
        EXPECT_EQ(stream.tell(), sizeof value);
        stream.seek(0);
        stream.read_be(value, this->status);
        EXPECT_EQ(value, static_cast<Value>(big));
        EXPECT_EQ(stream.tell(), sizeof value);
        EXPECT_TRUE(this->status.is_clear());
    };
    expect(short{}, 0x0281, 0x8102);
    expect(static_cast<unsigned short>(0), 0x0281, 0x8102);
    expect(int{}, 0x04030281, 0x81020304);
    expect(0U, 0x04030281, 0x81020304);
    expect(0LL, 0x8807060504030281, 0x8102030405060788);
    expect(0ULL, 0x8807060504030281, 0x8102030405060788);
}

TYPED_TEST(Istream, reports_an_integer_cut_short)
{
    this->buffer.data = "\x01\x02\x03";
    TypeParam stream(this->buffer, false, this->status);
    unsigned int value = 0x55555555;
    stream.read_le(value, this->status);
    EXPECT_EQ(this->status.value(), 0xC200002AU);
    EXPECT_FALSE(this->status.has_child());
    EXPECT_EQ(value, 0x00030201U);
    stream.seek(0);
    stream.read_be(value, this->status);
    EXPECT_EQ(this->status.value(), 0xC200002AU);
    EXPECT_EQ(value, 0x01020300U);
}

TEST(Unbuffered_istream, never_waits_when_it_must_not_block)
{
    struct Stream : Tam_unbuffered_istream {
        using Tam_unbuffered_istream::read_at_no_blocking;
        using Tam_unbuffered_istream::Tam_unbuffered_istream;
    };
    const Vector_buffer buffer("abc");
    Tam_status status;
    Stream stream(buffer, true, status);
    char bytes[3];
    EXPECT_EQ(stream.read_at_no_blocking(1, 3, bytes, status), 2U);
    EXPECT_EQ(std::string(bytes, 3), std::string("bc\0", 3));
    EXPECT_EQ(stream.read_at(0, 1, bytes, status), 1U);
    ASSERT_EQ(buffer.reads.size(), 2U);
    EXPECT_FALSE(buffer.reads[0].wait);
    EXPECT_TRUE(buffer.reads[1].wait);
}

TEST(Buffered_istream, reads_its_buffer_by_blocks)
{
    Vector_buffer buffer(std::string(40000, 'x'));
    Tam_status status;
    Tam_buffered_istream stream(buffer, false, status);
    std::string bytes(40001, '\0');
    EXPECT_EQ(stream.read(1, bytes.data(), status), 1U);
    EXPECT_EQ(stream.read(40000, bytes.data(), status), 39999U);
    EXPECT_EQ(bytes, std::string(39999, 'x') + std::string(2, '\0'));
    EXPECT_TRUE(status.is_clear());
    std::vector<unsigned long long> positions;
    for (const auto& read : buffer.reads) {
        positions.push_back(read.position);
        EXPECT_EQ(read.count, 16384U);
    }
    EXPECT_EQ(positions, (std::vector<unsigned long long>{0, 16384, 32768, 40000}));
    status = 5U;
    EXPECT_EQ(stream.read(0, nullptr, status), 0U);
    EXPECT_TRUE(status.is_clear());
}

TEST(Buffered_istream, keeps_a_failure_for_the_call_that_gets_nothing_else)
{
    Vector_buffer buffer("abcdef");
    buffer.fail_from = 4;
    Tam_status status;
    Tam_buffered_istream stream(buffer, false, status);
    char bytes[6];
    EXPECT_EQ(stream.read(6, bytes, status), 4U);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(stream.read(6, bytes, status), 0U);
    EXPECT_EQ(status.value(), 0xC200001BU);
    ASSERT_TRUE(status.has_child());
    EXPECT_EQ(status.child()->value(), 1117U);
    EXPECT_EQ(stream.tell(), 4U);
}

TEST(Buffered_istream, takes_a_buffer_that_delivers_nothing_for_its_end)
{
    Vector_buffer buffer("abc");
    buffer.portion = [](unsigned long long) { return 0U; };
    Tam_status status;
    Tam_buffered_istream stream(buffer, false, status);
    char byte;
    EXPECT_EQ(stream.read(1, &byte, status), 0U);
    EXPECT_EQ(status.value(), 0xC2000019U);
}

TEST(Buffered_istream, init_empties_the_cache)
{
    const Vector_buffer first("first");
    const Vector_buffer second("2");
    Tam_status status;
    Tam_buffered_istream stream(first, false, status);
    char bytes[5];
    stream.read(5, bytes, status);
    stream.detach();
    stream.init(second, false, status);
    EXPECT_EQ(stream.read(5, bytes, status), 1U);
    EXPECT_EQ(bytes[0], '2');
}

} // namespace
} // namespace tam
