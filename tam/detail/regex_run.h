#pragma once

#include <algorithm>
#include <cstddef>

#include <tam/detail/regex_automaton.h>
#include <tam/detail/unit_finder.h>

namespace tam::detail {

// One run of an automaton over a text that comes in pieces, forwards or backwards.
template <class Unit, bool BACKWARDS = false>
class Regex_run {
public:
    // before is what lies before the text, in the direction of the run.
    Regex_run(Regex_automaton& automaton, const Regex_alphabet& alphabet, Regex_side before,
              const Unit_finder<Unit>* finder = nullptr)
        : m_automaton(automaton),
          m_alphabet(alphabet),
          m_finder(finder != nullptr && finder->is_useful() ? finder : nullptr)
    {
        begin(before);
    }

    // Begins anew, with another text.
    void begin(Regex_side before)
    {
        m_matched = false;
        m_taken = 0;
        m_match_end = 0;
        m_automaton.skip_credit() = std::max(m_automaton.skip_credit(), 0);
        _go_to(m_automaton.start(before));
    }

    // Takes the next count units: those from `units` on, or backwards those that end there. False when nothing that
    // follows can change the result.
    bool feed(const Unit* units, std::size_t count)
    {
        if (!m_ended) {
            _feed(units, BACKWARDS ? units - count : units + count);
            m_taken += count;
        }
        return !m_ended;
    }

    static constexpr std::size_t LANES = 4;

    // Takes all units between the first border and the last one, where a new line begins at each border between: lines
    // do not depend on each other, so that several automata can run at once, each in the time that the others wait for
    // memory. True when they came through with nothing to tell; else nothing was taken.
    bool feed_lines(const Unit* const (&borders)[LANES + 1])
    {
        if (m_ended || m_code == Regex_automaton::LIVE) {
            return false;
        }
        const Code* const table = m_automaton.table();
        const Code start = m_automaton.restart(m_alphabet.edge());
        Code rows[LANES] = {m_code, start, start, start};
        std::ptrdiff_t common = borders[1] - borders[0];
        for (std::size_t lane = 1; lane != LANES; ++lane) {
            common = std::min(common, borders[lane + 1] - borders[lane]);
        }
        for (std::ptrdiff_t i = 0; i < common; ++i) {
            for (std::size_t lane = 0; lane != LANES; ++lane) {
                rows[lane] = Regex_automaton::look_up(table, rows[lane], m_alphabet.class_of(borders[lane][i]));
            }
            if ((rows[0] | rows[1] | rows[2] | rows[3]) < 0) {
                return false;
            }
        }
        for (std::size_t lane = 0; lane != LANES; ++lane) {
            for (const Unit* at = borders[lane] + common; at != borders[lane + 1]; ++at) {
                rows[lane] = Regex_automaton::look_up(table, rows[lane], m_alphabet.class_of(*at));
                if (rows[lane] < 0) {
                    return false;
                }
            }
        }
        m_code = rows[LANES - 1];
        m_taken += static_cast<unsigned long long>(borders[LANES] - borders[0]);
        return true;
    }

    // Whether places where no match can begin are skipped at present.
    bool skips() const { return m_finder != nullptr && m_automaton.skip_credit() >= 0; }

    // Tells the class of what follows behind the text.
    void finish(unsigned int unit_class)
    {
        if (!m_ended) {
            Code code = UNKNOWN;
            if (m_code != Regex_automaton::LIVE) {
                code = Regex_automaton::look_up(m_automaton.table(), m_code, unit_class);
            }
            if (code == UNKNOWN) {
                code = m_automaton.step(m_code, unit_class, m_taken);
            }
            _look_at(code, m_taken, unit_class);
            m_ended = true;
        }
    }

    bool matched() const { return m_matched; }

    // Units that were taken before the last match ended.
    unsigned long long match_end() const { return m_match_end; }

    // The class of what follows behind the match.
    unsigned int class_behind() const { return m_class_behind; }

private:
    using Code = Regex_automaton::Code;
    static constexpr Code UNKNOWN = Regex_automaton::SPECIAL | Regex_automaton::UNKNOWN;

    // A skip costs as much as so many units. While skips have brought less than that lately, only some are tried: one
    // in each search, and one after each so many units.
    static constexpr int SKIP_COST = 16;
    static constexpr int MAXIMUM_CREDIT = 16 * SKIP_COST;
    static constexpr std::ptrdiff_t UNITS_TO_TRY_AGAIN = 4096;

    static Unit _take(const Unit*& at) { return BACKWARDS ? *--at : *at++; }

    void _go_to(Code code)
    {
        m_code = code < 0 ? code & Regex_automaton::TARGET : code;
        m_ended = m_code == Regex_automaton::DEAD;
    }

    // Goes where a code leads that came with the unit behind `position` units.
    void _look_at(Code code, unsigned long long position, unsigned int unit_class)
    {
        if (code < 0 && (code & Regex_automaton::MATCHED) != 0) {
            m_matched = true;
            m_match_end = position;
            m_class_behind = unit_class;
        }
        _go_to(code);
    }

    void _feed(const Unit* const begin, const Unit* const end)
    {
        const auto position_of = [this, begin](const Unit* at) {
            return m_taken + static_cast<unsigned long long>(BACKWARDS ? begin - at : at - begin);
        };
        const Unit* at = begin;
        while (at != end && !m_ended) {
            const bool skipping = skips();
            const Code start_rows = skipping ? m_automaton.start_rows() : 0;
            if (m_code < start_rows) {
                at = _skip(at, end);
                if (at == end) {
                    return;
                }
            }
            const Unit* pause = end;
            if (m_finder != nullptr && !skipping && end - at > UNITS_TO_TRY_AGAIN) {
                pause = at + UNITS_TO_TRY_AGAIN;
            }
            Code code = UNKNOWN;
            if (m_code == Regex_automaton::LIVE) {
                _take(at);
            } else {
                code = _walk(at, pause, start_rows);
                if (at == pause && pause != end) {
                    m_automaton.skip_credit() = 0;
                }
            }
            const unsigned int unit_class = m_alphabet.class_of(BACKWARDS ? *at : at[-1]);
            const unsigned long long before = position_of(at) - 1;
            if (code == UNKNOWN) {
                code = m_automaton.step(m_code, unit_class, before);
            }
            _look_at(code, before, unit_class);
        }
    }

    // Takes units from one row to the next, up to the end or up to the first code below `limit`, which it returns.
    // m_code is the row before that.
    Code _walk(const Unit*& at, const Unit* const end, const Code limit)
    {
        constexpr std::ptrdiff_t UNROLLED = 4;
        const Code* const table = m_automaton.table();
        Code row = m_code;
        const auto next = [&](std::ptrdiff_t index) {
            const unsigned int unit_class = m_alphabet.class_of(BACKWARDS ? at[-1 - index] : at[index]);
            return Regex_automaton::look_up(table, row, unit_class);
        };
        const auto left = [&] { return BACKWARDS ? at - end : end - at; };
        const auto move = [&](std::ptrdiff_t units) { at += BACKWARDS ? -units : units; };
        while (left() >= UNROLLED) {
            for (std::ptrdiff_t i = 0; i != UNROLLED; ++i) {
                const Code code = next(i);
                if (code < limit) {
                    move(i + 1);
                    m_code = row;
                    return code;
                }
                row = code;
            }
            move(UNROLLED);
        }
        while (left() != 0) {
            const Code code = next(0);
            move(1);
            if (code < limit) {
                m_code = row;
                return code;
            }
            row = code;
        }
        return row;
    }

    // Goes from a start row to the next place where a match can begin.
    const Unit* _skip(const Unit* from, const Unit* end)
    {
        const Unit* const found = m_finder->find(from, end);
        if (found != from) {
            _go_to(m_automaton.restart(m_alphabet.class_of(found[-1])));
        }
        int& credit = m_automaton.skip_credit();
        credit = static_cast<int>(std::min<std::ptrdiff_t>(credit - SKIP_COST + (found - from), MAXIMUM_CREDIT));
        return found;
    }

    Regex_automaton& m_automaton;
    const Regex_alphabet& m_alphabet;
    const Unit_finder<Unit>* m_finder; // null when it is not used
    Code m_code = 0;                   // a row, LIVE or DEAD
    bool m_ended = false;
    bool m_matched = false;
    unsigned long long m_taken = 0;
    unsigned long long m_match_end = 0;
    unsigned int m_class_behind = 0;
};

} // namespace tam::detail
