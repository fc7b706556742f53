#pragma once

#include <string>

#include <tam/detail/regex_tree.h>

namespace tam::detail {

struct Regex_fault {
    unsigned int position = 0;
    const char* reason = nullptr; // null: there is none
};

// Makes a tree of a pattern by the syntax that Tam_regular_expression documents. Unit is char or wchar_t.
template <class Unit>
Regex_fault parse_regex(const std::basic_string<Unit>& pattern, Regex_tree& tree);

extern template Regex_fault parse_regex(const std::string&, Regex_tree&);
extern template Regex_fault parse_regex(const std::wstring&, Regex_tree&);

} // namespace tam::detail
