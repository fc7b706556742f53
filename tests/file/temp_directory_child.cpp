#include <cstdio>
#include <string>

#include <windows.h>

#include <tam/file/directory.h>

// temp_directory_child FILE: writes the temporary directory, as asked for twice, into the file: UTF-16, each time with a
// terminating null.
int wmain(int, wchar_t** argv)
{
    std::FILE* const file = ::_wfopen(argv[1], L"wb");
    for (int time = 0; time < 2; ++time) {
        const std::wstring& directory = tam::Tam_directory::temp_directory();
        std::fwrite(directory.c_str(), sizeof(wchar_t), directory.size() + 1, file);
        ::SetEnvironmentVariableW(L"TMP", L"C:\\changed");
    }
    return std::fclose(file);
}
