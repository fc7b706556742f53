#include <tests/support/test.h>

#include <tam/detail/win32.h>

using namespace tam;
using detail::win32;
using test::chain;
using test::Swap;

namespace {

const HANDLE LOG = reinterpret_cast<HANDLE>(std::uintptr_t{0x1234});

// Records as they are written: type, category, identifier and strings.
std::vector<std::wstring> g_records;
// By record: the error with which writing it fails, or 0.
std::vector<DWORD> g_errors;

BOOL WINAPI report(HANDLE log, WORD type, WORD category, DWORD id, void* user, WORD count, DWORD bytes,
                   const wchar_t** strings, void* data)
{
    EXPECT_EQ(log, LOG);
    EXPECT_EQ(user, nullptr);
    EXPECT_EQ(bytes, 0U);
    EXPECT_EQ(data, nullptr);
    std::wstring record = std::to_wstring(type) + L' ' + std::to_wstring(category) + L' ' + std::to_wstring(id);
    for (WORD i = 0; i < count; ++i) {
        record += std::wstring(L" [") + strings[i] + L"]";
    }
    g_records.push_back(record);
    const DWORD error = g_records.size() <= g_errors.size() ? g_errors[g_records.size() - 1] : 0;
    ::SetLastError(error);
    return error == 0;
}

// oldest, middle, newest
Tam_status chain_of_three()
{
    Tam_status status(2);
    status.push(0x8200AAAA, Tam_wstring_status_arg(L"middle"));
    status.push(0xC2000026, Tam_wstring_status_arg(L"newest"), Tam_int_status_arg(-7, false));
    return status;
}

} // namespace

TEST(Event_log, record_has_type_category_identifier_and_strings_of_the_status)
{
    const Swap guard(win32.report_event, &report);
    g_errors.clear();
    const Tam_wstring_status_arg long_text(std::wstring(100, L'x'));
    const struct {
        Tam_status status;
        unsigned int category;
        std::wstring record;
    } rows[] = {
        {Tam_status(), 0, L"4 0 0"},
        {Tam_status(0x02000001), 1, L"4 1 33554433"},
        {Tam_status(0x42000001), 0xFFFF, L"4 65535 1107296257"},
        {Tam_status(0x82000001), 0x10000, L"2 0 2181038081"},
        {Tam_status(0xC2000001), 0x12345, L"1 9029 3254779905"},
        {Tam_status(5), 0, L"1 0 5"},
        {Tam_status(0x12000001), 0, L"1 0 301989889"},
        {Tam_status(5, Tam_wstring_status_arg(L""), Tam_null_status_arg()), 0, L"1 0 5 [] []"},
        {Tam_status(5, Tam_wstring_status_arg(L"1"), long_text, Tam_uint_status_arg(3, false),
                    Tam_int_status_arg(-4, false), Tam_wstring_status_arg(L"5"), Tam_wstring_status_arg(L"6"),
                    Tam_wstring_status_arg(L"7"), Tam_bool_status_arg(true)),
         0, L"1 0 5 [1] [" + long_text.value() + L"] [3] [-4] [5] [6] [7] [True]"},
    };
    for (const auto& row : rows) {
        g_records.clear();
        Tam_status status;
        tam_report_to_syslog(LOG, row.category, row.status, true, status);
        EXPECT_EQ(g_records, std::vector{row.record});
        EXPECT_EQ(chain(status), L"");
    }
}

TEST(Event_log, chain_is_written_oldest_first_and_its_last_failure_survives)
{
    const Swap guard(win32.report_event, &report);
    const std::wstring oldest = L"1 3 2";
    const std::wstring middle = L"2 3 2181081770 [middle]";
    const std::wstring newest = L"1 3 3254779942 [newest] [-7]";
    const struct {
        std::vector<DWORD> errors;
        const wchar_t* from_clear;
        const wchar_t* from_warning; // which is ok
        const wchar_t* from_error;
    } rows[] = {
        {{0, 0, 0}, L"", L"82000001", L"5"},
        {{11, 0, 0}, L"C2000009 11", L"C2000009 11", L"5"},
        {{0, 12, 0}, L"C2000009 12", L"C2000009 12", L"5"},
        {{11, 12, 0}, L"C2000009 12", L"C2000009 12", L"5"},
        {{0, 0, 13}, L"C2000009 13", L"C2000009 13", L"C2000009 13"},
        {{11, 12, 13}, L"C2000009 13", L"C2000009 13", L"C2000009 13"},
    };
    for (const auto& row : rows) {
        const struct {
            unsigned int before;
            const wchar_t* after;
        } statuses[] = {{0, row.from_clear}, {0x82000001, row.from_warning}, {5, row.from_error}};
        for (const auto& [before, after] : statuses) {
            g_records.clear();
            g_errors = row.errors;
            Tam_status status(before);
            tam_report_to_syslog(LOG, 3, chain_of_three(), true, status);
            EXPECT_EQ(g_records, (std::vector{oldest, middle, newest}));
            EXPECT_EQ(chain(status), after);
        }
    }

    g_records.clear();
    g_errors = {14};
    Tam_status status = chain_of_three();
    tam_report_to_syslog(LOG, 3, status, false, status);
    EXPECT_EQ(g_records, std::vector{newest});
    EXPECT_EQ(chain(status), L"C2000009 14");
}

TEST(Event_log, sources_that_cannot_be_opened_or_closed_are_reported)
{
    const Swap open(
        win32.register_event_source, +[](const wchar_t* server, const wchar_t* source) WINAPI -> HANDLE {
            EXPECT_EQ(server, nullptr);
            ::SetLastError(source == std::wstring(L"the source") ? ERROR_ACCESS_DENIED : ERROR_SUCCESS);
            return nullptr;
        });
    const auto close = tam::test::failing<ERROR_INVALID_HANDLE>(win32.deregister_event_source);
    Tam_status status(99);
    EXPECT_EQ(tam_open_syslog(L"the source", status), nullptr);
    EXPECT_EQ(chain(status), L"C2000007(the source) 5");
    tam_close_syslog(nullptr, status);
    EXPECT_EQ(chain(status), L"C2000007(the source) 5");
    tam_close_syslog(LOG, status);
    EXPECT_EQ(chain(status), L"C2000008 6");
}
