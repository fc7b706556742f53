// Changes a profile and dies on the way:
//
//     config_crash_child FILE commit|rollback OPERATION
//
// The process ends before the file operation of that number that could leave a trace on the disk, or in the middle of it
// if it is a write; exit code KILLED. Where there are fewer, it ends normally.

#include <cwchar>
#include <string>

#include <windows.h>

#include <tam/config/profile_access.h>
#include <tests/config/file_operations.h>

namespace {

using tam::test::File_operation;

constexpr UINT KILLED = 77;
constexpr int FAILED = 99;

unsigned long operations_to_live;

bool live(File_operation operation)
{
    if (operation != File_operation::READ && operation != File_operation::SEEK && --operations_to_live == 0) {
        ::TerminateProcess(::GetCurrentProcess(), KILLED);
    }
    return true;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 4) {
        return FAILED;
    }
    const bool rolls_back = std::wstring(argv[2]) == L"rollback";
    operations_to_live = std::wcstoul(argv[3], nullptr, 10);
    tam::Tam_status status;
    tam::Tam_profile_access profile(argv[1], tam::TAM_FILE_OPEN_EXISTING, tam::TAM_FILE_READ_WRITE, status);
    profile.create_new_section(L"New", status);
    if (rolls_back) {
        profile.commit_changes(status);
    }
    if (!status.ok()) {
        return FAILED;
    }
    const tam::test::File_operations watched(&live);
    if (rolls_back) {
        profile.rollback(status);
    } else {
        profile.commit_changes(status);
    }
    return status.ok() ? 0 : FAILED;
}
