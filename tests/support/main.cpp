#include <windows.h>

#include <malloc.h>

#include <gtest/gtest.h>

namespace {

// Finds what a test wrote outside its blocks of the C run-time's heap.
class Heap_check : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override
    {
        EXPECT_TRUE(::HeapValidate(reinterpret_cast<HANDLE>(_get_heap_handle()), 0, nullptr)) << "the heap is damaged";
    }
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new Heap_check);
    return RUN_ALL_TESTS();
}
