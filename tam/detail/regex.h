#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <tam/detail/regex_alphabet.h>
#include <tam/detail/regex_automaton.h>
#include <tam/detail/regex_cache.h>
#include <tam/detail/regex_program.h>
#include <tam/detail/regex_run.h>
#include <tam/detail/regex_tree.h>
#include <tam/detail/unit_finder.h>
#include <tam/status/status.h>
#include <tam/stream/istream.h>

namespace tam::detail {

// A compiled pattern. It never changes; what searches change lies in the caches, one for each search under way.
template <class Unit>
class Regex {
public:
    using String = std::basic_string<Unit>;
    using Goal = Regex_automaton::Goal;
    using Pool = Regex_cache_pool<Unit>;
    using Callback = bool (*)(const String& line, unsigned long long line_number, void* argument);

    // Null when status has a failure.
    static std::shared_ptr<const Regex> compile(const String& pattern, bool line_borders, Tam_status& status);

    Regex(const String& pattern, const Regex_tree& tree, bool line_borders);

    const String& pattern() const { return m_pattern; }

    bool match(const String& text) const;

    // goal is SHORTEST or LONGEST. start and length are set only when there is a match.
    bool search(Goal goal, const String& text, std::size_t from, std::size_t& start, std::size_t& length) const;

    bool match(Tam_istream& stream, Tam_status& status) const;
    bool search(Goal goal, Tam_istream& stream, unsigned long long& start, unsigned long long& length,
                Tam_status& status) const;

    // Calls callback as Tam_regular_expression says; count counts the calls. numbered: whether the callback looks at
    // the numbers of lines.
    void grep(Tam_istream& stream, Callback callback, void* argument, bool numbered, unsigned int& count,
              Tam_status& status) const;

private:
    static constexpr unsigned int MAXIMUM_UNIT = sizeof(Unit) == 1 ? Unit_set::MAXIMUM_NARROW : Unit_set::MAXIMUM_WIDE;

    using Run = Regex_run<Unit>;
    using Run_back = Regex_run<Unit, true>;

    Regex_language _forwards() const { return {m_forwards, m_sets, m_alphabet, m_line_borders}; }
    Regex_language _backwards() const { return {m_backwards, m_sets, m_alphabet, m_line_borders}; }

    Run _run(Regex_cache<Unit>& cache, Goal goal, Regex_side before) const
    {
        return Run(cache.automaton(goal, _forwards()), m_alphabet, before, goal == Goal::WHOLE ? nullptr : &m_finder);
    }
    // Looks for the start of a match whose end is known.
    Run_back _run_back(Regex_cache<Unit>& cache, const Run& found) const
    {
        return Run_back(cache.automaton(Goal::LONGEST_HERE, _backwards()), m_alphabet,
                        m_alphabet.side(found.class_behind()));
    }

    bool _length_is_fixed() const { return m_shortest == m_longest && m_longest != Regex_tree::UNBOUNDED; }

    class Line_search;
    bool _exists(Regex_cache<Unit>& cache, const Unit* line, std::size_t length) const;

    struct Stream_text;
    unsigned long long _match_length(Regex_cache<Unit>& cache, Goal goal, const Run& found, Stream_text& text) const;

    const String m_pattern;
    const bool m_line_borders;
    const std::vector<Unit_set> m_sets;
    const unsigned int m_shortest; // units that a match takes
    const unsigned int m_longest;
    const Regex_program m_forwards;
    const Regex_program m_backwards;
    const Regex_alphabet m_alphabet;
    const Unit_finder<Unit> m_finder;
    mutable Pool m_pool;
};

} // namespace tam::detail
