#include <string>

#include <windows.h>

#include <tam/file/directory.h>

// Writes the temporary directory, as asked for twice, to standard output: UTF-16, each time with a terminating null.
int main()
{
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    for (int time = 0; time < 2; ++time) {
        const std::wstring& directory = tam::Tam_directory::temp_directory();
        DWORD written = 0;
        const DWORD size_bytes = static_cast<DWORD>((directory.size() + 1) * sizeof(wchar_t));
        if (!::WriteFile(output, directory.c_str(), size_bytes, &written, nullptr) || written != size_bytes) {
            return 1;
        }
        ::SetEnvironmentVariableW(L"TMP", L"C:\\changed");
    }
    return 0;
}
