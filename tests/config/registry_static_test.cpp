#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/config/texts.h>
#include <tests/support/failing_new.h>
#include <tests/support/registry_branch.h>

using namespace tam;
using namespace std::string_literals;
using detail::win32;
using test::as_list;
using test::as_vector;
using test::chain;
using test::failing;
using test::Registry_branch;
using test::Swap;

namespace {

using Names = Tam_object_vector<std::wstring>;

void* const USER = HKEY_CURRENT_USER;

// Keys as they are opened and created: path and rights.
std::wstring g_opened;

void note(wchar_t what, const wchar_t* path, REGSAM access)
{
    wchar_t rights[16];
    std::swprintf(rights, 16, L"%lx", access);
    const wchar_t* const last = std::wcsrchr(path, L'\\');
    g_opened += std::wstring(1, what) + L' ' + (last != nullptr ? last + 1 : path) + L' ' + rights + L' ';
}

LSTATUS WINAPI noting_open(HKEY root, const wchar_t* path, DWORD options, REGSAM access, HKEY* key)
{
    note(L'o', path, access);
    return ::RegOpenKeyExW(root, path, options, access, key);
}

LSTATUS WINAPI noting_create(HKEY root, const wchar_t* path, DWORD reserved, wchar_t* type, DWORD options,
                             REGSAM access, SECURITY_ATTRIBUTES* security, HKEY* key, DWORD* disposition)
{
    EXPECT_EQ(options, static_cast<DWORD>(REG_OPTION_NON_VOLATILE));
    note(L'c', path, access);
    return ::RegCreateKeyExW(root, path, reserved, type, options, access, security, key, disposition);
}

LSTATUS WINAPI no_delete_of_b(HKEY key, const wchar_t* name)
{
    return name == L"b"s ? ERROR_ACCESS_DENIED : ::RegDeleteKeyW(key, name);
}

// What queries for a value answer, one after the other.
struct Answer {
    LSTATUS result;
    DWORD type;
    std::string bytes; // beyond the buffer: only their number is told
};
std::vector<Answer> g_answers;
std::vector<DWORD> g_asked; // sizes of the buffers

LSTATUS answer(DWORD* type, BYTE* data, DWORD* size)
{
    const Answer& next = g_answers.at(g_asked.size());
    g_asked.push_back(*size);
    // Whatever is read behind the data is seen in the result.
    std::memset(data, 'X', *size);
    std::memcpy(data, next.bytes.data(), std::min<std::size_t>(*size, next.bytes.size()));
    *size = static_cast<DWORD>(next.bytes.size());
    *type = next.type;
    return next.result;
}

LSTATUS WINAPI answering_query(HKEY, const wchar_t*, DWORD*, DWORD* type, BYTE* data, DWORD* size)
{
    return answer(type, data, size);
}

LSTATUS WINAPI answering_enum(HKEY, DWORD index, wchar_t* name, DWORD* length, DWORD*, DWORD* type, BYTE* data,
                              DWORD* size)
{
    EXPECT_EQ(*length, 256U);
    if (index == 1) {
        return ERROR_NO_MORE_ITEMS;
    }
    std::wcscpy(name, L"v");
    *length = 1;
    return answer(type, data, size);
}

std::string repeated(const std::string& unit, std::size_t count)
{
    std::string bytes;
    while (count-- != 0) {
        bytes += unit;
    }
    return bytes;
}

const Registry_branch* g_vanishing;

LSTATUS WINAPI vanishing_enum(HKEY key, DWORD index, wchar_t* name, DWORD* length, DWORD* reserved, wchar_t* type,
                              DWORD* type_length, FILETIME* time)
{
    EXPECT_EQ(*length, 512U);
    if (index == 1) {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, g_vanishing->path().c_str());
    }
    return ::RegEnumKeyExW(key, index, name, length, reserved, type, type_length, time);
}

} // namespace

TEST(Registry, keys_are_opened_with_no_more_rights_than_needed)
{
    const Swap open(win32.reg_open_key_ex, &noting_open);
    const Swap create(win32.reg_create_key_ex, &noting_create);
    const Registry_branch branch;
    const std::wstring& path = branch.path();
    std::wstring text;
    unsigned int number;
    Names names;
    Tam_status status;
    const struct {
        std::function<void()> operation;
        std::wstring opened;
    } rows[] = {
        {[&] { tam_create_reg_key(USER, path, L"a", status); }, L"c a f003f "},
        {[&] { tam_close_reg_key(tam_open_reg_key(USER, path, L"a", status), status); }, L"o a f003f "},
        {[&] { EXPECT_TRUE(tam_reg_key_exists(USER, path, L"a")); }, L"o a 20019 "},
        {[&] { tam_set_reg_string_value(USER, path, L"a", L"s", L"x", status); }, L"c a 2 "},
        {[&] { tam_set_reg_uint_value(USER, path, L"a", L"u", 1, status); }, L"c a 2 "},
        {[&] { tam_get_reg_string_value(USER, path, L"a", L"s", text, status); }, L"o a 1 "},
        {[&] { tam_get_reg_uint_value(USER, path, L"a", L"u", number, status); }, L"o a 1 "},
        {[&] { tam_enum_reg_keys(USER, path, L"a", names, status); }, L"o a 8 "},
        {[&] { tam_enum_reg_value_names(USER, path, L"a", names, status); }, L"o a 9 "},
        {[&] { tam_remove_reg_value(USER, path, L"a", L"s", status); }, L"o a 2 "},
        {[&] { tam_copy_reg_key(USER, branch / L"a", USER, branch / L"b", false, status); }, L"o a 1 c b 2 "},
        {[&] { tam_copy_reg_key(USER, branch / L"a", USER, branch / L"b", true, status); }, L"o a 1 o a 8 c b 2 "},
        {[&] { tam_remove_reg_key(USER, path, L"", L"b", status); }, L"o b 8 o " + branch.name() + L" 8 "},
    };
    for (const auto& row : rows) {
        g_opened.clear();
        row.operation();
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(g_opened, row.opened);
    }
}

TEST(Registry, data_is_asked_for_until_it_fits_and_never_read_past_its_end)
{
    const Swap query(win32.reg_query_value_ex, &answering_query);
    const Registry_branch branch;
    const std::string a = "a\0"s;
    const struct {
        std::vector<Answer> answers;
        std::vector<DWORD> asked;
        std::wstring text;
        std::wstring failure;
    } rows[] = {
        {{{0, REG_SZ, ""}}, {1024}, L"", L""},
        {{{0, REG_SZ, "a"}}, {1024}, L"", L""},
        {{{0, REG_SZ, "a\0b"s}}, {1024}, L"a", L""},
        {{{0, REG_SZ, repeated(a, 512)}}, {1024}, std::wstring(512, L'a'), L""},
        {{{234, REG_SZ, repeated(a, 512) + "b"}, {0, REG_SZ, repeated(a, 512) + "b"}},
         {1024, 1025},
         std::wstring(512, L'a'),
         L""},
        {{{234, REG_SZ, repeated(a, 600)}, {234, REG_SZ, repeated(a, 700)}, {0, REG_SZ, repeated(a, 3)}},
         {1024, 1200, 1400},
         L"aaa",
         L""},
        {{{234, REG_SZ, repeated(a, 600)}, {2, REG_SZ, ""}}, {1024, 1200}, L"old", L"2"},
        // An answer that contradicts itself ends it.
        {{{234, REG_SZ, a}}, {1024}, L"old", L"234"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        g_answers = row.answers;
        g_asked.clear();
        std::wstring value = L"old";
        Tam_status status;
        tam_get_reg_string_value(USER, branch.path(), L"", L"v", value, status);
        EXPECT_EQ(chain(status), row.failure.empty() ? L"" : L"C200000C(" + branch.path() + L", v) " + row.failure);
        EXPECT_EQ(value, row.text);
        EXPECT_EQ(g_asked, row.asked);
    }

    unsigned int number = 77;
    Tam_status status;
    g_answers = {{0, REG_SZ, repeated("1\0"s, 3)}, {0, REG_DWORD, "\x05"}};
    g_asked.clear();
    for (const unsigned int expected : {111U, 5U}) {
        tam_get_reg_uint_value(USER, branch.path(), L"", L"v", number, status);
        EXPECT_EQ(number, expected);
    }
    EXPECT_EQ(g_asked, (std::vector<DWORD>{64, 64}));
}

TEST(Registry, copy_reads_a_value_that_grows_meanwhile)
{
    const Registry_branch branch;
    {
        const Swap query(win32.reg_enum_value, &answering_enum);
        g_answers = {{234, REG_BINARY, std::string(257, 'x')},
                     {234, REG_BINARY, std::string(300, 'y')},
                     {0, REG_BINARY, std::string(299, 'z')}};
        g_asked.clear();
        Tam_status status;
        tam_copy_reg_key(USER, branch.path(), USER, branch / L"to", false, status);
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(g_asked, (std::vector<DWORD>{256, 257, 300}));
    }
    EXPECT_EQ(branch.get(L"to", L"v").bytes, std::string(299, 'z'));
}

TEST(Registry, key_that_vanishes_ends_its_list_with_a_failure)
{
    const Registry_branch branch;
    branch.create(L"a");
    branch.create(L"b");
    g_vanishing = &branch;
    const Swap enumerate(win32.reg_enum_key_ex, &vanishing_enum);
    Names names;
    Tam_status status;
    tam_enum_reg_keys(USER, branch.path(), L"", names, status);
    EXPECT_EQ(chain(status), L"C200000E(" + branch.path() + L") 1018");
    EXPECT_EQ(as_vector(names), std::vector{L"a"s});
}

TEST(Registry, failing_writes_and_removals_stop_at_once_and_tell_where)
{
    const Registry_branch branch;
    branch.set(L"from", L"v", REG_SZ, "12");
    branch.create(L"from\\below");
    branch.create(L"a\\b\\c");
    branch.create(L"a\\d");
    const unsigned int handles = test::open_handles();
    const auto set = failing<0, ERROR_REGISTRY_IO_FAILED>(win32.reg_set_value_ex);
    const Swap remove(win32.reg_delete_key, &no_delete_of_b);
    Tam_status status;
    tam_set_reg_multi_string_value(USER, branch.path(), L"x", L"v", as_list({L"x"}), status);
    EXPECT_EQ(chain(status), L"C200000D(" + branch / L"x" + L", v) 1016");
    tam_copy_reg_key(USER, branch / L"from", USER, branch / L"to", true, status);
    EXPECT_EQ(chain(status), L"C200000D(" + branch / L"to" + L", v) 1016");
    EXPECT_FALSE(branch.exists(L"to\\below"));
    tam_remove_reg_key(USER, branch.path(), L"", L"a", status);
    EXPECT_EQ(chain(status), L"C2000012(" + branch / L"a" + L") 5");
    EXPECT_FALSE(branch.exists(L"a\\b\\c"));
    EXPECT_TRUE(branch.exists(L"a\\d"));
    tam_remove_reg_key(USER, branch / L"a", L"", L"b", status);
    EXPECT_EQ(chain(status), L"C2000012(" + branch / L"a" + L") 5");
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry, lack_of_memory_is_a_status_and_costs_no_handle)
{
    const Registry_branch branch;
    const std::wstring& path = branch.path();
    branch.set(L"a", L"s", REG_SZ, repeated("s\0"s, 1000));
    branch.set(L"a", L"m", REG_MULTI_SZ, repeated(repeated("m\0"s, 100) + "\0\0"s, 10));
    branch.create(L"a\\b\\c");
    const std::wstring from = branch / L"a";
    const std::wstring to = branch / L"to";
    std::wstring text;
    unsigned int number = 0;
    Names names;
    const Names texts = as_list({std::wstring(100, L't'), L"u"});
    const std::function<void(Tam_status&)> operations[] = {
        [&](Tam_status& s) { tam_create_reg_key(USER, path, L"a", s); },
        [&](Tam_status& s) {
            if (void* const key = tam_open_reg_key(USER, path, L"a", s)) {
                tam_close_reg_key(key, s);
            }
        },
        [&](Tam_status& s) { tam_connect_reg_root(L"", USER, s); },
        [&](Tam_status& s) {
            if (!tam_reg_key_exists(USER, path, L"a")) {
                s = 0xC2000001;
            }
        },
        [&](Tam_status& s) { tam_enum_reg_keys(USER, path, L"a", names, s); },
        [&](Tam_status& s) { tam_enum_reg_value_names(USER, path, L"a", names, s); },
        [&](Tam_status& s) { tam_enum_reg_keys(USER, path, L"none", names, s); },
        [&](Tam_status& s) { tam_get_reg_string_value(USER, path, L"a", L"s", text, s); },
        [&](Tam_status& s) { tam_get_reg_multi_string_value(USER, path, L"a", L"m", names, s); },
        [&](Tam_status& s) { tam_get_reg_uint_value(USER, path, L"a", L"m", number, s); },
        [&](Tam_status& s) { tam_set_reg_multi_string_value(USER, path, L"a", L"t", texts, s); },
        [&](Tam_status& s) { tam_remove_reg_value(USER, path, L"a", L"none", s); },
        [&](Tam_status& s) { tam_get_reg_sw_uint_value(path, L"", L"none", number, s); },
        [&](Tam_status& s) { tam_get_reg_uint_parameter(path, L"none", number, s); },
        [&](Tam_status& s) { tam_copy_reg_key(USER, from, USER, to, true, s); },
        [&](Tam_status& s) { tam_remove_reg_key(USER, path, L"", L"to", s); },
    };
    EXPECT_THROW(throw std::bad_alloc(), std::bad_alloc); // the run-time opens handles for a thread's first exception
    for (const auto& operation : operations) {
        SCOPED_TRACE(&operation - operations);
        const unsigned int handles = test::open_handles();
        for (unsigned int nth = 1;; ++nth) {
            ASSERT_LT(nth, 1000U);
            const long long blocks = test::live_blocks();
            bool failed = false;
            {
                Tam_status status;
                {
                    const test::Failing_new failing(nth);
                    operation(status);
                    failed = failing.failed();
                }
                EXPECT_EQ(status.value() == 0xC2000001 && !status.has_child(), failed);
            }
            Names().swap(names);
            std::wstring().swap(text);
            EXPECT_EQ(test::live_blocks(), blocks);
            if (!failed) {
                break;
            }
        }
        EXPECT_EQ(test::open_handles(), handles);
    }
}
