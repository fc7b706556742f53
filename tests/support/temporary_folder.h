#pragma once

#include <string>

namespace tam::test {

/// A new folder of the test's own; removed with everything in it at the end of the scope.
class Temporary_folder {
public:
    Temporary_folder();
    ~Temporary_folder();
    Temporary_folder(const Temporary_folder&) = delete;
    Temporary_folder& operator=(const Temporary_folder&) = delete;

    /// Without a trailing backslash.
    const std::wstring& path() const { return m_path; }

    /// The path of a file or folder of that name inside.
    std::wstring operator/(const std::wstring& name) const { return m_path + L"\\" + name; }

    /// Writes a file with exactly these bytes, by raw calls, and gives its path.
    std::wstring file(const std::wstring& name, const std::string& bytes) const;

    /// Whether there is a file or folder of that path, by raw calls.
    static bool exists(const std::wstring& path);

    /// The bytes of a file, by raw calls.
    static std::string bytes_of(const std::wstring& path);

private:
    std::wstring m_path;
};

} // namespace tam::test
