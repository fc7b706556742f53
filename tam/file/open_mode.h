#pragma once

namespace tam {

/// What an opening does about the existence of the file. Any other value is treated as TAM_FILE_OPEN_EXISTING.
enum Tam_file_open : unsigned int {
    TAM_FILE_OPEN_EXISTING = 0, ///< the file must exist
    TAM_FILE_OPEN_ALWAYS = 1,   ///< the file is created when it does not exist
    TAM_FILE_OPEN_EMPTY = 2,    ///< an existing file is cut to length 0, else a new one is created; needs write access
};

/// What a file is opened for. Any other value opens the file without the right to read or to write it.
enum Tam_file_access : unsigned int {
    TAM_FILE_READ = 0,       ///< GENERIC_READ
    TAM_FILE_WRITE = 1,      ///< GENERIC_WRITE
    TAM_FILE_READ_WRITE = 2, ///< GENERIC_READ and GENERIC_WRITE
    TAM_FILE_ALL = 3,        ///< GENERIC_ALL, which includes changing the file's security
};

/// How else a file is opened: one of these, or 0.
///
/// Flags do not combine. Of several the lowest one is used and the others are ignored, so 6 means what
/// TAM_FILE_NO_BUFFERING means. Bits that are not named here are ignored as well.
enum Tam_file_flags : unsigned int {
    TAM_FILE_WRITE_THROUGH = 1,    ///< writes go to the disk at once
    TAM_FILE_NO_BUFFERING = 2,     ///< no system cache; transfers are in whole sectors
    TAM_FILE_RANDOM_ACCESS = 4,    ///< a hint for the system's cache
    TAM_FILE_SEQUENTIAL_SCAN = 8,  ///< a hint for the system's cache
    TAM_FILE_DELETE_ON_CLOSE = 16, ///< the file is deleted when its last handle is closed
};

/// What others may open the file for while it is open here. Any other value is treated as TAM_FILE_SHARE_NONE.
enum Tam_file_sharing : unsigned int {
    TAM_FILE_SHARE_NONE = 0,
    TAM_FILE_SHARE_READ = 1,
    TAM_FILE_SHARE_WRITE = 2,
    TAM_FILE_SHARE_READ_WRITE = 3,
};

} // namespace tam
