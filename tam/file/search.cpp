#include <tam/file/search.h>

#include <tam/file/directory_iterator.h>
#include <tam/file/path.h>
#include <tam/text/quote.h>
#include <tam/text/tokeniser.h>

namespace tam {

void tam_parse_path(const std::wstring& list, Tam_object_vector<std::wstring>& directories)
{
    const Tam_tokeniser tokeniser(L";", L"", L"", L"", false, false);
    tokeniser.tokenise(list, directories);
    for (std::wstring& directory : directories) {
        if (directory.front() == L'"') {
            tam_unquote(directory, directory);
        }
    }
}

void tam_find_files(const Tam_object_vector<std::wstring>& directories, const std::wstring& extension,
                    Tam_object_vector<std::wstring>& files)
{
    const Tam_path pattern(std::wstring(), L"*", extension);
    Tam_object_vector<std::wstring> found;
    for (const std::wstring& directory : directories) {
        for (Tam_directory_iterator entry(directory, pattern); !entry.end(); ++entry) {
            if (!entry->is_directory) {
                found.push_back(Tam_path(directory, entry->name));
            }
        }
    }
    files.swap(found);
}

void tam_find_files(const std::wstring& list, const std::wstring& extension, Tam_object_vector<std::wstring>& files)
{
    Tam_object_vector<std::wstring> directories;
    tam_parse_path(list, directories);
    tam_find_files(directories, extension, files);
}

} // namespace tam
