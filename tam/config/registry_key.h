#pragma once

/// @file
/// Keys of the registry: open, create, list, copy and remove them.
///
/// A key is a handle of the platform, passed as void*: an HKEY, such as one of the roots HKEY_LOCAL_MACHINE,
/// HKEY_CURRENT_USER ... (which convert by themselves), or what an operation below returns. Handles stay the caller's.
///
/// Where a key is named by `key` and `subkey`, its path below the handle is the two with a backslash between them; an
/// empty subkey adds nothing, an empty key with a subkey gives a path that begins with a backslash, which the platform
/// refuses. Both empty name the handle's own key. In the lists of status codes below, "path" is that joined path. Names
/// end at their first NUL. A path longer than 32766 characters fails with the system error 206.
///
/// No operation throws for a failure: each reports it in its status, which it clears first unless it says otherwise.
/// Where memory runs out, the status is TAM_E_OUT_OF_MEMORY (0xC2000001) alone. "Below" a code of the library lies the
/// error that the platform's call returned, as Tam_status::child(), unless the code is said to stand alone.
///
/// Any number of threads may call these functions at once.

#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

class Tam_security;

/// Connects to the registry of a machine.
///
/// @param machine  the machine's name; empty for this one
/// @param root     HKEY_LOCAL_MACHINE or HKEY_USERS
/// @return the machine's root, to be closed with tam_disconnect_reg_root(); null on failure
/// @param status  on failure TAM_E_REG_CONNECT (0xC2000015; machine), below it the system's error or, for another root,
///                TAM_E_REG_ROOT_NOT_REMOTE (0xC2000014)
TAM_API void* tam_connect_reg_root(const std::wstring& machine, void* root, Tam_status& status);

/// Closes what tam_connect_reg_root() returned.
/// @param status  TAM_E_REG_KEY_CLOSE (0xC200006E), alone
TAM_API void tam_disconnect_reg_root(void* key, Tam_status& status);

/// Creates a key, and those above it that are missing. A key that exists is left as it is; but with less than all rights
/// (KEY_ALL_ACCESS) to it this fails. Nothing stays open.
/// @param status  TAM_E_REG_KEY_CREATE (0xC200006C; path)
TAM_API void tam_create_reg_key(void* root, const std::wstring& key, const std::wstring& subkey, Tam_status& status);

/// Opens a key with all rights (KEY_ALL_ACCESS).
/// @return the key, to be closed with tam_close_reg_key(); null on failure
/// @param status  not cleared: unchanged on success, else TAM_E_REG_KEY_OPEN (0xC200006D; key, without the subkey),
///                alone: the system's error is not kept
TAM_API void* tam_open_reg_key(void* root, const std::wstring& key, const std::wstring& subkey, Tam_status& status);

/// Closes a key.
/// @param status  not cleared: unchanged on success, else TAM_E_REG_KEY_CLOSE (0xC200006E), alone
TAM_API void tam_close_reg_key(void* key, Tam_status& status);

/// Whether the key can be opened for reading (KEY_READ): false also for a key that this user may not read, and where
/// memory runs out.
[[nodiscard]] TAM_API bool tam_reg_key_exists(void* root, const std::wstring& key, const std::wstring& subkey);

/// Makes security the editor of the access to a key: see Tam_security::associate_with_object(). The key must be open
/// whenever the access is read or set.
/// @param status  what the association reports: TAM_E_SECURITY_HANDLE (0xC2000075), TAM_E_ALREADY_ASSOCIATED
///                (0xC2000078)
TAM_API void tam_reg_add_security(void* key, Tam_security& security, Tam_status& status);

/// Replaces the contents of names by the names of the keys directly below a key, in the platform's order.
///
/// On failure names holds what was read so far. A key that goes away meanwhile is such a failure (system error 1018).
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path)
///   - TAM_E_REG_ENUMERATE (0xC200000E; path)
TAM_API void tam_enum_reg_keys(void* root, const std::wstring& key, const std::wstring& subkey,
                               Tam_object_vector<std::wstring>& names, Tam_status& status);

/// The same with the names of a key's values; that of the default value is empty.
///
/// Names of more than 511 characters cannot be listed: the first one ends the list with system error 234.
TAM_API void tam_enum_reg_value_names(void* root, const std::wstring& key, const std::wstring& subkey,
                                      Tam_object_vector<std::wstring>& names, Tam_status& status);

/// Removes the key of that name below the path, with everything below it: the deepest keys first, those beside each
/// other in the order in which they are listed. The first failure ends it; what was removed until then stays removed.
///
/// The key to remove is found by the path, a backslash and the name, so with key and subkey both empty nothing is
/// found. An empty name means the key of the path itself.
/// @param status
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; path of the key that could not be opened)
///   - TAM_E_REG_ENUMERATE (0xC200000E; path of the key whose subkeys could not be listed)
///   - TAM_E_REG_KEY_DELETE (0xC2000012; path of the key above the one that could not be deleted)
TAM_API void tam_remove_reg_key(void* root, const std::wstring& key, const std::wstring& subkey,
                                const std::wstring& name, Tam_status& status);

/// Copies the values of a key, with their types and bytes as they are, into another one, which is created when missing.
/// Values there that the source does not have are kept. With recursive, the keys below are copied likewise, each with
/// its values before those below it. The first failure ends it; what was copied until then stays.
///
/// An empty path means the key of the handle. The destination may be the source or lie below it: what the copy itself
/// creates is not copied again.
///
/// Values whose names have more than 255 characters cannot be copied: the first one fails with system error 234.
/// @param status  the paths are those of the keys at which it failed
///   - TAM_E_REG_KEY_OPEN_READ (0xC200000B; source path)
///   - TAM_E_REG_KEY_OPEN_WRITE (0xC200000A; destination path)
///   - TAM_E_REG_VALUE_WRITE (0xC200000D; destination path, name)
///   - TAM_E_REG_ENUMERATE (0xC200000E; source path)
TAM_API void tam_copy_reg_key(void* src_root, const std::wstring& src_path, void* dst_root,
                              const std::wstring& dst_path, bool recursive, Tam_status& status);

} // namespace tam
