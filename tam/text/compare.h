#pragma once

/// @file
/// Comparison without regard to case, as the C run-time's _stricmp and _wcsicmp do it: both texts in lower case of the
/// current locale, unit by unit. A text ends at its first NUL: what follows one inside a string does not count.

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Whether a and b are the same but for case.
TAM_API bool tam_string_equal_nc(const std::string& a, const std::string& b);
TAM_API bool tam_string_equal_nc(const std::wstring& a, const std::wstring& b);

/// Whether a and b differ in more than case.
TAM_API bool tam_string_unequal_nc(const std::string& a, const std::string& b);
TAM_API bool tam_string_unequal_nc(const std::wstring& a, const std::wstring& b);

/// Whether a comes before b.
TAM_API bool tam_string_less_nc(const std::string& a, const std::string& b);
TAM_API bool tam_string_less_nc(const std::wstring& a, const std::wstring& b);

/// Whether a comes after b.
TAM_API bool tam_string_greater_nc(const std::string& a, const std::string& b);
TAM_API bool tam_string_greater_nc(const std::wstring& a, const std::wstring& b);

/// Whether a comes before b or is the same but for case.
TAM_API bool tam_string_less_equal_nc(const std::string& a, const std::string& b);
TAM_API bool tam_string_less_equal_nc(const std::wstring& a, const std::wstring& b);

/// Whether a comes after b or is the same but for case.
TAM_API bool tam_string_greater_equal_nc(const std::string& a, const std::string& b);
TAM_API bool tam_string_greater_equal_nc(const std::wstring& a, const std::wstring& b);

} // namespace tam
