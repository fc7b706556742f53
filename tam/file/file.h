#pragma once

#include <string>

#include <tam/detail/export.h>
#include <tam/file/open_mode.h>
#include <tam/status/status.h>
#include <tam/stream/seek_mode.h>
#include <tam/thread/mutex.h>

namespace tam {

class Tam_security;

/// One open file: reading, writing and seeking at 64-bit positions. Static operations work on files by name.
///
/// Operations report through their status. One that says so clears it first; the others leave it alone when they
/// succeed. After a failed system call the system's error lies beneath the library's code.
///
/// A file is used by one thread at a time.
class TAM_API Tam_file {
public:
    /// A closed file.
    /// @throws Tam_sys_call_fail  "::CreateMutex"
    Tam_file();

    /// Opens the file as open() does; whether that succeeded is in status.
    /// @throws Tam_sys_call_fail  "::CreateMutex"
    Tam_file(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
             Tam_file_sharing sharing, Tam_status& status, Tam_security* security = nullptr);

    /// Closes the file.
    ~Tam_file();

    Tam_file(const Tam_file&) = delete;
    Tam_file& operator=(const Tam_file&) = delete;

    /// Opens the file named path, with the position at its start.
    ///
    /// @param flags     0 or one of Tam_file_flags; of several the lowest is used
    /// @param security  given to a file that is created; may be null, is not kept
    /// @param status    cleared first. The first of these that applies, with TAM_E_FILE_OPEN (0xC2000026; path) on top:
    ///   - TAM_E_FILE_ALREADY_OPEN (0xC200005D)           this object has a file open, and keeps it
    ///   - TAM_E_PATH_EMPTY (0xC200001D; path)
    ///   - TAM_E_NOT_A_FILE (0xC200001F; path)            the path names something other than a file
    ///   - TAM_E_FILE_NOT_FOUND (0xC200001E; path)        TAM_FILE_OPEN_EXISTING and there is no such file
    ///   - TAM_E_CREATE_NEEDS_WRITE_ACCESS (0xC2000025)   TAM_FILE_OPEN_EMPTY without an access that includes writing
    ///   - the system's error
    void open(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
              Tam_file_sharing sharing, Tam_status& status, Tam_security* security = nullptr);

    /// Closes the file. Nothing happens when none is open.
    void close();

    /// Whether a file is open.
    bool is_open() const;

    /// Moves the position by offset bytes from where mode says; a mode beyond TAM_SEEK_END counts as TAM_SEEK_CURRENT.
    /// Past the end of the file is allowed.
    /// @param status  TAM_E_FILE_NOT_OPEN (0xC2000028) or the system's error (the position would be negative, for
    ///                example; it stays where it was), with TAM_E_SEEK (0xC2000027) on top
    void seek(Tam_seek_mode mode, int offset, Tam_status& status);

    /// Moves to this position, counted from the start. Reports as the other seek() does; a position of 2^63 or more is
    /// negative to the system.
    void seek(unsigned long long position, Tam_status& status);

    /// The current position; 0 when the file is closed.
    unsigned long long tell() const;

    /// The size in bytes; 0 when the file is closed or the system does not tell.
    unsigned long long length() const;

    /// Reads up to count bytes at the position and moves past them.
    /// @param status  cleared first; on return
    ///   - TAM_E_END_OF_DATA (0xC2000019)  nothing was left to read, and count was not 0
    ///   - TAM_E_FILE_NOT_OPEN (0xC2000028) or the system's error, with TAM_E_READ (0xC200001B) on top
    /// @return the bytes read
    unsigned int read(void* destination, unsigned int count, Tam_status& status);

    /// Writes count bytes at the position and moves past what was written.
    /// @param status  TAM_E_FILE_NOT_OPEN (0xC2000028) or the system's error, with TAM_E_WRITE (0xC200001A) on top
    /// @return the bytes written
    unsigned int write(const void* source, unsigned int count, Tam_status& status);

    /// Has the system write what it holds back to the disk.
    /// @param status  TAM_E_FILE_NOT_OPEN (0xC2000028) or the system's error, with TAM_E_WRITE (0xC200001A) on top
    void flush(Tam_status& status);

    /// Makes the current position the end of the file: cuts the file, or makes it longer.
    /// @param status  the system's error, also on a closed file (an invalid handle), with TAM_E_FILE_TRUNCATE
    ///                (0xC2000063) on top
    void truncate(Tam_status& status);

    /// Associates security with the open file, so that its access list can be read and set through security. The file's
    /// own security does not change before Tam_security::set_disc_acl. security must not be used after close().
    /// @param status  cleared first; TAM_E_SECURITY_HANDLE (0xC2000075): the file is closed; else what
    ///                Tam_security::associate_with_object reports
    void add_security(Tam_security& security, Tam_status& status);

    /// Creates an empty file, or cuts an existing one to length 0. Nothing else may have it open.
    /// @param status         as open() reports
    /// @param write_through  whether the disk has it on return
    static void create_empty_file(const std::wstring& path, Tam_status& status, bool write_through);

    /// Copies a file.
    /// @param overwrite  whether an existing file to is replaced
    /// @param status     cleared first. The first of these that applies, with TAM_E_FILE_COPY (0xC2000022; from, to) on
    ///                   top:
    ///   - TAM_E_PATH_EMPTY (0xC200001D; the empty path)
    ///   - TAM_E_FILE_NOT_FOUND (0xC200001E; from)
    ///   - TAM_E_NOT_A_FILE (0xC200001F; from)      from is not a file
    ///   - TAM_E_TARGET_EXISTS (0xC2000021; to)     to is a file, and overwrite is false
    ///   - TAM_E_NOT_A_FILE (0xC200001F; from)      to is not a file; the argument is from all the same
    ///   - the system's error
    static void copy(const std::wstring& from, const std::wstring& to, bool overwrite, Tam_status& status);

    /// Renames a file, or moves it into another directory or to another drive. Nothing is ever replaced.
    /// @param status  cleared first. The first of these that applies, with TAM_E_FILE_MOVE (0xC2000023; from, to) on
    ///                top:
    ///   - TAM_E_PATH_EMPTY (0xC200001D; the empty path)
    ///   - TAM_E_FILE_NOT_FOUND (0xC200001E; from)
    ///   - TAM_E_NOT_A_FILE (0xC200001F; from)      from is not a file
    ///   - TAM_E_TARGET_EXISTS (0xC2000021; to)     to is a file or anything else
    ///   - the system's error
    static void move(const std::wstring& from, const std::wstring& to, Tam_status& status);

    /// Deletes the files whose names match: the file name of path may hold wildcards. Stops at the first failure.
    ///
    /// path is split as Tam_path splits it: simplified, and a name without a directory belongs to the current one.
    /// A directory that matches cannot be deleted and is such a failure. That nothing matches is none, nor that the
    /// directory of path does not exist.
    /// @param force   whether a file's read-only attribute is cleared before it is deleted
    /// @param status  cleared first
    ///   - TAM_E_PATH_EMPTY (0xC200001D; path)
    ///   - the system's error with TAM_E_FILE_DELETE (0xC2000024; the file) on top
    ///   - the directory cannot be searched: the system's error, TAM_E_SEARCH_START (0xC2000061) or
    ///     TAM_E_SEARCH_NEXT (0xC2000062), each with the directory, and TAM_E_FILE_DELETE (0xC2000024; path) on top
    /// @throws std::range_error, std::invalid_argument  what Tam_path::root_and_directory() throws for a path such as
    ///                                                  `\\server` or `1:\a`
    static void remove(const std::wstring& path, Tam_status& status, bool force);

    /// Makes up the name of a file that does not exist in directory, and returns its path. The file is not created.
    ///
    /// The name is a number made from the time of day. Calls of all processes take turns, by way of the named mutex
    /// "Tam_file::temp_name", and each takes a millisecond at least, so that names in a row differ; but numbers come
    /// again within seconds, so a name is safe from being given to others only once the file exists.
    /// @param extension  without the dot; may be empty
    /// @return an empty string when the mutex cannot be made
    /// @throws Tam_sys_call_fail  the wait for the mutex failed
    static std::wstring temp_name(const std::wstring& directory, const std::wstring& extension);

    /// The same in Tam_directory::temp_directory().
    static std::wstring temp_name(const std::wstring& extension);

    /// The size in bytes of the file named path; 0 when there is no such file.
    static unsigned long long length(const std::wstring& path);

private:
    Tam_mutex m_mutex; // not locked by any operation
    void* m_handle;    // INVALID_HANDLE_VALUE when closed
};

} // namespace tam
