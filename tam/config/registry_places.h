#pragma once

/// @file
/// Registry values in the two places where services keep theirs, both below HKEY_LOCAL_MACHINE:
///
///     software values     SOFTWARE\a\b
///     service parameters  SYSTEM\CurrentControlSet\Services\service\Parameters
///
/// An empty a or b leaves its part out. Each function does what the function of <tam/config/registry_value.h> without
/// `sw` and `parameter` in its name does there, with the same status codes; "path" in them is the whole path above.

#include <string>

#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

/// As tam_get_reg_string_value().
TAM_API void tam_get_reg_sw_string_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                         std::wstring& value, Tam_status& status);

/// As tam_set_reg_string_value().
TAM_API void tam_set_reg_sw_string_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                         const std::wstring& value, Tam_status& status);

/// As tam_get_reg_uint_value().
TAM_API void tam_get_reg_sw_uint_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                       unsigned int& value, Tam_status& status);

/// As tam_set_reg_uint_value().
TAM_API void tam_set_reg_sw_uint_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                       unsigned int value, Tam_status& status);

/// As tam_remove_reg_value().
TAM_API void tam_remove_reg_sw_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                     Tam_status& status);

/// As tam_get_reg_string_value().
TAM_API void tam_get_reg_string_parameter(const std::wstring& service, const std::wstring& name, std::wstring& value,
                                          Tam_status& status);

/// As tam_set_reg_string_value().
TAM_API void tam_set_reg_string_parameter(const std::wstring& service, const std::wstring& name,
                                          const std::wstring& value, Tam_status& status);

/// As tam_get_reg_uint_value().
TAM_API void tam_get_reg_uint_parameter(const std::wstring& service, const std::wstring& name, unsigned int& value,
                                        Tam_status& status);

/// As tam_set_reg_uint_value().
TAM_API void tam_set_reg_uint_parameter(const std::wstring& service, const std::wstring& name, unsigned int value,
                                        Tam_status& status);

/// As tam_remove_reg_value().
TAM_API void tam_remove_reg_parameter(const std::wstring& service, const std::wstring& name, Tam_status& status);

} // namespace tam
