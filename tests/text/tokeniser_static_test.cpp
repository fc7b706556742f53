#include <tests/support/test.h>

#include <tests/support/failing_new.h>

using namespace tam;
using tam::test::Failing_new;

namespace {

using Texts = Tam_object_vector<std::wstring>;

bool tokenise(const std::wstring& text, Texts& tokens, unsigned int successes)
{
    try {
        const Failing_new failure(successes + 1);
        Tam_tokeniser().tokenise(text, tokens);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

TEST(Tokeniser_allocations, a_failed_one_leaves_the_earlier_tokens)
{
    const std::wstring text = L"a first token-that-needs-room-of-its-own b c d e f g h i";
    Texts tokens;
    tokens.push_back(L"earlier");
    tokenise(text, tokens, 0); // the first exception of a thread leaves blocks of the run-time's own
    unsigned int failures = 0;
    const unsigned int blocks = test::heap_blocks();
    while (!tokenise(text, tokens, failures)) {
        ASSERT_EQ(test::heap_blocks(), blocks) << failures;
        ASSERT_EQ(tokens.size(), 1u);
        ASSERT_EQ(tokens.at(0), L"earlier");
        ++failures;
    }
    EXPECT_GT(failures, 11u); // more than one a token
    EXPECT_EQ(tokens.size(), 11u);
    EXPECT_EQ(tokens.back(), L"i");
}
