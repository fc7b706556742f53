#include <tests/support/test.h>

#include <tests/support/registry_branch.h>

using namespace tam;
using namespace std::string_literals;
using test::bytes_of;
using test::chain;
using test::Registry_branch;

namespace {

constexpr wchar_t SOURCES[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application";

// The message files that are registered for an event source.
struct Source : Registry_branch {
    Source() : Registry_branch(HKEY_LOCAL_MACHINE, SOURCES) {}

    void files(const std::wstring& list) const { set(L"", L"EventMessageFile", REG_EXPAND_SZ, bytes_of(list + L'\0')); }
    std::wstring files() const
    {
        const Value value = get(L"", L"EventMessageFile");
        if (value.error != ERROR_SUCCESS) {
            return L"error " + std::to_wstring(value.error);
        }
        const std::wstring text(reinterpret_cast<const wchar_t*>(value.bytes.data()), value.bytes.size() / 2);
        return value.type == REG_EXPAND_SZ && text.ends_with(L'\0') ? text.substr(0, text.size() - 1) : L"wrong form";
    }
};

} // namespace

TEST(Event_log, source_is_opened_and_closed)
{
    Tam_status status(5);
    void* const log = tam_open_syslog(L"tam test", status);
    EXPECT_NE(log, nullptr);
    EXPECT_EQ(chain(status), L"");
    status = 5;
    tam_report_to_syslog(log, 0, Tam_status(0xC2000019), false, status);
    tam_close_syslog(log, status);
    tam_close_syslog(nullptr, status);
    EXPECT_EQ(chain(status), L"5");
}

TEST(Event_log, message_file_is_added_once)
{
    const Source source;
    Tam_status status(5);
    const auto add = [&](const std::wstring& path) {
        tam_register_resources(source.name(), path, status);
        EXPECT_EQ(chain(status), L"");
        return source.files();
    };
    EXPECT_EQ(add(L"C:\\a.dll"), L"C:\\a.dll");
    EXPECT_EQ(add(L"%X%\\b.dll"), L"C:\\a.dll;%X%\\b.dll");
    EXPECT_EQ(add(L"c:\\A.DLL"), L"C:\\a.dll;%X%\\b.dll");
    EXPECT_EQ(add(L"%x%\\b.dll"), L"C:\\a.dll;%X%\\b.dll");
    EXPECT_EQ(add(L"b.dll"), L"C:\\a.dll;%X%\\b.dll;b.dll");
    source.files(L"");
    EXPECT_EQ(add(L"p"), L";p");
    EXPECT_EQ(add(L"q"), L";p;q");
    source.files(L"p;;q;");
    EXPECT_EQ(add(L"Q"), L"p;;q;");
    EXPECT_EQ(add(L"r"), L"p;;q;;r");
    EXPECT_EQ(add(L"p;q"), L"p;;q;;r;p;q");
    // What cannot be read is replaced.
    source.files(std::wstring(511, L'x'));
    EXPECT_EQ(add(L"p"), std::wstring(511, L'x') + L";p");
    EXPECT_EQ(add(L"p"), L"p");
    source.set(L"", L"EventMessageFile", REG_SZ, bytes_of(L"q\0"s));
    EXPECT_EQ(add(L"p"), L"p");
    ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, source.path().c_str());
    EXPECT_EQ(add(L"p"), L"p");
}

TEST(Event_log, message_file_is_removed_from_the_list_alone)
{
    const Source source;
    const struct {
        const wchar_t* before;
        const wchar_t* after;
    } rows[] = {
        {L"P", L""},        {L"p;a;b", L"a;b"}, {L"a;P;b", L"a;b"},   {L"a;b;p", L"a;b"}, {L";a;;p;b;", L"a;b"},
        {L"p;a;P", L"a;P"}, {L"a;b", L"a;b"},   {L";a;;b", L";a;;b"}, {L"", L""},
    };
    for (const auto& row : rows) {
        source.files(row.before);
        Tam_status status(5);
        tam_deregister_resources(source.name(), L"p", status);
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(source.files(), row.after);
    }
    Tam_status status;
    source.set(L"", L"EventMessageFile", REG_SZ, bytes_of(L"p\0"s));
    tam_deregister_resources(source.name(), L"p", status);
    EXPECT_EQ(chain(status), L"C2000011(" + source.path() + L", EventMessageFile)");
    EXPECT_EQ(source.files(), L"wrong form");
    tam_deregister_resources(source.name() + L" none", L"p", status);
    EXPECT_EQ(chain(status), L"C200000B(" + source.path() + L" none) 2");
    EXPECT_FALSE(tam_reg_key_exists(HKEY_LOCAL_MACHINE, source.path() + L" none", L""));
}

TEST(Event_log, empty_names_throw_before_anything_is_touched)
{
    const Source source;
    for (const auto function : {tam_register_resources, tam_deregister_resources}) {
        Tam_status status(5);
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { function(L"", L"", status); }),
                  "Event source name is empty.");
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { function(source.name(), L"", status); }),
                  "Event resource path is empty.");
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(source.files(), L"error 2");
    }
}
