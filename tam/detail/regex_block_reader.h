#pragma once

#include <algorithm>
#include <cstddef>

#include <tam/status/codes.h>
#include <tam/status/status.h>
#include <tam/stream/istream.h>

namespace tam::detail {

// Reads units from a stream by position, whatever portions it delivers.
template <class Unit>
class Regex_block_reader {
public:
    Regex_block_reader(const Tam_istream& stream, Tam_status& status) : m_stream(stream), m_status(status) {}

    // Reads units at position until there are `least` of them, and at most `count`. Fewer than `least` come at the end
    // of the data, and when status has a failure.
    std::size_t read(unsigned long long position, Unit* units, std::size_t least, std::size_t count)
    {
        auto* const bytes = reinterpret_cast<unsigned char*>(units);
        m_delivered = 0;
        while (m_delivered < least * sizeof(Unit)) {
            const auto rest = static_cast<unsigned int>(count * sizeof(Unit) - m_delivered);
            const unsigned int portion =
                std::min(m_stream.read_at(position + m_delivered, rest, bytes + m_delivered, m_status), rest);
            m_delivered += portion;
            if (!m_status.ok() && m_status == TAM_E_END_OF_DATA) {
                m_status.clear();
                break;
            }
            if (!m_status.ok() || portion == 0) {
                break;
            }
        }
        return m_delivered / sizeof(Unit);
    }

    // The bytes that the last reading delivered, an odd one included.
    std::size_t delivered() const { return m_delivered; }

private:
    const Tam_istream& m_stream;
    Tam_status& m_status;
    std::size_t m_delivered = 0;
};

} // namespace tam::detail
