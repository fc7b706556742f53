#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Replaces id by a short text that no other call in this process gets: the Julian day of today, the second of the
/// minute, and the number of the call, 1 for the first, in decimal with dots between: "2451180.59.1".
///
/// The middle number is 0 to 59 and not the second of the day, kept so; it is the last that makes the text unique, until
/// after 4294967295 calls. Any thread may call it.
TAM_API void tam_idgen_date_time_number(std::string& id);

} // namespace tam
