#pragma once

#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

/// Operations on directories by name.
///
/// A mask below is a path whose file name may hold wildcards; it is split as Tam_path splits it (simplified; a name
/// without a directory belongs to the current directory) and matched as Tam_directory_iterator matches. So a mask with a
/// separator at its end matches nothing. Masks such as `\\server` or `1:\a`, whose root Tam_path cannot tell, throw what
/// Tam_path::root_and_directory() throws.
///
/// Any number of threads may call these at once.
class TAM_API Tam_directory {
public:
    Tam_directory() = delete;

    /// Creates a directory in one that exists, with the access that it inherits there.
    /// @param status  unchanged on success; else the system's error with TAM_E_DIRECTORY_CREATE (0xC200002D; path) on top
    /// @throws std::invalid_argument  "Tam_directory::create - empty path."
    static void create(const std::wstring& path, Tam_status& status);

    /// Removes an empty directory.
    /// @param status  unchanged on success; else the system's error with TAM_E_DIRECTORY_REMOVE (0xC200002E; path) on top
    /// @throws std::invalid_argument  "Tam_directory::remove - empty path."
    static void remove(const std::wstring& path, Tam_status& status);

    /// Renames a directory, or moves it within a volume. One backslash at the end of either path is dropped, in the
    /// arguments of the status too.
    ///
    /// With overwrite, what has the new name is removed first: an empty directory, or anything else as
    /// Tam_file::remove() does without force. It stays removed when the renaming fails after that, so an empty directory
    /// must not be renamed onto itself.
    /// @param status  cleared first. On failure TAM_E_DIRECTORY_RENAME (0xC2000030; old path, new path) is on top of
    ///   - TAM_E_NOT_A_DIRECTORY (0xC200002C; old path)
    ///   - TAM_E_DIRECTORY_EXISTS (0xC200002F; new path)  something has that name and overwrite is false
    ///   - what remove() or Tam_file::remove() reports
    ///   - the system's error
    /// @throws std::invalid_argument  "Tam_directory::rename - empty old_dirpath.",
    ///                                "Tam_directory::rename - empty new_dirpath."
    static void rename(const std::wstring& old_dirpath, const std::wstring& new_dirpath, bool overwrite,
                       Tam_status& status);

    /// Replaces the contents of names by the names, without directory, of the files and directories that match mask; of
    /// the first max of them if there are more. Errors are not reported: they end the list.
    /// @param max  0xFFFFFFFF and 0xFFFFFFFE stand for all
    /// @throws std::invalid_argument  "Tam_directory::list - empty mask."; names is unchanged
    static void list(const std::wstring& mask, Tam_object_vector<std::wstring>& names, unsigned int max);

    /// Whether anything but "." and ".." matches mask.
    /// @throws std::invalid_argument  "Tam_directory::exist - empty mask."
    static bool exist(const std::wstring& mask);

    /// The directory for temporary files, with a separator at its end. It is determined by the first call and stays:
    /// the environment variable TMP, or else the value TMP of `.DEFAULT\Environment` below HKEY_USERS (a REG_SZ, or a
    /// REG_EXPAND_SZ, which is cut to 255 characters when it is expanded), or else `C:\`. Empty values count as none.
    static const std::wstring& temp_directory();
};

} // namespace tam
