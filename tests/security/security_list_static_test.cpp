#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/security/lists.h>
#include <tests/security/security_access.h>
#include <tests/support/failing_new.h>

using namespace tam;
using detail::win32;
using test::chain;
using test::failing;
using test::Swap;
using Access = detail::Security_access;

namespace {

BOOL WINAPI no_set_dacl(void*, BOOL, ACL*, BOOL)
{
    ::SetLastError(ERROR_INVALID_ACL);
    return FALSE;
}

} // namespace

TEST(Security_list, failures_keep_descriptor_list_and_object)
{
    const Tam_event event;
    Tam_status status;
    const Tam_acl acl(TAM_TRUSTEE_USERS, SYNCHRONIZE, status);
    const Tam_acl more(TAM_TRUSTEE_SERVICES, SYNCHRONIZE, status);
    bool warming_up = true; // the system keeps something from the first time
    for (const bool associated : {true, false, true}) {
        Tam_security security;
        if (associated) {
            security.associate_with_object(TAM_SEC_OBJ_KERNEL, event.handle(), status);
        }
        security.set_disc_acl(acl, status, false);
        ASSERT_TRUE(status.is_clear());
        void* const descriptor = Access::descriptor(security);
        const unsigned int blocks = test::system_blocks();
        const auto reports = [&](bool merge) {
            security.set_disc_acl(more, status, merge);
            EXPECT_EQ(Access::descriptor(security), descriptor);
            return chain(status);
        };
        {
            const Swap set(win32.set_security_descriptor_dacl, &no_set_dacl);
            EXPECT_EQ(reports(false), L"C2000077 1336");
            EXPECT_EQ(reports(true), L"C2000077 1336");
        }
        {
            const auto get = failing<ERROR_INVALID_SECURITY_DESCR>(win32.get_security_descriptor_dacl);
            EXPECT_EQ(reports(true), L"C2000076 1338");
            EXPECT_EQ(security.get_disc_acl(status), nullptr);
            EXPECT_EQ(chain(status), L"C2000076 1338");
        }
        if (associated) {
            // Reading for get_disc_acl has put another in its place.
            security.set_disc_acl(acl, status, false);
            const auto initialise = failing<0>(win32.initialize_security_descriptor);
            EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { security.set_disc_acl(more, status, false); }),
                      "::InitializeSecurityDescriptor");
        }
        status.clear();
        if (!std::exchange(warming_up, false)) {
            EXPECT_EQ(test::system_blocks(), blocks);
        }
        const std::unique_ptr<Tam_acl> found(security.get_disc_acl(status));
        EXPECT_EQ(test::entries_of(*found), (std::vector<std::wstring>{L"0 00100000 S-1-5-32-545"}));
    }
}

TEST(Security_list, that_cannot_be_closed_throws_or_reports)
{
    Tam_status status;
    {
        const auto initialise = failing<0>(win32.initialize_acl);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_security closed(false, status); }), "::InitializeAcl");
    }
    int calls = 0;
    static int* counter = nullptr;
    counter = &calls;
    // The first call is the default constructor's.
    const Swap set(
        win32.set_security_descriptor_dacl,
        +[](void* descriptor, BOOL present, ACL* list, BOOL defaulted) WINAPI -> BOOL {
            return ++*counter % 2 == 1 ? ::SetSecurityDescriptorDacl(descriptor, present, list, defaulted)
                                       : no_set_dacl(descriptor, present, list, defaulted);
        });
    Tam_security closed(false, status);
    EXPECT_EQ(chain(status), L"C2000077 1336");
    const Tam_acl acl;
    Tam_security of_list(acl, status);
    EXPECT_EQ(chain(status), L"C2000077 1336");
    const std::unique_ptr<Tam_acl> found(of_list.get_disc_acl(status));
    EXPECT_EQ(found, nullptr) << "it grants everybody full access: the caller has to look at the status";
}

TEST(Security_list, memory_that_runs_out_is_a_failure_like_others)
{
    const Tam_event event;
    Tam_status status;
    Tam_acl acl(TAM_TRUSTEE_USERS, SYNCHRONIZE, status);
    const Tam_acl more(TAM_TRUSTEE_SERVICES, SYNCHRONIZE, status);
    Tam_security security(acl, status);
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, event.handle(), status);
    std::unique_ptr<Tam_acl> found;
    const std::function<void()> operations[] = {
        [&] { security.set_disc_acl(more, status, true); },
        [&] { found.reset(security.get_disc_acl(status)); },
        [&] { Tam_security closed(false, status); },
    };
    for (const auto& operation : operations) {
        long long blocks = 0;
        const unsigned int failures = test::fail_each_allocation(
            [&] {
                // A fetched descriptor has its list in itself: the list set last is let go before the count.
                found.reset(security.get_disc_acl(status));
                found.reset();
                blocks = test::live_blocks();
            },
            operation,
            [&](unsigned int nth, bool) {
                EXPECT_EQ(chain(status), L"C2000001") << nth;
                EXPECT_EQ(found, nullptr) << nth;
                status.clear();
                EXPECT_EQ(test::live_blocks(), blocks) << nth;
            });
        EXPECT_GT(failures, 1U);
        EXPECT_TRUE(status.is_clear());
    }
    found.reset(security.get_disc_acl(status));
    EXPECT_EQ(test::entries_of(*found), (std::vector<std::wstring>{L"0 00100000 S-1-5-6"}));
}
