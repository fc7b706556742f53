#include <tam/security/acl.h>

#include <cstring>
#include <new>

#include <windows.h>

#include <tam/detail/win32.h>
#include <tam/status/exceptions.h>
#include <tam/status/status.h>

namespace tam {

namespace {

// Null when there is no memory.
ACL* new_list(DWORD size)
{
    return static_cast<ACL*>(::operator new(size, std::nothrow));
}

void delete_list(ACL* list)
{
    ::operator delete(list);
}

// Null when there is no memory.
ACL* new_empty_list()
{
    constexpr DWORD size = sizeof(ACL);
    ACL* const list = new_list(size);
    if (list != nullptr && !detail::win32.initialize_acl(list, size, DWORD{ACL_REVISION})) {
        delete_list(list);
        throw Tam_sys_call_fail("::InitializeAcl");
    }
    return list;
}

} // namespace

Tam_acl::Tam_acl() : m_list(new_empty_list())
{
    if (m_list == nullptr) {
        throw std::bad_alloc();
    }
}

Tam_acl::Tam_acl(const Tam_acl& other, Tam_status& status)
{
    status.clear();
    if (other.m_list == nullptr) {
        return;
    }
    m_list = new_list(other.m_list->AclSize);
    if (m_list == nullptr) {
        status = TAM_E_OUT_OF_MEMORY;
        return;
    }
    std::memcpy(m_list, other.m_list, other.m_list->AclSize);
}

Tam_acl::~Tam_acl()
{
    delete_list(m_list);
}

void Tam_acl::erase(Tam_status& status)
{
    status.clear();
    ACL* const list = new_empty_list();
    if (list == nullptr) {
        status = TAM_E_OUT_OF_MEMORY;
        return;
    }
    delete_list(m_list);
    m_list = list;
}

} // namespace tam
