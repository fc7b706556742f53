#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <tam/detail/failure.h>
#include <tam/detail/profile_line.h>
#include <tam/status/status.h>

// What profile reader and profile access have in common: names without regard to case, and a cursor in a section.

namespace tam::detail {

// A cheap look before the comparison of whole names: those of one file tend to differ at their end.
bool may_be_same_profile_name(std::wstring_view a, std::wstring_view b);

// Whether two names of sections, or two keys, are the same.
bool is_same_profile_name(const std::wstring& a, const std::wstring& b);

// The section in which somebody moves a cursor: the index of an entry, or their number behind the last one.
struct Current_section {
    const std::wstring* name; // null: no section is current
    const std::vector<Profile_entry>& entries;

    // False with TAM_E_NO_CURRENT_SECTION.
    bool check(Tam_status& status) const;

    // The same, and false with TAM_E_END_OF_ENTRIES when there is no entry under the cursor.
    bool check_entry(std::size_t cursor, Tam_status& status) const;

    void reset(std::size_t& cursor, Tam_status& status) const;
    void get_entry(std::size_t cursor, Profile_entry& entry, Tam_status& status) const;
    void move_to_next(std::size_t& cursor, Tam_status& status) const;
    void move_to_key(const std::wstring& key, std::size_t& cursor, Tam_status& status) const;
};

} // namespace tam::detail
