#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Makes regexp the pattern whose match() accepts exactly the texts that the file wildcard accepts. It compiles
/// unless it is too large.
///
/// In a wildcard
///   - `*` stands for any run of units, the empty one too, and `?` for any one unit, line feeds included;
///   - `[...]` stands for one unit of a set, `[!...]` and `[^...]` for one unit outside it. `a-f` in it is a range, taken
///     the right way round when it is not so written; a minus at either end, a `]` that comes first, and all other
///     units, backslashes included, stand for themselves. A `[` without its `]` is a plain one;
///   - all other units stand for themselves. A backslash escapes nothing: it separates the parts of paths.
///
/// wildcard and regexp may be the same string. A wildcard that shall match without regard to case goes through
/// tam_rx_remove_case() afterwards.
TAM_API void tam_rx_wildcard_to_regexp(const std::string& wildcard, std::string& regexp);
TAM_API void tam_rx_wildcard_to_regexp(const std::wstring& wildcard, std::wstring& regexp);

/// Makes caseless the pattern that matches what pattern does without regard to case.
///
/// A letter becomes the set of itself, its lower-case and its upper-case form in the C run-time's current locale. In sets
/// these forms are added to letters and to ranges, so that `[^a-f]` no longer matches D. Whatever starts with a
/// backslash stays as it is: `\x41` goes on matching A alone, and so do a range with such an end and the names of
/// classes, `[:lower:]` among them. A pattern that is wrong stays wrong in the same way.
///
/// pattern and caseless may be the same string.
TAM_API void tam_rx_remove_case(const std::string& pattern, std::string& caseless);
TAM_API void tam_rx_remove_case(const std::wstring& pattern, std::wstring& caseless);

} // namespace tam
