#pragma once

#include <algorithm>

#include <windows.h>

#include <tam/detail/win32.h>
#include <tests/support/swap.h>

namespace tam::test {

enum class File_operation { CREATE, READ, SEEK, WRITE, SET_END, FLUSH, MOVE, REMOVE };

/// For the length of a scope, asks before every operation on a file whether it may go on. One that may not fails as on a
/// full disk; of a write, the first half is done then. One scope at a time; static tests only.
class File_operations {
public:
    using May_go_on = bool (*)(File_operation operation);

    explicit File_operations(May_go_on may_go_on) { m_may_go_on = may_go_on; }

private:
    static bool _refuse(File_operation operation)
    {
        if (m_may_go_on(operation)) {
            return false;
        }
        ::SetLastError(ERROR_DISK_FULL);
        return true;
    }

    static HANDLE WINAPI _create(const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                                 DWORD how, DWORD flags, HANDLE like)
    {
        return _refuse(File_operation::CREATE) ? INVALID_HANDLE_VALUE
                                               : ::CreateFileW(path, access, sharing, security, how, flags, like);
    }
    static BOOL WINAPI _read(HANDLE file, void* data, DWORD count, DWORD* done, OVERLAPPED* overlapped)
    {
        return !_refuse(File_operation::READ) && ::ReadFile(file, data, count, done, overlapped);
    }
    static BOOL WINAPI _seek(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD from)
    {
        return !_refuse(File_operation::SEEK) && ::SetFilePointerEx(file, distance, position, from);
    }
    static BOOL WINAPI _write(HANDLE file, const void* data, DWORD count, DWORD* done, OVERLAPPED* overlapped)
    {
        // Half of it is there before the question: whoever is asked may not return.
        if (!::WriteFile(file, data, count / 2, done, overlapped)) {
            return FALSE;
        }
        if (_refuse(File_operation::WRITE)) {
            return FALSE;
        }
        DWORD rest = 0;
        const bool written =
            ::WriteFile(file, static_cast<const char*>(data) + count / 2, count - count / 2, &rest, overlapped);
        *done += rest;
        return written;
    }
    static BOOL WINAPI _set_end(HANDLE file) { return !_refuse(File_operation::SET_END) && ::SetEndOfFile(file); }
    static BOOL WINAPI _flush(HANDLE file) { return !_refuse(File_operation::FLUSH) && ::FlushFileBuffers(file); }
    static BOOL WINAPI _move(const wchar_t* from, const wchar_t* to)
    {
        return !_refuse(File_operation::MOVE) && ::MoveFileW(from, to);
    }
    static BOOL WINAPI _remove(const wchar_t* path) { return !_refuse(File_operation::REMOVE) && ::DeleteFileW(path); }

    static inline May_go_on m_may_go_on = nullptr;

    const Swap<decltype(detail::win32.create_file)> m_create{detail::win32.create_file, &_create};
    const Swap<decltype(detail::win32.read_file)> m_read{detail::win32.read_file, &_read};
    const Swap<decltype(detail::win32.set_file_pointer_ex)> m_seek{detail::win32.set_file_pointer_ex, &_seek};
    const Swap<decltype(detail::win32.write_file)> m_write{detail::win32.write_file, &_write};
    const Swap<decltype(detail::win32.set_end_of_file)> m_set_end{detail::win32.set_end_of_file, &_set_end};
    const Swap<decltype(detail::win32.flush_file_buffers)> m_flush{detail::win32.flush_file_buffers, &_flush};
    const Swap<decltype(detail::win32.move_file)> m_move{detail::win32.move_file, &_move};
    const Swap<decltype(detail::win32.delete_file)> m_remove{detail::win32.delete_file, &_remove};
};

} // namespace tam::test
