#pragma once

#include <string>
#include <string_view>
#include <utility>

// The lines of profile files, as profile reader and profile access see them.

namespace tam::detail {

// Key and value.
using Profile_entry = std::pair<std::wstring, std::wstring>;

// A longer line is read in pieces that count as lines.
inline constexpr unsigned int PROFILE_LINE_LIMIT = 1024;

// Whether a line that begins with this unit may be a section's header.
bool may_be_profile_header(wchar_t first);

// Drops the byte-order mark of a line that has "[" behind it. If the line is a section's header then, makes it the
// section's name and returns true.
bool take_section_name(std::wstring& line);

// What a line that is no header says.
Profile_entry split_profile_line(std::wstring_view line);

// The line that split_profile_line makes the entry of, provided that key and value have no white space at their ends.
std::wstring profile_line_of(const Profile_entry& entry);

} // namespace tam::detail
