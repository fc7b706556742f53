#include <tests/support/test.h>

#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

struct Counted : test::Vector_buffer {
    using Tam_buffer::add_buffered_istream;
    using Tam_buffer::add_ostream;
    using Tam_buffer::add_unbuffered_istream;
    using Tam_buffer::remove_ostream;
    using Tam_buffer::remove_unbuffered_istream;
};

TEST(Buffer, counts_each_kind_of_stream_and_never_below_zero)
{
    const Counted buffer;
    Tam_status status = 5U;
    buffer.Tam_buffer::connect_unbuffered_istream(status);
    EXPECT_TRUE(status.is_clear());
    status = 5U;
    buffer.Tam_buffer::connect_buffered_istream(status);
    EXPECT_TRUE(status.is_clear());
    buffer.add_buffered_istream();
    EXPECT_EQ(buffer.num_unbuffered_istream(), 1U);
    EXPECT_EQ(buffer.num_buffered_istream(), 2U);
    EXPECT_EQ(buffer.num_ostream(), 0U);
    buffer.disconnect_unbuffered_istream();
    buffer.disconnect_unbuffered_istream();
    EXPECT_EQ(buffer.num_unbuffered_istream(), 0U);
    buffer.disconnect_buffered_istream();
    EXPECT_EQ(buffer.num_buffered_istream(), 1U);
}

TEST(Buffer, a_copy_starts_with_the_counts_of_its_source)
{
    Counted source;
    Tam_status status;
    source.connect_ostream(status);
    source.add_unbuffered_istream();
    source.add_buffered_istream();
    Counted copy(source);
    source.disconnect_ostream();
    EXPECT_EQ(copy.num_unbuffered_istream(), 1U);
    EXPECT_EQ(copy.num_buffered_istream(), 1U);
    copy.connect_ostream(status);
    EXPECT_EQ(status.value(), 0xC2000033U);
}

TEST(Buffer, counts_right_when_threads_connect_at_once)
{
    Counted buffer;
    constexpr int ROUNDS = 300;
    const auto connect = [&buffer] {
        Tam_status status;
        for (int i = 0; i < ROUNDS; ++i) {
            buffer.connect_unbuffered_istream(status);
            buffer.add_ostream();
        }
    };
    std::thread a(connect);
    std::thread b(connect);
    a.join();
    b.join();
    EXPECT_EQ(buffer.num_unbuffered_istream(), 2U * ROUNDS);
    EXPECT_EQ(buffer.num_ostream(), 2U * ROUNDS);
}

} // namespace
} // namespace tam
