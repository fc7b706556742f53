#pragma once

namespace tam::test {

// Makes one call of operator new on this thread fail, the one after `successes` others, for the length of a scope.
// In the static build alone, where the library allocates through the program's operator new.
//
//     for (unsigned int successes = 0;; ++successes) {
//         Failing_allocation failure(successes);
//         ... the operation; failure.happened() tells whether it got as far ...
//     }
class Failing_allocation {
public:
    explicit Failing_allocation(unsigned int successes);
    ~Failing_allocation();
    Failing_allocation(const Failing_allocation&) = delete;
    Failing_allocation& operator=(const Failing_allocation&) = delete;

    bool happened() const;
};

} // namespace tam::test
