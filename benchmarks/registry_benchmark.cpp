#include <stdexcept>
#include <string>

#include <windows.h>

#include <benchmarks/benchmarks.h>
#include <tam/config/registry_key.h>
#include <tam/config/registry_value.h>
#include <tam/status/status.h>

namespace tam::benchmarks {

namespace {

constexpr int READS = 2000;
constexpr wchar_t NAME[] = L"queue directory";

void require(bool right)
{
    if (!right) {
        throw std::runtime_error("a value did not come from the registry");
    }
}

class Scratch_key {
public:
    explicit Scratch_key(const std::wstring& text)
    {
        Tam_status status;
        tam_set_reg_string_value(HKEY_CURRENT_USER, m_path, L"", NAME, text, status);
        require(status.ok());
    }
    ~Scratch_key() { ::RegDeleteKeyW(HKEY_CURRENT_USER, m_path.c_str()); }
    Scratch_key(const Scratch_key&) = delete;
    Scratch_key& operator=(const Scratch_key&) = delete;

    const std::wstring& path() const { return m_path; }

private:
    std::wstring m_path = L"Software\\tam_benchmark_" + std::to_wstring(::GetCurrentProcessId());
};

void compare_read(const char* name, std::size_t length)
{
    const std::wstring text(length, L'x');
    const Scratch_key scratch(text);
    Tam_status status;
    std::wstring value;
    std::wstring buffer(length + 1, L'\0'); // the peer knows the size
    compare({
        .name = name,
        .unit = "values",
        .amount = READS,
        .ours =
            [&] {
                for (int i = 0; i < READS; ++i) {
                    tam_get_reg_string_value(HKEY_CURRENT_USER, scratch.path(), L"", NAME, value, status);
                    require(value.size() == length);
                }
                consume(value.data());
            },
        .peer_name = "RegOpenKeyExW, ...Query, Close",
        .peer =
            [&] {
                for (int i = 0; i < READS; ++i) {
                    HKEY key = nullptr;
                    DWORD type = REG_NONE;
                    DWORD size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
                    require(::RegOpenKeyExW(HKEY_CURRENT_USER, scratch.path().c_str(), 0, KEY_QUERY_VALUE, &key) == 0);
                    require(::RegQueryValueExW(key, NAME, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()),
                                               &size) == 0);
                    ::RegCloseKey(key);
                    require(type == REG_SZ && size == (length + 1) * sizeof(wchar_t));
                }
                consume(buffer.data());
            },
        .goal = ">= 0.91",
    });
}

} // namespace

void run_registry_benchmarks()
{
    compare_read("registry/read_string/30_chars", 30);
    compare_read("registry/read_string/500_chars", 500);
}

} // namespace tam::benchmarks
