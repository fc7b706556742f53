#pragma once

/// @file
/// Values of registry keys, of four kinds:
///
///     kind          type           written as
///     string        REG_SZ         the text and its terminator
///     multi-string  REG_MULTI_SZ   each text with its terminator, and one terminator more
///     path          REG_EXPAND_SZ  the text and its terminator; %NAME% in it is neither expanded when it is written
///                                  nor when it is read
///     uint          REG_DWORD      4 bytes
///
/// How keys are named by root, key and subkey, what statuses hold and when they are cleared is as <tam/config/registry_key.h>
/// says; "path" is the joined path. An empty name is the key's default value. Every status is cleared first. No operation
/// throws for a failure; what a failed one would have returned is left as it was, but for the list of a multi-string,
/// which is empty then.
///
/// Reading opens the key with KEY_QUERY_VALUE. Writing and removing take KEY_SET_VALUE; writing creates the key, and
/// those above it, where they are missing. The key is closed again before the operation returns.
///
/// A text ends at its first terminator. Text that another program wrote without one, or with an odd number of bytes, is
/// read to its end, and an odd byte at the end is dropped.
///
/// Any number of threads may call these functions at once.

#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

/// Reads a string of any length.
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path)
///   - TAM_E_REG_VALUE_READ (0xC200000C; path, name)
///   - TAM_E_REG_NOT_STRING (0xC200000F; path, name), alone: the type is not REG_SZ
TAM_API void tam_get_reg_string_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                      const std::wstring& name, std::wstring& value, Tam_status& status);

/// Writes a string.
/// @param status
///   - TAM_E_REG_KEY_OPEN_WRITE (0xC200000A; path)
///   - TAM_E_REG_VALUE_WRITE (0xC200000D; path, name)
TAM_API void tam_set_reg_string_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                      const std::wstring& name, const std::wstring& value, Tam_status& status);

/// Replaces the contents of values by the texts of a multi-string of any length, up to the first empty one.
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path)
///   - TAM_E_REG_VALUE_READ (0xC200000C; path, name)
///   - TAM_E_REG_NOT_MULTI_STRING (0xC200007E; path, name), alone: the type is not REG_MULTI_SZ
TAM_API void tam_get_reg_multi_string_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                            const std::wstring& name, Tam_object_vector<std::wstring>& values,
                                            Tam_status& status);

/// Writes a multi-string. What stands behind an empty text is written too, but not read back by the function above.
/// @param status
///   - TAM_E_REG_KEY_OPEN_WRITE (0xC200000A; path)
///   - TAM_E_REG_VALUE_WRITE (0xC200000D; path, name)
TAM_API void tam_set_reg_multi_string_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                            const std::wstring& name, const Tam_object_vector<std::wstring>& values,
                                            Tam_status& status);

/// Reads a path of at most 1024 bytes, the terminator included. A longer value, whatever its type, cannot be read:
/// system error 234.
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path)
///   - TAM_E_REG_VALUE_READ (0xC200000C; path, name)
///   - TAM_E_REG_NOT_PATH (0xC2000011; path, name), alone: the type is not REG_EXPAND_SZ
TAM_API void tam_get_reg_path_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                    const std::wstring& name, std::wstring& value, Tam_status& status);

/// Writes a path of any length; one of more than 511 characters is not read back by the function above.
/// @param status
///   - TAM_E_REG_KEY_OPEN_WRITE (0xC200000A; path)
///   - TAM_E_REG_VALUE_WRITE (0xC200000D; path, name)
TAM_API void tam_set_reg_path_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                    const std::wstring& name, const std::wstring& value, Tam_status& status);

/// Reads a number: a REG_DWORD of at most 4 bytes (missing high ones are 0), or a REG_SZ of at most 64 bytes that holds
/// one as text. Longer values cannot be read: system error 234.
///
/// Text is read as the C run-time's wcstoul reads decimal numbers: white space, a sign, digits; whatever follows is
/// ignored. It gives 0 when there are no digits, 4294967295 for all that is larger, and of a negative number the two's
/// complement.
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path)
///   - TAM_E_REG_NOT_UINT (0xC2000010; path, name), alone: the type is neither REG_DWORD nor REG_SZ
///   - TAM_E_REG_VALUE_READ (0xC200000C; path, name)
TAM_API void tam_get_reg_uint_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                    const std::wstring& name, unsigned int& value, Tam_status& status);

/// Writes a number.
/// @param status
///   - TAM_E_REG_KEY_OPEN_WRITE (0xC200000A; path)
///   - TAM_E_REG_VALUE_WRITE (0xC200000D; path, name)
TAM_API void tam_set_reg_uint_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                    const std::wstring& name, unsigned int value, Tam_status& status);

/// Removes a value.
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path): the key could not be opened, though it is for writing
///   - TAM_E_REG_VALUE_DELETE (0xC2000013; path, name)
TAM_API void tam_remove_reg_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                  const std::wstring& name, Tam_status& status);

} // namespace tam
