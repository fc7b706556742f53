#pragma once

#include <vector>

#include <tam/detail/regex_program.h>
#include <tam/detail/unit_set.h>

namespace tam::detail {

// Finds quickly where a match of a program can begin at all.
template <class Unit>
class Unit_finder {
public:
    Unit_finder(const Regex_program& program, const std::vector<Unit_set>& sets);

    // False where every place looks alike: a search then had better not ask.
    bool is_useful() const { return m_how != How::NOT; }

    // The first place from `from` on, before end, where a match can begin; end when there is none. Too close to the end
    // to tell, a place is taken for one.
    const Unit* find(const Unit* from, const Unit* end) const;

private:
    enum class How {
        NOT,
        ONE,   // a unit
        PAIR,  // two units at a distance
        RANGES // a unit of some ranges
    };

    static constexpr std::size_t MAXIMUM_LITERAL = 64; // units that every match begins with
    static constexpr std::size_t MAXIMUM_RANGES = 4;

    void _choose();
    const Unit* _find_literal(const Unit* from, const Unit* end) const;
    template <How HOW>
    const Unit* _find(const Unit* from, const Unit* end) const;

    How m_how = How::NOT;
    // What every match begins with, its rarest units and where they lie in it.
    std::vector<Unit> m_literal;
    Unit m_first = 0;
    Unit m_second = 0;
    std::size_t m_first_offset = 0;
    std::size_t m_second_offset = 0; // not below the first; the same for ONE
    std::size_t m_range_count = 0;
    Unit_range m_ranges[MAXIMUM_RANGES] = {};
};

extern template class Unit_finder<char>;
extern template class Unit_finder<wchar_t>;

} // namespace tam::detail
