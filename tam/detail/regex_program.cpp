#include <tam/detail/regex_program.h>

#include <algorithm>
#include <utility>

namespace tam::detail {

namespace {

// Makes the states of a tree from its end to its beginning, so that what follows a node is there before the node is.
// What remains to be done lies on a stack of its own.
class Program_maker {
public:
    Program_maker(const Regex_tree& tree, bool backwards) : m_tree(tree), m_backwards(backwards) {}

    Regex_program make()
    {
        m_entry = _add({});
        m_steps.push_back({Step::NODE, m_tree.root()});
        while (!m_steps.empty()) {
            const Step step = m_steps.back();
            m_steps.pop_back();
            _do(step);
        }
        m_program.start = m_entry;
        return std::move(m_program);
    }

private:
    // m_entry is the state that comes behind what a step makes, and the first of what it has made afterwards.
    struct Step {
        enum Kind {
            NODE,
            SECOND_ALTERNATIVE, // the first is done; behind both comes `behind`
            BRANCH,             // to m_entry or to `behind`
            LOOP,               // closes the branch `behind`, and begins with it
            LOOP_AT_LEAST_ONCE, // closes the branch `behind`, and begins with its first repetition
            REPETITIONS         // count of them, the last `optional` of which can lead to `behind`
        };

        Kind kind;
        unsigned int node = 0;
        unsigned int behind = 0;
        unsigned int count = 0;
        unsigned int optional = 0;
    };

    unsigned int _add(const Regex_state& state)
    {
        m_program.states.push_back(state);
        return static_cast<unsigned int>(m_program.states.size() - 1);
    }

    void _do(const Step& step)
    {
        switch (step.kind) {
        case Step::NODE:
            _do_node(step.node);
            break;
        case Step::SECOND_ALTERNATIVE: {
            const unsigned int first = std::exchange(m_entry, step.behind);
            m_steps.push_back({Step::BRANCH, 0, first});
            m_steps.push_back({Step::NODE, step.node});
            break;
        }
        case Step::BRANCH:
            m_entry = _add({.kind = Regex_state::Kind::BRANCH, .next = m_entry, .other = step.behind});
            break;
        case Step::LOOP:
            m_program.states[step.behind].next = m_entry;
            m_entry = step.behind;
            break;
        case Step::LOOP_AT_LEAST_ONCE:
            m_program.states[step.behind].next = m_entry;
            break;
        case Step::REPETITIONS:
            if (step.count != 0) {
                const bool is_optional = step.optional != 0;
                m_steps.push_back(
                    {Step::REPETITIONS, step.node, step.behind, step.count - 1, step.optional - is_optional});
                if (is_optional) {
                    m_steps.push_back({Step::BRANCH, 0, step.behind});
                }
                m_steps.push_back({Step::NODE, step.node});
            }
            break;
        }
    }

    void _do_node(unsigned int number)
    {
        const Regex_node& node = m_tree[number];
        switch (node.kind) {
        case Regex_node::Kind::EMPTY:
            break;
        case Regex_node::Kind::UNITS:
            m_entry = _add({.kind = Regex_state::Kind::UNITS, .next = m_entry, .other = node.first});
            break;
        case Regex_node::Kind::ASSERTION:
            m_entry = _add({.kind = Regex_state::Kind::ASSERTION, .assertion = _seen(node.assertion), .next = m_entry});
            break;
        case Regex_node::Kind::SEQUENCE:
            m_steps.push_back({Step::NODE, m_backwards ? node.second : node.first});
            m_steps.push_back({Step::NODE, m_backwards ? node.first : node.second});
            break;
        case Regex_node::Kind::ALTERNATIVE:
            m_steps.push_back({Step::SECOND_ALTERNATIVE, node.second, m_entry});
            m_steps.push_back({Step::NODE, node.first});
            break;
        case Regex_node::Kind::REPEAT:
            _do_repeat(node);
            break;
        }
    }

    void _do_repeat(const Regex_node& node)
    {
        const unsigned int behind = m_entry;
        if (node.most != Regex_tree::UNBOUNDED) {
            m_steps.push_back({Step::REPETITIONS, node.first, behind, node.most, node.most - node.second});
            return;
        }
        m_entry = _add({.kind = Regex_state::Kind::BRANCH, .other = behind});
        if (node.second > 1) {
            m_steps.push_back({Step::REPETITIONS, node.first, 0, node.second - 1, 0});
        }
        m_steps.push_back({node.second == 0 ? Step::LOOP : Step::LOOP_AT_LEAST_ONCE, 0, m_entry});
        m_steps.push_back({Step::NODE, node.first});
    }

    Regex_assertion _seen(Regex_assertion assertion) const
    {
        if (!m_backwards || assertion == Regex_assertion::WORD_BORDER) {
            return assertion;
        }
        return assertion == Regex_assertion::START ? Regex_assertion::END : Regex_assertion::START;
    }

    const Regex_tree& m_tree;
    const bool m_backwards;
    Regex_program m_program;
    std::vector<Step> m_steps;
    unsigned int m_entry = 0;
};

} // namespace

bool Regex_program::has(Regex_assertion assertion) const
{
    return std::any_of(states.begin(), states.end(), [assertion](const Regex_state& state) {
        return state.kind == Regex_state::Kind::ASSERTION && state.assertion == assertion;
    });
}

Regex_program make_regex_program(const Regex_tree& tree, bool backwards)
{
    return Program_maker(tree, backwards).make();
}

} // namespace tam::detail
