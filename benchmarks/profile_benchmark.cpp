#include <benchmarks/benchmarks.h>

#include <stdexcept>
#include <string>
#include <utility>

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
}

} // namespace tam::benchmarks
