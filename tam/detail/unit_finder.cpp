#include <tam/detail/unit_finder.h>

#include <algorithm>
#include <bit>
#include <string_view>
#include <type_traits>

#include <emmintrin.h>

namespace tam::detail {

namespace {

// The sets of the first units of all matches of a program, of their second units and so on. Assertions count as if
// they held.
class First_units {
public:
    First_units(const Regex_program& program, const std::vector<Unit_set>& sets)
        : m_program(program), m_sets(sets), m_marks(program.states.size())
    {
        _reach({program.start});
    }

    // Whether matches can end here.
    bool matched() const { return m_matched; }

    Unit_set get() const
    {
        Unit_set set;
        for (const unsigned int number : m_reached) {
            set.add(m_sets[m_program.states[number].other]);
        }
        set.normalise();
        return set;
    }

    void advance()
    {
        std::vector<unsigned int> next;
        for (const unsigned int number : m_reached) {
            next.push_back(m_program.states[number].next);
        }
        _reach(std::move(next));
    }

private:
    void _reach(std::vector<unsigned int> stack)
    {
        m_reached.clear();
        m_marks.assign(m_marks.size(), false);
        while (!stack.empty()) {
            const unsigned int number = stack.back();
            stack.pop_back();
            if (m_marks[number]) {
                continue;
            }
            m_marks[number] = true;
            const Regex_state& state = m_program.states[number];
            if (state.kind == Regex_state::Kind::UNITS) {
                m_reached.push_back(number);
            } else if (state.kind == Regex_state::Kind::MATCH) {
                m_matched = true;
            } else {
                stack.push_back(state.next);
                if (state.kind == Regex_state::Kind::BRANCH) {
                    stack.push_back(state.other);
                }
            }
        }
    }

    const Regex_program& m_program;
    const std::vector<Unit_set>& m_sets;
    std::vector<bool> m_marks;
    std::vector<unsigned int> m_reached;
    bool m_matched = false;
};

// How common a unit is in texts, roughly.
unsigned int commonness(unsigned int unit)
{
    constexpr std::string_view MOST_COMMON = " etaoinsrhldu";
    if (unit >= 0x80) {
        return 0;
    }
    const char c = static_cast<char>(unit);
    return MOST_COMMON.find(c) != std::string_view::npos ? 3 : c >= 'a' && c <= 'z' ? 2 : 1;
}

template <class Unit>
__m128i load(const Unit* units)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

template <class Unit>
__m128i broadcast(unsigned int unit)
{
    if constexpr (sizeof(Unit) == 1) {
        return _mm_set1_epi8(static_cast<char>(unit));
    } else {
        return _mm_set1_epi16(static_cast<short>(unit));
    }
}

template <class Unit>
__m128i equal(__m128i a, __m128i b)
{
    return sizeof(Unit) == 1 ? _mm_cmpeq_epi8(a, b) : _mm_cmpeq_epi16(a, b);
}

// a - b, or 0 where b is greater.
template <class Unit>
__m128i excess(__m128i a, __m128i b)
{
    return sizeof(Unit) == 1 ? _mm_subs_epu8(a, b) : _mm_subs_epu16(a, b);
}

} // namespace

template <class Unit>
Unit_finder<Unit>::Unit_finder(const Regex_program& program, const std::vector<Unit_set>& sets)
{
    First_units first_units(program, sets);
    if (first_units.matched()) {
        return;
    }
    const Unit_set first = first_units.get();
    while (m_literal.size() != MAXIMUM_LITERAL) {
        const Unit_set set = first_units.get();
        if (set.size() != 1) {
            break;
        }
        m_literal.push_back(static_cast<Unit>(set.begin()->first));
        first_units.advance();
        if (first_units.matched()) {
            break;
        }
    }
    if (!m_literal.empty()) {
        _choose();
    } else if (first.begin() != first.end() && first.end() - first.begin() <= std::ptrdiff_t{MAXIMUM_RANGES}) {
        m_how = How::RANGES;
        m_range_count = static_cast<std::size_t>(first.end() - first.begin());
        std::copy(first.begin(), first.end(), m_ranges);
    }
}

// The two rarest units; of equally rare ones those that lie far apart, because neighbours often go together.
template <class Unit>
void Unit_finder<Unit>::_choose()
{
    const auto rarer = [](Unit a, Unit b) {
        return commonness(static_cast<std::make_unsigned_t<Unit>>(a)) <
               commonness(static_cast<std::make_unsigned_t<Unit>>(b));
    };
    m_how = How::ONE;
    m_first_offset =
        static_cast<std::size_t>(std::min_element(m_literal.begin(), m_literal.end(), rarer) - m_literal.begin());
    m_second_offset = m_first_offset;
    for (std::size_t offset = m_literal.size(); offset-- != 0;) {
        const bool is_other = offset != m_first_offset;
        if (is_other && (m_how == How::ONE || rarer(m_literal[offset], m_literal[m_second_offset]))) {
            m_how = How::PAIR;
            m_second_offset = offset;
        }
    }
    if (m_second_offset < m_first_offset) {
        std::swap(m_first_offset, m_second_offset);
    }
    m_first = m_literal[m_first_offset];
    m_second = m_literal[m_second_offset];
}

template <class Unit>
const Unit* Unit_finder<Unit>::find(const Unit* from, const Unit* end) const
{
    switch (m_how) {
    case How::ONE:
    case How::PAIR:
        return _find_literal(from, end);
    case How::RANGES:
        return _find<How::RANGES>(from, end);
    default:
        return from;
    }
}

template <class Unit>
const Unit* Unit_finder<Unit>::_find_literal(const Unit* from, const Unit* end) const
{
    const auto size = static_cast<std::ptrdiff_t>(m_literal.size());
    for (;; ++from) {
        from = m_how == How::ONE ? _find<How::ONE>(from, end) : _find<How::PAIR>(from, end);
        if (end - from < size || std::equal(m_literal.begin(), m_literal.end(), from)) {
            return from;
        }
    }
}

template <class Unit>
template <typename Unit_finder<Unit>::How HOW>
const Unit* Unit_finder<Unit>::_find(const Unit* from, const Unit* end) const
{
    constexpr std::ptrdiff_t STEP = sizeof(__m128i) / sizeof(Unit);
    const __m128i first = broadcast<Unit>(static_cast<unsigned int>(m_first));
    const __m128i second = broadcast<Unit>(static_cast<unsigned int>(m_second));
    __m128i lows[MAXIMUM_RANGES];
    __m128i highs[MAXIMUM_RANGES];
    for (std::size_t i = 0; HOW == How::RANGES && i != m_range_count; ++i) {
        lows[i] = broadcast<Unit>(m_ranges[i].first);
        highs[i] = broadcast<Unit>(m_ranges[i].last);
    }
    const auto found_in = [&](const Unit* units) {
        if constexpr (HOW == How::RANGES) {
            const __m128i loaded = load(units);
            __m128i found = _mm_setzero_si128();
            for (std::size_t i = 0; i != m_range_count; ++i) {
                const __m128i outside = _mm_or_si128(excess<Unit>(lows[i], loaded), excess<Unit>(loaded, highs[i]));
                found = _mm_or_si128(found, equal<Unit>(outside, _mm_setzero_si128()));
            }
            return found;
        } else {
            const __m128i found = equal<Unit>(load(units + m_first_offset), first);
            return HOW == How::ONE ? found : _mm_and_si128(found, equal<Unit>(load(units + m_second_offset), second));
        }
    };
    const auto mask_of = [](__m128i found) { return static_cast<unsigned int>(_mm_movemask_epi8(found)); };

    const std::ptrdiff_t reach = HOW == How::RANGES ? 0 : static_cast<std::ptrdiff_t>(m_second_offset);
    for (; end - from >= reach + 2 * STEP; from += 2 * STEP) {
        const __m128i low = found_in(from);
        const __m128i high = found_in(from + STEP);
        if (mask_of(_mm_or_si128(low, high)) != 0) {
            const unsigned int mask = mask_of(low) | mask_of(high) << sizeof(__m128i);
            return from + static_cast<std::size_t>(std::countr_zero(mask)) / sizeof(Unit);
        }
    }
    for (; end - from > reach; ++from) {
        if constexpr (HOW == How::RANGES) {
            const unsigned int unit = static_cast<std::make_unsigned_t<Unit>>(*from);
            if (std::any_of(m_ranges, m_ranges + m_range_count,
                            [unit](Unit_range range) { return unit >= range.first && unit <= range.last; })) {
                break;
            }
        } else if (from[m_first_offset] == m_first && from[m_second_offset] == m_second) {
            break;
        }
    }
    return from;
}

template class Unit_finder<char>;
template class Unit_finder<wchar_t>;

} // namespace tam::detail
