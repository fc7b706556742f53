#include <tests/support/test.h>

#include <tests/support/failing_new.h>

using namespace tam;

// The copy, its text and the larger array are allocated in turn; each failure leaves the vector and the heap as before.
TEST(Object_vector_allocations, a_failed_one_loses_nothing)
{
    const std::wstring text(100, L'x');
    EXPECT_THROW(throw std::bad_alloc(), std::bad_alloc); // a thread's first leaves blocks of the run-time's own
    for (const bool at_front : {false, true}) {
        Tam_object_vector<std::wstring> texts(1);
        texts.push_back(L"first");
        const unsigned int blocks = test::heap_blocks();
        const auto store = [&] { at_front ? texts.insert(0, text) : texts.push_back(text); };
        EXPECT_EQ(test::fail_each_allocation([] {}, store,
                                             [&](unsigned int nth, bool thrown) {
                                                 EXPECT_TRUE(thrown);
                                                 EXPECT_EQ(test::heap_blocks(), blocks) << nth;
                                                 EXPECT_EQ(texts.size(), 1u);
                                                 EXPECT_EQ(texts.capacity(), 1u);
                                                 EXPECT_EQ(texts.at(0), L"first");
                                             }),
                  3U);
        EXPECT_EQ(texts.capacity(), 4u);
        EXPECT_EQ(at_front ? texts.front() : texts.back(), text);
    }
}
