#include <benchmarks/benchmarks.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

#include <malloc.h>

#include <benchmarks/scratch_file.h>
#include <tam/config.h>

namespace tam::benchmarks {

namespace {

constexpr int SECTIONS = 10'000;
constexpr int ENTRIES = 10;
constexpr wchar_t WANTED_SECTION[] = L"Section5000";
constexpr wchar_t WANTED_KEY[] = L"Key7";
constexpr wchar_t WANTED_VALUE[] = L"the value 7 of section 5000";
constexpr int VALUE_UNITS = 256;

std::wstring profile_text()
{
    std::wstring text = L"\xFEFF";
    for (int section = 0; section < SECTIONS; ++section) {
        const std::wstring number = std::to_wstring(section);
        text += L"[Section" + number + L"]\r\n";
        for (int entry = 0; entry < ENTRIES; ++entry) {
            const std::wstring key = std::to_wstring(entry);
            text += L"Key" + key + L"=the value " + key + L" of section " + number + L"\r\n";
        }
    }
    return text;
}

void check(const std::wstring& value)
{
    if (value != WANTED_VALUE) {
        throw std::runtime_error("the wrong value was read");
    }
}

void read_with_tam(const std::wstring& path)
{
    Tam_status status;
    Tam_profile_reader reader(path, status);
    reader.set_current_section(WANTED_SECTION, status);
    reader.move_to_key(WANTED_KEY, status);
    std::pair<std::wstring, std::wstring> entry;
    reader.get_current_entry(entry, status);
    check(entry.second);
}

void read_with_system(const std::wstring& path)
{
    // Makes the system forget a copy of the file that it may hold: a program that opens the file has none.
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, path.c_str());
    wchar_t value[VALUE_UNITS];
    ::GetPrivateProfileStringW(WANTED_SECTION, WANTED_KEY, L"", value, VALUE_UNITS, path.c_str());
    check(value);
}

class Open_file {
public:
    Open_file(const std::wstring& path, DWORD access, DWORD how)
        : m_handle(::CreateFileW(path.c_str(), access, 0, nullptr, how, 0, nullptr))
    {}
    ~Open_file() { ::CloseHandle(m_handle); }
    Open_file(const Open_file&) = delete;
    Open_file& operator=(const Open_file&) = delete;

    HANDLE get() const { return m_handle; }

private:
    HANDLE m_handle;
};

constexpr DWORD PIECE = 16384;

// What a commit comes down to: read the file, write the backup, write the file, and have the disk take both.
void rewrite_with_system(const std::wstring& path, const std::string& bytes, bool flush)
{
    std::vector<char> piece(PIECE);
    const std::wstring other = path + L".raw";
    const auto check = [](BOOL success) {
        if (!success) {
            throw std::runtime_error("a raw call failed");
        }
    };
    {
        const Open_file from(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
        const Open_file to(other, GENERIC_WRITE, CREATE_ALWAYS);
        DWORD count = 0;
        for (;;) {
            check(::ReadFile(from.get(), piece.data(), PIECE, &count, nullptr));
            if (count == 0) {
                break;
            }
            check(::WriteFile(to.get(), piece.data(), count, &count, nullptr));
        }
        check(!flush || ::FlushFileBuffers(to.get()));
        check(::SetFilePointer(from.get(), 0, nullptr, FILE_BEGIN) == 0);
        for (std::size_t done = 0; done < bytes.size(); done += count) {
            const auto wanted = static_cast<DWORD>(std::min<std::size_t>(PIECE, bytes.size() - done));
            check(::WriteFile(from.get(), bytes.data() + done, wanted, &count, nullptr));
        }
        check(::SetEndOfFile(from.get()));
        check(!flush || ::FlushFileBuffers(from.get()));
    }
    ::DeleteFileW(other.c_str());
}

void run_commit_benchmarks(const std::wstring& path)
{
    Tam_status status;
    Tam_profile_access profile(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    profile.set_current_section(WANTED_SECTION, status);
    const auto commit = [&] {
        profile.insert_entry({L"Added", L"1"}, status);
        profile.delete_entry(status);
        profile.commit_changes(status);
        if (!status.ok()) {
            throw std::runtime_error("the commit failed");
        }
    };
    commit();
    std::string bytes(Tam_file::length(path), '\0');
    DWORD count = 0;
    {
        const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr);
        ::ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        ::CloseHandle(file);
    }
    const Scratch_file raw(L"raw_profile.ini", bytes);
    compare({"profile/commit", "commits", 1, commit, "raw calls, flushed",
             [&] { rewrite_with_system(raw.path(), bytes, true); }, ">= 0.33"});
    compare({"profile/commit", "commits", 1, commit, "raw calls, not flushed",
             [&] { rewrite_with_system(raw.path(), bytes, false); }, ">= 0.33"});
    profile.close(status);
    ::DeleteFileW((path.substr(0, path.rfind(L'.')) + L".bak").c_str());
}

std::size_t bytes_in_use()
{
    const auto heap = reinterpret_cast<HANDLE>(_get_heap_handle());
    PROCESS_HEAP_ENTRY entry{};
    std::size_t bytes = 0;
    while (::HeapWalk(heap, &entry)) {
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData + entry.cbOverhead : 0U;
    }
    return bytes;
}

double bytes_per_section(const std::wstring& path)
{
    Tam_status status;
    const std::size_t before = bytes_in_use();
    const Tam_profile_reader reader(path, status);
    return static_cast<double>(bytes_in_use() - before) / SECTIONS;
}

} // namespace

void run_profile_benchmarks()
{
    const Scratch_file file(L"profile.ini", utf16_bytes(profile_text()));
    compare({"profile/open_and_read_a_key", "files", 1, [&] { read_with_tam(file.path()); }, "GetPrivateProfileStringW",
             [&] { read_with_system(file.path()); }, ">= 5"});
    report("profile/memory_per_section", bytes_per_section(file.path()), "bytes", "< 256 and the name");
    run_commit_benchmarks(file.path());
}

} // namespace tam::benchmarks
