#pragma once

#include <concepts>
#include <type_traits>

namespace tam::detail {

// Arithmetic of int and wider that wraps in two's complement where the plain operators would be undefined.

template <std::signed_integral T>
constexpr T wrapping_add(T a, T b) noexcept
{
    using Bits = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<Bits>(a) + static_cast<Bits>(b));
}

template <std::signed_integral T>
constexpr T wrapping_subtract(T a, T b) noexcept
{
    using Bits = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<Bits>(a) - static_cast<Bits>(b));
}

template <std::signed_integral T>
constexpr T wrapping_multiply(T a, T b) noexcept
{
    using Bits = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<Bits>(a) * static_cast<Bits>(b));
}

// The lowest value negated is itself.
template <std::signed_integral T>
constexpr T wrapping_negate(T a) noexcept
{
    return wrapping_subtract(T{0}, a);
}

// The lowest value divided by -1 is itself. A divisor of 0 is the processor's fault.
template <std::signed_integral T>
constexpr T wrapping_divide(T a, T b)
{
    return b == -1 ? wrapping_negate(a) : a / b;
}

// By -1 always 0, where the processor would fault for the lowest value. A divisor of 0 is the processor's fault.
template <std::signed_integral T>
constexpr T wrapping_remainder(T a, T b)
{
    return b == -1 ? T{0} : a % b;
}

} // namespace tam::detail
