#include <tam/detail/crc32_kernels.h>

#include <array>
#include <cstring>

#include <tam/detail/crc32_polynomial.h>

namespace tam::detail {

namespace {

// Several words at once, each with a table per byte, after M. Kounavis and F. Berry, "A Systematic Approach to Building
// High Performance Software-Based CRC Generators", 2005 (slicing), and A. Kadatch and B. Jenkins, "Everything We Know
// About CRC But Afraid To Forget", 2010 (braids): the words of the data are dealt out to BRAIDS registers, each of which
// jumps over the words of the others, so that the look-ups of one do not wait for those of another.
using Word = unsigned long long;
constexpr std::size_t WORD = sizeof(Word);
constexpr std::size_t BRAIDS = 4;
constexpr std::size_t BLOCK = BRAIDS * WORD;

using Table = std::array<unsigned int, 256>;
using Word_tables = std::array<Table, WORD>;

// Entry b of table k: what byte k of a word, of value b, makes of the register by the time that the data has come
// distance bytes past the word's start.
constexpr Word_tables word_tables(unsigned int distance)
{
    Word_tables tables{};
    for (unsigned int k = 0; k < WORD; ++k) {
        Table& table = tables[k];
        for (unsigned int bit = 1; bit < table.size(); bit <<= 1) {
            table[bit] = crc32_times_x(bit, 8 * (distance - k));
        }
        for (unsigned int b = 1; b < table.size(); ++b) {
            table[b] = table[b & (b - 1)] ^ table[b & (~b + 1)]; // the sum over its bits
        }
    }
    return tables;
}

constexpr Word_tables TO_NEXT_WORD = word_tables(WORD);
constexpr Word_tables TO_NEXT_BLOCK = word_tables(BLOCK);
constexpr const Table& TO_NEXT_BYTE = TO_NEXT_WORD[WORD - 1];

Word load(const unsigned char* bytes)
{
    Word word;
    std::memcpy(&word, bytes, WORD);
    return word;
}

// In halves, whose second bytes the processor takes without a shift.
unsigned int look_up(const Word_tables& tables, Word word)
{
    const auto low = static_cast<unsigned int>(word);
    const auto high = static_cast<unsigned int>(word >> 32);
    return tables[0][low & 0xFF] ^ tables[1][low >> 8 & 0xFF] ^ tables[2][low >> 16 & 0xFF] ^ tables[3][low >> 24] ^
           tables[4][high & 0xFF] ^ tables[5][high >> 8 & 0xFF] ^ tables[6][high >> 16 & 0xFF] ^ tables[7][high >> 24];
}

} // namespace

unsigned int crc32_by_tables(unsigned int crc, const unsigned char* bytes, std::size_t count)
{
    if (count >= 2 * BLOCK) {
        std::array<unsigned int, BRAIDS> braids{crc};
        for (; count >= 2 * BLOCK; count -= BLOCK, bytes += BLOCK) {
            for (std::size_t i = 0; i < BRAIDS; ++i) {
                braids[i] = look_up(TO_NEXT_BLOCK, load(bytes + i * WORD) ^ braids[i]);
            }
        }
        crc = 0;
        for (const unsigned int braid : braids) {
            crc = look_up(TO_NEXT_WORD, load(bytes) ^ braid ^ crc);
            bytes += WORD;
        }
        count -= BLOCK;
    }
    for (; count >= WORD; count -= WORD, bytes += WORD) {
        crc = look_up(TO_NEXT_WORD, load(bytes) ^ crc);
    }
    for (; count != 0; --count, ++bytes) {
        crc = TO_NEXT_BYTE[(crc ^ *bytes) & 0xFF] ^ crc >> 8;
    }
    return crc;
}

} // namespace tam::detail
