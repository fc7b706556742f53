#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include <tam/container/object_vector.h>
#include <tam/detail/failure.h>
#include <tam/detail/regex.h>
#include <tam/status/codes.h>

// The operations of the public classes: what they do around those of Regex. regex is null where nothing was compiled.

namespace tam::detail {

using Regex_goal = Regex_automaton::Goal;

template <class Unit>
void compile_regex(std::shared_ptr<const Regex<Unit>>& regex, const std::basic_string<Unit>& pattern, bool line_borders,
                   Tam_status& status)
{
    run(status, [&] {
        if (auto compiled = Regex<Unit>::compile(pattern, line_borders, status)) {
            regex = std::move(compiled);
        }
    });
}

template <class Unit>
const std::basic_string<Unit>& regex_pattern(const Regex<Unit>* regex) noexcept
{
    static const std::basic_string<Unit> none;
    return regex == nullptr ? none : regex->pattern();
}

// Runs an operation that needs a pattern.
template <class Unit, class Operation>
void run_compiled(const Regex<Unit>* regex, Tam_status& status, const Operation& operation)
{
    if (regex == nullptr) {
        status = TAM_E_PATTERN_NOT_COMPILED;
        return;
    }
    run(status, operation);
}

template <class Unit>
bool match_regex(const Regex<Unit>* regex, const std::basic_string<Unit>& text, Tam_status& status)
{
    bool matched = false;
    run_compiled(regex, status, [&] { matched = regex->match(text); });
    return matched;
}

template <class Unit>
bool match_regex(const Regex<Unit>* regex, Tam_istream& stream, Tam_status& status)
{
    bool matched = false;
    run_compiled(regex, status, [&] { matched = regex->match(stream, status); });
    return matched;
}

template <class Unit>
bool search_regex(const Regex<Unit>* regex, Regex_goal goal, const std::basic_string<Unit>& text, std::size_t from,
                  std::size_t& start, std::size_t& length, Tam_status& status)
{
    bool found = false;
    start = 0;
    length = 0;
    run_compiled(regex, status, [&] {
        if (from > text.size()) {
            status = TAM_E_POSITION_OUT_OF_RANGE;
        } else {
            found = regex->search(goal, text, from, start, length);
        }
    });
    return found;
}

template <class Unit>
bool search_regex(const Regex<Unit>* regex, Regex_goal goal, Tam_istream& stream, unsigned long long& start,
                  unsigned long long& length, Tam_status& status)
{
    bool found = false;
    start = 0;
    length = 0;
    run_compiled(regex, status, [&] { found = regex->search(goal, stream, start, length, status); });
    return found;
}

template <class Unit>
unsigned int grep_regex(const Regex<Unit>* regex, Tam_istream& stream, typename Regex<Unit>::Callback callback,
                        void* argument, Tam_status& status, bool numbered = true)
{
    unsigned int count = 0;
    run_compiled(regex, status, [&] { regex->grep(stream, callback, argument, numbered, count, status); });
    return count;
}

template <class Unit>
unsigned int grep_regex(const Regex<Unit>* regex, Tam_istream& stream,
                        Tam_object_vector<std::basic_string<Unit>>& lines, unsigned int max, Tam_status& status)
{
    struct Collector {
        Tam_object_vector<std::basic_string<Unit>>& lines;
        const unsigned int max;
    };
    lines.clear();
    Collector collector{lines, max};
    const auto collect = [](const std::basic_string<Unit>& line, unsigned long long, void* argument) {
        const Collector& to = *static_cast<const Collector*>(argument);
        to.lines.push_back(line);
        return to.lines.size() != to.max;
    };
    grep_regex<Unit>(regex, stream, collect, &collector, status, false);
    return lines.size();
}

} // namespace tam::detail
