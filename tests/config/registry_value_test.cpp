#include <tests/support/test.h>

#include <tests/config/texts.h>
#include <tests/support/registry_branch.h>

using namespace tam;
using namespace std::string_literals;
using test::as_list;
using test::as_vector;
using test::bytes_of;
using test::chain;
using test::Registry_branch;

namespace {

using Value = Registry_branch::Value;

void* const USER = HKEY_CURRENT_USER;

std::string number_bytes(DWORD number)
{
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

// What one of the reading functions makes of a stored value.
template <class Result, class Function>
std::wstring failure_of(Function function, const Registry_branch& branch, Result& result,
                        const std::wstring& name = L"v")
{
    Tam_status status(5);
    function(USER, branch.path(), L"k", name, result, status);
    return chain(status);
}

} // namespace

TEST(Registry_value, is_stored_in_the_documented_form_in_a_key_that_is_created)
{
    const Registry_branch branch;
    const unsigned int handles = test::open_handles();
    Tam_status status(5);
    tam_set_reg_string_value(USER, branch.path(), L"a\\b", L"s", L"text", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(branch.get(L"a\\b", L"s"), (Value{0, REG_SZ, bytes_of(L"text\0"s)}));
    tam_set_reg_string_value(USER, branch / L"a", L"b", L"", L"", status);
    EXPECT_EQ(branch.get(L"a\\b", L""), (Value{0, REG_SZ, bytes_of(L"\0"s)}));
    tam_set_reg_path_value(USER, branch / L"a\\b", L"", L"p", L"%TMP%\\x", status);
    EXPECT_EQ(branch.get(L"a\\b", L"p"), (Value{0, REG_EXPAND_SZ, bytes_of(L"%TMP%\\x\0"s)}));
    tam_set_reg_multi_string_value(USER, branch.path(), L"a\\b", L"m", as_list({L"one", L"", L"two"}), status);
    EXPECT_EQ(branch.get(L"a\\b", L"m"), (Value{0, REG_MULTI_SZ, bytes_of(L"one\0\0two\0\0"s)}));
    tam_set_reg_multi_string_value(USER, branch.path(), L"a\\b", L"e", {}, status);
    EXPECT_EQ(branch.get(L"a\\b", L"e"), (Value{0, REG_MULTI_SZ, bytes_of(L"\0"s)}));
    tam_set_reg_uint_value(USER, branch.path(), L"a\\b", L"u", 0xFEDCBA98, status);
    EXPECT_EQ(branch.get(L"a\\b", L"u"), (Value{0, REG_DWORD, "\x98\xBA\xDC\xFE"s}));
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry_value, text_of_any_size_and_end_is_read_as_far_as_it_goes)
{
    const Registry_branch branch;
    for (const std::size_t size : {0, 1, 2, 3, 1022, 1023, 1024, 1025, 1026, 1027, 4096, 200001}) {
        const std::wstring units((size + 1) / 2, L'x');
        const std::string bare = bytes_of(units).substr(0, size);
        const std::wstring text(size / 2, L'x');
        for (const bool terminated : {false, true}) {
            SCOPED_TRACE(std::to_string(size) + (terminated ? " and a terminator" : ""));
            const std::string bytes = bare + (terminated ? "\0\0"s : ""s);
            // Behind an odd byte, the first byte of a terminator belongs to a unit.
            const std::wstring expected = terminated && size % 2 != 0 ? text + L'x' : text;
            const std::wstring path_expected = bytes.size() <= 1024 ? expected : L"old";
            std::wstring value = L"old";
            branch.set(L"k", L"v", REG_SZ, bytes);
            EXPECT_EQ(failure_of(tam_get_reg_string_value, branch, value), L"");
            EXPECT_EQ(value, expected);

            value = L"old";
            branch.set(L"k", L"v", REG_EXPAND_SZ, bytes);
            EXPECT_EQ(failure_of(tam_get_reg_path_value, branch, value),
                      bytes.size() <= 1024 ? L"" : L"C200000C(" + branch / L"k" + L", v) 234");
            EXPECT_EQ(value, path_expected);

            auto values = as_list({L"old"});
            branch.set(L"k", L"v", REG_MULTI_SZ, bytes);
            EXPECT_EQ(failure_of(tam_get_reg_multi_string_value, branch, values), L"");
            EXPECT_EQ(as_vector(values),
                      expected.empty() ? std::vector<std::wstring>() : std::vector<std::wstring>{expected});
        }
    }
}

TEST(Registry_value, text_ends_at_its_first_terminator_and_a_list_at_its_first_empty_text)
{
    const Registry_branch branch;
    std::wstring value;
    branch.set(L"k", L"v", REG_SZ, bytes_of(L"ab\0cd\0"s));
    EXPECT_EQ(failure_of(tam_get_reg_string_value, branch, value), L"");
    EXPECT_EQ(value, L"ab");

    const struct {
        std::wstring units;
        std::vector<std::wstring> texts;
    } rows[] = {
        {L"a\0bc\0\0"s, {L"a", L"bc"}},
        {L"a\0bc\0"s, {L"a", L"bc"}},
        {L"a\0bc"s, {L"a", L"bc"}},
        {L"a\0\0bc\0\0"s, {L"a"}},
        {L"\0a\0\0"s, {}},
        {L"\0"s, {}},
        {L""s, {}},
    };
    for (const auto& row : rows) {
        auto values = as_list({L"old", L"older"});
        branch.set(L"k", L"v", REG_MULTI_SZ, bytes_of(row.units));
        EXPECT_EQ(failure_of(tam_get_reg_multi_string_value, branch, values), L"");
        EXPECT_EQ(as_vector(values), row.texts);
    }
}

TEST(Registry_value, number_is_read_from_four_bytes_or_from_text)
{
    const Registry_branch branch;
    const std::wstring too_long = L"C200000C(" + branch / L"k" + L", v) 234";
    const std::wstring wrong_type = L"C2000010(" + branch / L"k" + L", v)";
    const struct {
        DWORD type;
        std::string bytes;
        unsigned int number;
        std::wstring failure;
    } rows[] = {
        {REG_DWORD, number_bytes(0xFFFFFFFF), 0xFFFFFFFF, L""},
        {REG_DWORD, "\x01\x02"s, 0x0201, L""},
        {REG_DWORD, ""s, 0, L""},
        {REG_DWORD, "12345"s, 77, too_long},
        {REG_DWORD, std::string(100, 'x'), 77, too_long},
        {REG_SZ, bytes_of(L"42\0"s), 42, L""},
        {REG_SZ, bytes_of(L"42"s), 42, L""},
        {REG_SZ, bytes_of(L"42"s) + "1", 42, L""},
        {REG_SZ, bytes_of(L" +7x\0"s), 7, L""},
        {REG_SZ, bytes_of(L"-1\0"s), 0xFFFFFFFF, L""},
        {REG_SZ, bytes_of(L"3000000000\0"s), 3000000000U, L""},
        {REG_SZ, bytes_of(L"99999999999\0"s), 0xFFFFFFFF, L""},
        {REG_SZ, bytes_of(L"abc\0"s), 0, L""},
        {REG_SZ, ""s, 0, L""},
        {REG_SZ, bytes_of(std::wstring(31, L'0') + L"5"), 5, L""},
        {REG_SZ, bytes_of(std::wstring(31, L'0') + L"5\0"s), 77, too_long},
        {REG_BINARY, "1234"s, 77, wrong_type},
        {REG_BINARY, std::string(100, 'x'), 77, wrong_type},
        {REG_EXPAND_SZ, bytes_of(L"42\0"s), 77, wrong_type},
        {REG_QWORD, "12345678"s, 77, wrong_type},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(&row - rows));
        unsigned int value = 77;
        branch.set(L"k", L"v", row.type, row.bytes);
        EXPECT_EQ(failure_of(tam_get_reg_uint_value, branch, value), row.failure);
        EXPECT_EQ(value, row.number);
    }
}

TEST(Registry_value, failures_name_path_and_value_and_leave_the_result_alone)
{
    const Registry_branch branch;
    const std::wstring path = branch / L"k";
    const unsigned int handles = test::open_handles();
    const auto expect_all = [&](const std::wstring& text, const std::wstring& multi, const std::wstring& expand,
                                const std::wstring& number) {
        std::wstring value = L"old";
        unsigned int old_number = 77;
        auto values = as_list({L"v", path}); // may own the arguments
        EXPECT_EQ(failure_of(tam_get_reg_string_value, branch, value), text);
        EXPECT_EQ(failure_of(tam_get_reg_multi_string_value, branch, values, values.at(0)), multi);
        EXPECT_EQ(failure_of(tam_get_reg_path_value, branch, value), expand);
        EXPECT_EQ(failure_of(tam_get_reg_uint_value, branch, old_number), number);
        EXPECT_EQ(value, L"old");
        EXPECT_EQ(old_number, 77U);
        EXPECT_TRUE(values.empty());
    };
    const std::wstring no_key = L"C200000B(" + path + L") 2";
    expect_all(no_key, no_key, no_key, no_key);
    branch.create(L"k");
    const std::wstring no_value = L"C200000C(" + path + L", v) 2";
    expect_all(no_value, no_value, no_value, no_value);
    branch.set(L"k", L"v", REG_BINARY, std::string(1000, 'x'));
    const std::wstring at_value = L"(" + path + L", v)";
    expect_all(L"C200000F" + at_value, L"C200007E" + at_value, L"C2000011" + at_value, L"C2000010" + at_value);

    Tam_status status;
    const std::wstring long_name(16384, L'n');
    tam_set_reg_string_value(USER, path, L"", long_name, L"x", status);
    EXPECT_EQ(chain(status), L"C200000D(" + path + L", " + long_name + L") 87");
    tam_set_reg_uint_value(USER, L"", L"x", L"v", 1, status);
    EXPECT_EQ(chain(status), L"C200000A(\\x) 161");
    // The platform would take the first 32766 characters of it.
    const std::wstring long_path = std::wstring(32766 - 2, L'\\') + L"xyz";
    tam_set_reg_uint_value(USER, long_path, L"", L"v", 1, status);
    EXPECT_EQ(chain(status), L"C200000A(" + long_path + L") 206");

    tam_remove_reg_value(USER, branch.path(), L"none", L"v", status);
    EXPECT_EQ(chain(status), L"C200000B(" + branch / L"none" + L") 2");
    tam_remove_reg_value(USER, branch.path(), L"k", L"none", status);
    EXPECT_EQ(chain(status), L"C2000013(" + path + L", none) 2");
    tam_remove_reg_value(USER, branch.path(), L"k", L"v", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(branch.get(L"k", L"v").error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry_places, are_those_of_software_values_and_service_parameters)
{
    const Registry_branch software(HKEY_LOCAL_MACHINE, L"SOFTWARE");
    const Registry_branch service(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Services");
    std::wstring text;
    unsigned int number = 0;
    Tam_status status(5);
    tam_set_reg_sw_string_value(software.name(), L"b\\c", L"s", L"text", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(software.get(L"b\\c", L"s"), (Value{0, REG_SZ, bytes_of(L"text\0"s)}));
    tam_get_reg_sw_string_value(software.name() + L"\\b", L"c", L"s", text, status);
    tam_set_reg_sw_uint_value(L"", software.name(), L"u", 8, status);
    tam_get_reg_sw_uint_value(software.name(), L"", L"u", number, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(text, L"text");
    EXPECT_EQ(number, 8U);
    tam_remove_reg_sw_value(software.name(), L"", L"u", status);
    EXPECT_EQ(software.get(L"", L"u").error, ERROR_FILE_NOT_FOUND);
    tam_remove_reg_sw_value(software.name(), L"", L"u", status);
    EXPECT_EQ(chain(status), L"C2000013(" + software.path() + L", u) 2");
    tam_get_reg_sw_uint_value(software.name(), L"none", L"u", number, status);
    EXPECT_EQ(chain(status), L"C200000B(" + software / L"none" + L") 2");

    tam_set_reg_string_parameter(service.name(), L"s", L"word", status);
    tam_set_reg_uint_parameter(service.name(), L"u", 9, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(service.get(L"Parameters", L"u"), (Value{0, REG_DWORD, number_bytes(9)}));
    tam_get_reg_string_parameter(service.name(), L"s", text, status);
    tam_get_reg_uint_parameter(service.name(), L"u", number, status);
    EXPECT_EQ(text, L"word");
    EXPECT_EQ(number, 9U);
    tam_remove_reg_parameter(service.name(), L"u", status);
    EXPECT_EQ(chain(status), L"");
    tam_get_reg_uint_parameter(service.name(), L"u", number, status);
    EXPECT_EQ(chain(status), L"C200000C(" + service / L"Parameters" + L", u) 2");
}
