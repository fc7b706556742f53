#include <tests/support/test.h>

namespace tam {
namespace {

using test::chain;

template <class Stream>
class Copy_stream : public testing::Test {};

using Streams = testing::Types<Tam_buffered_istream, Tam_unbuffered_istream>;
TYPED_TEST_SUITE(Copy_stream, Streams);

TYPED_TEST(Copy_stream, takes_what_remains)
{
    std::string bytes(50'001, '?');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * i / 7);
    }
    Tam_status status;
    Tam_memory_buffer source;
    Tam_memory_buffer copy;
    unsigned long long position = 0;
    source.write(position, 50'001, bytes.data(), status);
    TypeParam in(source, false, status);
    Tam_ostream out(copy, status, TAM_EOL_ANY);
    out.seek(3);
    in.seek(2);
    for (int time = 0; time < 2; ++time) { // the second time nothing remains
        status = 5U;
        tam_copy_stream(in, out, status);
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(in.tell(), bytes.size());
        EXPECT_EQ(out.tell(), bytes.size() + 1);
    }
    std::string copied(bytes.size(), '?');
    position = 3;
    copied.resize(copy.read(false, position, 50'001, copied.data(), status));
    EXPECT_EQ(copied, bytes.substr(2));
}

TYPED_TEST(Copy_stream, reports_a_failing_write_but_not_a_buffer_that_is_full)
{
    const std::string bytes(40'000, 'x');
    char target[20'000];
    Tam_status status;
    Tam_memory_buffer source;
    unsigned long long position = 0;
    source.write(position, 40'000, bytes.data(), status);
    Tam_raw_memory_buffer fixed(sizeof target, target, Tam_raw_memory_buffer::KEEP);
    TypeParam in(source, false, status);
    Tam_ostream out(fixed, status, TAM_EOL_ANY);
    tam_copy_stream(in, out, status);
    EXPECT_EQ(chain(status), L"C200001A C2000069");
    EXPECT_EQ(in.tell(), 32'768U);
    EXPECT_EQ(out.tell(), 16'384U);
    out.seek(sizeof target);
    tam_copy_stream(in, out, status);
    EXPECT_EQ(chain(status), L"");
    in.detach();
    tam_copy_stream(in, out, status);
    EXPECT_EQ(chain(status), L"C2000017");
}

} // namespace
} // namespace tam
