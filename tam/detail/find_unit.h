#pragma once

#include <bit>
#include <cstddef>

#include <emmintrin.h>

namespace tam::detail {

// Bytes of text, taken one by one.
struct Byte_units {
    using Unit = char;
    static constexpr unsigned int SIZE = 1;

    static constexpr unsigned char stored(unsigned char unit) { return unit; }
    static unsigned char load(const unsigned char* bytes, unsigned int index) { return bytes[index]; }
    static __m128i broadcast(unsigned char stored_unit) { return _mm_set1_epi8(static_cast<char>(stored_unit)); }
    static __m128i equal(__m128i a, __m128i b) { return _mm_cmpeq_epi8(a, b); }
    static void to_platform_order(Unit*, std::size_t) {}
};

// UTF-16 code units, low byte first, at any address.
struct Wide_units_le {
    using Unit = wchar_t;
    static constexpr unsigned int SIZE = 2;

    static constexpr unsigned short stored(unsigned char unit) { return unit; }
    static unsigned short load(const unsigned char* bytes, unsigned int index)
    {
        return static_cast<unsigned short>(bytes[2 * index] | bytes[2 * index + 1] << 8);
    }
    static __m128i broadcast(unsigned short stored_unit) { return _mm_set1_epi16(static_cast<short>(stored_unit)); }
    static __m128i equal(__m128i a, __m128i b) { return _mm_cmpeq_epi16(a, b); }
    static void to_platform_order(Unit*, std::size_t) {}
};

// UTF-16 code units, high byte first. "Stored" is a unit as Wide_units_le sees it.
struct Wide_units_be : Wide_units_le {
    static constexpr unsigned short stored(unsigned char unit) { return static_cast<unsigned short>(unit << 8); }
    static void to_platform_order(Unit* units, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            units[i] = static_cast<Unit>(units[i] << 8 | units[i] >> 8);
        }
    }
};

// The index of the first of two units (as they are stored) among those from first up to count; count when there is
// none. Looks at 16 bytes in one step.
template <class Units, class Stored>
unsigned int find_unit(const unsigned char* bytes, unsigned int first, unsigned int count, Stored a, Stored b)
{
    constexpr unsigned int STEP = sizeof(__m128i) / Units::SIZE;
    const __m128i all_a = Units::broadcast(a);
    const __m128i all_b = Units::broadcast(b);
    for (; count - first >= STEP; first += STEP) {
        const __m128i units =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + std::size_t{first} * Units::SIZE));
        const __m128i found = _mm_or_si128(Units::equal(units, all_a), Units::equal(units, all_b));
        const auto mask = static_cast<unsigned int>(_mm_movemask_epi8(found));
        if (mask != 0) {
            return first + static_cast<unsigned int>(std::countr_zero(mask)) / Units::SIZE;
        }
    }
    for (; first < count; ++first) {
        const auto unit = Units::load(bytes, first);
        if (unit == a || unit == b) {
            break;
        }
    }
    return first;
}

} // namespace tam::detail
