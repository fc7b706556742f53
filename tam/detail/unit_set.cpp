#include <tam/detail/unit_set.h>

#include <algorithm>
#include <array>
#include <cwctype>
#include <memory>
#include <mutex>

namespace tam::detail {

namespace {

constexpr unsigned int MAXIMUM_ASCII = 0x7F;

using Predicate = int (*)(std::wint_t);

int is_word(std::wint_t unit)
{
    return std::iswalnum(unit) != 0 || unit == L'_';
}

struct Named_predicate {
    std::string_view name;
    Predicate contains;
};

const Named_predicate CLASSES[] = {
    {"alnum", std::iswalnum},   {"alpha", std::iswalpha}, {"blank", std::iswblank}, {"cntrl", std::iswcntrl},
    {"digit", std::iswdigit},   {"graph", std::iswgraph}, {"lower", std::iswlower}, {"print", std::iswprint},
    {"punct", std::iswpunct},   {"space", std::iswspace}, {"upper", std::iswupper}, {"word", is_word},
    {"xdigit", std::iswxdigit},
};

Unit_set units_of(Predicate contains, unsigned int maximum)
{
    Unit_set set;
    unsigned int first = 0;
    bool inside = false;
    for (unsigned int unit = 0; unit <= maximum + 1; ++unit) {
        const bool is_in = unit <= maximum && contains(static_cast<std::wint_t>(unit)) != 0;
        if (is_in && !inside) {
            first = unit;
        } else if (!is_in && inside) {
            set.add(first, unit - 1);
        }
        inside = is_in;
    }
    return set;
}

// Asking for all wide units takes a while, so it is done once a class.
class Class_sets {
public:
    const Unit_set& get(std::size_t index, unsigned int maximum)
    {
        const std::lock_guard guard(m_lock);
        std::unique_ptr<const Unit_set>& set = m_sets[index];
        if (set == nullptr) {
            set = std::make_unique<const Unit_set>(units_of(CLASSES[index].contains, maximum));
        }
        return *set;
    }

private:
    std::mutex m_lock;
    std::array<std::unique_ptr<const Unit_set>, std::size(CLASSES)> m_sets; // never change once they are there
};

} // namespace

void Unit_set::normalise()
{
    std::sort(m_ranges.begin(), m_ranges.end());
    std::size_t kept = 0;
    for (const Unit_range range : m_ranges) {
        if (kept != 0 && range.first <= m_ranges[kept - 1].last + 1) {
            m_ranges[kept - 1].last = std::max(m_ranges[kept - 1].last, range.last);
        } else {
            m_ranges[kept++] = range;
        }
    }
    m_ranges.resize(kept);
}

Unit_set Unit_set::complement(unsigned int maximum) const
{
    Unit_set result;
    unsigned int next = 0;
    for (const Unit_range range : m_ranges) {
        if (range.first > next) {
            result.add(next, range.first - 1U);
        }
        next = range.last + 1U;
    }
    if (next <= maximum) {
        result.add(next, maximum);
    }
    return result;
}

unsigned int Unit_set::size() const
{
    unsigned int units = 0;
    for (const Unit_range range : m_ranges) {
        units += range.last - range.first + 1U;
    }
    return units;
}

bool Unit_set::contains(unsigned int unit) const
{
    const auto behind = std::upper_bound(begin(), end(), unit,
                                         [](unsigned int wanted, Unit_range range) { return wanted < range.first; });
    return behind != begin() && unit <= (behind - 1)->last;
}

const Unit_set* named_class(std::string_view name, unsigned int maximum)
{
    static Class_sets narrow;
    static Class_sets wide;
    const auto found = std::find_if(std::begin(CLASSES), std::end(CLASSES),
                                    [name](const Named_predicate& entry) { return entry.name == name; });
    if (found == std::end(CLASSES)) {
        return nullptr;
    }
    const auto index = static_cast<std::size_t>(found - std::begin(CLASSES));
    return maximum == Unit_set::MAXIMUM_NARROW ? &narrow.get(index, MAXIMUM_ASCII) : &wide.get(index, maximum);
}

} // namespace tam::detail
