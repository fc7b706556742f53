#pragma once

#include <string>

namespace tam::benchmarks {

/// A file in the temporary folder, written with these bytes and deleted at the end of the scope.
class Scratch_file {
public:
    Scratch_file(const std::wstring& name, const std::string& bytes);
    ~Scratch_file();
    Scratch_file(const Scratch_file&) = delete;
    Scratch_file& operator=(const Scratch_file&) = delete;

    const std::wstring& path() const { return m_path; }

private:
    std::wstring m_path;
};

/// Each unit of a text as two bytes, low byte first.
std::string utf16_bytes(const std::wstring& text);

} // namespace tam::benchmarks
