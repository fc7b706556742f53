#include <tam/file/type.h>

#include <io.h>
#include <sys/stat.h>

namespace tam {

Tam_type tam_type(const std::wstring& path)
{
    struct _stat64 found;
    if (::_wstat64(path.c_str(), &found) != 0) {
        return TAM_TYPE_NONE;
    }
    // The kinds are looked for in this order, as bits: they are not exclusive.
    if ((found.st_mode & _S_IFDIR) != 0) {
        return TAM_TYPE_DIRECTORY;
    }
    if ((found.st_mode & _S_IFCHR) != 0) {
        return TAM_TYPE_CHARACTER_DEVICE;
    }
    return (found.st_mode & _S_IFIFO) != 0 ? TAM_TYPE_PIPE : TAM_TYPE_FILE;
}

bool tam_access(const std::wstring& path, Tam_file_access access)
{
    // _waccess names no constants for its bits.
    constexpr int EXISTS = 0;
    constexpr int WRITE = 2;
    constexpr int READ = 4;
    int mode = EXISTS;
    switch (access) {
    case TAM_FILE_READ:
        mode = READ;
        break;
    case TAM_FILE_WRITE:
        mode = WRITE;
        break;
    case TAM_FILE_READ_WRITE:
    case TAM_FILE_ALL:
        mode = READ | WRITE;
        break;
    }
    return ::_waccess(path.c_str(), mode) == 0;
}

} // namespace tam
