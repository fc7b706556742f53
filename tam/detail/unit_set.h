#pragma once

#include <compare>
#include <string_view>
#include <vector>

namespace tam::detail {

// Units first to last, both included. Narrow units count as 0 to 255.
struct Unit_range {
    unsigned short first;
    unsigned short last;

    auto operator<=>(const Unit_range&) const = default;
};

// A set of units as ranges in ascending order with gaps between them.
class Unit_set {
public:
    static constexpr unsigned int MAXIMUM_NARROW = 0xFF;
    static constexpr unsigned int MAXIMUM_WIDE = 0xFFFF;

    Unit_set() noexcept = default;
    explicit Unit_set(unsigned int unit) { add(unit, unit); }

    // Ranges may come in any order and overlap; normalise() makes the set usable again.
    void add(unsigned int first, unsigned int last)
    {
        m_ranges.push_back({static_cast<unsigned short>(first), static_cast<unsigned short>(last)});
    }
    void add(const Unit_set& other) { m_ranges.insert(m_ranges.end(), other.begin(), other.end()); }
    void normalise();

    // The units from 0 to maximum that are not in the set.
    Unit_set complement(unsigned int maximum) const;

    const Unit_range* begin() const { return m_ranges.data(); }
    const Unit_range* end() const { return m_ranges.data() + m_ranges.size(); }
    unsigned int size() const; // in units
    bool contains(unsigned int unit) const;

    auto operator<=>(const Unit_set&) const = default;

private:
    std::vector<Unit_range> m_ranges;
};

// The set of a class such as alpha; null when there is none of that name. Narrow classes (maximum MAXIMUM_NARROW) have
// the meaning of ASCII, wide ones that of the C run-time's iswalpha and so on. "word" is the class of \w.
const Unit_set* named_class(std::string_view name, unsigned int maximum);

} // namespace tam::detail
