#pragma once

namespace tam::test {

/// For the length of a scope, makes allocations of this thread fail: operator new throws std::bad_alloc.
///
/// For static tests only, where the library and the standard library allocate with the test's operator new. One scope at
/// a time. A test runs an operation with its 1st, 2nd, 3rd ... allocation failing until none fails:
///
///     for (unsigned int nth = 1;; ++nth) {
///         ... the state before ...
///         bool failed = false;
///         {
///             const Failing_new failing(nth);
///             ... the operation, and nothing that allocates for the test ...
///             failed = failing.failed();
///         }
///         if (!failed) { break; }
///         ... what the failure has to leave behind ...
///     }
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

} // namespace tam::test
