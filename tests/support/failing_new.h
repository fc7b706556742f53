#pragma once

#include <new>

namespace tam::test {

/// For the length of a scope, makes allocations of this thread fail: operator new throws std::bad_alloc.
///
/// For static tests only, where the library and the standard library allocate with the test's operator new. One scope at
/// a time, with nothing in it that allocates for the test.
class Failing_new {
public:
    static constexpr unsigned int ALL = 0xFFFFFFFF;

    /// @param nth    the first call of operator new to fail; 1 is the next
    /// @param count  how many calls in succession fail
    explicit Failing_new(unsigned int nth, unsigned int count = 1);
    ~Failing_new();
    Failing_new(const Failing_new&) = delete;
    Failing_new& operator=(const Failing_new&) = delete;

    /// Whether a call has failed.
    bool failed() const;
};

/// Blocks that operator new has given out, on any thread, and not got back.
long long live_blocks();

/// Runs operation with its 1st, 2nd, 3rd ... allocation failing until none fails. before() comes before each run;
/// after(nth, thrown) after each with a failure, thrown telling whether std::bad_alloc came out of operation. Gives the
/// number of failures.
template <class Before, class Operation, class After>
unsigned int fail_each_allocation(const Before& before, const Operation& operation, const After& after)
{
    for (unsigned int nth = 1;; ++nth) {
        before();
        bool failed = false;
        bool thrown = false;
        {
            const Failing_new failing(nth);
            try {
                operation();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            failed = failing.failed();
        }
        if (!failed || nth == 2000) {
            return nth - 1;
        }
        after(nth, thrown);
    }
}

} // namespace tam::test
