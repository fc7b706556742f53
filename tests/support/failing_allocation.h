#pragma once

namespace tam::test {

/// Lets the n-th allocation that this thread makes from now on fail, once. Of the library's allocations it reaches only
/// those of the static build.
class Failing_allocation {
public:
    explicit Failing_allocation(unsigned int n);
    ~Failing_allocation();
    Failing_allocation(const Failing_allocation&) = delete;
    Failing_allocation& operator=(const Failing_allocation&) = delete;

    bool happened() const;
};

} // namespace tam::test
