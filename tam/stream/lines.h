#pragma once

#include <tam/detail/export.h>
#include <tam/stream/istream.h>

namespace tam {

/// Moves the stream past count 8-bit lines. Clears the status first.
///
/// A line is read in pieces of at most 2048 bytes, and a long line counts once. A last line without a line end is not
/// counted: what follows it is the end of the data. A line of exactly 2049 bytes counts twice, for the reason that
/// Tam_istream gives.
/// @param status  TAM_E_END_OF_DATA (0xC2000019): there were fewer lines; or another failure of readln
TAM_API void tam_skip_lines(Tam_istream& stream, unsigned int count, Tam_status& status);

/// The number of 8-bit lines in the stream, from position 0 on, as tam_skip_lines counts them. Clears the status first;
/// the stream ends up at the end of its data.
/// @param status  a failure of readln other than the end of the data; the result is then the lines before it
TAM_API unsigned int tam_count_lines(Tam_istream& stream, Tam_status& status);

} // namespace tam
