#pragma once

#include <exception>

#include <tam/status/codes.h>
#include <tam/status/status.h>
#include <tam/stream/position.h>
#include <tam/stream/seek_mode.h>

namespace tam::detail {

// The seek of a buffer with that many bytes.
inline void seek_in(unsigned long long length, Tam_seek_mode mode, int offset, unsigned long long& position,
                    Tam_status& status)
{
    status.clear();
    const unsigned long long base = mode == TAM_SEEK_START ? 0 : mode == TAM_SEEK_END ? length : position;
    try {
        position = tam_advance(base, offset);
    } catch (const std::exception&) {
        status = TAM_E_POSITION_OUT_OF_RANGE;
    }
}

} // namespace tam::detail
