#pragma once

namespace tam::detail {

// Polynomials over GF(2), modulo the polynomial P of CRC-32 (ISO 3309: x^32 + x^26 + x^23 + x^22 + x^16 + x^12 + x^11 +
// x^10 + x^8 + x^7 + x^5 + x^4 + x^2 + x + 1). They are reflected, as the CRC's register is: bit 31 stands for x^0 and
// bit 0 for x^31. P is written without its x^32.
inline constexpr unsigned int CRC32_POLYNOMIAL = 0xEDB88320;
inline constexpr unsigned int CRC32_ONE = 0x80000000;

// value * x^n mod P: what becomes of a register over n bits of zeros. All constants of the kernels come from here.
constexpr unsigned int crc32_times_x(unsigned int value, unsigned int n)
{
    for (; n != 0; --n) {
        value = value >> 1 ^ ((value & 1) != 0 ? CRC32_POLYNOMIAL : 0);
    }
    return value;
}

} // namespace tam::detail
