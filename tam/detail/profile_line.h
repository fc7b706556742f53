#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <tam/status/status.h>
#include <tam/stream/istream.h>

// The lines of profile files, as profile reader and profile access see them.

namespace tam::detail {

// Key and value.
using Profile_entry = std::pair<std::wstring, std::wstring>;

// A longer line is read in pieces that count as lines.
inline constexpr unsigned int PROFILE_LINE_LIMIT = 1024;

// Whether a line begins with U+FEFF.
bool has_byte_order_mark(std::wstring_view line);

// Reads a line of at most PROFILE_LINE_LIMIT units. False at the end of the data, and when the reading failed.
bool read_profile_line(Tam_istream& stream, std::wstring& line, Tam_status& status);

// Whether what a line reader reported means that it read a line; that the line has no end does not matter and is
// cleared.
bool was_profile_line_read(Tam_status& status);

// Whether a line that begins with this unit may be a section's header.
bool may_be_profile_header(wchar_t first);

// Drops the byte-order mark of a line that has "[" behind it. If the line is a section's header then, makes it the
// section's name and returns true.
bool take_section_name(std::wstring& line);

// What a line that is no header says.
Profile_entry split_profile_line(std::wstring_view line);

// Appends a section's header, an entry or an empty line as profile files have them, with CR LF.
//
// split_profile_line makes the same entry of its line again, unless key or value have white space at their ends, the key
// begins with ";" and has a value or a line end, or what is written looks like a header.
void append_profile_header(std::wstring& text, std::wstring_view name);
void append_profile_entry(std::wstring& text, const Profile_entry& entry);
void append_profile_blank_line(std::wstring& text);
void append_byte_order_mark(std::wstring& text);

} // namespace tam::detail
