#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

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
        unsigned short unit;
        std::memcpy(&unit, bytes + std::size_t{index} * SIZE, SIZE);
        return unit;
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

// The index of the first of some units (as they are stored) among those from first up to count; count when there is
// none. Looks at 32 bytes in one step.
template <class Units, auto... WANTED>
unsigned int find_unit(const unsigned char* bytes, unsigned int first, unsigned int count)
{
    constexpr unsigned int HALF = sizeof(__m128i) / Units::SIZE;
    const auto matches = [bytes](unsigned int index) {
        const auto* const address = reinterpret_cast<const __m128i*>(bytes + std::size_t{index} * Units::SIZE);
        const __m128i units = _mm_loadu_si128(address);
        __m128i found = _mm_setzero_si128();
        ((found = _mm_or_si128(found, Units::equal(units, Units::broadcast(WANTED)))), ...);
        return found;
    };
    const auto mask_of = [](__m128i found) { return static_cast<unsigned int>(_mm_movemask_epi8(found)); };
    for (; count - first >= 2 * HALF; first += 2 * HALF) {
        const __m128i low = matches(first);
        const __m128i high = matches(first + HALF);
        if (mask_of(_mm_or_si128(low, high)) != 0) {
            const unsigned int mask = mask_of(low) | mask_of(high) << sizeof(__m128i);
            return first + static_cast<unsigned int>(std::countr_zero(mask)) / Units::SIZE;
        }
    }
    for (; first < count; ++first) {
        const auto unit = Units::load(bytes, first);
        if (((unit == WANTED) || ...)) {
            break;
        }
    }
    return first;
}

} // namespace tam::detail
