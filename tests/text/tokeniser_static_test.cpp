#include <tests/support/test.h>

#include <tests/support/failing_new.h>

using namespace tam;

TEST(Tokeniser_allocations, a_failed_one_leaves_the_earlier_tokens)
{
    const std::wstring text = L"a first token-that-needs-room-of-its-own b c d e f g h i";
    Tam_object_vector<std::wstring> tokens;
    tokens.push_back(L"earlier");
    EXPECT_THROW(throw std::bad_alloc(), std::bad_alloc); // a thread's first leaves blocks of the run-time's own
    const unsigned int blocks = test::heap_blocks();
    const unsigned int failures = test::fail_each_allocation([] {}, [&] { Tam_tokeniser().tokenise(text, tokens); },
                                                             [&](unsigned int nth, bool thrown) {
                                                                 EXPECT_TRUE(thrown);
                                                                 EXPECT_EQ(test::heap_blocks(), blocks) << nth;
                                                                 EXPECT_EQ(tokens.size(), 1u);
                                                                 EXPECT_EQ(tokens.at(0), L"earlier");
                                                             });
    EXPECT_GT(failures, 11u); // more than one a token
    EXPECT_EQ(tokens.size(), 11u);
    EXPECT_EQ(tokens.back(), L"i");
}
