#include <tam/detail/regex_automaton.h>

#include <algorithm>
#include <utility>

namespace tam::detail {

namespace {

bool searches(Regex_automaton::Goal goal)
{
    return goal != Regex_automaton::Goal::WHOLE && goal != Regex_automaton::Goal::LONGEST_HERE;
}

// FNV-1a over words.
class Hash {
public:
    void add(unsigned int word) { m_value = (m_value ^ word) * 0x100000001B3; }
    unsigned int value() const { return static_cast<unsigned int>(m_value >> 32 ^ m_value); }

private:
    unsigned long long m_value = 0xCBF29CE484222325;
};

} // namespace

void Regex_automaton::Marks::clear()
{
    if (++m_current == 0) {
        std::fill(m_marks.begin(), m_marks.end(), 0);
        m_current = 1;
    }
}

Regex_automaton::Regex_automaton(const Regex_language& language, Goal goal, Tam_eol eol)
    : m_language(language),
      m_goal(goal),
      m_merges(goal == Goal::EXISTS || goal == Goal::LINES),
      m_searches(searches(goal)),
      m_cr_class(language.alphabet.class_of('\r')),
      m_lf_class(language.alphabet.class_of('\n')),
      m_row(language.alphabet.classes() + 1),
      m_row_limit(std::min(std::max(TABLE_CODES / m_row, LEAST_ROWS), STATES)),
      m_slots(LEAST_SLOTS),
      m_added(language.program.states.size()),
      m_passed(language.program.states.size())
{
    if (goal == Goal::LINES) {
        const bool is_pair = eol == TAM_EOL_CR_LF;
        m_lf = is_pair ? Line_end::MAYBE : eol == TAM_EOL_LF || eol == TAM_EOL_ANY ? Line_end::YES : Line_end::NO;
        m_cr = is_pair || eol == TAM_EOL_ANY ? Line_end::MAYBE : eol == TAM_EOL_CR ? Line_end::YES : Line_end::NO;
        m_starts_later = true;
    } else if (m_searches) {
        for (const Regex_side side : {Regex_side::OTHER, Regex_side::LINE_FEED}) {
            _begin_draft(m_draft, side);
            _add(m_draft, m_language.program.start);
            m_starts_later = m_starts_later || !m_draft.items.empty();
        }
    }
    if (m_row_limit == LEAST_ROWS) {
        m_table.reserve(std::size_t{LEAST_ROWS} * m_row); // no more than they need: they are long
    }
    _empty();
}

Regex_automaton::Code Regex_automaton::start(Regex_side before)
{
    m_emptied = false;
    m_live_left = 0;
    return _start(before);
}

Regex_automaton::Code Regex_automaton::step(Code from, unsigned int unit_class, unsigned long long position)
{
    bool matched = false;
    if (from == LIVE) {
        matched = _advance(m_live.items.data(), m_live.items.data() + m_live.items.size(), m_live.before,
                           m_live.searching, unit_class, m_draft);
    } else {
        const State& state = m_states[_state(from)];
        const unsigned int* const items = m_items.data() + state.first;
        matched = _advance(items, items + state.count, state.before, state.searching, unit_class, m_draft);
    }
    const auto code_of = [matched](Code target) { return matched ? SPECIAL | MATCHED | target : target; };

    Code code = 0;
    if (unit_class == m_language.alphabet.edge() || _is_dead(m_draft)) {
        code = code_of(DEAD) | SPECIAL;
    } else {
        Code row = UNKNOWN;
        if (m_live_left != 0) {
            --m_live_left;
        } else {
            row = _find_or_add(m_draft);
            if (row == UNKNOWN) {
                const bool is_worthless =
                    m_emptied &&
                    position - m_emptied_at < static_cast<unsigned long long>(UNITS_PER_STATE) * m_states.size();
                _empty();
                m_emptied = true;
                m_emptied_at = position;
                from = LIVE; // its row is no more
                if (is_worthless) {
                    m_live_left = LIVE_UNITS;
                } else {
                    row = _find_or_add(m_draft);
                }
            }
        }
        if (row == UNKNOWN) {
            std::swap(m_live, m_draft);
            return code_of(LIVE) | SPECIAL;
        }
        code = code_of(row);
    }
    if (from != LIVE) {
        m_table[_state(from) * m_row + unit_class] = code;
    }
    return code;
}

bool Regex_automaton::_holds(Regex_assertion assertion, Regex_side before, Regex_side after) const
{
    switch (assertion) {
    case Regex_assertion::START:
        return _holds_behind(before);
    case Regex_assertion::END:
        return _holds_behind(after);
    default:
        return (before == Regex_side::WORD) != (after == Regex_side::WORD);
    }
}

bool Regex_automaton::_takes(const Regex_state& state, unsigned int unit_class) const
{
    return unit_class != m_language.alphabet.edge() && _line_end(unit_class) != Line_end::YES &&
           m_language.sets[state.other].contains(m_language.alphabet.example(unit_class));
}

void Regex_automaton::_begin_draft(Draft& draft, Regex_side before)
{
    draft.items.clear();
    draft.before = before;
    draft.searching = false;
    m_draft_waits = false;
    m_added.clear();
    m_passed.clear();
}

// Adds what can be reached without a unit, as far as that does not depend on what comes next.
void Regex_automaton::_add(Draft& draft, unsigned int program_state)
{
    m_stack.push_back(program_state);
    while (!m_stack.empty()) {
        const unsigned int number = m_stack.back();
        m_stack.pop_back();
        if (!m_added.set(number)) {
            continue;
        }
        const Regex_state& state = m_language.program.states[number];
        if (state.kind == Regex_state::Kind::BRANCH) {
            m_stack.push_back(state.other);
            m_stack.push_back(state.next);
        } else if (state.kind == Regex_state::Kind::ASSERTION && state.assertion == Regex_assertion::START) {
            if (_holds_behind(draft.before)) {
                m_stack.push_back(state.next);
            }
        } else {
            m_draft_waits = m_draft_waits || state.kind == Regex_state::Kind::ASSERTION;
            draft.items.push_back(number);
        }
    }
}

// Goes on from a state of the program when both sides of the position are known: takes the unit where that is possible.
// True when this leads to a match before the unit.
bool Regex_automaton::_pass(Draft& draft, unsigned int program_state, Regex_side before, unsigned int unit_class)
{
    bool matched = false;
    std::vector<unsigned int>& stack = m_pass_stack; // _add uses the other one
    stack.push_back(program_state);
    while (!stack.empty()) {
        const unsigned int number = stack.back();
        stack.pop_back();
        if (!m_passed.set(number)) {
            continue;
        }
        const Regex_state& state = m_language.program.states[number];
        switch (state.kind) {
        case Regex_state::Kind::BRANCH:
            stack.push_back(state.other);
            stack.push_back(state.next);
            break;
        case Regex_state::Kind::ASSERTION:
            if (_holds(state.assertion, before, _side(unit_class))) {
                stack.push_back(state.next);
            }
            break;
        case Regex_state::Kind::UNITS:
            if (_takes(state, unit_class)) {
                _add(draft, state.next);
            }
            break;
        case Regex_state::Kind::MATCH:
            matched = true;
            break;
        }
    }
    return matched;
}

void Regex_automaton::_end_group(Draft& draft, std::size_t first) const
{
    if (draft.items.size() != first) {
        std::sort(draft.items.begin() + static_cast<std::ptrdiff_t>(first), draft.items.end());
        draft.items.push_back(GROUP_END);
    }
}

// Ends the last group, which began at `group`, and begins the group of the matches that start here.
void Regex_automaton::_finish_draft(Draft& draft, std::size_t group)
{
    if (!m_merges) {
        _end_group(draft, group);
        group = draft.items.size();
    }
    if (draft.searching) {
        _add(draft, m_language.program.start);
    }
    _end_group(draft, group);
    if (!m_draft_waits) {
        draft.before = Regex_side::OTHER; // nothing asks for it
    }
}

void Regex_automaton::_draft_start(Draft& draft, Regex_side before)
{
    _begin_draft(draft, before);
    if (!m_searches) {
        _add(draft, m_language.program.start);
        _finish_draft(draft, 0);
        return;
    }
    draft.searching = true;
    _finish_draft(draft, 0);
    draft.searching = m_starts_later;
}

// Makes draft the state that follows. True when there is a match before the unit.
bool Regex_automaton::_advance(const unsigned int* items, const unsigned int* items_end, Regex_side before,
                               bool searching, unsigned int unit_class, Draft& draft)
{
    _begin_draft(draft, _side(unit_class));
    const bool may_match = m_goal != Goal::WHOLE || unit_class == m_language.alphabet.edge();
    bool matched = false;
    std::size_t group = 0;
    while (items != items_end && !matched) {
        group = draft.items.size();
        bool group_matched = false;
        for (; *items != GROUP_END; ++items) {
            const Regex_state& state = m_language.program.states[*items];
            if (state.kind == Regex_state::Kind::UNITS) {
                if (_takes(state, unit_class)) {
                    _add(draft, state.next);
                }
            } else if (state.kind == Regex_state::Kind::MATCH) {
                group_matched = true;
            } else {
                group_matched = _pass(draft, *items, before, unit_class) || group_matched;
            }
        }
        ++items;
        matched = group_matched && may_match;
        if (matched && m_goal == Goal::SHORTEST) {
            draft.items.resize(group);
        } else if (matched && m_merges) {
            draft.items.clear();
        } else if (items != items_end && !matched) {
            _end_group(draft, group);
            group = draft.items.size();
        }
    }
    draft.searching = searching && !matched && m_starts_later;
    _finish_draft(draft, group);
    return matched;
}

Regex_automaton::Code Regex_automaton::_find_or_add(const Draft& draft)
{
    Hash hash;
    hash.add(static_cast<unsigned int>(draft.before) << 1 | (draft.searching ? 1 : 0));
    for (const unsigned int item : draft.items) {
        hash.add(item);
    }
    const std::size_t last_slot = m_slots.size() - 1;
    for (std::size_t slot = hash.value() & last_slot; m_slots[slot] != 0; slot = (slot + 1) & last_slot) {
        const State& state = m_states[m_slots[slot] - 1];
        const unsigned int* const items = m_items.data() + state.first;
        if (state.hash == hash.value() && state.before == draft.before && state.searching == draft.searching &&
            std::equal(items, items + state.count, draft.items.begin(), draft.items.end())) {
            return _row(m_slots[slot] - 1);
        }
    }

    const auto number = static_cast<unsigned int>(m_states.size());
    const bool has_room = number < m_row_limit && m_items.size() + draft.items.size() <= ITEMS;
    if (!has_room && number >= LEAST_ROWS) {
        return UNKNOWN;
    }
    if (2 * (m_states.size() + 1) > m_slots.size()) {
        _widen_slots();
    }
    m_table.resize(m_table.size() + m_row, SPECIAL | UNKNOWN);
    m_items.insert(m_items.end(), draft.items.begin(), draft.items.end());
    m_states.push_back({static_cast<unsigned int>(m_items.size() - draft.items.size()),
                        static_cast<unsigned int>(draft.items.size()), hash.value(), draft.before, draft.searching});
    _free_slot(hash.value()) = number + 1;
    return _row(number);
}

unsigned int& Regex_automaton::_free_slot(unsigned int hash)
{
    const std::size_t last_slot = m_slots.size() - 1;
    std::size_t slot = hash & last_slot;
    while (m_slots[slot] != 0) {
        slot = (slot + 1) & last_slot;
    }
    return m_slots[slot];
}

void Regex_automaton::_widen_slots()
{
    m_slots.assign(m_slots.size() * 2, 0);
    for (std::size_t number = 0; number != m_states.size(); ++number) {
        _free_slot(m_states[number].hash) = static_cast<unsigned int>(number + 1);
    }
}

void Regex_automaton::_empty()
{
    m_table.clear();
    m_states.clear();
    m_items.clear();
    std::fill(m_slots.begin(), m_slots.end(), 0);
    for (unsigned int side = 0; side != REGEX_SIDES; ++side) {
        _draft_start(m_live, static_cast<Regex_side>(side));
        m_starts[side] = _is_dead(m_live) ? SPECIAL | DEAD : _find_or_add(m_live);
    }
    m_start_rows = m_starts_later ? _row(m_states.size()) : 0;
}

} // namespace tam::detail
