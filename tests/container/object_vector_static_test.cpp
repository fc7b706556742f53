#include <tests/support/test.h>

#include <tests/support/failing_new.h>

using namespace tam;
using tam::test::Failing_new;

namespace {

using Texts = Tam_object_vector<std::wstring>;

// Stores text with that many allocations granted; false when there were too few.
bool store(Texts& texts, const std::wstring& text, bool at_front, unsigned int successes)
{
    try {
        const Failing_new failure(successes + 1);
        if (at_front) {
            texts.insert(0, text);
        } else {
            texts.push_back(text);
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

// The copy, its text and the larger array are allocated in turn; each failure leaves the vector and the heap as before.
TEST(Object_vector_allocations, a_failed_one_loses_nothing)
{
    const std::wstring text(100, L'x');
    for (const bool at_front : {false, true}) {
        Texts texts(1);
        texts.push_back(L"first");
        store(texts, text, at_front, 0); // the first exception of a thread leaves blocks of the run-time's own
        unsigned int failures = 0;
        const unsigned int blocks = test::heap_blocks();
        while (!store(texts, text, at_front, failures)) {
            ASSERT_EQ(test::heap_blocks(), blocks) << failures;
            ASSERT_EQ(texts.size(), 1u);
            ASSERT_EQ(texts.capacity(), 1u);
            ASSERT_EQ(texts.at(0), L"first");
            ++failures;
        }
        EXPECT_EQ(failures, 3u);
        EXPECT_EQ(texts.capacity(), 4u);
        EXPECT_EQ(at_front ? texts.front() : texts.back(), text);
    }
}
