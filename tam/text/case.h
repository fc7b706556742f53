#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Replaces each character of text by its upper-case form in the C run-time's current locale, one unit at a time.
TAM_API void tam_upper(std::string& text);
TAM_API void tam_upper(std::wstring& text);

/// Replaces each character of text by its lower-case form in the C run-time's current locale, one unit at a time.
TAM_API void tam_lower(std::string& text);
TAM_API void tam_lower(std::wstring& text);

} // namespace tam
