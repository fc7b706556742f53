#include <tests/support/test.h>

#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

TEST(Lines, counts_lines_that_have_an_end_from_the_start)
{
    const struct {
        std::string bytes;
        unsigned int lines;
    } cases[] = {
        {"", 0},
        {"x\ny\n", 2},
        {"x\ny", 1},
        {"\r\n\r\r\n\n", 3},
        {std::string(2048, 'x') + "\n", 1},
        {std::string(2049, 'x') + "\n", 2}, // as documented
        {std::string(2050, 'x') + "\n", 1},
        {std::string(100000, 'x') + "\n" + std::string(5000, 'y'), 1},
    };
    for (const auto& given : cases) {
        const test::Vector_buffer buffer(given.bytes);
        Tam_status status = 5U;
        Tam_buffered_istream stream(buffer, false, status);
        stream.seek(given.bytes.size());
        EXPECT_EQ(tam_count_lines(stream, status), given.lines) << given.bytes.size() << " bytes";
        EXPECT_TRUE(status.is_clear());
        EXPECT_EQ(stream.tell(), given.bytes.size());
    }
}

TEST(Lines, counting_stops_at_a_failure)
{
    test::Vector_buffer buffer("a\nb\nc\n");
    buffer.fail_from = 4;
    Tam_status status;
    Tam_buffered_istream stream(buffer, false, status);
    EXPECT_EQ(tam_count_lines(stream, status), 2U);
    EXPECT_EQ(status.value(), 0xC200001BU);
}

TEST(Lines, skips_from_where_the_stream_is)
{
    const test::Vector_buffer buffer("a\nb\n" + std::string(5000, 'c') + "\nd\ne");
    Tam_status status = 5U;
    Tam_buffered_istream stream(buffer, false, status);
    stream.seek(2);
    tam_skip_lines(stream, 0, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(stream.tell(), 2U);
    tam_skip_lines(stream, 2, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(stream.tell(), 5005U);
    tam_skip_lines(stream, 2, status);
    EXPECT_EQ(status.value(), 0xC2000019U);
}

TEST(Lines, knows_what_the_conventions_write)
{
    const unsigned int expected[][2] = {{1, 1}, {1, 0}, {0, 1}, {1, 1}, {1, 1}};
    for (unsigned int eol = 0; eol < 5; ++eol) {
        EXPECT_EQ(tam_eol_has_cr(static_cast<Tam_eol>(eol)), expected[eol][0]) << eol;
        EXPECT_EQ(tam_eol_has_lf(static_cast<Tam_eol>(eol)), expected[eol][1]) << eol;
    }
}

} // namespace
} // namespace tam
