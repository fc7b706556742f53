#pragma once

#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

#include <tam/detail/regex_alphabet.h>
#include <tam/detail/regex_program.h>
#include <tam/detail/unit_set.h>
#include <tam/stream/eol.h>

namespace tam::detail {

// What a program means: the same for all searches with it.
struct Regex_language {
    const Regex_program& program;
    const std::vector<Unit_set>& sets;
    const Regex_alphabet& alphabet;
    bool line_borders;
};

// A deterministic automaton for a program, made while it is used.
//
// A state is a list of groups of states of the program. A group has all that one start of a match can lead to; earlier
// starts come first, and a state of the program stands only in the first group that reaches it, since what it leads to
// from there is what counts. When a group has matched, those behind it are dropped, because their matches would start
// later; for the shortest match the group is dropped too, for the longest it goes on. When no group is left, the last
// match reported was the leftmost one. Where only its existence counts, all starts share one group.
//
// Whether a state matches shows with the next unit, because assertions look at it. So the step with a unit tells
// whether there is a match that ends before that unit. The step with the alphabet's edge tells it at the end of the
// text.
//
// States are rows of one table, by the class of the next unit:
//
//     look_up(table(), row, class) = code of the next state
//
// A code that is not negative is a row, as its offset in bytes: so the table is read without any arithmetic between one
// step and the next. The first rows, up to start_rows(), are those in which all is as at the start of
// a search, so that a search can skip from there to where a match can begin. The other codes have SPECIAL set, maybe
// MATCHED, and in the other bits a row or one of DEAD, LIVE and UNKNOWN.
//
// Over lines, each is a text of its own: behind a unit that ends a line, all is as at the start of a text. A unit that
// may be a line's end or a part of its text, as its neighbours will show, is taken for both. What is found is then
// searched as the line that it is.
//
// When the table is full it is emptied. Where that happens too often, states are not kept for a while: LIVE is the one
// such state, whose steps are worked out each time.
class Regex_automaton {
public:
    enum class Goal {
        WHOLE,    // a match from the start to the edge
        EXISTS,   // any match that begins at the start or later
        LINES,    // any line in which there may be a match
        SHORTEST, // the leftmost match that begins at the start or later
        LONGEST,
        LONGEST_HERE // the longest match that begins at the start
    };
    static constexpr std::size_t GOALS = 6;

    using Code = int;
    static constexpr Code SPECIAL = std::numeric_limits<Code>::min();
    static constexpr Code MATCHED = 1 << 30;
    static constexpr Code TARGET = MATCHED - 1;
    static constexpr Code DEAD = TARGET; // no match can follow
    static constexpr Code LIVE = TARGET - 1;
    static constexpr Code UNKNOWN = TARGET - 2; // step() finds it

    // eol counts for LINES.
    Regex_automaton(const Regex_language& language, Goal goal, Tam_eol eol = TAM_EOL_ANY);
    Regex_automaton(const Regex_automaton&) = delete;
    Regex_automaton& operator=(const Regex_automaton&) = delete;

    // Begins a search that has this before its first unit. DEAD or a row.
    Code start(Regex_side before);

    // The row that a search is in when it has found nothing yet, and this unit is before it.
    Code restart(unsigned int class_before) const { return _start(_side(class_before)); }

    const Code* table() const { return m_table.data(); }

    static Code look_up(const Code* table, Code row, unsigned int unit_class)
    {
        const char* const column = reinterpret_cast<const char*>(table + unit_class);
        Code code;
        std::memcpy(&code, column + static_cast<unsigned int>(row), sizeof code);
        return code;
    }

    // 0 where matches can only begin at the start.
    Code start_rows() const { return m_start_rows; }
    bool starts_later() const { return m_starts_later; }

    // What Regex_run learns about the texts that it sees.
    int& skip_credit() { return m_skip_credit; }

    // The code for the step from a row or from LIVE, with the MATCHED that belongs to it. Rows and table() are no
    // longer what they were. position grows by one with each unit since start(), and tells how much the table was used.
    Code step(Code from, unsigned int unit_class, unsigned long long position);

private:
    // With the reserves of the vectors they take less than 3 MiB.
    static constexpr unsigned int TABLE_CODES = 1U << 17;
    static constexpr unsigned int LEAST_ROWS =
        6; // however long they are: four to start with, and one that does not fit anywhere else
    static constexpr unsigned int ITEMS = 1U << 16;
    static constexpr unsigned int STATES = 1U << 13;
    static constexpr unsigned int LEAST_SLOTS = 64;
    static constexpr unsigned int GROUP_END = std::numeric_limits<unsigned int>::max();

    // A table that was filled within less than this many units for each of its rows is not worth its making.
    static constexpr unsigned int UNITS_PER_STATE = 10;
    static constexpr unsigned int LIVE_UNITS = 1U << 14;

    struct State {
        unsigned int first = 0; // of its items
        unsigned int count = 0;
        unsigned int hash = 0;
        Regex_side before = Regex_side::OTHER;
        bool searching = false; // begins a group with each unit
    };

    // A state under construction.
    struct Draft {
        std::vector<unsigned int> items; // states of the program in ascending order, GROUP_END behind each group
        Regex_side before = Regex_side::OTHER;
        bool searching = false;
    };

    // Marks states of the program; begins anew without touching them all.
    class Marks {
    public:
        explicit Marks(std::size_t size) : m_marks(size) {}
        void clear();
        bool set(unsigned int index) // false when it was set
        {
            const bool is_new = m_marks[index] != m_current;
            m_marks[index] = m_current;
            return is_new;
        }

    private:
        std::vector<unsigned int> m_marks;
        unsigned int m_current = 1;
    };

    enum class Line_end : unsigned char { NO, MAYBE, YES };

    Code _start(Regex_side before) const { return m_starts[static_cast<unsigned int>(before)]; }
    Line_end _line_end(unsigned int unit_class) const
    {
        return unit_class == m_cr_class ? m_cr : unit_class == m_lf_class ? m_lf : Line_end::NO;
    }
    Regex_side _side(unsigned int unit_class) const
    {
        return _line_end(unit_class) == Line_end::NO ? m_language.alphabet.side(unit_class) : Regex_side::EDGE;
    }
    bool _holds_behind(Regex_side before) const
    {
        return before == Regex_side::EDGE || (m_language.line_borders && before == Regex_side::LINE_FEED);
    }
    bool _holds(Regex_assertion assertion, Regex_side before, Regex_side after) const;
    bool _takes(const Regex_state& state, unsigned int unit_class) const;

    void _begin_draft(Draft& draft, Regex_side before);
    void _add(Draft& draft, unsigned int program_state);
    void _end_group(Draft& draft, std::size_t first) const;
    bool _pass(Draft& draft, unsigned int program_state, Regex_side before, unsigned int unit_class);
    void _finish_draft(Draft& draft, std::size_t group);
    void _draft_start(Draft& draft, Regex_side before);
    bool _advance(const unsigned int* items, const unsigned int* items_end, Regex_side before, bool searching,
                  unsigned int unit_class, Draft& draft);

    bool _is_dead(const Draft& draft) const { return draft.items.empty() && !draft.searching; }
    Code _row(std::size_t state) const { return static_cast<Code>(state * m_row * sizeof(Code)); }
    std::size_t _state(Code row) const { return static_cast<std::size_t>(row) / sizeof(Code) / m_row; }
    Code _find_or_add(const Draft& draft); // UNKNOWN when the table is full
    unsigned int& _free_slot(unsigned int hash);
    void _widen_slots();
    void _empty();

    const Regex_language m_language;
    const Goal m_goal;
    const bool m_merges;         // all starts share one group
    const bool m_searches;       // matches can begin behind the start
    bool m_starts_later = false; // and there are such matches
    const unsigned int m_cr_class;
    const unsigned int m_lf_class;
    Line_end m_cr = Line_end::NO;
    Line_end m_lf = Line_end::NO;
    const unsigned int m_row; // codes
    const unsigned int m_row_limit;

    std::vector<Code> m_table;
    std::vector<State> m_states; // in the order of their rows
    std::vector<unsigned int> m_items;
    std::vector<unsigned int> m_slots; // a hash table, half empty at least: 0 for none, else a state's number + 1
    Code m_starts[REGEX_SIDES];
    Code m_start_rows = 0;

    bool m_emptied = false; // since the search began
    unsigned long long m_emptied_at = 0;
    unsigned int m_live_left = 0;
    int m_skip_credit = 0;

    Draft m_live;
    Draft m_draft;
    bool m_draft_waits = false; // has assertions that look at what is on both sides
    Marks m_added;
    Marks m_passed;
    std::vector<unsigned int> m_stack;
    std::vector<unsigned int> m_pass_stack;
};

} // namespace tam::detail
