#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/status/status.h>
#include <tam/stream/istream.h>

namespace tam {

namespace detail {

template <class Unit>
class Regex;

} // namespace detail

/// A compiled pattern, and searches with it in narrow strings and in streams of 8-bit text.
///
///     Tam_status status;
///     const Tam_regular_expression number("-?[0-9]+", status);
///     std::size_t start = 0, length = 0;
///     while (number.search_longest(text, start + length, start, length, status)) ... text.substr(start, length) ...
///
/// (A loop over a pattern that matches the empty string has to move on by itself after an empty match.)
///
/// Syntax, from the weakest binding to the strongest:
///   - `x|y`: what x or y matches. Either side may be empty: it then matches the empty string, as `()` and the empty
///     pattern do.
///   - `xy`: what x matches, followed by what y matches.
///   - `x*`, `x+`, `x?`, `x{m}`, `x{m,}`, `x{m,n}`: x any number of times, at least once, at most once, m times, at
///     least m times, m to n times. Counts reach to MAXIMUM_REPEAT. They can follow each other: `x{2}{3}` is six times
///     x, `x*?` is `(x*)?`.
///   - `(x)`: x. Groups are not recorded, and there are no references to them.
///   - `[abc]`, `[a-z]`, `[^a-z]`: a unit of the set, or one outside of it. Behind the opening bracket (and `^`) a `]`
///     stands for itself; so does a `-` that is first or last, or that follows a range or a class. `[:alpha:]` in a set
///     is its class; the others are alnum, blank, cntrl, digit, graph, lower, print, punct, space, upper, word (that of
///     `\w`) and xdigit.
///   - `.`: any unit but the line feed.
///   - `^`, `$`: the start and the end of the text. With line borders `^` also matches behind each line feed, `$`
///     before.
///   - `\d`, `\s`, `\w`: a digit, white space, a word unit (a letter, a digit or `_`); `\D`, `\S`, `\W`: any other
///     unit. They stand in sets too.
///   - `\b`: a place where just one of its two neighbours is a word unit, the borders of the text being none. In a set
///     it is the backspace.
///   - `\` and anything else: what tam_unquote() makes of it, so `\n` is the line feed, `\x2A` and `\52` are the `*`,
///     and `\.` is the dot. `\B` is the letter. A backslash at the end of the pattern stands for itself.
///   - all else, `]` and `}` without a partner included: itself.
///
/// Units are bytes, compared as such; case matters. Classes have the meaning of ASCII whatever the locale is, so that
/// no byte from 0x80 on is in any.
///
/// Every search finds the leftmost match: none starts earlier in the part of the text that is searched. search() gives
/// the shortest match that starts there, search_longest() the longest. The time of a search is proportional to the
/// length of the text for every pattern, and its memory is bounded (see MAXIMUM_CACHE_BYTES).
///
/// The text of a stream begins at its position and ends with its data. It is read with read_at, in blocks of
/// STREAM_BLOCK bytes at most, forwards; to find where a match starts may take a second reading, backwards from its
/// end. A read that delivers nothing ends the data. The stream's position is moved behind a match (grep says what it
/// does); without a match, and after a failure, it is as it was.
///
/// Every operation with a status clears it first; on return it holds, besides what is said there:
///   - TAM_E_PATTERN_NOT_COMPILED (0xC2000066): the object has no pattern;
///   - TAM_E_OUT_OF_MEMORY (0xC2000001);
///   - from operations on streams what the stream's read_at reports, but for the end of the data
///     (TAM_E_STREAM_DETACHED, 0xC2000017, from a detached one).
/// A failed search returns false or what it has counted, and gives start and length 0.
///
/// Copies share the compiled pattern. Any number of threads may search with one object, and with copies, at once; they
/// do not wait for each other. Compiling and assigning needs the object for itself.
class TAM_API Tam_regular_expression {
public:
    /// The largest count in `x{m,n}`.
    static constexpr unsigned int MAXIMUM_REPEAT = 9999;

    /// The bound of a compiled pattern: a unit, set or assertion takes one state, `|`, `*`, `+` and `?` take one, and so
    /// does the end of the pattern. A counted repeat takes what it repeats once for each time, and one more for each that
    /// can be left out.
    static constexpr unsigned int MAXIMUM_STATES = 10000;

    /// The bound of the memory that a search works with, beyond the compiled pattern and, in grep, the line. What it
    /// was used for makes later searches faster, so up to MAXIMUM_CACHES such memories are kept with a compiled
    /// pattern: one for each search that was under way at the same time.
    static constexpr unsigned int MAXIMUM_CACHE_BYTES = 16U << 20;
    static constexpr unsigned int MAXIMUM_CACHES = 16;

    /// What is read from a stream at once, in bytes.
    static constexpr unsigned int STREAM_BLOCK = 65536;

    /// Without a pattern.
    Tam_regular_expression() noexcept;

    /// Calls compile.
    Tam_regular_expression(const std::string& pattern, Tam_status& status, bool line_borders = false);

    /// Shares the compiled pattern.
    Tam_regular_expression(const Tam_regular_expression& other) noexcept;

    /// Takes the pattern over; other is left without one.
    Tam_regular_expression(Tam_regular_expression&& other) noexcept;

    /// Shares the compiled pattern.
    Tam_regular_expression& operator=(const Tam_regular_expression& other) noexcept;

    /// Takes the pattern over; other is left without one.
    Tam_regular_expression& operator=(Tam_regular_expression&& other) noexcept;

    ~Tam_regular_expression();

    /// Compiles a pattern in place of the earlier one, which stays when this fails.
    /// @param line_borders  whether `^` and `$` match at line feeds too
    /// @param status
    ///   - TAM_E_PATTERN_SYNTAX (0xC200005E) with the pattern, the position of the fault (unsigned, from 0) and one of
    ///     these reasons:
    ///       - "nothing to repeat": a repeat at the start of the pattern, of a group or of an alternative
    ///       - "missing )" (the position is that of the parenthesis), "unmatched )"
    ///       - "missing ]" (the position is that of the bracket)
    ///       - "invalid repeat": a brace that begins no repeat, a count that is too large, or m > n
    ///       - "invalid range": its ends are in the wrong order, or the second is a class
    ///       - "unknown class": a name between `[:` and `:]` that is none of those above
    ///       - "collating elements are not supported": `[.` or `[=` in a set
    ///   - TAM_E_PATTERN_TOO_LARGE (0xC200005F) with the pattern: the compiled form would exceed MAXIMUM_STATES, or the
    ///     pattern has more units and sets than that
    void compile(const std::string& pattern, Tam_status& status, bool line_borders = false);

    /// The pattern as it was compiled, empty when none was.
    const std::string& pattern() const noexcept;

    /// Whether there is a pattern.
    bool compiled() const noexcept { return m_regex != nullptr; }

    /// Whether the pattern matches the whole text.
    bool match(const std::string& text, Tam_status& status) const;

    /// Finds the leftmost match that starts at from or behind, and of those the shortest. Without one, start and length
    /// are 0.
    ///
    /// `^`, `\b` and line borders see the text before from: `^` matches at 0, not at from. An empty match is one.
    /// @param status  TAM_E_POSITION_OUT_OF_RANGE (0xC2000018): from is greater than the length of the text
    bool search(const std::string& text, std::size_t from, std::size_t& start, std::size_t& length,
                Tam_status& status) const;

    /// The same with the longest match.
    bool search_longest(const std::string& text, std::size_t from, std::size_t& start, std::size_t& length,
                        Tam_status& status) const;

    /// Whether the pattern matches all from the stream's position to its end.
    bool match(Tam_istream& stream, Tam_status& status) const;

    /// Finds the leftmost match from the stream's position on, and of those the shortest. start counts from the
    /// beginning of the stream. `^` matches at the position: what lies before is not looked at.
    bool search(Tam_istream& stream, unsigned long long& start, unsigned long long& length, Tam_status& status) const;

    /// The same with the longest match.
    bool search_longest(Tam_istream& stream, unsigned long long& start, unsigned long long& length,
                        Tam_status& status) const;

    /// Fills lines with the lines that contain a match, from the stream's position on, without their ends.
    ///
    /// Lines are those of the stream's convention (Tam_eol), of any length: the longest line takes memory. Each is
    /// searched as a text of its own, so `^` and `$` match at its borders. A last line without a line end is a line.
    /// The stream is left behind the last line that was filled in when that was the last one wanted, else at its end.
    /// @param lines   cleared first; after a failure it has the lines found before
    /// @param max     the most lines to find; 0 for all
    /// @return the number of lines
    unsigned int grep(Tam_istream& stream, Tam_object_vector<std::string>& lines, unsigned int max,
                      Tam_status& status) const;

    /// Calls callback with each line that contains a match, its number (the one at the stream's position is 1) and
    /// argument, until it returns false; the stream is then left behind that line. What it throws passes through, but
    /// for std::bad_alloc, which is reported like other lack of memory; the stream is where it was. It may read the
    /// stream by read_at, and search with this object.
    /// @return the number of calls
    unsigned int grep(Tam_istream& stream,
                      bool (*callback)(const std::string& line, unsigned long long line_number, void* argument),
                      void* argument, Tam_status& status) const;

private:
    std::shared_ptr<const detail::Regex<char>> m_regex;
};

} // namespace tam
