#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include <tam/detail/find_unit.h>
#include <tam/detail/line_reader.h>
#include <tam/detail/regex.h>
#include <tam/detail/regex_block_reader.h>
#include <tam/regex/regular_expression.h>

// Searching the lines of a stream.

namespace tam::detail {

namespace {

template <class Unit>
struct Stored_units {
    using Type = Wide_units_le;
};

template <>
struct Stored_units<char> {
    using Type = Byte_units;
};

// A line in a window, at its beginning.
struct Found_line {
    std::size_t length = 0; // without its end
    std::size_t whole = 0;  // with it
};

// A part of a stream in memory. It begins with a line, and grows until that is whole.
template <class Unit>
class Line_window {
public:
    Line_window(const Tam_istream& stream, Tam_status& status)
        : m_reader(stream, status), m_position(stream.tell()), m_eol(stream.eol()), m_units(BLOCK)
    {}

    const Unit* begin() const { return m_units.data() + m_first; }
    const Unit* end() const { return m_units.data() + m_end; }
    std::size_t size() const { return m_end - m_first; }

    // The byte of the stream that the window begins with.
    unsigned long long position() const { return m_position; }

    // Reads on. False at the end of the data and when the status has a failure.
    bool extend()
    {
        if (m_first != 0) {
            std::copy(begin(), end(), m_units.data());
            m_end -= m_first;
            m_first = 0;
        }
        if (m_units.size() - m_end < BLOCK / 2) {
            m_units.resize(2 * m_units.size());
        }
        const std::size_t read = m_reader.read(m_position + m_end * sizeof(Unit), m_units.data() + m_end, 1,
                                               std::min(m_units.size() - m_end, BLOCK));
        m_end += read;
        m_tail = read == 0 ? m_reader.delivered() : 0;
        return read != 0;
    }

    void drop(std::size_t units)
    {
        m_first += units;
        m_position += units * sizeof(Unit);
    }

    // At the end of the data, with what was no whole unit there.
    void drop_all()
    {
        drop(size());
        m_position += m_tail;
    }

    // Extends the window until its first line is in it. False when there is none.
    bool first_line(Found_line& line)
    {
        Line_scanner<Stored> scanner(m_eol);
        std::size_t scanned = 0;
        while (!scanner.ended()) {
            const std::size_t rest = size() - scanned;
            if (rest != 0) {
                scanned += _scan(scanner, scanned, rest);
            } else if (!extend()) {
                scanner.finish();
                break;
            }
        }
        line = {scanned - scanner.excluded(), scanned};
        return scanned != 0;
    }

    // The number of lines that end before a place where one begins.
    unsigned long long lines_before(std::size_t offset)
    {
        unsigned long long lines = 0;
        for (std::size_t scanned = 0; scanned != offset; ++lines) {
            Line_scanner<Stored> scanner(m_eol);
            while (!scanner.ended() && scanned != offset) {
                scanned += _scan(scanner, scanned, offset - scanned);
            }
        }
        return lines;
    }

    // The last place at or before `offset`, but not before `least`, where a line begins; 0 when there is none.
    std::size_t line_start(std::size_t offset, std::size_t least) const
    {
        while (offset > least && !_starts_line(offset)) {
            --offset;
        }
        return offset > least || _starts_line(offset) ? offset : 0;
    }

private:
    using Stored = typename Stored_units<Unit>::Type;

    static constexpr std::size_t BLOCK = Tam_regular_expression::STREAM_BLOCK / sizeof(Unit);
    static constexpr std::size_t MOST_TO_SCAN = std::size_t{1} << 30; // the scanner counts in 32 bits

    std::size_t _scan(Line_scanner<Stored>& scanner, std::size_t offset, std::size_t count) const
    {
        return scanner.scan(reinterpret_cast<const unsigned char*>(begin() + offset),
                            static_cast<unsigned int>(std::min(count, MOST_TO_SCAN)));
    }

    // Whether a line end lies right before the offset, as Line_scanner would find it.
    bool _starts_line(std::size_t offset) const
    {
        const Unit* const at = begin() + offset;
        switch (m_eol) {
        case TAM_EOL_ANY:
            return offset >= 1 && (at[-1] == '\n' || (at[-1] == '\r' && at != end() && at[0] != '\n' && at[0] != '\r'));
        case TAM_EOL_LF:
            return offset >= 1 && at[-1] == '\n';
        case TAM_EOL_CR:
            return offset >= 1 && at[-1] == '\r';
        case TAM_EOL_CR_LF:
            return offset >= 2 && at[-1] == '\n' && at[-2] == '\r';
        default:
            return false;
        }
    }

    Regex_block_reader<Unit> m_reader;
    unsigned long long m_position;
    const Tam_eol m_eol;
    std::vector<Unit> m_units;
    std::size_t m_first = 0; // the window is [m_first, m_end) of m_units
    std::size_t m_end = 0;
    std::size_t m_tail = 0; // bytes behind the last unit, at the end of the data
};

} // namespace

// Goes through lines with an automaton that says where there may be a match, and drops the others from a window.
template <class Unit>
class Regex<Unit>::Line_search {
public:
    Line_search(Run run, Line_window<Unit>& window, unsigned int edge, bool numbered)
        : m_run(std::move(run)), m_window(window), m_edge(edge), m_numbered(numbered)
    {}

    // The window then begins with a line that may contain a match. False when there is none.
    bool next()
    {
        m_run.begin(Regex_side::EDGE);
        std::size_t searched = 0;
        for (unsigned long long dropped = 0;;) {
            if (_feed_lines(searched) || m_run.feed(m_window.begin() + searched, m_window.size() - searched)) {
                const std::size_t line = _drop_before(m_window.size(), searched);
                dropped += line;
                searched = m_window.size();
                if (m_window.extend()) {
                    continue;
                }
                m_run.finish(m_edge);
            }
            if (m_run.matched()) {
                _drop_before(static_cast<std::size_t>(m_run.match_end() - dropped), searched);
            }
            return m_run.matched();
        }
    }

    // The window is without its first line.
    void line_dropped() { ++m_lines; }

    // The lines that were dropped, where lines are numbered.
    unsigned long long lines() const { return m_lines; }

private:
    // Drops the lines before the one with the unit at `offset`, when no line but the first begins before `least`.
    std::size_t _drop_before(std::size_t offset, std::size_t least)
    {
        const std::size_t line = m_window.line_start(offset, least);
        if (m_numbered) {
            m_lines += m_window.lines_before(line);
        }
        m_window.drop(line);
        return line;
    }

    // Feeds what the window has from `searched` on, by several lines at once. False, and nothing is fed, when that cannot
    // be done.
    bool _feed_lines(std::size_t searched)
    {
        if (m_run.skips() || m_window.size() - searched < LEAST_FOR_LANES) {
            return false;
        }
        if (m_pause != 0) {
            --m_pause;
            return false;
        }
        const Unit* borders[Run::LANES + 1] = {m_window.begin() + searched};
        for (std::size_t lane = 1; lane != Run::LANES; ++lane) {
            const std::size_t wanted = searched + (m_window.size() - searched) / Run::LANES * lane;
            borders[lane] = m_window.begin() + m_window.line_start(wanted, searched);
            if (borders[lane] <= borders[lane - 1]) {
                return false;
            }
        }
        borders[Run::LANES] = m_window.end();
        if (!m_run.feed_lines(borders)) {
            m_pause = PAUSE;
            return false;
        }
        return true;
    }

    static constexpr std::size_t LEAST_FOR_LANES = 4096; // units
    static constexpr unsigned int PAUSE = 2;             // windows, after one that had something to tell

    Run m_run;
    Line_window<Unit>& m_window;
    unsigned int m_pause = 0;
    const unsigned int m_edge;
    const bool m_numbered;
    unsigned long long m_lines = 0;
};

template <class Unit>
void Regex<Unit>::grep(Tam_istream& stream, Callback callback, void* argument, bool numbered, unsigned int& count,
                       Tam_status& status) const
{
    typename Pool::Lease cache(m_pool);
    Line_window<Unit> window(stream, status);
    Line_search lines(Run((*cache).lines(stream.eol(), _forwards()), m_alphabet, Regex_side::EDGE, &m_finder), window,
                      m_alphabet.edge(), numbered);
    String text;
    for (bool goes_on = true; goes_on;) {
        Found_line line;
        if (!lines.next() || !window.first_line(line) || !status.ok()) {
            window.drop_all();
            break;
        }
        if (_exists(*cache, window.begin(), line.length)) {
            text.assign(window.begin(), line.length);
            ++count;
            goes_on = callback(text, lines.lines() + 1, argument);
        }
        window.drop(line.whole);
        lines.line_dropped();
    }
    if (status.ok()) {
        stream.seek(window.position());
    }
    cache.done();
}

template <class Unit>
bool Regex<Unit>::_exists(Regex_cache<Unit>& cache, const Unit* line, std::size_t length) const
{
    Run run = _run(cache, Goal::EXISTS, Regex_side::EDGE);
    run.feed(line, length);
    run.finish(m_alphabet.edge());
    return run.matched();
}

template void Regex<char>::grep(Tam_istream&, Callback, void*, bool, unsigned int&, Tam_status&) const;
template void Regex<wchar_t>::grep(Tam_istream&, Callback, void*, bool, unsigned int&, Tam_status&) const;

} // namespace tam::detail
