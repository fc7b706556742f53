#include <tests/support/failing_new.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include <windows.h>

namespace tam::test {

namespace {

// The thread whose calls are counted, or 0. The other two belong to that thread.
std::atomic<DWORD> failing_thread = 0;
unsigned long long calls_to_succeed = 0;
unsigned int calls_to_fail = 0;
bool has_failed = false;

std::atomic<long long> blocks = 0;

bool must_fail()
{
    if (failing_thread.load(std::memory_order_relaxed) != ::GetCurrentThreadId()) {
        return false;
    }
    if (calls_to_succeed != 0) {
        --calls_to_succeed;
        return false;
    }
    if (calls_to_fail == 0) {
        return false;
    }
    --calls_to_fail;
    has_failed = true;
    return true;
}

} // namespace

Failing_new::Failing_new(unsigned int nth, unsigned int count)
{
    calls_to_succeed = nth - 1;
    calls_to_fail = count;
    has_failed = false;
    failing_thread = ::GetCurrentThreadId();
}

Failing_new::~Failing_new()
{
    failing_thread = 0;
}

bool Failing_new::failed() const
{
    return has_failed;
}

long long live_blocks()
{
    return blocks;
}

} // namespace tam::test

// The standard library's other forms, but for over-aligned types, call these.
void* operator new(std::size_t size)
{
    void* const memory = tam::test::must_fail() ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    tam::test::blocks.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void operator delete(void* memory) noexcept
{
    if (memory != nullptr) {
        tam::test::blocks.fetch_sub(1, std::memory_order_relaxed);
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}
