#include <benchmarks/scratch_file.h>

#include <stdexcept>

#include <windows.h>

namespace tam::benchmarks {

Scratch_file::Scratch_file(const std::wstring& name, const std::string& bytes)
{
    wchar_t folder[MAX_PATH];
    ::GetTempPathW(MAX_PATH, folder);
    m_path = std::wstring(folder) + L"tam_benchmark_" + std::to_wstring(::GetCurrentProcessId()) + L"_" + name;
    const HANDLE file =
        ::CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    const BOOL done = ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
    if (!done || written != bytes.size()) {
        throw std::runtime_error("the benchmark's file could not be written");
    }
}

Scratch_file::~Scratch_file()
{
    ::DeleteFileW(m_path.c_str());
}

std::string utf16_bytes(const std::wstring& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

} // namespace tam::benchmarks
