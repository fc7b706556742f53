#include <tests/support/temporary_folder.h>

#include <atomic>
#include <stdexcept>

#include <windows.h>

namespace tam::test {

namespace {

void remove_tree(const std::wstring& folder)
{
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..") {
                continue;
            }
            const std::wstring path = folder + L"\\" + name;
            ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                remove_tree(path);
            } else {
                ::DeleteFileW(path.c_str());
            }
        } while (::FindNextFileW(search, &found));
        ::FindClose(search);
    }
    ::RemoveDirectoryW(folder.c_str());
}

} // namespace

Temporary_folder::Temporary_folder()
{
    static std::atomic<unsigned int> count = 0;
    wchar_t parent[MAX_PATH];
    ::GetTempPathW(MAX_PATH, parent);
    m_path = std::wstring(parent) + L"tam_test_" + std::to_wstring(::GetCurrentProcessId()) + L"_" +
             std::to_wstring(++count);
    if (!::CreateDirectoryW(m_path.c_str(), nullptr)) {
        throw std::runtime_error("no temporary folder");
    }
}

Temporary_folder::~Temporary_folder()
{
    remove_tree(m_path);
}

std::wstring Temporary_folder::file(const std::wstring& name, const std::string& bytes) const
{
    const std::wstring path = *this / name;
    const HANDLE file =
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    const BOOL done = ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
    if (!done || written != bytes.size()) {
        throw std::runtime_error("the test's file could not be written");
    }
    return path;
}

bool Temporary_folder::exists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string Temporary_folder::bytes_of(const std::wstring& path)
{
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER size{};
    ::GetFileSizeEx(file, &size);
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    const BOOL done = ::ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    ::CloseHandle(file);
    if (!done || read != bytes.size()) {
        throw std::runtime_error("the test's file could not be read");
    }
    return bytes;
}

} // namespace tam::test
