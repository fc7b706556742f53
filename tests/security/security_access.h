#pragma once

#include <tam/security/acl.h>
#include <tam/security/security.h>

namespace tam::detail {

// Reaches what Tam_security and Tam_acl do only for each other.
struct Security_access {
    static void fetch(Tam_security& security, Tam_status& status) { security.get_security_descriptor(status); }
    static void write(const Tam_security& security, Tam_status& status) { security.set_security_descriptor(status); }
    static void* to_absolute(void* descriptor, Tam_status& status)
    {
        return Tam_security::sr_to_absolute(descriptor, status);
    }
    static unsigned int map(Tam_sec_obj_type type) { return Tam_security::map_object_type(type); }
    static void* descriptor(const Tam_security& security) { return security.m_descriptor; }
    static _ACL* list(const Tam_acl& acl) { return acl.get_list(); }
    static Tam_acl acl(_ACL* list)
    {
        Tam_status status;
        return Tam_acl(list, status);
    }
};

} // namespace tam::detail
