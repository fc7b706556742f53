#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/security/security_access.h>
#include <tests/support/descriptors.h>
#include <tests/support/failing_new.h>

using namespace tam;
using detail::win32;
using test::chain;
using test::failing;
using test::Found_list;
using test::SOME_RIGHTS;
using test::Swap;
using Access = detail::Security_access;

namespace {

BOOL WINAPI absolute_sizes_only(void* given, void* descriptor, DWORD* size, ACL* list, DWORD* list_size, ACL* system,
                                DWORD* system_size, void* owner, DWORD* owner_size, void* group, DWORD* group_size)
{
    if (descriptor != nullptr) {
        ::SetLastError(ERROR_BAD_DESCRIPTOR_FORMAT);
        return FALSE;
    }
    return ::MakeAbsoluteSD(given, descriptor, size, list, list_size, system, system_size, owner, owner_size, group,
                            group_size);
}

DWORD WINAPI nothing_by_name(const wchar_t*, SE_OBJECT_TYPE, SECURITY_INFORMATION, void**, void**, ACL**, ACL**,
                             void** descriptor)
{
    *descriptor = nullptr;
    return ERROR_SUCCESS;
}

// A descriptor in self-relative form with a list, an owner and a group, as a service would give it.
std::vector<unsigned char> self_relative()
{
    Tam_status status;
    const Tam_acl acl(TAM_TRUSTEE_EVERYONE, SOME_RIGHTS, status);
    SID_IDENTIFIER_AUTHORITY nt = SECURITY_NT_AUTHORITY;
    void* system = nullptr;
    ::AllocateAndInitializeSid(&nt, 1, SECURITY_LOCAL_SYSTEM_RID, 0, 0, 0, 0, 0, 0, 0, &system);
    SECURITY_DESCRIPTOR descriptor;
    EXPECT_TRUE(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_TRUE(::SetSecurityDescriptorDacl(&descriptor, TRUE, Access::list(acl), FALSE));
    EXPECT_TRUE(::SetSecurityDescriptorOwner(&descriptor, system, FALSE));
    EXPECT_TRUE(::SetSecurityDescriptorGroup(&descriptor, system, FALSE));
    DWORD size = 0;
    ::MakeSelfRelativeSD(&descriptor, nullptr, &size);
    std::vector<unsigned char> bytes(size);
    EXPECT_TRUE(::MakeSelfRelativeSD(&descriptor, bytes.data(), &size));
    ::FreeSid(system);
    return bytes;
}

// A service whose descriptor seems to grow between the first queries.
struct Service {
    std::vector<unsigned char> descriptor;
    std::vector<DWORD> demands; // answers before the descriptor is given
    std::size_t queries = 0;
    DWORD error = ERROR_INSUFFICIENT_BUFFER;
} service;

BOOL WINAPI query_service(SC_HANDLE, SECURITY_INFORMATION information, void* buffer, DWORD size, DWORD* needed)
{
    EXPECT_EQ(information, static_cast<SECURITY_INFORMATION>(DACL_SECURITY_INFORMATION));
    if (service.queries < service.demands.size()) {
        *needed = service.demands[service.queries++];
        ::SetLastError(service.error);
        return FALSE;
    }
    ++service.queries;
    EXPECT_GE(size, service.descriptor.size());
    EXPECT_TRUE(service.demands.empty() || size == service.demands.back());
    std::memcpy(buffer, service.descriptor.data(), service.descriptor.size());
    return TRUE;
}

} // namespace

TEST(Security, that_cannot_be_made_throws_and_leaves_nothing)
{
    const auto fail_each_way = [] {
        {
            const auto initialise = failing<ERROR_INVALID_PARAMETER>(win32.initialize_security_descriptor);
            EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_security security; }), "::InitializeSecurityDescriptor");
        }
        {
            const auto allocate = failing<ERROR_NOT_ENOUGH_MEMORY>(win32.local_alloc);
            EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_security security; }), "::InitializeSecurityDescriptor");
        }
        {
            const auto set = failing<0>(win32.set_security_descriptor_dacl);
            EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_security security; }), "::SetSecurityDescriptorDacl");
        }
    };
    fail_each_way(); // the system keeps something from the first time
    const unsigned int before = test::system_blocks();
    fail_each_way();
    EXPECT_EQ(test::system_blocks(), before);
}

TEST(Security, a_fetch_that_fails_keeps_the_earlier_descriptor)
{
    Tam_event event;
    Tam_security security;
    Tam_status status;
    event.add_security(security, status);
    Access::fetch(security, status);
    ASSERT_TRUE(status.is_clear());
    void* const earlier = Access::descriptor(security);
    const auto fail_each_way = [&] {
        {
            const auto absolute = failing<ERROR_INVALID_SECURITY_DESCR>(win32.make_absolute_sd);
            Access::fetch(security, status);
            EXPECT_EQ(chain(status), L"C2000079 1338");
        }
        {
            const Swap absolute(win32.make_absolute_sd, &absolute_sizes_only);
            Access::fetch(security, status);
            EXPECT_EQ(chain(status), L"C2000079 1361");
        }
        {
            const auto allocate = failing<ERROR_NOT_ENOUGH_MEMORY>(win32.local_alloc);
            Access::fetch(security, status);
            EXPECT_EQ(chain(status), L"C2000079 C2000001");
        }
        {
            const auto initialise = failing<ERROR_INVALID_PARAMETER>(win32.initialize_security_descriptor);
            EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Access::fetch(security, status); }),
                      "::InitializeSecurityDescriptor");
        }
        status.clear();
    };
    fail_each_way(); // the system keeps something from the first time
    const unsigned int before = test::system_blocks();
    fail_each_way();
    EXPECT_EQ(test::system_blocks(), before);
    EXPECT_EQ(Access::descriptor(security), earlier);
    EXPECT_EQ(security.security_attributes(false)->lpSecurityDescriptor, earlier);
    Access::fetch(security, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(test::system_blocks(), before) << "the earlier descriptor is released when another takes its place";
}

TEST(Security, success_without_a_descriptor_is_a_failure)
{
    Tam_security security;
    Tam_status status;
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, L"name", status);
    void* const earlier = Access::descriptor(security);
    const Swap get(win32.get_named_security_info, &nothing_by_name);
    Access::fetch(security, status);
    EXPECT_EQ(chain(status), L"C2000079 1338");
    EXPECT_EQ(Access::descriptor(security), earlier);
}

TEST(Security, the_absolute_form_is_one_block_with_every_part)
{
    std::vector<unsigned char> given = self_relative();
    Tam_status status;
    void* const block = Access::to_absolute(given.data(), status);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(status.is_clear());
    const Found_list found = test::list_in(block);
    EXPECT_EQ(found.entries, 1U);
    EXPECT_EQ(found.rights, SOME_RIGHTS);

    const auto* const descriptor = static_cast<SECURITY_DESCRIPTOR*>(block);
    const auto* const list = reinterpret_cast<unsigned char*>(descriptor->Dacl);
    EXPECT_EQ(list, static_cast<unsigned char*>(block) + sizeof(SECURITY_DESCRIPTOR));
    const auto* const owner = static_cast<unsigned char*>(descriptor->Owner);
    EXPECT_EQ(owner, list + descriptor->Dacl->AclSize);
    EXPECT_EQ(static_cast<unsigned char*>(descriptor->Group), owner + ::GetLengthSid(descriptor->Owner));
    EXPECT_TRUE(::EqualSid(descriptor->Owner, descriptor->Group));
    EXPECT_EQ(::LocalFree(block), nullptr);
}

TEST(Security, asks_a_service_again_with_the_size_that_it_names)
{
    const Swap query(win32.query_service_object_security, &query_service);
    for (const std::vector<DWORD>& demands : {std::vector<DWORD>{}, {5000}, {600, 1200, 70000}}) {
        service = {self_relative(), demands};
        Tam_security security;
        Tam_status status;
        security.associate_with_object(TAM_SEC_OBJ_SERVICE, &service, status);
        Access::fetch(security, status);
        EXPECT_TRUE(status.is_clear());
        EXPECT_EQ(service.queries, demands.size() + 1);
        EXPECT_EQ(test::list_in(Access::descriptor(security)).rights, SOME_RIGHTS);
    }
}

TEST(Security, a_service_that_does_not_answer_is_reported)
{
    const Swap query(win32.query_service_object_security, &query_service);
    Tam_security security;
    Tam_status status;
    security.associate_with_object(TAM_SEC_OBJ_SERVICE, &service, status);
    service = {self_relative(), {5000}, 0, ERROR_ACCESS_DENIED};
    Access::fetch(security, status);
    EXPECT_EQ(chain(status), L"C2000079 5");
    service = {self_relative(), {0}}; // "too small" without a larger size must not loop
    Access::fetch(security, status);
    EXPECT_EQ(chain(status), L"C2000079 122");
    {
        const auto allocate = failing<ERROR_NOT_ENOUGH_MEMORY>(win32.local_alloc);
        Access::fetch(security, status);
        EXPECT_EQ(chain(status), L"C2000079 C2000001");
    }
    const auto set = failing<ERROR_ACCESS_DENIED>(win32.set_service_object_security);
    Access::write(security, status);
    EXPECT_EQ(chain(status), L"C200007A 5");
}

TEST(Security, a_list_that_cannot_be_read_is_not_written)
{
    Tam_event event;
    Tam_security security;
    Tam_status status;
    event.add_security(security, status);
    const auto get = failing<ERROR_INVALID_SECURITY_DESCR>(win32.get_security_descriptor_dacl);
    Access::write(security, status);
    EXPECT_EQ(chain(status), L"C2000076 1338");
}

TEST(Security, a_descriptor_without_a_list_writes_nothing)
{
    Tam_event event;
    Tam_security security;
    Tam_status status;
    event.add_security(security, status);
    ASSERT_TRUE(::SetSecurityDescriptorDacl(Access::descriptor(security), FALSE, nullptr, FALSE));
    const Swap set(
        win32.set_security_info,
        +[](HANDLE, SE_OBJECT_TYPE, SECURITY_INFORMATION, void*, void*, ACL*, ACL*)
             WINAPI -> DWORD { return ERROR_ACCESS_DENIED; });
    Access::write(security, status);
    EXPECT_TRUE(status.is_clear());
}
