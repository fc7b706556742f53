#include <tests/support/test.h>

#include <tests/stream/vector_buffer.h>
#include <tests/support/failing_new.h>

namespace tam {
namespace {

template <class Stream>
void expect_nothing_lost()
{
    const test::Vector_buffer buffer(std::string(40000, 'x') + "\n");
    Tam_status status;
    Stream stream(buffer, false, status);
    std::string line;
    const unsigned int failures = test::fail_each_allocation(
        [&] {
            stream.seek(1);
            line = std::string();
            buffer.reads.clear();
            buffer.reads.reserve(1000);
        },
        [&] { stream.readln(100000, line, status); },
        [&](unsigned int, bool) {
            EXPECT_EQ(status.value(), 0xC2000001U);
            EXPECT_EQ(line, "");
            EXPECT_EQ(stream.tell(), 1U);
        });
    EXPECT_GT(failures, 1U);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(line.size(), 39999U);
    EXPECT_EQ(stream.tell(), 40001U);
}

TEST(Line_readers, lose_nothing_when_memory_runs_out)
{
    expect_nothing_lost<Tam_buffered_istream>();
    expect_nothing_lost<Tam_unbuffered_istream>();
}

} // namespace
} // namespace tam
