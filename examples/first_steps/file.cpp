// Writes a file into a directory of its own, finds it again, and tidies up.
//
// Prints:
//     report.log, 5 bytes
//     in the directory above: ..\report.log
//     tidied up

#include <iostream>
#include <string>

#include <windows.h>

#include <tam/file.h>
#include <tam/status.h>

using namespace tam;

int main()
{
    Tam_status status;
    Tam_path path(Tam_directory::temp_directory());
    path.cd(L"first steps " + std::to_wstring(GetCurrentProcessId()));
    const std::wstring folder = path;
    Tam_directory::create(folder, status);

    path.filename(L"report.log");
    Tam_file file;
    if (status.ok()) {
        file.open(path, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ, status);
    }
    if (!status.ok()) {
        return 1;
    }
    file.write("done\n", 5, status);
    file.close(); // flush() first where the disk must have it

    for (Tam_directory_iterator entry(folder, L"*.log"); !entry.end(); ++entry) {
        Tam_path found(folder, entry->name);
        std::wcout << entry->name << L", " << Tam_file::length(found) << L" bytes\n";
        found.cd(L"..");
        std::wcout << L"in the directory above: " << found.relative_to(folder).text() << L'\n';
    }

    Tam_file::remove(path, status, false);
    Tam_directory::remove(folder, status);
    std::wcout << (status.ok() ? L"tidied up\n" : L"something is left\n");
}
