#pragma once

#include <cstddef>

namespace tam::test {

/// The bytes that travel through a pipe: each depends on its position.
inline unsigned char pattern_byte(std::size_t position)
{
    return static_cast<unsigned char>((static_cast<unsigned int>(position) * 2654435761U) >> 24);
}

/// A checksum that sees the order of its bytes.
class Checksum {
public:
    void add(unsigned char byte) { m_value = (m_value ^ byte) * 16777619U; }
    unsigned int value() const { return m_value; }

private:
    unsigned int m_value = 2166136261U;
};

inline unsigned int pattern_checksum(std::size_t count)
{
    Checksum sum;
    for (std::size_t i = 0; i < count; ++i) {
        sum.add(pattern_byte(i));
    }
    return sum.value();
}

} // namespace tam::test
