#pragma once

#include <tam/detail/export.h>
#include <tam/stream/istream.h>
#include <tam/stream/ostream.h>

namespace tam {

/// Copies what remains in a stream to another one, in pieces of at most 16384 bytes. Clears the status first.
///
/// What was copied before a failure stays, and both streams stand behind what they read and wrote.
/// @param status  a failure of out's write; or of in's read, except the end of its data. TAM_E_END_OF_DATA (0xC2000019)
///                is cleared at the end, whichever stream it came from: a raw memory buffer that was full already takes
///                nothing and yet the copy reports no failure
TAM_API void tam_copy_stream(Tam_istream& in, Tam_ostream& out, Tam_status& status);

} // namespace tam
