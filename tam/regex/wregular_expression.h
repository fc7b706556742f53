#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/regex/regular_expression.h>
#include <tam/status/status.h>
#include <tam/stream/istream.h>

namespace tam {

/// The wide twin of Tam_regular_expression, for wide strings and streams of little-endian UTF-16 text. All that is said
/// there holds here, with these differences:
///   - Units are 16-bit code units: a surrogate pair is two.
///   - Classes have the meaning of the C run-time's functions (iswalpha and so on) in the "C" locale, so `\d` also
///     takes full-width digits; `\w` is iswalnum or `_`.
///   - Positions and lengths count code units, in streams too: a match with start s lies from byte 2 * s on, or from
///     2 * s + 1 on where the stream's position was odd at the call. An odd byte at the end of the data is not text.
class TAM_API Tam_wregular_expression {
public:
    /// As there.
    static constexpr unsigned int MAXIMUM_REPEAT = Tam_regular_expression::MAXIMUM_REPEAT;
    static constexpr unsigned int MAXIMUM_STATES = Tam_regular_expression::MAXIMUM_STATES;
    static constexpr unsigned int MAXIMUM_CACHE_BYTES = Tam_regular_expression::MAXIMUM_CACHE_BYTES;
    static constexpr unsigned int MAXIMUM_CACHES = Tam_regular_expression::MAXIMUM_CACHES;
    static constexpr unsigned int STREAM_BLOCK = Tam_regular_expression::STREAM_BLOCK;

    /// Without a pattern.
    Tam_wregular_expression() noexcept;

    /// Calls compile.
    Tam_wregular_expression(const std::wstring& pattern, Tam_status& status, bool line_borders = false);

    /// Shares the compiled pattern.
    Tam_wregular_expression(const Tam_wregular_expression& other) noexcept;

    /// Takes the pattern over; other is left without one.
    Tam_wregular_expression(Tam_wregular_expression&& other) noexcept;

    /// Shares the compiled pattern.
    Tam_wregular_expression& operator=(const Tam_wregular_expression& other) noexcept;

    /// Takes the pattern over; other is left without one.
    Tam_wregular_expression& operator=(Tam_wregular_expression&& other) noexcept;

    ~Tam_wregular_expression();

    /// As Tam_regular_expression::compile.
    void compile(const std::wstring& pattern, Tam_status& status, bool line_borders = false);

    /// The pattern as it was compiled, empty when none was.
    const std::wstring& pattern() const noexcept;

    /// Whether there is a pattern.
    bool compiled() const noexcept { return m_regex != nullptr; }

    /// As Tam_regular_expression::match on a string.
    bool match(const std::wstring& text, Tam_status& status) const;

    /// As Tam_regular_expression::search on a string.
    bool search(const std::wstring& text, std::size_t from, std::size_t& start, std::size_t& length,
                Tam_status& status) const;

    /// As Tam_regular_expression::search_longest on a string.
    bool search_longest(const std::wstring& text, std::size_t from, std::size_t& start, std::size_t& length,
                        Tam_status& status) const;

    /// As Tam_regular_expression::match on a stream.
    bool match(Tam_istream& stream, Tam_status& status) const;

    /// As Tam_regular_expression::search on a stream.
    bool search(Tam_istream& stream, unsigned long long& start, unsigned long long& length, Tam_status& status) const;

    /// As Tam_regular_expression::search_longest on a stream.
    bool search_longest(Tam_istream& stream, unsigned long long& start, unsigned long long& length,
                        Tam_status& status) const;

    /// As Tam_regular_expression::grep into a vector.
    unsigned int grep(Tam_istream& stream, Tam_object_vector<std::wstring>& lines, unsigned int max,
                      Tam_status& status) const;

    /// As Tam_regular_expression::grep with a callback.
    unsigned int grep(Tam_istream& stream,
                      bool (*callback)(const std::wstring& line, unsigned long long line_number, void* argument),
                      void* argument, Tam_status& status) const;

private:
    std::shared_ptr<const detail::Regex<wchar_t>> m_regex;
};

} // namespace tam
