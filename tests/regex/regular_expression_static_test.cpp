#include <tam/regex/regular_expression.h>

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include <tam/stream/unbuffered_istream.h>
#include <tests/regex/both.h>
#include <tests/stream/vector_buffer.h>
#include <tests/support/chain.h>
#include <tests/support/failing_new.h>

namespace tam {
namespace {

template <class Kind>
class Regex_allocations : public testing::Test {};
TYPED_TEST_SUITE(Regex_allocations, test::Both);

// Every allocation of an operation fails in turn; the object serves as before each time.
TYPED_TEST(Regex_allocations, a_failed_one_leaves_the_object_as_it_was)
{
    const auto pattern = TypeParam::text("\\b(a|b)[c-e]{2,3}\\b");
    const auto other = TypeParam::text("[x[:digit:]]+(y|z)*");
    const auto text = TypeParam::text("xx acd bcde 12y");
    test::Vector_buffer buffer(test::bytes(text));
    Tam_status status;
    Tam_unbuffered_istream stream(buffer, false, status);
    Tam_object_vector<typename TypeParam::String> lines;
    std::size_t start = 0;
    std::size_t length = 0;
    unsigned long long stream_start = 0;
    unsigned long long stream_length = 0;
    typename TypeParam::Expression expression;

    const std::function<bool()> operations[] = {
        [&] {
            expression.compile(other, status);
            return status.ok();
        },
        [&] { return expression.search(text, 0, start, length, status); },
        [&] { return expression.search_longest(stream, stream_start, stream_length, status); },
        [&] { return expression.grep(stream, lines, 0, status) == 1; },
    };
    for (const auto& operation : operations) {
        unsigned int nth = 0;
        for (bool failed = true; failed;) {
            expression.compile(pattern, status);
            stream.seek(0ULL);
            lines.clear();
            buffer.reads.clear();
            buffer.reads.reserve(100);
            bool done = false;
            {
                const test::Failing_new failing(++nth);
                done = operation();
                failed = failing.failed();
            }
            ASSERT_EQ(done, !failed);
            ASSERT_EQ(test::chain(status), failed ? L"C2000001" : L"");
            if (failed) {
                ASSERT_EQ(expression.pattern(), pattern);
                ASSERT_EQ(stream.tell(), 0U);
                ASSERT_TRUE(expression.search(text, 0, start, length, status));
                ASSERT_EQ(start, 3U);
            }
        }
        EXPECT_GT(nth, 5U);
    }
}

} // namespace
} // namespace tam
