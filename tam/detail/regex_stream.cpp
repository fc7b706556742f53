#include <algorithm>

#include <tam/detail/regex.h>
#include <tam/detail/regex_block_reader.h>
#include <tam/regex/regular_expression.h>

// Matching and searching in streams.

namespace tam::detail {

// A text of units that lies in a stream, and the part of it that is in memory.
template <class Unit>
struct Regex<Unit>::Stream_text {
    Stream_text(Tam_istream& from, Regex_cache<Unit>& cache, Tam_status& status)
        : reader(from, status),
          base(from.tell()),
          block(cache.block(Tam_regular_expression::STREAM_BLOCK / sizeof(Unit)))
    {}

    unsigned long long position_of(unsigned long long unit) const { return base + unit * sizeof(Unit); }

    // Reads what follows the block; false at the end of the data and when status has a failure.
    bool read_next()
    {
        block_start += count;
        count = reader.read(position_of(block_start), block.data(), 1, block.size());
        return count != 0;
    }

    // Reads the units before a place, as many as there are and go into the block.
    bool read_before(unsigned long long end)
    {
        const std::size_t wanted = static_cast<std::size_t>(std::min<unsigned long long>(end, block.size()));
        block_start = end - wanted;
        count = reader.read(position_of(block_start), block.data(), wanted, wanted);
        return count == wanted;
    }

    Regex_block_reader<Unit> reader;
    const unsigned long long base;      // the first unit's byte in the stream
    unsigned long long block_start = 0; // in units from the first
    std::size_t count = 0;              // units in the block
    std::vector<Unit>& block;
};

template <class Unit>
bool Regex<Unit>::match(Tam_istream& stream, Tam_status& status) const
{
    typename Pool::Lease cache(m_pool);
    Run run = _run(*cache, Goal::WHOLE, Regex_side::EDGE);
    Stream_text text(stream, *cache, status);
    bool goes_on = true;
    while (goes_on && text.read_next()) {
        goes_on = run.feed(text.block.data(), text.count);
    }
    if (goes_on && status.ok()) {
        run.finish(m_alphabet.edge());
    }
    if (run.matched()) {
        stream.seek(text.position_of(text.block_start) + text.reader.delivered());
    }
    cache.done();
    return run.matched();
}

template <class Unit>
bool Regex<Unit>::search(Goal goal, Tam_istream& stream, unsigned long long& start, unsigned long long& length,
                         Tam_status& status) const
{
    typename Pool::Lease cache(m_pool);
    Run run = _run(*cache, goal, Regex_side::EDGE);
    Stream_text text(stream, *cache, status);
    bool goes_on = true;
    while (goes_on && text.read_next()) {
        goes_on = run.feed(text.block.data(), text.count);
    }
    if (goes_on && status.ok()) {
        run.finish(m_alphabet.edge());
    }
    bool found = false;
    if (run.matched() && status.ok()) {
        const unsigned long long units = _match_length(*cache, goal, run, text);
        if (status.ok()) {
            found = true;
            length = units;
            start = text.base / sizeof(Unit) + run.match_end() - units;
            stream.seek(text.position_of(run.match_end()));
        }
    }
    cache.done();
    return found;
}

template <class Unit>
unsigned long long Regex<Unit>::_match_length(Regex_cache<Unit>& cache, Goal goal, const Run& found,
                                              Stream_text& text) const
{
    if (_length_is_fixed()) {
        return m_longest;
    }
    const unsigned long long end = found.match_end();
    if (!cache.automaton(goal, _forwards()).starts_later()) {
        return end;
    }
    Run_back back = _run_back(cache, found);
    unsigned long long left = end;
    bool goes_on = true;
    if (end > text.block_start) {
        const auto in_block = static_cast<std::size_t>(end - text.block_start);
        goes_on = back.feed(text.block.data() + in_block, in_block);
        left = text.block_start;
    }
    while (goes_on && left != 0 && text.read_before(left)) {
        goes_on = back.feed(text.block.data() + text.count, text.count);
        left = text.block_start;
    }
    if (goes_on && left == 0) {
        back.finish(m_alphabet.edge());
    }
    return back.match_end();
}

template bool Regex<char>::match(Tam_istream&, Tam_status&) const;
template bool Regex<char>::search(Goal, Tam_istream&, unsigned long long&, unsigned long long&, Tam_status&) const;
template bool Regex<wchar_t>::match(Tam_istream&, Tam_status&) const;
template bool Regex<wchar_t>::search(Goal, Tam_istream&, unsigned long long&, unsigned long long&, Tam_status&) const;

} // namespace tam::detail
