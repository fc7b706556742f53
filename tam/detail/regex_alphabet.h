#pragma once

#include <type_traits>
#include <vector>

#include <tam/detail/unit_set.h>

namespace tam::detail {

// What lies at one side of a position. EDGE is the border of the text.
enum class Regex_side : unsigned char { EDGE, LINE_FEED, WORD, OTHER };
constexpr unsigned int REGEX_SIDES = 4;

// The units as a pattern sees them: those that none of its sets and assertions tells apart are one class. Classes are
// numbered from 0 to classes() - 1, and edge() stands for the border of the text.
//
// A unit's class lies in a table of pages, of which equal ones are kept once:
//
//     m_page_starts[unit / PAGE] -> page in m_classes, indexed by unit % PAGE
class Regex_alphabet {
public:
    // CR and LF are classes of their own. Line feeds and word units are sides where they matter.
    Regex_alphabet(const std::vector<Unit_set>& sets, unsigned int maximum, bool line_feed_matters, bool word_matters);

    unsigned int classes() const { return static_cast<unsigned int>(m_sides.size()) - 1; }
    unsigned int edge() const { return classes(); }
    Regex_side side(unsigned int unit_class) const { return m_sides[unit_class]; }

    // A unit of the class.
    unsigned int example(unsigned int unit_class) const { return m_examples[unit_class]; }

    template <class Unit>
    unsigned int class_of(Unit unit) const
    {
        const unsigned int number = static_cast<std::make_unsigned_t<Unit>>(unit);
        if constexpr (sizeof(Unit) == 1) {
            return m_classes[number];
        } else {
            return m_classes[m_page_starts[number / PAGE] + number % PAGE];
        }
    }

private:
    static constexpr unsigned int PAGE = 256;

    void _make_pages(const std::vector<unsigned short>& class_of);

    std::vector<unsigned short> m_classes;
    std::vector<unsigned int> m_page_starts;
    std::vector<unsigned int> m_examples;
    std::vector<Regex_side> m_sides; // the edge's last
};

} // namespace tam::detail
