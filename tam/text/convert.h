#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

/// Makes out the wide form of in, as the C run-time's mbstowcs converts in its current locale (in the "C" locale a byte
/// becomes the character of the same value).
///
/// out always gets exactly in.size() units. Where the conversion gives fewer, because of multi-byte characters, a NUL
/// inside in or bytes that are no text, the rest is 0. A failure is not reported, on purpose.
TAM_API void tam_stow(const std::string& in, std::wstring& out);
TAM_API std::wstring tam_stow(const std::string& in);

/// Makes out the narrow form of in, as the C run-time's wcstombs converts in its current locale.
///
/// out always gets exactly in.size() bytes. What takes more, because of characters of several bytes, is cut off; where
/// the conversion gives fewer, because of a NUL inside in or a character that the locale lacks, the rest is 0. A failure
/// is not reported, on purpose.
TAM_API void tam_wtos(const std::wstring& in, std::string& out);
TAM_API std::string tam_wtos(const std::wstring& in);

} // namespace tam
