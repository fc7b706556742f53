#pragma once

#include <limits>
#include <map>
#include <vector>

#include <tam/detail/unit_set.h>
#include <tam/regex/regular_expression.h>

namespace tam::detail {

// A place in a pattern that takes no unit.
enum class Regex_assertion : unsigned char { START, END, WORD_BORDER };

struct Regex_node {
    enum class Kind : unsigned char { EMPTY, UNITS, ASSERTION, SEQUENCE, ALTERNATIVE, REPEAT };

    Kind kind = Kind::EMPTY;
    Regex_assertion assertion = Regex_assertion::START; // of an ASSERTION
    unsigned int first = 0;                             // a node; of UNITS the set
    unsigned int second = 0;                            // a node; of a REPEAT the least count
    unsigned int most = 0;                              // of a REPEAT
    unsigned int states = 0;                            // of the program; capped
    unsigned int shortest = 0;                          // units that a match takes; capped
    unsigned int longest = 0;                           // UNBOUNDED from there on
};

// A pattern as a tree. Nodes refer to each other by index; what would not fit into a program is counted, but not kept.
class Regex_tree {
public:
    static constexpr unsigned int MAXIMUM_STATES = Tam_regular_expression::MAXIMUM_STATES;
    static constexpr unsigned int UNBOUNDED = std::numeric_limits<unsigned int>::max();
    static constexpr unsigned int EMPTY = 0; // the node that matches the empty string

    Regex_tree() : m_nodes(1) {}

    unsigned int units(Unit_set set);
    unsigned int assertion(Regex_assertion assertion);
    unsigned int sequence(unsigned int first, unsigned int second);
    unsigned int alternative(unsigned int first, unsigned int second);
    unsigned int repeat(unsigned int node, unsigned int least, unsigned int most); // most may be UNBOUNDED

    void finish(unsigned int root) { m_root = root; }
    bool too_large() const { return m_overflowed || m_nodes[m_root].states >= MAXIMUM_STATES; }

    const Regex_node& operator[](unsigned int node) const { return m_nodes[node]; }
    unsigned int root() const { return m_root; }
    const std::vector<Unit_set>& sets() const { return m_sets; }

private:
    // A node takes a state at least, or joins two that do.
    static constexpr unsigned int MAXIMUM_NODES = 2 * MAXIMUM_STATES;

    unsigned int _add(const Regex_node& node);

    std::vector<Regex_node> m_nodes;
    std::vector<Unit_set> m_sets;
    std::map<Unit_set, unsigned int> m_set_numbers;
    unsigned int m_root = EMPTY;
    bool m_overflowed = false;
};

} // namespace tam::detail
