#include <tam/detail/regex.h>

#include <tam/detail/failure.h>
#include <tam/detail/regex_parser.h>
#include <tam/status/codes.h>

namespace tam::detail {

template <class Unit>
std::shared_ptr<const Regex<Unit>> Regex<Unit>::compile(const String& pattern, bool line_borders, Tam_status& status)
{
    Regex_tree tree;
    const Regex_fault fault = parse_regex(pattern, tree);
    if (fault.reason != nullptr) {
        assign_failure(status, TAM_E_PATTERN_SYNTAX, pattern, fault.position, std::string(fault.reason));
        return nullptr;
    }
    if (tree.too_large()) {
        assign_failure(status, TAM_E_PATTERN_TOO_LARGE, pattern);
        return nullptr;
    }
    return std::make_shared<const Regex>(pattern, tree, line_borders);
}

template <class Unit>
Regex<Unit>::Regex(const String& pattern, const Regex_tree& tree, bool line_borders)
    : m_pattern(pattern),
      m_line_borders(line_borders),
      m_sets(tree.sets()),
      m_shortest(tree[tree.root()].shortest),
      m_longest(tree[tree.root()].longest),
      m_forwards(make_regex_program(tree, false)),
      m_backwards(make_regex_program(tree, true)),
      m_alphabet(m_sets, MAXIMUM_UNIT,
                 line_borders && (m_forwards.has(Regex_assertion::START) || m_forwards.has(Regex_assertion::END)),
                 m_forwards.has(Regex_assertion::WORD_BORDER)),
      m_finder(m_forwards, m_sets)
{}

template <class Unit>
bool Regex<Unit>::match(const String& text) const
{
    typename Pool::Lease cache(m_pool);
    Run run = _run(*cache, Goal::WHOLE, Regex_side::EDGE);
    run.feed(text.data(), text.size());
    run.finish(m_alphabet.edge());
    cache.done();
    return run.matched();
}

template <class Unit>
bool Regex<Unit>::search(Goal goal, const String& text, std::size_t from, std::size_t& start, std::size_t& length) const
{
    typename Pool::Lease cache(m_pool);
    const unsigned int class_before = from == 0 ? m_alphabet.edge() : m_alphabet.class_of(text[from - 1]);
    Run run = _run(*cache, goal, m_alphabet.side(class_before));
    run.feed(text.data() + from, text.size() - from);
    run.finish(m_alphabet.edge());
    if (run.matched()) {
        const std::size_t end = from + static_cast<std::size_t>(run.match_end());
        if (_length_is_fixed()) {
            length = m_longest;
        } else {
            Run_back back = _run_back(*cache, run);
            back.feed(text.data() + end, end - from);
            back.finish(class_before);
            length = static_cast<std::size_t>(back.match_end());
        }
        start = end - length;
    }
    cache.done();
    return run.matched();
}

template class Regex<char>;
template class Regex<wchar_t>;

} // namespace tam::detail
