#include <tests/support/test.h>

#include <tests/stream/crc32_reference.h>
#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

using test::chain;
using test::crc32_of;
using test::some_bytes;
using test::Vector_buffer;

unsigned int crc_of(const std::string& bytes)
{
    Tam_crc32 crc;
    crc.update(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return crc.result();
}

TEST(Crc32, gives_the_published_values)
{
    EXPECT_EQ(crc_of(""), 0U);
    EXPECT_EQ(crc_of("a"), 0xE8B7BE43);
    EXPECT_EQ(crc_of("123456789"), 0xCBF43926);
    EXPECT_EQ(crc_of("The quick brown fox jumps over the lazy dog"), 0x414FA339U);
    EXPECT_EQ(crc_of(std::string(32, '\0')), 0x190A55AD);
    EXPECT_EQ(crc_of(std::string(32, '\xFF')), 0xFF6CAB0B);
}

TEST(Crc32, gives_what_the_definition_gives)
{
    test::expect_crc32_of_every_piece([](const unsigned char* data, unsigned int count) {
        Tam_crc32 crc;
        crc.update(data, count);
        return crc.result();
    });
}

TEST(Crc32, pieces_add_up)
{
    const std::string bytes = some_bytes(5000);
    const unsigned int whole = crc32_of(bytes);
    for (unsigned int cut = 0; cut <= bytes.size(); cut += 7) {
        Tam_crc32 crc;
        crc.update(bytes.data(), cut);
        crc.update(bytes.data() + cut, static_cast<unsigned int>(bytes.size()) - cut);
        ASSERT_EQ(crc.result(), whole) << cut;
    }
    Tam_crc32 crc;
    for (const char byte : bytes) {
        crc.update(static_cast<unsigned char>(byte));
    }
    EXPECT_EQ(crc.result(), whole);
    crc.update(nullptr, 0);
    EXPECT_EQ(crc.result(), whole);
}

TEST(Crc32, a_result_changes_nothing_and_a_copy_goes_its_own_way)
{
    char bytes[] = "123456789";
    void* const data = bytes;
    Tam_crc32 crc;
    crc.update(data, 4);
    EXPECT_EQ(crc.result(), crc32_of("1234"));
    EXPECT_EQ(crc.result(), crc32_of("1234"));
    Tam_crc32 copy;
    copy.update('x');
    copy = crc;
    crc.update(bytes + 4, 5);
    EXPECT_EQ(crc.result(), 0xCBF43926);
    EXPECT_EQ(copy.result(), crc32_of("1234"));
    crc.reset();
    EXPECT_EQ(crc.result(), 0U);
}

TEST(Crc32_table, holds_each_byte_shifted_out)
{
    static_assert(std::is_same_v<decltype(crc32_table), const unsigned int[256]>);
    EXPECT_EQ(crc32_table[1], 0x77073096U);
    EXPECT_EQ(crc32_table[255], 0x2D02EF8DU);
    for (unsigned int i = 0; i < 256; ++i) {
        ASSERT_EQ(crc32_table[i], test::crc32_step(0, static_cast<unsigned char>(i))) << i;
    }
}

TEST(Crc32, covers_a_whole_stream_wherever_it_stands)
{
    Vector_buffer buffer(some_bytes(50'000));
    Tam_status status;
    Tam_buffered_istream buffered(buffer, false, status);
    Tam_unbuffered_istream unbuffered(buffer, false, status);
    for (Tam_istream* const stream : {static_cast<Tam_istream*>(&buffered), static_cast<Tam_istream*>(&unbuffered)}) {
        stream->seek(33'333);
        Tam_crc32 crc;
        crc.update(stream, status);
        EXPECT_TRUE(status.is_clear());
        EXPECT_EQ(crc.result(), crc32_of(buffer.data));
        EXPECT_EQ(stream->tell(), 50'000U);
        crc.update(stream, status); // goes on
        EXPECT_EQ(crc.result(), crc32_of(buffer.data + buffer.data));
    }
}

TEST(Crc32, covers_a_whole_buffer_and_waits_for_its_writer)
{
    Vector_buffer buffer(some_bytes(40'000));
    Tam_status status(5);
    Tam_crc32 crc;
    crc.update(buffer, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(crc.result(), crc32_of(buffer.data));
    EXPECT_EQ(buffer.num_unbuffered_istream(), 0U);
    ASSERT_EQ(buffer.reads.size(), 4U);
    for (const auto& read : buffer.reads) {
        EXPECT_TRUE(read.wait);
        EXPECT_EQ(read.count, 16384U);
    }

    crc.reset();
    crc.update(Vector_buffer(), status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(crc.result(), 0U);
}

TEST(Crc32, passes_a_failing_read_on_and_keeps_what_came_before)
{
    Vector_buffer buffer(some_bytes(40'000));
    buffer.fail_from = 20'000;
    Tam_status status;
    Tam_crc32 crc;
    crc.update(buffer, status);
    EXPECT_EQ(chain(status), L"C200001B 1117");
    EXPECT_EQ(crc.result(), crc32_of(buffer.data.substr(0, 20'000)));
    EXPECT_EQ(buffer.num_unbuffered_istream(), 0U);
}

TEST(Crc32, adds_nothing_of_what_it_cannot_read)
{
    Vector_buffer buffer("abc");
    buffer.refuse_readers = TAM_E_NO_FILE;
    Tam_status status;
    Tam_crc32 crc;
    crc.update(buffer, status);
    EXPECT_EQ(chain(status), L"C2000031");
    EXPECT_TRUE(buffer.reads.empty());

    Tam_buffered_istream detached;
    crc.update(&detached, status);
    EXPECT_EQ(chain(status), L"C2000017");
    EXPECT_EQ(crc.result(), 0U);
}

// A stream of a caller's own, whose reads give these results in turn and fill all of the destination.
class Scripted_stream : public Tam_unbuffered_istream {
public:
    struct Result {
        unsigned int delivered;
        unsigned int code;
    };

    Scripted_stream(const Tam_buffer& buffer, Tam_status& status, std::vector<Result> results)
        : Tam_unbuffered_istream(buffer, false, status), m_results(std::move(results))
    {}

    unsigned int read(unsigned int count, void* destination, Tam_status& status) override
    {
        std::memset(destination, 'x', count);
        status = m_results.at(m_next).code;
        return m_results[m_next++].delivered;
    }

private:
    std::vector<Result> m_results;
    std::size_t m_next = 0;
};

TEST(Crc32, adds_a_read_only_when_its_status_is_ok)
{
    const Vector_buffer buffer;
    Tam_status status;
    constexpr unsigned int WARNING = 0x82000001;
    Scripted_stream stream(buffer, status,
                           {{3, 0}, {2, WARNING}, {20'000, 0}, {4, TAM_E_END_OF_DATA}, {1, WARNING}, {0, WARNING}});
    Tam_crc32 crc;
    crc.update(&stream, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(crc.result(), crc32_of(std::string(3 + 2 + 16384, 'x')));
    crc.update(&stream, status);
    EXPECT_EQ(chain(status), L"82000001");
    EXPECT_EQ(crc.result(), crc32_of(std::string(3 + 2 + 16384 + 1, 'x')));
}

} // namespace
} // namespace tam
