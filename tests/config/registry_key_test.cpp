#include <tests/support/test.h>

#include <tests/config/texts.h>
#include <tests/support/descriptors.h>
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
using Names = Tam_object_vector<std::wstring>;

void* const USER = HKEY_CURRENT_USER;

// depth keys below each other.
std::wstring deep_path(unsigned int depth)
{
    std::wstring path = L"d";
    for (unsigned int i = 1; i < depth; ++i) {
        path += L"\\d";
    }
    return path;
}

} // namespace

TEST(Registry_key, is_created_found_opened_and_closed)
{
    const Registry_branch branch;
    const unsigned int handles = test::open_handles();
    Tam_status status(5);
    EXPECT_FALSE(tam_reg_key_exists(USER, branch.path(), L"a\\b"));
    tam_create_reg_key(USER, branch.path(), L"a\\b", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(branch.exists(L"a\\b"));
    EXPECT_TRUE(tam_reg_key_exists(USER, branch / L"a\\b", L""));
    EXPECT_EQ(test::open_handles(), handles);
    tam_create_reg_key(USER, branch.path(), L"a\\b", status);
    EXPECT_EQ(chain(status), L"");
    tam_create_reg_key(USER, L"", L"a", status);
    EXPECT_EQ(chain(status), L"C200006C(\\a) 161");
    EXPECT_FALSE(tam_reg_key_exists(USER, L"", L"Software"));

    status = 5; // which opening and closing keep
    void* const key = tam_open_reg_key(USER, branch.path(), L"a", status);
    EXPECT_EQ(chain(status), L"5");
    EXPECT_TRUE(tam_reg_key_exists(key, L"b", L""));
    EXPECT_TRUE(tam_reg_key_exists(key, L"", L""));
    tam_close_reg_key(key, status);
    EXPECT_EQ(chain(status), L"5");
    EXPECT_EQ(test::open_handles(), handles);
    EXPECT_EQ(tam_open_reg_key(USER, branch.path(), L"none", status), nullptr);
    EXPECT_EQ(chain(status), L"C200006D(" + branch.path() + L")");
    tam_close_reg_key(key, status);
    EXPECT_EQ(chain(status), L"C200006E");
}

TEST(Registry_key, root_of_a_machine_is_connected_to_only_if_it_can_be)
{
    Tam_status status(5);
    void* const root = tam_connect_reg_root(L"", HKEY_LOCAL_MACHINE, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(tam_reg_key_exists(root, L"SOFTWARE", L""));
    status = 5;
    tam_disconnect_reg_root(root, status);
    EXPECT_EQ(chain(status), L"");
    tam_disconnect_reg_root(nullptr, status);
    EXPECT_EQ(chain(status), L"C200006E");
    EXPECT_EQ(tam_connect_reg_root(L"machine", HKEY_CURRENT_USER, status), nullptr);
    EXPECT_EQ(chain(status), L"C2000015(machine) C2000014");
    EXPECT_EQ(tam_connect_reg_root(L"tam-no-such-machine", HKEY_USERS, status), nullptr);
    EXPECT_EQ(chain(status), L"C2000015(tam-no-such-machine) 53");
}

TEST(Registry_key, is_associated_with_a_security_description)
{
    const Registry_branch branch;
    Tam_security security;
    Tam_status status(5);
    tam_reg_add_security(nullptr, security, status);
    EXPECT_EQ(chain(status), L"C2000075");
    void* const key = tam_open_reg_key(USER, branch.path(), L"", status);
    tam_reg_add_security(key, security, status);
    security.set_disc_acl(Tam_acl(TAM_TRUSTEE_EVERYONE, KEY_ALL_ACCESS, status), status, false);
    EXPECT_EQ(chain(status), L"");
    const test::Found_list list = test::list_of(key, SE_REGISTRY_KEY);
    EXPECT_EQ(list.entries, 1U);
    EXPECT_EQ(list.rights, static_cast<DWORD>(KEY_ALL_ACCESS));
    tam_reg_add_security(key, security, status);
    EXPECT_EQ(chain(status), L"C2000078");
    tam_close_reg_key(key, status);
}

TEST(Registry_key, lists_its_subkeys_and_values)
{
    const Registry_branch branch;
    const std::wstring longest_key(255, L'k');
    const std::wstring longest_value(511, L'v');
    for (const std::wstring& key : {L"b"s, L"a"s, longest_key}) {
        branch.create(key);
    }
    branch.set(L"", L"x", REG_BINARY, std::string(5000, 'x'));
    branch.set(L"", L"", REG_SZ, "");
    branch.set(L"", longest_value, REG_SZ, "");
    const unsigned int handles = test::open_handles();

    Names names = as_list({branch.path()}); // may own the key
    Tam_status status(5);
    tam_enum_reg_keys(USER, names.at(0), L"", names, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(as_vector(names), (std::vector{L"a"s, L"b"s, longest_key}));
    tam_enum_reg_value_names(USER, branch.path(), L"", names, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(as_vector(names), (std::vector{L""s, longest_value, L"x"s}));
    branch.set(L"", longest_value + L"v", REG_SZ, "");
    tam_enum_reg_value_names(USER, branch.path(), L"", names, status);
    EXPECT_EQ(chain(status), L"C200000E(" + branch.path() + L") 234");
    EXPECT_EQ(as_vector(names), (std::vector{L""s, longest_value}));

    tam_enum_reg_keys(USER, branch.path(), L"none", names, status);
    EXPECT_EQ(chain(status), L"C200000B(" + branch / L"none" + L") 2");
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry_key, is_removed_with_everything_below)
{
    const Registry_branch branch;
    branch.set(L"a\\b\\c", L"v", REG_SZ, "");
    branch.create(L"a\\b\\c2");
    branch.create(L"a\\b2");
    branch.create(L"ab");
    const unsigned int handles = test::open_handles();
    Tam_status status(5);
    tam_remove_reg_key(USER, branch.path(), L"a", L"b", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(branch.exists(L"a\\b"));
    EXPECT_TRUE(branch.exists(L"a\\b2"));
    tam_remove_reg_key(USER, branch.path(), L"a", L"b", status);
    EXPECT_EQ(chain(status), L"C200000B(" + branch / L"a\\b" + L") 2");
    tam_remove_reg_key(USER, L"", L"", branch.name(), status);
    EXPECT_EQ(chain(status), L"C200000B(\\" + branch.name() + L") 161");
    tam_remove_reg_key(USER, branch.path(), L"", L"a", status);
    EXPECT_FALSE(branch.exists(L"a"));
    EXPECT_TRUE(branch.exists(L"ab"));
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry_key, however_deep_is_copied_and_removed)
{
    constexpr unsigned int DEPTH = 300;
    const Registry_branch branch;
    branch.create(L"from\\" + deep_path(DEPTH));
    const unsigned int handles = test::open_handles();
    Tam_status status;
    tam_copy_reg_key(USER, branch / L"from", USER, branch / L"to", true, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(branch.exists(L"to\\" + deep_path(DEPTH)));
    EXPECT_FALSE(branch.exists(L"to\\" + deep_path(DEPTH + 1)));
    tam_remove_reg_key(USER, branch.path(), L"", L"from", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(branch.exists(L"from"));
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry_key, copy_has_the_types_and_bytes_of_all_values)
{
    const Registry_branch branch;
    const std::wstring longest_name(255, L'n');
    const struct {
        std::wstring name;
        DWORD type;
        std::string bytes;
    } rows[] = {
        {L"", REG_SZ, bytes_of(L"default\0"s)},
        {longest_name, REG_MULTI_SZ, bytes_of(L"a\0b\0\0"s)},
        {L"number", REG_DWORD, "1234"},
        {L"own type", 0x12345, "x"},
        {L"nothing", REG_BINARY, ""},
        {L"254", REG_BINARY, std::string(254, 'b')},
        {L"256", REG_BINARY, std::string(256, 'b')},
        {L"257", REG_BINARY, std::string(257, 'b')},
        {L"258 bare", REG_SZ, bytes_of(std::wstring(129, L'x'))},
        {L"bare", REG_SZ, bytes_of(L"bare"s)},
        {L"empty", REG_SZ, ""},
        {L"large", REG_EXPAND_SZ, bytes_of(std::wstring(100'000, L'%'))},
        {L"odd", REG_SZ, "a\0b"s},
        {L"odd large", REG_SZ, std::string(5001, 'o')},
    };
    for (const auto& row : rows) {
        branch.set(L"from", row.name, row.type, row.bytes);
    }
    branch.set(L"from\\below\\deep", L"v", REG_SZ, "12");
    branch.set(L"to", L"number", REG_SZ, "old");
    branch.set(L"to", L"kept", REG_SZ, "kept");
    const unsigned int handles = test::open_handles();
    Tam_status status(5);
    tam_copy_reg_key(USER, branch / L"from", USER, branch / L"to", false, status);
    EXPECT_EQ(chain(status), L"");
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.name));
        EXPECT_EQ(branch.get(L"from", row.name), (Value{0, row.type, row.bytes}));
        EXPECT_EQ(branch.get(L"to", row.name), (Value{0, row.type, row.bytes}));
    }
    EXPECT_EQ(branch.get(L"to", L"kept").bytes, "kept");
    EXPECT_FALSE(branch.exists(L"to\\below"));

    void* const from = tam_open_reg_key(USER, branch / L"from", L"", status);
    tam_copy_reg_key(from, L"", USER, branch / L"to", true, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(branch.get(L"to\\below\\deep", L"v").bytes, "12");
    tam_close_reg_key(from, status);
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Registry_key, copy_onto_or_below_itself_ends)
{
    const Registry_branch branch;
    branch.set(L"a", L"v", REG_SZ, "12");
    branch.set(L"a\\b\\c", L"w", REG_SZ, "34");
    Tam_status status;
    tam_copy_reg_key(USER, branch / L"a", USER, branch / L"a", true, status);
    EXPECT_EQ(chain(status), L"");
    tam_copy_reg_key(USER, branch / L"a", USER, branch / L"a\\b", true, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(branch.get(L"a\\b", L"v").bytes, "12");
    EXPECT_EQ(branch.get(L"a\\b\\b\\c", L"w").bytes, "34");
    EXPECT_FALSE(branch.exists(L"a\\b\\b\\b"));
}

TEST(Registry_key, copy_that_fails_tells_where)
{
    const Registry_branch branch;
    Tam_status status;
    tam_copy_reg_key(USER, branch / L"none", USER, branch / L"to", true, status);
    EXPECT_EQ(chain(status), L"C200000B(" + branch / L"none" + L") 2");
    EXPECT_FALSE(branch.exists(L"to"));
    branch.set(L"from", L"a", REG_SZ, "12");
    tam_copy_reg_key(USER, branch / L"from", USER, L"\\to", true, status);
    EXPECT_EQ(chain(status), L"C200000A(\\to) 161");
    branch.set(L"from\\below", std::wstring(256, L'n'), REG_SZ, "34");
    tam_copy_reg_key(USER, branch / L"from", USER, branch / L"to", true, status);
    EXPECT_EQ(chain(status), L"C200000E(" + branch / L"from\\below" + L") 234");
    EXPECT_EQ(branch.get(L"to", L"a").bytes, "12");
    EXPECT_TRUE(branch.exists(L"to\\below"));
}
