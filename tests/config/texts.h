#pragma once

#include <string>
#include <vector>

#include <tam/container/object_vector.h>

namespace tam::test {

/// Lists as the library takes and gives them, from and to what tests compare.
inline Tam_object_vector<std::wstring> as_list(const std::vector<std::wstring>& texts)
{
    Tam_object_vector<std::wstring> list;
    for (const std::wstring& text : texts) {
        list.push_back(text);
    }
    return list;
}

inline std::vector<std::wstring> as_vector(const Tam_object_vector<std::wstring>& list)
{
    return {list.begin(), list.end()};
}

} // namespace tam::test
