#include <gtest/gtest.h>

#include <new>
#include <string>

#include <tam/container/object_vector.h>

#include <tests/support/failing_allocation.h>
#include <tests/support/resources.h>

using namespace tam;
using tam::test::Failing_allocation;

// The copy, its text and the larger array are allocated in turn; each failure leaves the vector and the heap as before.
TEST(Object_vector_allocations, a_failed_allocation_loses_nothing)
{
    const std::wstring text(100, L'x');
    for (const bool at_front : {false, true}) {
        Tam_object_vector<std::wstring> texts(1);
        texts.push_back(L"first");
        unsigned int failures = 0;
        for (bool stored = false; !stored; failures += stored ? 0 : 1) {
            const unsigned int blocks = test::heap_blocks();
            try {
                const Failing_allocation failure(failures);
                if (at_front) {
                    texts.insert(0, text);
                } else {
                    texts.push_back(text);
                }
                stored = true;
            } catch (const std::bad_alloc&) {
                ASSERT_EQ(test::heap_blocks(), blocks) << failures;
                ASSERT_EQ(texts.size(), 1u);
                ASSERT_EQ(texts.capacity(), 1u);
                ASSERT_EQ(texts.at(0), L"first");
            }
        }
        EXPECT_EQ(failures, 3u);
        EXPECT_EQ(texts.capacity(), 4u);
        EXPECT_EQ(at_front ? texts.front() : texts.back(), text);
    }
}
