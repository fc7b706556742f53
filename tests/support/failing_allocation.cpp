#include <tests/support/failing_allocation.h>

#ifdef TAM_STATIC

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local bool failed = false;
thread_local unsigned int left = 0;

void* allocate(std::size_t size)
{
    if (armed && !failed) {
        if (left == 0) {
            failed = true;
            throw std::bad_alloc();
        }
        --left;
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace tam::test {

Failing_allocation::Failing_allocation(unsigned int successes)
{
    armed = true;
    failed = false;
    left = successes;
}

Failing_allocation::~Failing_allocation()
{
    armed = false;
}

bool Failing_allocation::happened() const
{
    return failed;
}

} // namespace tam::test

#endif
