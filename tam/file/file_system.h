#pragma once

#include <string>

#include <tam/detail/export.h>
#include <tam/file/path.h>
#include <tam/status/status.h>

namespace tam {

/// The volume that a path lies on: its kind and its space.
class TAM_API Tam_file_system {
public:
    /// Kinds of volumes.
    enum Type : unsigned int {
        NO_ROOT = 0, ///< the path has no root directory, or no volume is mounted there
        UNKNOWN = 1,
        FIXED = 2,
        REMOVABLE = 3,
        CD_ROM = 4,
        REMOTE = 5,
        RAM_DISK = 6,
    };

    /// The volume of path, which is simplified (Tam_path) and need not exist.
    explicit Tam_file_system(const std::wstring& path);

    /// The kind of the volume whose root directory path is, with its trailing separator. The empty path has no root.
    static Type type(const std::wstring& path);

    /// The kind of the volume at the held path's file_system_root(). A relative path gives NO_ROOT.
    Type type() const;

    /// The space of the volume that path lies on, in bytes.
    /// @param path             a directory; the empty path asks about the current drive
    /// @param total_bytes      the volume's size, as far as the caller may use it
    /// @param free_bytes       what is free on the volume
    /// @param available_bytes  what of that the caller may use
    /// @param status           the system's error with TAM_E_VOLUME_STATISTICS (0xC2000029; path) on top; the numbers
    ///                         are unchanged then
    static void stats(const std::wstring& path, unsigned long long& total_bytes, unsigned long long& free_bytes,
                      unsigned long long& available_bytes, Tam_status& status);

    /// The same for the held path's file_system_root(), which is what status names.
    void stats(unsigned long long& total_bytes, unsigned long long& free_bytes, unsigned long long& available_bytes,
               Tam_status& status) const;

private:
    Tam_path m_path;
};

} // namespace tam
