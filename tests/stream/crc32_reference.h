#pragma once

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace tam::test {

/// Moves a register over one byte by the definition, bit by bit.
inline unsigned int crc32_step(unsigned int crc, unsigned char byte)
{
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
        crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    return crc;
}

inline unsigned int crc32_of(const std::string& bytes)
{
    unsigned int crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc = crc32_step(crc, static_cast<unsigned char>(byte));
    }
    return ~crc;
}

/// Bytes without a pattern, the same in each run.
inline std::string some_bytes(std::size_t count)
{
    std::string bytes(count, '\0');
    unsigned int state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// Compares crc_of(data, count), which gives a finished CRC, with the definition on pieces of all lengths up to 1024 at
/// all alignments to 64 bytes.
template <class Crc_of>
void expect_crc32_of_every_piece(Crc_of crc_of)
{
    constexpr unsigned int LONGEST = 1024;
    constexpr unsigned int ALIGNMENTS = 64;
    const std::string source = some_bytes(LONGEST);
    alignas(ALIGNMENTS) unsigned char bytes[ALIGNMENTS + LONGEST];
    for (unsigned int alignment = 0; alignment < ALIGNMENTS; ++alignment) {
        source.copy(reinterpret_cast<char*>(bytes + alignment), LONGEST);
        unsigned int crc = 0xFFFFFFFF;
        for (unsigned int length = 0; length <= LONGEST; ++length) {
            ASSERT_EQ(crc_of(bytes + alignment, length), ~crc) << length << " bytes at " << alignment;
            if (length < LONGEST) {
                crc = crc32_step(crc, bytes[alignment + length]);
            }
        }
    }
}

} // namespace tam::test
