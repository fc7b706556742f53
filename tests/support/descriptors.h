#pragma once

#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>

#include <tam/security/security.h>

namespace tam::test {

/// The rights of the entries below; not generic ones, which an object maps to its own.
constexpr DWORD SOME_RIGHTS = READ_CONTROL | WRITE_DAC | SYNCHRONIZE;

struct Found_list {
    bool present = false;
    bool null = false;
    DWORD entries = 0;
    DWORD rights = 0; // of the first entry
};

inline Found_list list_in(void* descriptor)
{
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    EXPECT_TRUE(::IsValidSecurityDescriptor(descriptor));
    EXPECT_TRUE(::GetSecurityDescriptorDacl(descriptor, &present, &list, &defaulted));
    Found_list found;
    found.present = present != FALSE;
    found.null = list == nullptr;
    if (found.present && list != nullptr) {
        found.entries = list->AceCount;
        void* entry = nullptr;
        if (::GetAce(list, 0, &entry)) {
            found.rights = static_cast<ACCESS_ALLOWED_ACE*>(entry)->Mask;
        }
    }
    return found;
}

inline Found_list list_of(HANDLE object, SE_OBJECT_TYPE type)
{
    void* descriptor = nullptr;
    EXPECT_EQ(
        ::GetSecurityInfo(object, type, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, nullptr, &descriptor),
        0U);
    const Found_list found = list_in(descriptor);
    ::LocalFree(descriptor);
    return found;
}

/// Puts the list into the descriptor, past the class.
inline void put_list(Tam_security& security, ACL* list)
{
    EXPECT_TRUE(
        ::SetSecurityDescriptorDacl(security.security_attributes(false)->lpSecurityDescriptor, TRUE, list, FALSE));
}

} // namespace tam::test
