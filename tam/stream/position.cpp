#include <tam/stream/position.h>

#include <limits>
#include <stdexcept>

namespace tam {

unsigned long long tam_advance(unsigned long long position, int offset)
{
    if (offset < 0) {
        const unsigned long long back = 0ULL - static_cast<unsigned long long>(offset);
        if (position < back) {
            throw std::underflow_error("Stream position going negative.");
        }
        return position - back;
    }
    const auto forward = static_cast<unsigned long long>(offset);
    if (position > TAM_MAXIMUM_POSITION - forward) {
        throw std::overflow_error("Stream position too large.");
    }
    return position + forward;
}

int tam_difference(unsigned long long a, unsigned long long b)
{
    constexpr auto most = static_cast<unsigned long long>(std::numeric_limits<int>::max());
    if (a >= b) {
        if (a - b > most) {
            throw std::overflow_error("Stream offset too positive");
        }
    } else if (b - a > most + 1) {
        throw std::overflow_error("Stream offset too negative");
    }
    return static_cast<int>(static_cast<long long>(a - b));
}

} // namespace tam
