#pragma once

#include <algorithm>
#include <cstring>
#include <string>

#include <tam/detail/find_unit.h>
#include <tam/status/codes.h>
#include <tam/status/status.h>
#include <tam/stream/eol.h>

namespace tam::detail {

// Looks for the end of one line in the pieces of its text. Units says how the text lies in the bytes.
//
//     in line --CR or LF, under a convention of one of them--> ended
//     in line --CR, under a convention with CR LF--> CR seen
//     CR seen --LF--> ended, with both        CR seen --CR--> CR seen
//     CR seen --other unit--> ended before the unit (any line end), in line (CR LF only)
template <class Units>
class Line_scanner {
public:
    explicit Line_scanner(Tam_eol eol) : m_eol(eol) {}

    // Takes the next count units; returns how many of them belong to the line or its end.
    unsigned int scan(const unsigned char* bytes, unsigned int count)
    {
        for (unsigned int next = 0;;) {
            if (m_state == State::CR_SEEN) {
                if (next == count) {
                    return count;
                }
                const auto unit = Units::load(bytes, next);
                if (unit == LF) {
                    _end(2);
                    return next + 1;
                }
                if (unit != CR) {
                    if (m_eol == TAM_EOL_ANY) {
                        _end(1);
                        return next;
                    }
                    m_state = State::IN_LINE;
                }
                ++next;
            } else {
                next = _find(bytes, next, count);
                if (next == count) {
                    return count;
                }
                if (m_eol == TAM_EOL_CR || Units::load(bytes, next) == LF) {
                    _end(1);
                    return next + 1;
                }
                m_state = State::CR_SEEN;
                ++next;
            }
        }
    }

    // No unit follows.
    void finish()
    {
        if (m_eol == TAM_EOL_ANY && m_state == State::CR_SEEN) {
            _end(1);
        }
    }

    bool ended() const { return m_state == State::ENDED; }

    // How many of the units are the line's end.
    unsigned int excluded() const { return m_excluded; }

private:
    enum class State { IN_LINE, CR_SEEN, ENDED };

    static constexpr auto CR = Units::stored('\r');
    static constexpr auto LF = Units::stored('\n');

    unsigned int _find(const unsigned char* bytes, unsigned int first, unsigned int count) const
    {
        switch (m_eol) {
        case TAM_EOL_ANY:
            return find_unit<Units, CR, LF>(bytes, first, count);
        case TAM_EOL_LF:
            return find_unit<Units, LF>(bytes, first, count);
        case TAM_EOL_CR:
        case TAM_EOL_CR_LF:
            return find_unit<Units, CR>(bytes, first, count);
        default:
            return count;
        }
    }

    void _end(unsigned int excluded)
    {
        m_state = State::ENDED;
        m_excluded = excluded;
    }

    const Tam_eol m_eol;
    State m_state = State::IN_LINE;
    unsigned int m_excluded = 0;
};

// Units of text that lie somewhere until the next piece is asked for.
struct Line_piece {
    const unsigned char* bytes = nullptr;
    unsigned int count = 0;
};

// std::memcpy without a call for the lengths that lines have.
inline void copy_bytes(unsigned char* to, const unsigned char* from, std::size_t count)
{
    constexpr std::size_t STEP = sizeof(__m128i);
    constexpr std::size_t LONG = 512; // from here on the call does not matter
    if (count < STEP || count >= LONG) {
        std::memcpy(to, from, count);
        return;
    }
    const auto copy_step = [to, from](std::size_t offset) {
        const __m128i step = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + offset));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + offset), step);
    };
    for (std::size_t done = 0; done < count - STEP; done += STEP) {
        copy_step(done);
    }
    copy_step(count - STEP); // may overlap the step before
}

// Puts piece into line from unit `length` on, up to unit `wanted`; line then has `wanted` units.
template <class Units>
void copy_piece(std::basic_string<typename Units::Unit>& line, unsigned int length, unsigned int wanted,
                const Line_piece& piece)
{
    line.resize(wanted);
    if (wanted > length) {
        copy_bytes(reinterpret_cast<unsigned char*>(line.data() + length), piece.bytes,
                   std::size_t{wanted - length} * Units::SIZE);
        Units::to_platform_order(line.data() + length, wanted - length);
    }
}

// Takes the text of a line as it is.
template <class Units>
class Whole_text {
public:
    explicit Whole_text(std::basic_string<typename Units::Unit>& line) : m_line(line) {}

    void take(unsigned int length, unsigned int wanted, const Line_piece& piece)
    {
        copy_piece<Units>(m_line, length, wanted, piece);
    }

private:
    std::basic_string<typename Units::Unit>& m_line;
};

// Reads the line that starts at byte `start` of what source reads, by the rules of Tam_istream. Its pieces come from
//
//     Line_piece source.next(unsigned long long position, unsigned int most_units, Tam_status&);
//
// which delivers at least one unit unless it fails. They go one after the other to
//
//     text.take(unsigned int length, unsigned int wanted, const Line_piece&);
//
// which has `length` units already and `wanted` with those of the piece that belong to the text, or less where the line
// turns out to have ended before. Returns the bytes of the line with its end.
template <class Units, class Source, class Text>
unsigned long long read_line(Source& source, Tam_eol eol, unsigned long long start, unsigned int max, Text text,
                             Tam_status& status)
{
    if (!status.is_clear()) {
        status.clear();
    }
    const unsigned int limit = max + 2; // the line and the longest line end; 0xFFFFFFFE wraps and reads nothing
    Line_scanner<Units> scanner(eol);
    Line_piece piece;
    unsigned int consumed = 0; // units read
    unsigned int scanned = 0;  // units of the line and its end, the last piece's included
    unsigned int taken = 0;    // units that text has: all but the last piece's
    while (!scanner.ended() && status.ok() && consumed < limit) {
        if (scanned != taken) {
            text.take(taken, scanned, piece);
            taken = scanned;
        }
        piece = source.next(start + static_cast<unsigned long long>(consumed) * Units::SIZE, limit - consumed, status);
        consumed += piece.count;
        scanned += scanner.scan(piece.bytes, piece.count);
    }
    scanner.finish();

    const unsigned int length = std::min(scanned - scanner.excluded(), max);
    text.take(taken, length, piece);
    if (!status.ok() && consumed != 0 && status.value() == TAM_E_END_OF_DATA) {
        status.clear();
    }
    if (!scanner.ended() && status.ok()) {
        status.push(TAM_E_NO_LINE_END);
    }
    return (static_cast<unsigned long long>(length) + scanner.excluded()) * Units::SIZE;
}

} // namespace tam::detail
