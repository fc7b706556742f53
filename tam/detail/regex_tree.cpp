#include <tam/detail/regex_tree.h>

#include <algorithm>
#include <utility>

namespace tam::detail {

namespace {

unsigned int capped(unsigned long long value)
{
    return static_cast<unsigned int>(std::min<unsigned long long>(value, Regex_tree::UNBOUNDED));
}

unsigned int capped_sum(unsigned int a, unsigned int b)
{
    return capped(static_cast<unsigned long long>(a) + b);
}

unsigned int capped_product(unsigned int a, unsigned int b)
{
    return capped(static_cast<unsigned long long>(a) * b);
}

// Whether the count is that of *, + or ?.
bool is_simple(unsigned int least, unsigned int most)
{
    return least <= 1 && (most == Regex_tree::UNBOUNDED || (least == 0 && most == 1));
}

} // namespace

unsigned int Regex_tree::units(Unit_set set)
{
    if (m_nodes.size() >= MAXIMUM_NODES) {
        m_overflowed = true;
        return EMPTY;
    }
    const auto [found, is_new] = m_set_numbers.try_emplace(std::move(set), static_cast<unsigned int>(m_sets.size()));
    if (is_new) {
        m_sets.push_back(found->first);
    }
    return _add({.kind = Regex_node::Kind::UNITS, .first = found->second, .states = 1, .shortest = 1, .longest = 1});
}

unsigned int Regex_tree::assertion(Regex_assertion assertion)
{
    return _add({.kind = Regex_node::Kind::ASSERTION, .assertion = assertion, .states = 1});
}

unsigned int Regex_tree::sequence(unsigned int first, unsigned int second)
{
    if (first == EMPTY || second == EMPTY) {
        return first == EMPTY ? second : first;
    }
    const Regex_node& a = m_nodes[first];
    const Regex_node& b = m_nodes[second];
    return _add({.kind = Regex_node::Kind::SEQUENCE,
                 .first = first,
                 .second = second,
                 .states = capped_sum(a.states, b.states),
                 .shortest = capped_sum(a.shortest, b.shortest),
                 .longest = capped_sum(a.longest, b.longest)});
}

unsigned int Regex_tree::alternative(unsigned int first, unsigned int second)
{
    if (first == EMPTY && second == EMPTY) {
        return EMPTY;
    }
    const Regex_node& a = m_nodes[first];
    const Regex_node& b = m_nodes[second];
    return _add({.kind = Regex_node::Kind::ALTERNATIVE,
                 .first = first,
                 .second = second,
                 .states = capped_sum(capped_sum(a.states, b.states), 1),
                 .shortest = std::min(a.shortest, b.shortest),
                 .longest = std::max(a.longest, b.longest)});
}

unsigned int Regex_tree::repeat(unsigned int node, unsigned int least, unsigned int most)
{
    const Regex_node& inner = m_nodes[node];
    if (node == EMPTY || most == 0) {
        return EMPTY;
    }
    if (least == 1 && most == 1) {
        return node;
    }
    if (is_simple(least, most) && inner.kind == Regex_node::Kind::REPEAT && is_simple(inner.second, inner.most)) {
        least *= inner.second;
        most = std::max(most, inner.most);
        return least == inner.second && most == inner.most ? node : repeat(inner.first, least, most);
    }
    // One more for each repetition that can be left out, and for a loop.
    const unsigned int copies = most == UNBOUNDED ? std::max(least, 1U) : most;
    const unsigned int branches = most == UNBOUNDED ? 1 : most - least;
    return _add(
        {.kind = Regex_node::Kind::REPEAT,
         .first = node,
         .second = least,
         .most = most,
         .states = capped_sum(capped_product(inner.states, copies), branches),
         .shortest = capped_product(inner.shortest, least),
         .longest = most == UNBOUNDED && inner.longest != 0 ? UNBOUNDED : capped_product(inner.longest, copies)});
}

unsigned int Regex_tree::_add(const Regex_node& node)
{
    if (m_nodes.size() >= MAXIMUM_NODES) {
        m_overflowed = true;
        return EMPTY;
    }
    m_nodes.push_back(node);
    return static_cast<unsigned int>(m_nodes.size() - 1);
}

} // namespace tam::detail
