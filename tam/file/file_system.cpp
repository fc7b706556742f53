#include <tam/file/file_system.h>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/win32.h>

namespace tam {

Tam_file_system::Tam_file_system(const std::wstring& path) : m_path(path) {}

Tam_file_system::Type Tam_file_system::type(const std::wstring& path)
{
    switch (::GetDriveTypeW(path.c_str())) {
    case DRIVE_NO_ROOT_DIR:
        return NO_ROOT;
    case DRIVE_FIXED:
        return FIXED;
    case DRIVE_REMOVABLE:
        return REMOVABLE;
    case DRIVE_CDROM:
        return CD_ROM;
    case DRIVE_REMOTE:
        return REMOTE;
    case DRIVE_RAMDISK:
        return RAM_DISK;
    default:
        return UNKNOWN;
    }
}

Tam_file_system::Type Tam_file_system::type() const
{
    return type(m_path.file_system_root());
}

void Tam_file_system::stats(const std::wstring& path, unsigned long long& total_bytes, unsigned long long& free_bytes,
                            unsigned long long& available_bytes, Tam_status& status)
{
    ULARGE_INTEGER available;
    ULARGE_INTEGER total;
    ULARGE_INTEGER free;
    const wchar_t* const directory = path.empty() ? nullptr : path.c_str();
    if (!detail::win32.get_disk_free_space_ex(directory, &available, &total, &free)) {
        detail::push_last_error(status, TAM_E_VOLUME_STATISTICS, path);
        return;
    }
    total_bytes = total.QuadPart;
    free_bytes = free.QuadPart;
    available_bytes = available.QuadPart;
}

void Tam_file_system::stats(unsigned long long& total_bytes, unsigned long long& free_bytes,
                            unsigned long long& available_bytes, Tam_status& status) const
{
    stats(m_path.file_system_root(), total_bytes, free_bytes, available_bytes, status);
}

} // namespace tam
