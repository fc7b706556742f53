#pragma once

#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>

namespace tam {

/// Splits a list of directories, such as a search path, at its semicolons, and replaces the contents of directories by
/// the pieces. Empty ones are left out.
///
/// Semicolons between double quotes do not split. A piece that begins with a double quote is decoded by tam_unquote():
/// it has to be written as tam_quote() writes it, with each backslash doubled (`"C:\\tools;old"`). list may be an element of
/// directories.
TAM_API void tam_parse_path(const std::wstring& list, Tam_object_vector<std::wstring>& directories);

/// Finds the files with an extension in each of the directories in turn, and replaces the contents of files by their
/// paths (Tam_path of directory and name). Directories with such a name are left out, and a directory that cannot be
/// searched has no files.
///
/// The pattern searched for is "*." and the extension, or "*" for an empty one; see Tam_directory_iterator for what
/// matches. directories may be files itself, and list or extension an element of it.
TAM_API void tam_find_files(const Tam_object_vector<std::wstring>& directories, const std::wstring& extension,
                            Tam_object_vector<std::wstring>& files);

/// The same for a list as tam_parse_path() takes it.
TAM_API void tam_find_files(const std::wstring& list, const std::wstring& extension,
                            Tam_object_vector<std::wstring>& files);

} // namespace tam
