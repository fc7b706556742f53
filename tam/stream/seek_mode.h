#pragma once

namespace tam {

/// What an offset of a seek counts from. Any other value counts as TAM_SEEK_CURRENT, except where a buffer says
/// otherwise.
enum Tam_seek_mode : unsigned int {
    TAM_SEEK_START = 0,   ///< the start of the data
    TAM_SEEK_CURRENT = 1, ///< the caller's position
    TAM_SEEK_END = 2,     ///< the end of the data
};

} // namespace tam
