#include <tests/support/test.h>

#include <sddl.h>

#include <tests/security/lists.h>
#include <tests/security/security_access.h>
#include <tests/support/descriptors.h>

using namespace tam;
using test::chain;
using test::entries_of;
using test::Raw_list;
using Access = detail::Security_access;
using Rows = std::vector<std::wstring>;

namespace {

constexpr char BAD_TRUSTEE[] = "Invalid argument to Tam_acl::create_sid()";
constexpr char BAD_MODE[] = "Invalid argument to Tam_acl::map_access_mode()";

unsigned int rights_of(const Tam_acl& acl, Tam_standard_trustees trustee)
{
    Tam_status status(5);
    unsigned int rights = 1;
    acl.get_rights(trustee, rights, status);
    EXPECT_TRUE(status.is_clear()) << trustee;
    return rights;
}

// The user of the process as the system's own calls tell: identifier, then name.
std::pair<std::wstring, std::wstring> raw_process_user()
{
    HANDLE token = nullptr;
    EXPECT_TRUE(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token));
    alignas(TOKEN_USER) unsigned char user[512];
    DWORD size = 0;
    EXPECT_TRUE(::GetTokenInformation(token, TokenUser, user, sizeof user, &size));
    ::CloseHandle(token);
    void* const sid = reinterpret_cast<TOKEN_USER*>(user)->User.Sid;
    wchar_t name[256];
    wchar_t domain[256];
    DWORD name_size = 256;
    DWORD domain_size = 256;
    SID_NAME_USE use{};
    EXPECT_TRUE(::LookupAccountSidW(nullptr, sid, name, &name_size, domain, &domain_size, &use));
    return {test::text_of(sid), std::wstring(domain) + L'\\' + name};
}

} // namespace

TEST(Acl, is_an_empty_list_of_eight_bytes_by_default)
{
    Tam_acl acl;
    const ACL* const list = Access::list(acl);
    ASSERT_TRUE(::IsValidAcl(Access::list(acl)));
    EXPECT_EQ(list->AclRevision, 2);
    EXPECT_EQ(list->AclSize, 8);
    EXPECT_EQ(list->AceCount, 0);
    Tam_status status(5);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 1, status);
    status = 5;
    acl.erase(status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(Access::list(acl)->AceCount, 0);
    EXPECT_EQ(Access::list(acl)->AclSize, 8);
}

TEST(Acl, standard_trustees_have_their_identifiers)
{
    const wchar_t* const expected[] = {L"S-1-1-0", L"S-1-5-18", L"S-1-5-6", L"S-1-5-32-545", L"S-1-5-32-544"};
    for (unsigned int value = 0; value < 5; ++value) {
        Tam_status status(5);
        const Tam_acl acl(static_cast<Tam_standard_trustees>(value), 0x12345678, status);
        EXPECT_TRUE(status.is_clear());
        EXPECT_EQ(entries_of(acl), Rows{L"0 12345678 " + std::wstring(expected[value])});
    }
    const auto [user, name] = raw_process_user();
    for (const Tam_standard_trustees trustee : {TAM_TRUSTEE_PROCESS_USER, TAM_TRUSTEE_THREAD_USER}) {
        Tam_status status(5);
        EXPECT_EQ(entries_of(Tam_acl(trustee, 1, status)), Rows{L"0 00000001 " + user});
        std::wstring found;
        Tam_acl::get_trustee_name(trustee, found, status);
        EXPECT_EQ(found, name);
        EXPECT_EQ(entries_of(Tam_acl(name, 1, status)), Rows{L"0 00000001 " + user});
        EXPECT_TRUE(status.is_clear());
    }
}

TEST(Acl, the_threads_user_is_the_one_that_it_acts_for)
{
    ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
    Tam_status status;
    const Tam_acl acl(TAM_TRUSTEE_THREAD_USER, 1, status);
    EXPECT_TRUE(::RevertToSelf());
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(entries_of(acl), Rows{L"0 00000001 " + raw_process_user().first});
}

TEST(Acl, names_are_looked_up_both_ways)
{
    Tam_status status(5);
    std::wstring name;
    Tam_acl::get_trustee_name(TAM_TRUSTEE_EVERYONE, name, status);
    EXPECT_EQ(name, L"Everyone") << "no domain, no backslash";
    Tam_acl::get_trustee_name(TAM_TRUSTEE_ADMINISTRATORS, name, status);
    EXPECT_EQ(name, L"BUILTIN\\Administrators");
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(entries_of(Tam_acl(name, 2, status)), Rows{L"0 00000002 S-1-5-32-544"});
    EXPECT_EQ(entries_of(Tam_acl(L"Everyone", 2, status)), Rows{L"0 00000002 S-1-1-0"});

    // An identifier of nobody.
    Raw_list raw;
    raw.add(0, 7, L"S-1-5-21-1-2-3-4");
    const Tam_acl acl = raw.acl();
    Tam_access_modes mode = TAM_ACCESS_AUDIT;
    unsigned int rights = 0;
    acl.get_entry(0, name, mode, rights, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(name, L"BUILTIN\\Account Unknown");
    EXPECT_EQ(mode, TAM_ACCESS_GRANT);
    EXPECT_EQ(rights, 7U);
}

TEST(Acl, an_account_that_is_not_known_is_reported)
{
    Tam_status status;
    const Tam_acl from_nothing(L"tam_no_such_account", 1, status);
    EXPECT_EQ(chain(status), L"C2000074 1332");
    EXPECT_EQ(Access::list(from_nothing), nullptr);
    Tam_acl acl;
    // The name is looked up first, so that the bad mode is not seen.
    acl.set_rights(L"tam_no_such_account", static_cast<Tam_access_modes>(3), 1, status);
    EXPECT_EQ(chain(status), L"C2000074 1332");
    unsigned int rights = 1;
    acl.get_rights(L"tam_no_such_account", rights, status);
    EXPECT_EQ(chain(status), L"C2000074 1332");
    EXPECT_EQ(rights, 0U);
    rights = 1;
    EXPECT_FALSE(acl.test_rights(L"tam_no_such_account", 0, status, &rights));
    EXPECT_EQ(rights, 0U);
    EXPECT_EQ(Access::list(acl)->AceCount, 0);
}

TEST(Acl, bad_trustees_and_modes_throw)
{
    Tam_acl acl;
    Tam_status status;
    std::wstring name;
    unsigned int rights = 0;
    for (const unsigned int value : {7U, 8U, 0x80000000U, 0xFFFFFFFFU}) {
        const auto trustee = static_cast<Tam_standard_trustees>(value);
        const auto bad_mode = static_cast<Tam_access_modes>(value);
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { Tam_acl another(trustee, 1, status); }), BAD_TRUSTEE);
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { acl.set_rights(trustee, bad_mode, 1, status); }),
                  BAD_TRUSTEE);
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { acl.get_rights(trustee, rights, status); }), BAD_TRUSTEE);
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { acl.get_trustee_name(trustee, name, status); }),
                  BAD_TRUSTEE);
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { acl.set_rights(TAM_TRUSTEE_USERS, bad_mode, 1, status); }),
                  BAD_MODE);
    }
    EXPECT_EQ(test::thrown<std::invalid_argument>(
                  [&] { acl.set_rights(L"Everyone", static_cast<Tam_access_modes>(3), 1, status); }),
              BAD_MODE);
    EXPECT_EQ(entries_of(acl), Rows());
}

TEST(Acl, denials_lead_and_rights_of_one_entry_are_added_up)
{
    Tam_acl acl;
    Tam_status status(5);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 0x1, status);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 0x2, status);
    EXPECT_EQ(entries_of(acl), Rows{L"0 00000003 S-1-5-32-545"});
    acl.set_rights(TAM_TRUSTEE_LOCAL_SYSTEM, TAM_ACCESS_GRANT, 0x4, status);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_DENY, 0x2, status);
    acl.set_rights(TAM_TRUSTEE_SERVICES, TAM_ACCESS_DENY, 0x8, status);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_DENY, 0x10, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(entries_of(acl), (Rows{L"1 00000008 S-1-5-6", L"1 00000012 S-1-5-32-545", L"0 00000003 S-1-5-32-545",
                                     L"0 00000004 S-1-5-18"}));
    EXPECT_EQ(Access::list(acl)->AclSize, 8 + 2 * (8 + 12) + 2 * (8 + 16)) << "not a byte to spare";
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_USERS), 0x1U);
}

TEST(Acl, an_audit_adds_a_grant_each_time)
{
    Tam_acl acl;
    Tam_status status;
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_AUDIT, 1, status);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_AUDIT, 2, status);
    EXPECT_EQ(entries_of(acl), (Rows{L"0 00000001 S-1-5-32-545", L"0 00000002 S-1-5-32-545"}));

    // An audit entry made elsewhere is added to.
    Raw_list raw;
    raw.add(2, 1, L"S-1-5-32-545");
    Tam_acl made_elsewhere = raw.acl();
    made_elsewhere.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_AUDIT, 2, status);
    EXPECT_EQ(entries_of(made_elsewhere), Rows{L"2 00000003 S-1-5-32-545"});
    EXPECT_EQ(rights_of(made_elsewhere, TAM_TRUSTEE_USERS), 0U) << "an audit grants nothing";
}

TEST(Acl, rights_are_those_of_the_trustee_and_of_everyone_less_all_denials)
{
    Raw_list raw; // a grant stands before its denial
    raw.add(0, 0xF0, L"S-1-1-0");
    raw.add(0, 0x0F, L"S-1-5-18");
    raw.add(0, 0x100, L"S-1-5-6");
    raw.add(1, 0x11, L"S-1-1-0");
    raw.add(2, 0x1000, L"S-1-5-18");
    raw.add(9, 0x2000, L"S-1-5-18"); // a grant with a condition
    const Tam_acl acl = raw.acl();
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_LOCAL_SYSTEM), 0xEEU);
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_EVERYONE), 0xE0U);
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_SERVICES), 0x1E0U);

    Tam_status status(5);
    unsigned int found = 0;
    EXPECT_TRUE(acl.test_rights(TAM_TRUSTEE_LOCAL_SYSTEM, 0xEE, status, &found));
    EXPECT_EQ(found, 0xEEU);
    EXPECT_TRUE(acl.test_rights(TAM_TRUSTEE_LOCAL_SYSTEM, 0, status));
    EXPECT_FALSE(acl.test_rights(TAM_TRUSTEE_LOCAL_SYSTEM, 0xEF, status, nullptr)) << "every bit counts";
    EXPECT_TRUE(acl.test_rights(L"NT AUTHORITY\\SYSTEM", 0x0E, status));
    EXPECT_TRUE(status.is_clear());
}

TEST(Acl, without_a_list_everybody_has_the_generic_rights_and_no_others)
{
    Tam_status status;
    Tam_acl acl(L"tam_no_such_account", 1, status);
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_SERVICES), 0xF0000000U);
    EXPECT_FALSE(acl.test_rights(TAM_TRUSTEE_SERVICES, READ_CONTROL, status));
    unsigned int count = 5;
    acl.get_entry_count(count, status);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(rights_of(Tam_acl(), TAM_TRUSTEE_SERVICES), 0U) << "an empty list is another thing";

    acl.merge(Tam_acl(), status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(Access::list(acl), nullptr);
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 1, status);
    EXPECT_EQ(entries_of(acl), Rows{L"0 00000001 S-1-5-32-545"});
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_SERVICES), 0U);
}

TEST(Acl, merging_adds_entry_by_entry)
{
    Raw_list raw;
    raw.add(0, 0x1, L"S-1-5-18", OBJECT_INHERIT_ACE);
    raw.add(1, 0x2, L"S-1-5-6");
    raw.add(0, 0x4, L"S-1-1-0");
    raw.add(2, 0x8, L"S-1-5-6");
    const Tam_acl other = raw.acl();
    Tam_acl acl;
    Tam_status status(5);
    acl.set_rights(TAM_TRUSTEE_EVERYONE, TAM_ACCESS_GRANT, 0x10, status);
    acl.merge(other, status);
    EXPECT_TRUE(status.is_clear());
    const Rows expected{L"1 00000002 S-1-5-6", L"0 00000014 S-1-1-0", L"0 00000001 S-1-5-18", L"0 00000008 S-1-5-6"};
    EXPECT_EQ(entries_of(acl), expected);
    acl.merge(acl, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(entries_of(acl), expected);
    Tam_acl without(L"tam_no_such_account", 1, status);
    acl.merge(without, status);
    acl.merge(Tam_acl(), status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(entries_of(acl), expected);
    without.merge(acl, status);
    EXPECT_EQ(entries_of(without), expected);
}

TEST(Acl, entries_of_kinds_made_elsewhere_are_shown_kept_and_merged_as_they_are)
{
    const std::vector<unsigned char> condition{'a', 'r', 't', 'x', 1, 2, 3, 4};
    Raw_list raw;
    raw.add(0, 1, L"S-1-5-18");
    raw.add(10, 2, L"S-1-5-6", 3, condition);                // denial with a condition
    raw.add(9, 4, L"S-1-5-6", 0, condition);                 // grant with a condition
    raw.add_object(6, 8, 3, L"S-1-5-32-545");                // denial for one property
    raw.add_object(5, 16, 2, L"S-1-5-32-545");               // grant for one
    raw.add_bytes({0x7F, 0, 12, 0, 1, 2, 3, 4, 5, 6, 7, 8}); // a kind of no known form
    raw.add_bytes({0x7F, 0, 4, 0});                          // no more than a header
    const Tam_acl other = raw.acl();

    struct Row {
        unsigned int mode;
        unsigned int rights;
        const wchar_t* name;
    };
    const Row rows[] = {{0, 1, L"NT AUTHORITY\\SYSTEM"},
                        {10, 2, L"NT AUTHORITY\\SERVICE"},
                        {9, 4, L"NT AUTHORITY\\SERVICE"},
                        {6, 8, L"BUILTIN\\Users"},
                        {5, 16, L"BUILTIN\\Users"},
                        {0x7F, 0x04030201, L""},
                        {0x7F, 0, L""}};
    Tam_status status;
    for (unsigned int i = 0; i < std::size(rows); ++i) {
        std::wstring name = L"before";
        Tam_access_modes mode{};
        unsigned int rights = 0;
        other.get_entry(i, name, mode, rights, status);
        EXPECT_TRUE(status.is_clear());
        EXPECT_EQ(static_cast<unsigned int>(mode), rows[i].mode) << i;
        EXPECT_EQ(rights, rows[i].rights) << i;
        EXPECT_EQ(name, rows[i].name) << i;
    }

    for (const unsigned int index : {static_cast<unsigned int>(std::size(rows)), 0xFFFFFFFFU}) {
        std::wstring name = L"before";
        Tam_access_modes mode{};
        unsigned int rights = 0;
        other.get_entry(index, name, mode, rights, status);
        EXPECT_EQ(chain(status), L"C200007C");
        EXPECT_EQ(name, L"before");
    }
    Tam_acl acl;
    acl.merge(other, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_TRUE(::IsValidAcl(Access::list(acl)));
    // Denials in front, the last one first.
    const unsigned int order[] = {3, 1, 0, 2, 4, 5, 6};
    const auto expected = test::bytes_of_entries(Access::list(other));
    auto merged = test::bytes_of_entries(Access::list(acl));
    ASSERT_EQ(merged.size(), expected.size());
    for (std::size_t i = 0; i < merged.size(); ++i) {
        EXPECT_EQ(merged[i], expected[order[i]]) << i;
    }
    EXPECT_EQ(Access::list(acl)->AclRevision, ACL_REVISION_DS) << "entries for properties need it";
    acl.merge(other, status);
    EXPECT_EQ(test::bytes_of_entries(Access::list(acl)), merged) << "not twice";
    acl.set_rights(TAM_TRUSTEE_EVERYONE, TAM_ACCESS_DENY, 1, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(Access::list(acl)->AclRevision, ACL_REVISION_DS);
    EXPECT_EQ(Access::list(acl)->AceCount, 8);
}

TEST(Acl, entries_that_cannot_be_read_are_reported_and_change_nothing)
{
    using Bytes = std::vector<unsigned char>;
    const Bytes rows[] = {
        {},                                                            // the list tells of more entries than it has
        {0, 0, 0, 0},                                                  // no size
        {0, 0, 2, 0},                                                  // not even a header
        {0, 0, 6, 0, 1, 0},                                            // not a multiple of four
        {0, 0, 24, 0, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}, // longer than the list
        {0, 0, 8, 0, 1, 0, 0, 0},                                      // no identifier
        {1, 0, 20, 0, 1, 0, 0, 0, 1, 2, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}, // an identifier longer than the entry
        {0, 0, 20, 0, 1, 0, 0, 0, 9, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}, // of another revision
    };
    for (const Bytes& bytes : rows) {
        Raw_list raw;
        raw.add(0, 1, L"S-1-1-0");
        raw.add_bytes(bytes);
        Tam_acl acl = raw.acl();
        const std::vector<unsigned char> before = test::bytes_of(Access::list(acl));
        Tam_status status;
        acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 1, status);
        EXPECT_EQ(chain(status), L"C200006F 1336");
        acl.merge(acl, status);
        EXPECT_EQ(chain(status), L"C200006F 1336");
        unsigned int rights = 5;
        acl.get_rights(TAM_TRUSTEE_USERS, rights, status);
        EXPECT_EQ(chain(status), L"C200006F 1336");
        EXPECT_EQ(rights, 0U);
        std::wstring name = L"before";
        Tam_access_modes mode = TAM_ACCESS_AUDIT;
        rights = 5;
        acl.get_entry(1, name, mode, rights, status);
        EXPECT_EQ(chain(status), L"C200006F 1336");
        EXPECT_EQ(name, L"before");
        EXPECT_EQ(mode, TAM_ACCESS_AUDIT);
        EXPECT_EQ(rights, 5U);
        EXPECT_EQ(test::bytes_of(Access::list(acl)), before);

        Tam_acl target(TAM_TRUSTEE_SERVICES, 1, status);
        target.merge(acl, status);
        EXPECT_EQ(chain(status), L"C200006F 1336");
        EXPECT_EQ(entries_of(target), Rows{L"0 00000001 S-1-5-6"}) << "not even the entries before it";
    }
}

TEST(Acl, a_list_of_all_the_bytes_that_fit_takes_no_more_entries)
{
    // 8 + 2339 * 28 = 65500 bytes; a grant for Users needs 24 more, one for Everyone 20.
    Raw_list raw;
    for (unsigned int i = 0; i < 2339; ++i) {
        raw.add(0, 1, L"S-1-5-21-1-" + std::to_wstring(i));
    }
    Tam_acl acl = raw.acl();
    ASSERT_EQ(Access::list(acl)->AclSize, 65500);
    Tam_status status;
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 1, status);
    EXPECT_TRUE(status.is_clear());
    ASSERT_EQ(Access::list(acl)->AclSize, 65524);
    for (const Tam_access_modes mode : {TAM_ACCESS_GRANT, TAM_ACCESS_DENY}) {
        const ACL* const before = Access::list(acl);
        acl.set_rights(TAM_TRUSTEE_EVERYONE, mode, 1, status);
        EXPECT_EQ(chain(status), L"C2000070 87");
        acl.merge(Tam_acl(TAM_TRUSTEE_EVERYONE, 1, status), status);
        EXPECT_EQ(chain(status), L"C2000070 87");
        EXPECT_EQ(Access::list(acl), before);
        EXPECT_EQ(before->AceCount, 2340);
    }
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 2, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rights_of(acl, TAM_TRUSTEE_USERS), 3U);

    // What is only room at the end does not count.
    Raw_list roomy;
    roomy.add(0, 1, L"S-1-1-0");
    roomy.set_size(65532);
    Tam_acl shrunk = roomy.acl();
    shrunk.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_GRANT, 1, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(Access::list(shrunk)->AclSize, 8 + 20 + 24);
}
