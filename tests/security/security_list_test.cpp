#include <tests/support/test.h>

#include <aclapi.h>

#include <tests/security/lists.h>
#include <tests/security/security_access.h>
#include <tests/support/descriptors.h>
#include <tests/support/registry_branch.h>

using namespace tam;
using test::chain;
using test::entries_of;
using test::SOME_RIGHTS;
using Access = detail::Security_access;
using Rows = std::vector<std::wstring>;

namespace {

const std::wstring SOME_TO_EVERYONE = L"0 00160000 S-1-1-0";
const std::wstring SOME_TO_SYSTEM = L"0 00160000 S-1-5-18";
const std::wstring NO_DELETE_FOR_USERS = L"1 00010000 S-1-5-32-545";

Tam_acl list_for_system()
{
    Tam_status status;
    return Tam_acl(TAM_TRUSTEE_LOCAL_SYSTEM, SOME_RIGHTS, status);
}

Rows rows_of(Tam_security& security)
{
    Tam_status status(5);
    const std::unique_ptr<Tam_acl> acl(security.get_disc_acl(status));
    EXPECT_TRUE(status.is_clear()) << chain(status).c_str();
    return acl != nullptr ? entries_of(*acl) : Rows{L"no list"};
}

// The object's list as raw calls read it.
Rows raw_rows_of(HANDLE object, SE_OBJECT_TYPE type)
{
    ACL* list = nullptr;
    void* descriptor = nullptr;
    EXPECT_EQ(::GetSecurityInfo(object, type, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr, &descriptor),
              0U);
    const Rows rows = list != nullptr ? entries_of(list) : Rows{L"no list"};
    ::LocalFree(descriptor);
    return rows;
}

ACL* list_in_descriptor(const Tam_security& security)
{
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    EXPECT_TRUE(::GetSecurityDescriptorDacl(Access::descriptor(security), &present, &list, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_FALSE(defaulted);
    return list;
}

} // namespace

TEST(Security_list, a_null_list_is_no_list)
{
    Tam_security by_default;
    EXPECT_EQ(rows_of(by_default), Rows{L"no list"});
    Tam_status status(5);
    Tam_security open(true, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rows_of(open), Rows{L"no list"});
    const Tam_acl without(L"tam_no_such_account", 1, status);
    Tam_security from_nothing(without, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rows_of(from_nothing), Rows{L"no list"});
}

TEST(Security_list, closed_is_an_empty_list)
{
    Tam_status status(5);
    Tam_security closed(false, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rows_of(closed), Rows());
    ASSERT_NE(list_in_descriptor(closed), nullptr);
}

TEST(Security_list, an_object_with_an_empty_list_opens_for_nobody)
{
    Tam_status status;
    Tam_security closed(false, status);
    Tam_security open(true, status);
    const std::wstring event_name = test::unique_name(L"closed_event");
    const std::wstring mutex_name = test::unique_name(L"closed_mutex");
    {
        const Tam_event event(event_name, false, &closed);
        const Tam_mutex mutex(mutex_name, false, &closed);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_event second(event_name, false); }), "::CreateEvent");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_mutex second(mutex_name, false); }), "::CreateMutex");
    }
    const Tam_event event(event_name, false, &open);
    const Tam_event second(event_name, false);
}

TEST(Security_list, set_replaces_and_copies)
{
    Tam_status status(5);
    Tam_acl acl = list_for_system();
    Tam_security security(acl, status);
    EXPECT_TRUE(status.is_clear());
    acl.erase(status);
    EXPECT_EQ(rows_of(security), Rows{SOME_TO_SYSTEM});
    acl.set_rights(TAM_TRUSTEE_EVERYONE, TAM_ACCESS_GRANT, SOME_RIGHTS, status);
    security.set_disc_acl(acl, status, false);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rows_of(security), Rows{SOME_TO_EVERYONE});

    const std::unique_ptr<Tam_acl> copy(security.get_disc_acl(status));
    copy->erase(status);
    EXPECT_EQ(rows_of(security), Rows{SOME_TO_EVERYONE});
    const Tam_event event(false, &security);
    EXPECT_EQ(raw_rows_of(event.handle(), SE_KERNEL_OBJECT), Rows{SOME_TO_EVERYONE});
}

TEST(Security_list, merging_adds_the_earlier_entries_to_the_new_ones)
{
    Tam_status status;
    Tam_acl acl = list_for_system();
    acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_DENY, DELETE, status);
    Tam_security security(acl, status);
    const Tam_acl more(TAM_TRUSTEE_EVERYONE, SOME_RIGHTS, status);
    security.set_disc_acl(more, status, true);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rows_of(security), (Rows{NO_DELETE_FOR_USERS, SOME_TO_EVERYONE, SOME_TO_SYSTEM}));
    security.set_disc_acl(more, status, true);
    EXPECT_EQ(rows_of(security), (Rows{NO_DELETE_FOR_USERS, SOME_TO_EVERYONE, SOME_TO_SYSTEM}));

    Tam_security open;
    open.set_disc_acl(more, status, true);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(rows_of(open), Rows{SOME_TO_EVERYONE}) << "a null list has no entries";
}

TEST(Security_list, objects_by_handle_and_by_name_are_edited)
{
    const Tam_event event;
    const Tam_mutex mutex;
    const test::Registry_branch branches[2];
    Tam_status opened;
    void* const key = tam_open_reg_key(HKEY_CURRENT_USER, branches[0].path(), L"", opened);
    void* const named_key = tam_open_reg_key(HKEY_CURRENT_USER, branches[1].path(), L"", opened);
    EXPECT_EQ(chain(opened), L"");
    struct Row {
        Tam_sec_obj_type type;
        HANDLE handle;
        std::wstring name; // not empty: the object is associated by it
        SE_OBJECT_TYPE raw_type;
    };
    const Row rows[] = {
        {TAM_SEC_OBJ_KERNEL, event.handle(), L"", SE_KERNEL_OBJECT},
        {TAM_SEC_OBJ_KERNEL, mutex.handle(), L"", SE_KERNEL_OBJECT},
        {TAM_SEC_OBJ_REGISTRY_KEY, key, L"", SE_REGISTRY_KEY},
        {TAM_SEC_OBJ_REGISTRY_KEY, named_key, L"CURRENT_USER\\" + branches[1].path(), SE_REGISTRY_KEY},
    };
    for (const Row& row : rows) {
        Tam_status status;
        const auto associate = [&](Tam_security& security) {
            if (row.name.empty()) {
                security.associate_with_object(row.type, row.handle, status);
            } else {
                security.associate_with_object(row.type, row.name, status);
            }
        };
        Tam_security security;
        associate(security);
        Tam_acl acl = list_for_system();
        acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_DENY, DELETE, status);
        security.set_disc_acl(acl, status, false);
        EXPECT_TRUE(status.is_clear()) << chain(status).c_str();
        EXPECT_EQ(raw_rows_of(row.handle, row.raw_type), (Rows{NO_DELETE_FOR_USERS, SOME_TO_SYSTEM}));
        EXPECT_EQ(rows_of(security), (Rows{NO_DELETE_FOR_USERS, SOME_TO_SYSTEM}));

        // Another editor has not seen that list; it fetches it.
        Tam_security another;
        associate(another);
        const Tam_acl more(TAM_TRUSTEE_EVERYONE, SOME_RIGHTS, status);
        another.set_disc_acl(more, status, true);
        EXPECT_TRUE(status.is_clear()) << chain(status).c_str();
        const Rows merged{NO_DELETE_FOR_USERS, SOME_TO_EVERYONE, SOME_TO_SYSTEM};
        EXPECT_EQ(raw_rows_of(row.handle, row.raw_type), merged);
        EXPECT_EQ(rows_of(security), merged) << "the list of the moment, not the one set last";
        EXPECT_NE(security.security_attributes(false)->lpSecurityDescriptor, nullptr);
        EXPECT_EQ(entries_of(list_in_descriptor(security)), merged);
    }
    tam_close_reg_key(key, opened);
    tam_close_reg_key(named_key, opened);
}

// Under Wine the list of a file is made from its mode: entries for others than the owner and everyone get lost. What its
// folder lets everyone do comes back as well.
TEST(Security_list, a_files_list_is_set_and_merged)
{
    const test::Temporary_folder folder;
    const std::wstring path = folder.file(L"file.txt", "x");
    Tam_status status;
    Tam_security security;
    security.associate_with_object(TAM_SEC_OBJ_FILE, path, status);
    Tam_acl acl(TAM_TRUSTEE_PROCESS_USER, FILE_ALL_ACCESS, status);
    security.set_disc_acl(acl, status, false);
    EXPECT_TRUE(status.is_clear()) << chain(status).c_str();
    const std::unique_ptr<Tam_acl> before(security.get_disc_acl(status));
    ASSERT_NE(before, nullptr);
    EXPECT_FALSE(before->test_rights(TAM_TRUSTEE_EVERYONE, FILE_WRITE_DATA, status));
    EXPECT_TRUE(status.is_clear());

    const Tam_acl writers(TAM_TRUSTEE_EVERYONE, FILE_GENERIC_WRITE, status);
    security.set_disc_acl(writers, status, true);
    EXPECT_TRUE(status.is_clear()) << chain(status).c_str();
    const std::unique_ptr<Tam_acl> after(security.get_disc_acl(status));
    ASSERT_NE(after, nullptr);
    EXPECT_TRUE(after->test_rights(TAM_TRUSTEE_EVERYONE, FILE_GENERIC_WRITE, status)) << chain(status).c_str();
    // The owner's entry is still there. Effective rights of a user would ask for its groups.
    std::wstring owner;
    Tam_acl::get_trustee_name(TAM_TRUSTEE_PROCESS_USER, owner, status);
    unsigned int count = 0;
    after->get_entry_count(count, status);
    unsigned int granted = 0;
    for (unsigned int i = 0; i < count; ++i) {
        std::wstring name;
        Tam_access_modes mode{};
        unsigned int rights = 0;
        after->get_entry(i, name, mode, rights, status);
        granted |= name == owner && mode == TAM_ACCESS_GRANT ? rights : 0;
    }
    EXPECT_EQ(granted, DWORD{FILE_ALL_ACCESS});
}

TEST(Security_list, a_failed_set_keeps_descriptor_and_list)
{
    const Tam_event event;
    HANDLE read_only = nullptr;
    ASSERT_TRUE(::DuplicateHandle(::GetCurrentProcess(), event.handle(), ::GetCurrentProcess(), &read_only,
                                  READ_CONTROL | SYNCHRONIZE, FALSE, 0));
    Tam_status status;
    Tam_security security(list_for_system(), status);
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, read_only, status);
    void* const descriptor = Access::descriptor(security);
    const ACL* const list = list_in_descriptor(security);
    const Tam_acl more(TAM_TRUSTEE_EVERYONE, SOME_RIGHTS, status);
    const auto set = [&](bool merge) {
        status = 7;
        security.set_disc_acl(more, status, merge);
        EXPECT_EQ(Access::descriptor(security), descriptor);
        EXPECT_EQ(security.security_attributes(false)->lpSecurityDescriptor, descriptor);
        EXPECT_EQ(list_in_descriptor(security), list);
        EXPECT_EQ(entries_of(list_in_descriptor(security)), Rows{SOME_TO_SYSTEM});
        return chain(status);
    };
    for (const bool merge : {false, true}) {
        EXPECT_EQ(set(merge), L"C200007A 5") << "the object does not take it";
    }
    ::CloseHandle(read_only);
    for (const bool merge : {false, true}) {
        EXPECT_EQ(set(merge), L"C2000079 6") << "there is no object any more";
    }
    EXPECT_EQ(security.get_disc_acl(status), nullptr);
    EXPECT_EQ(chain(status), L"C2000079 6");
    EXPECT_EQ(list_in_descriptor(security), list);
}

TEST(Security_list, a_broken_list_in_the_descriptor_is_reported)
{
    Tam_security security;
    Tam_status status;
    ACL too_short{ACL_REVISION, 0, 4, 0, 0};
    test::put_list(security, &too_short);
    EXPECT_EQ(security.get_disc_acl(status), nullptr);
    EXPECT_EQ(chain(status), L"C2000070 1336");
    security.set_disc_acl(list_for_system(), status, true);
    EXPECT_EQ(chain(status), L"C2000070 1336");
    EXPECT_EQ(list_in_descriptor(security), &too_short);

    alignas(ACL) unsigned char bytes[12] = {ACL_REVISION, 0, 12, 0, 1};
    test::put_list(security, reinterpret_cast<ACL*>(bytes));
    security.set_disc_acl(list_for_system(), status, true);
    EXPECT_EQ(chain(status), L"C200006F 1336");
    EXPECT_EQ(list_in_descriptor(security), reinterpret_cast<ACL*>(bytes));
    security.set_disc_acl(list_for_system(), status, false);
    EXPECT_TRUE(status.is_clear());
}

TEST(Security_list, the_system_list_is_not_supported)
{
    Tam_security security;
    Tam_status status;
    const Tam_acl acl;
    EXPECT_EQ(test::thrown<std::runtime_error>([&] { security.set_sec_acl(acl, status, true); }),
              "Tam_security::set_sec_acl not implemented");
    EXPECT_EQ(test::thrown<std::runtime_error>([&] { security.get_sec_acl(status); }),
              "Tam_security::get_sec_acl not implemented");
}
