#pragma once

#include <algorithm>
#include <cstring>
#include <iterator>

namespace tam::detail {

// The value whose bytes are those of value in reverse order.
template <class Value>
Value reversed(Value value)
{
    unsigned char bytes[sizeof(Value)];
    std::memcpy(bytes, &value, sizeof value);
    std::reverse(std::begin(bytes), std::end(bytes));
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

} // namespace tam::detail
