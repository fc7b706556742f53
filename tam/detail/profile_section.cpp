#include <tam/detail/profile_section.h>

#include <algorithm>

#include <tam/detail/failure.h>
#include <tam/text/compare.h>

namespace tam::detail {

bool may_be_same_profile_name(std::wstring_view a, std::wstring_view b)
{
    constexpr wchar_t LAST_OF_ASCII = 0x7F;
    constexpr int CASE_BIT = 0x20; // where the two cases of an ASCII letter differ
    if (a.size() != b.size() || a.empty()) {
        return a.size() == b.size();
    }
    const wchar_t x = a.back();
    const wchar_t y = b.back();
    return x == y || x > LAST_OF_ASCII || y > LAST_OF_ASCII || (x ^ y) == CASE_BIT;
}

bool is_same_profile_name(const std::wstring& a, const std::wstring& b)
{
    return may_be_same_profile_name(a, b) && tam_string_equal_nc(a, b);
}

bool Current_section::check(Tam_status& status) const
{
    if (name == nullptr) {
        assign_failure(status, TAM_E_NO_CURRENT_SECTION);
        return false;
    }
    return true;
}

bool Current_section::check_entry(std::size_t cursor, Tam_status& status) const
{
    if (!check(status)) {
        return false;
    }
    if (cursor == entries.size()) {
        assign_failure(status, TAM_E_END_OF_ENTRIES, *name);
        return false;
    }
    return true;
}

void Current_section::reset(std::size_t& cursor, Tam_status& status) const
{
    if (check(status)) {
        cursor = 0;
    }
}

void Current_section::get_entry(std::size_t cursor, Profile_entry& entry, Tam_status& status) const
{
    if (check_entry(cursor, status)) {
        entry = Profile_entry(entries[cursor]); // all of it or nothing
    }
}

void Current_section::move_to_next(std::size_t& cursor, Tam_status& status) const
{
    if (check_entry(cursor, status)) {
        ++cursor;
    }
}

void Current_section::move_to_key(const std::wstring& key, std::size_t& cursor, Tam_status& status) const
{
    if (!check(status)) {
        return;
    }
    const auto has_key = [&key](const Profile_entry& entry) { return is_same_profile_name(entry.first, key); };
    const auto found = std::find_if(entries.begin(), entries.end(), has_key);
    cursor = static_cast<std::size_t>(found - entries.begin());
    check_entry(cursor, status);
}

} // namespace tam::detail
