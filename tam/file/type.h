#pragma once

#include <string>

#include <tam/detail/export.h>
#include <tam/file/open_mode.h>

namespace tam {

/// What a path names.
enum Tam_type : unsigned int {
    TAM_TYPE_NONE = 0, ///< nothing that exists
    TAM_TYPE_FILE = 1,
    TAM_TYPE_DIRECTORY = 2,
    TAM_TYPE_CHARACTER_DEVICE = 3,
    TAM_TYPE_PIPE = 4,
};

/// Tells what path names, as the C run-time's stat sees it.
///
/// Where that function does not find what the system would open (a path with a trailing separator, a wildcard or, on
/// some systems, a device), the answer is TAM_TYPE_NONE.
TAM_API Tam_type tam_type(const std::wstring& path);

/// True when the C run-time's access test grants that access to path, which may be a file or a directory.
///
/// The test looks at the read-only attribute, not at access lists: an opening can still be refused.
/// @param access  TAM_FILE_ALL tests reading and writing; any value beyond it tests existence only
TAM_API bool tam_access(const std::wstring& path, Tam_file_access access);

} // namespace tam
