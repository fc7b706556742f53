#pragma once

/// @file
/// White space is what the C run-time takes for it in its current locale. The wide class is larger: it has the
/// no-break space, the spaces of Unicode and its line and paragraph separators.

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Removes the white space at both ends of text.
TAM_API void tam_trim(std::string& text);
TAM_API void tam_trim(std::wstring& text);

/// Whether text is empty or nothing but white space.
TAM_API bool tam_is_blank(const std::string& text);
TAM_API bool tam_is_blank(const std::wstring& text);

} // namespace tam
