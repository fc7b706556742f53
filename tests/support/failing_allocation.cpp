#include <tests/support/failing_allocation.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local unsigned int allocations_to_failure = 0; // 0: none fails

} // namespace

// The other forms of new end here.
void* operator new(std::size_t size)
{
    if (allocations_to_failure != 0 && --allocations_to_failure == 0) {
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

namespace tam::test {

Failing_allocation::Failing_allocation(unsigned int n)
{
    allocations_to_failure = n;
}

Failing_allocation::~Failing_allocation()
{
    allocations_to_failure = 0;
}

bool Failing_allocation::happened() const
{
    return allocations_to_failure == 0;
}

} // namespace tam::test
