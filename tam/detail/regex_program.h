#pragma once

#include <vector>

#include <tam/detail/regex_tree.h>

namespace tam::detail {

// One state of the non-deterministic automaton. Those that take no unit pass on at once.
struct Regex_state {
    enum class Kind : unsigned char { UNITS, BRANCH, ASSERTION, MATCH };

    Kind kind = Kind::MATCH;
    Regex_assertion assertion = Regex_assertion::START; // of an ASSERTION
    unsigned int next = 0;
    unsigned int other = 0; // of a BRANCH the second next state, of UNITS the set
};

struct Regex_program {
    std::vector<Regex_state> states;
    unsigned int start = 0;

    bool has(Regex_assertion assertion) const;
};

// The program of a tree that is not too large, or the one that matches the same texts read backwards.
Regex_program make_regex_program(const Regex_tree& tree, bool backwards);

} // namespace tam::detail
