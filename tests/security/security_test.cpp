#include <tests/support/test.h>

#include <tests/security/security_access.h>
#include <tests/support/descriptors.h>

using namespace tam;
using test::Found_list;
using test::SOME_RIGHTS;
using Access = detail::Security_access;

namespace {

constexpr char BAD_TYPE[] = "Invalid argument to Tam_security::map_object_type()";

} // namespace

TEST(Security, grants_every_user_full_access_by_default)
{
    Tam_security security;
    const SECURITY_ATTRIBUTES* const attributes = security.security_attributes(false);
    EXPECT_EQ(attributes->nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_FALSE(attributes->bInheritHandle);
    const Found_list found = test::list_in(attributes->lpSecurityDescriptor);
    EXPECT_TRUE(found.present);
    EXPECT_TRUE(found.null);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    EXPECT_TRUE(::GetSecurityDescriptorControl(attributes->lpSecurityDescriptor, &control, &revision));
    EXPECT_EQ(control, SE_DACL_PRESENT) << "absolute, and nothing is defaulted";
    EXPECT_EQ(revision, 1U);
}

TEST(Security, maps_object_types)
{
    EXPECT_EQ(Access::map(TAM_SEC_OBJ_FILE), 1U);
    EXPECT_EQ(Access::map(TAM_SEC_OBJ_KERNEL), 6U);
    EXPECT_EQ(Access::map(TAM_SEC_OBJ_REGISTRY_KEY), 4U);
    EXPECT_EQ(Access::map(TAM_SEC_OBJ_SERVICE), 2U);
    for (const unsigned int value : {4U, 5U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(test::thrown<std::invalid_argument>([&] { Access::map(static_cast<Tam_sec_obj_type>(value)); }),
                  BAD_TYPE)
            << value;
    }
}

TEST(Security, is_associated_once_and_with_good_handles_and_types_only)
{
    const Tam_event event;
    const auto invalid = reinterpret_cast<void*>(~0ULL);
    const auto bad_type = static_cast<Tam_sec_obj_type>(4);
    for (const bool by_name : {false, true}) {
        Tam_security security;
        Tam_status status;
        security.associate_with_object(TAM_SEC_OBJ_KERNEL, nullptr, status);
        EXPECT_EQ(status, 0xC2000075U);
        status.clear();
        security.associate_with_object(bad_type, invalid, status);
        EXPECT_EQ(status, 0xC2000075U);
        EXPECT_EQ(test::thrown<std::invalid_argument>(
                      [&] { security.associate_with_object(bad_type, event.handle(), status); }),
                  BAD_TYPE);
        EXPECT_EQ(
            test::thrown<std::invalid_argument>([&] { security.associate_with_object(bad_type, L"name", status); }),
            BAD_TYPE);

        // Nothing of that associated it.
        status = 5U;
        if (by_name) {
            security.associate_with_object(TAM_SEC_OBJ_FILE, std::wstring(L"C:\\"), status);
        } else {
            security.associate_with_object(TAM_SEC_OBJ_KERNEL, event.handle(), status);
        }
        EXPECT_EQ(status, 5U) << "neither cleared nor set";

        for (const Tam_sec_obj_type type : {TAM_SEC_OBJ_REGISTRY_KEY, bad_type}) {
            status = 5U;
            security.associate_with_object(type, event.handle(), status);
            EXPECT_EQ(test::chain(status), L"C2000078");
            status.clear();
            security.associate_with_object(type, L"name", status);
            EXPECT_EQ(status, 0xC2000078U);
        }
        security.associate_with_object(TAM_SEC_OBJ_KERNEL, nullptr, status);
        EXPECT_EQ(status, 0xC2000075U) << "the handle is looked at first";
    }
}

TEST(Security, without_an_association_fetches_and_writes_nothing)
{
    Tam_security security;
    void* const descriptor = Access::descriptor(security);
    Tam_status status(5);
    Access::fetch(security, status);
    Access::write(security, status);
    EXPECT_EQ(status, 5U);
    EXPECT_FALSE(status.has_child());
    EXPECT_EQ(Access::descriptor(security), descriptor);
}

TEST(Security, reports_an_object_that_is_not_there)
{
    for (const bool by_name : {false, true}) {
        Tam_security security;
        Tam_status status;
        if (by_name) {
            security.associate_with_object(TAM_SEC_OBJ_REGISTRY_KEY, L"CURRENT_USER\\Software\\tam_test_none", status);
        } else {
            Tam_event closed;
            security.associate_with_object(TAM_SEC_OBJ_KERNEL, closed.handle(), status);
        }
        void* const descriptor = Access::descriptor(security);
        Access::fetch(security, status);
        EXPECT_EQ(test::chain(status), by_name ? L"C2000079 2" : L"C2000079 6");
        EXPECT_EQ(Access::descriptor(security), descriptor);
        Access::write(security, status);
        EXPECT_EQ(test::chain(status), by_name ? L"C200007A 2" : L"C200007A 6");
    }
}

// A copied pair shares descriptor and list, so only one of the two is destroyed here.
TEST(Security, copies_share_the_descriptor)
{
    alignas(Tam_security) unsigned char memory[2][sizeof(Tam_security)];
    Tam_security source;
    Tam_status status;
    source.associate_with_object(TAM_SEC_OBJ_FILE, L"C:", status);
    source.security_attributes(true);
    auto* const copy = new (memory[0]) Tam_security(source);
    EXPECT_EQ(Access::descriptor(*copy), Access::descriptor(source));
    EXPECT_EQ(copy->security_attributes(true)->lpSecurityDescriptor, Access::descriptor(source));
    EXPECT_NE(copy->security_attributes(true), source.security_attributes(true));
    copy->associate_with_object(TAM_SEC_OBJ_FILE, L"D:", status);
    EXPECT_EQ(status, 0xC2000078U) << "the association is copied too";

    auto* const target = new (memory[1]) Tam_security;
    void* const dropped = Access::descriptor(*target);
    *target = source;
    EXPECT_EQ(Access::descriptor(*target), Access::descriptor(source));
    EXPECT_TRUE(test::list_in(dropped).present) << "what the target held is not released";
    ::LocalFree(dropped);
}
