#pragma once

#include <tam/detail/export.h>

struct _ACL;

namespace tam {

class Tam_status;

namespace detail {
struct Security_access;
}

/// A discretionary access-control list: who may do what with an object, in the system's binary form.
///
/// It may hold no list at all, which is another thing than an empty one: an empty list grants nobody anything, no list
/// grants everybody everything. A failed change leaves the list as it was.
///
/// An object has no lock: it belongs to one thread at a time. It is copied with a status only.
class TAM_API Tam_acl {
public:
    /// An empty list.
    /// @throws Tam_sys_call_fail  "::InitializeAcl"
    Tam_acl();

    /// A copy of other's list.
    /// @param status  cleared first; TAM_E_OUT_OF_MEMORY (0xC2000001) when there was no memory: then this object holds
    ///                no list
    Tam_acl(const Tam_acl& other, Tam_status& status);

    Tam_acl(const Tam_acl&) = delete;
    Tam_acl& operator=(const Tam_acl&) = delete;

    ~Tam_acl();

    /// Replaces the list by an empty one.
    /// @param status  cleared first; TAM_E_OUT_OF_MEMORY (0xC2000001) when there was no memory
    /// @throws Tam_sys_call_fail  "::InitializeAcl"
    void erase(Tam_status& status);

private:
    friend class Tam_security;
    friend struct detail::Security_access;

    _ACL* get_list() const noexcept { return m_list; }

    _ACL* m_list = nullptr; // owned; null: no list
};

} // namespace tam
