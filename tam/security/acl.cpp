#include <tam/security/acl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include <windows.h>

#include <tam/detail/account.h>
#include <tam/detail/acl_entries.h>
#include <tam/detail/failure.h>
#include <tam/detail/sid.h>
#include <tam/detail/win32.h>
#include <tam/security/group_cache.h>
#include <tam/status/exceptions.h>
#include <tam/status/status.h>

namespace tam {

namespace {

using detail::Acl_entries;
using detail::Owned_sid;
using detail::Sid_table;

// What an object without a list grants everybody.
constexpr unsigned int ALL_GENERIC_RIGHTS = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE | GENERIC_ALL;

// An entry without its identifier.
constexpr DWORD ENTRY_HEAD_BYTES = offsetof(ACCESS_ALLOWED_ACE, SidStart);

struct List_delete {
    void operator()(ACL* list) const noexcept { ::operator delete(list); }
};
using Owned_list = std::unique_ptr<ACL, List_delete>;

// Null when there is no memory.
Owned_list new_list(std::size_t size)
{
    return Owned_list(static_cast<ACL*>(::operator new(size, std::nothrow)));
}

// Null when there is no memory.
Owned_list new_empty_list()
{
    constexpr DWORD size = sizeof(ACL);
    Owned_list list = new_list(size);
    if (list != nullptr && !detail::win32.initialize_acl(list.get(), size, DWORD{ACL_REVISION})) {
        throw Tam_sys_call_fail("::InitializeAcl");
    }
    return list;
}

void report_unreadable_entry(Tam_status& status)
{
    detail::push_system_error(status, ERROR_INVALID_ACL, TAM_E_ACL_ENTRY_READ);
}

bool copy_aces(ACL& target, const ACL* source, DWORD source_end)
{
    // The call takes entries that it does not change.
    return source == nullptr || source_end == sizeof(ACL) ||
           detail::win32.add_ace(&target, DWORD{target.AclRevision}, MAXDWORD, const_cast<ACL*>(source) + 1,
                                 source_end - DWORD{sizeof(ACL)});
}

unsigned int map_access_mode(Tam_access_modes mode)
{
    switch (mode) {
    case TAM_ACCESS_GRANT:
        return ACCESS_ALLOWED_ACE_TYPE;
    case TAM_ACCESS_DENY:
        return ACCESS_DENIED_ACE_TYPE;
    case TAM_ACCESS_AUDIT:
        return SYSTEM_AUDIT_ACE_TYPE;
    }
    throw std::invalid_argument("Invalid argument to Tam_acl::map_access_mode()");
}

Tam_acl_group_cache& group_cache()
{
    static Tam_acl_group_cache cache;
    return cache;
}

// Built when the library is loaded. Lists of the static build may be earlier still.
[[maybe_unused]] Tam_acl_group_cache& built_at_load = group_cache();

// The identifiers of the trustee's groups, into an empty table.
void get_group_sids(void* sid, Sid_table& groups, Tam_status& status)
{
    if (group_cache().get_groups(sid, groups.sids)) {
        return;
    }
    std::wstring name;
    SID_NAME_USE use = SidTypeUnknown;
    detail::sid_to_name(sid, name, status, &use);
    Tam_object_vector<std::wstring> names;
    if (status.ok() && use == SidTypeUser) {
        detail::add_group_names(name, names, status);
    }
    const auto add = [&](const auto& trustee) {
        if (status.ok()) {
            if (Owned_sid group = detail::create_sid(trustee, status)) {
                groups.add(std::move(group));
            }
        }
    };
    for (const std::wstring& group : names) {
        add(group);
    }
    add(TAM_TRUSTEE_EVERYONE);
    if (status.ok()) {
        group_cache().set_groups(sid, groups.sids);
    }
}

bool has_rights(unsigned int rights, unsigned int wanted, const Tam_status& status, unsigned int* found)
{
    if (found != nullptr) {
        *found = rights;
    }
    return status.ok() && (rights & wanted) == wanted;
}

bool sid_match_or_group_member(void* entry_sid, void* sid, const Sid_table& groups)
{
    return ::EqualSid(entry_sid, sid) || std::any_of(groups.sids.begin(), groups.sids.end(), [entry_sid](void* group) {
               return ::EqualSid(entry_sid, group) != FALSE;
           });
}

} // namespace

Tam_acl::Tam_acl()
{
    Owned_list list = new_empty_list();
    if (list == nullptr) {
        throw std::bad_alloc();
    }
    m_list = list.release();
}

Tam_acl::Tam_acl(Tam_standard_trustees trustee, unsigned int rights, Tam_status& status)
{
    set_rights(trustee, TAM_ACCESS_GRANT, rights, status);
}

Tam_acl::Tam_acl(const std::wstring& name, unsigned int rights, Tam_status& status)
{
    set_rights(name, TAM_ACCESS_GRANT, rights, status);
}

Tam_acl::Tam_acl(const Tam_acl& other, Tam_status& status) : Tam_acl(other.m_list, status) {}

Tam_acl::Tam_acl(ACL* list, Tam_status& status)
{
    status.clear();
    copy_acl(list, status);
}

Tam_acl::~Tam_acl()
{
    List_delete()(m_list);
}

void Tam_acl::merge(const Tam_acl& other, Tam_status& status)
{
    detail::run(status, [&] {
        Tam_acl merged(*this, status);
        Acl_entries entries(other.m_list);
        while (status.ok() && entries.next()) {
            if (Acl_entries::is_plain(entries.type())) {
                merged.set_sid_rights(entries.sid(), entries.type(), entries.rights(), status);
            } else {
                merged._copy_entry(entries.header(), other.m_list->AclRevision, status);
            }
        }
        if (entries.failed()) {
            report_unreadable_entry(status);
        }
        if (status.ok()) {
            std::swap(m_list, merged.m_list);
        }
    });
}

void Tam_acl::erase(Tam_status& status)
{
    status.clear();
    Owned_list list = new_empty_list();
    if (list == nullptr) {
        status = TAM_E_OUT_OF_MEMORY;
        return;
    }
    List_delete()(std::exchange(m_list, list.release()));
}

void Tam_acl::set_rights(Tam_standard_trustees trustee, Tam_access_modes mode, unsigned int rights, Tam_status& status)
{
    _set_rights(trustee, mode, rights, status);
}

void Tam_acl::set_rights(const std::wstring& name, Tam_access_modes mode, unsigned int rights, Tam_status& status)
{
    _set_rights(name, mode, rights, status);
}

void Tam_acl::get_rights(Tam_standard_trustees trustee, unsigned int& rights, Tam_status& status) const
{
    _get_rights(trustee, rights, status);
}

void Tam_acl::get_rights(const std::wstring& name, unsigned int& rights, Tam_status& status) const
{
    _get_rights(name, rights, status);
}

bool Tam_acl::test_rights(Tam_standard_trustees trustee, unsigned int wanted, Tam_status& status,
                          unsigned int* found) const
{
    unsigned int rights = 0;
    get_rights(trustee, rights, status);
    return has_rights(rights, wanted, status, found);
}

bool Tam_acl::test_rights(const std::wstring& name, unsigned int wanted, Tam_status& status, unsigned int* found) const
{
    unsigned int rights = 0;
    get_rights(name, rights, status);
    return has_rights(rights, wanted, status, found);
}

void Tam_acl::get_entry_count(unsigned int& count, Tam_status& status) const
{
    status.clear();
    count = m_list != nullptr ? m_list->AceCount : 0;
}

void Tam_acl::get_entry(unsigned int index, std::wstring& name, Tam_access_modes& mode, unsigned int& rights,
                        Tam_status& status) const
{
    detail::run(status, [&] {
        unsigned int count = 0;
        get_entry_count(count, status);
        if (index >= count) {
            detail::assign_failure(status, TAM_E_ACL_ENTRY_INDEX);
            return;
        }
        Acl_entries entries(m_list);
        for (unsigned int i = 0; i <= index; ++i) {
            if (!entries.next()) {
                report_unreadable_entry(status);
                return;
            }
        }
        mode = static_cast<Tam_access_modes>(entries.type());
        rights = entries.rights();
        name.clear();
        if (entries.sid() != nullptr) {
            detail::sid_to_name(entries.sid(), name, status);
        }
    });
}

void Tam_acl::get_trustee_name(Tam_standard_trustees trustee, std::wstring& name, Tam_status& status)
{
    detail::run(status, [&] {
        if (const Owned_sid sid = detail::create_sid(trustee, status)) {
            detail::sid_to_name(sid.get(), name, status);
        }
    });
}

void Tam_acl::get_groups(const std::wstring& name, Tam_object_vector<std::wstring>& groups, Tam_status& status)
{
    detail::run(status, [&] {
        const std::wstring user = name; // which may be one of the groups
        groups.clear();
        detail::add_group_names(user, groups, status);
    });
}

void Tam_acl::copy_acl(const ACL* list, Tam_status& status)
{
    if (list == nullptr) {
        return;
    }
    if (list->AclSize < sizeof(ACL)) {
        detail::push_system_error(status, ERROR_INVALID_ACL, TAM_E_ACL_INITIALIZE);
        return;
    }
    Owned_list copy = new_list(list->AclSize);
    if (copy == nullptr) {
        status = TAM_E_OUT_OF_MEMORY;
        return;
    }
    std::memcpy(copy.get(), list, list->AclSize);
    m_list = copy.release();
}

void Tam_acl::set_sid_rights(void* sid, unsigned int type, unsigned int rights, Tam_status& status)
{
    Acl_entries entries(m_list);
    while (entries.next()) {
        if (entries.type() == type && ::EqualSid(entries.sid(), sid)) {
            entries.add_rights(rights);
            return;
        }
    }
    const bool denial = type == ACCESS_DENIED_ACE_TYPE;
    // Audits become grants as well: see set_rights().
    const auto add = [&](ACL& list) {
        return denial ? detail::win32.add_access_denied_ace(&list, DWORD{ACL_REVISION}, DWORD{rights}, sid)
                      : detail::win32.add_access_allowed_ace(&list, DWORD{ACL_REVISION}, DWORD{rights}, sid);
    };
    _insert_entry(entries, ENTRY_HEAD_BYTES + ::GetLengthSid(sid), ACL_REVISION, denial, add, status);
}

void Tam_acl::get_sid_rights(void* sid, unsigned int& rights, Tam_status& status) const
{
    if (m_list == nullptr) {
        rights = ALL_GENERIC_RIGHTS;
        return;
    }
    Sid_table groups;
    get_group_sids(sid, groups, status);
    if (!status.ok()) {
        return;
    }
    unsigned int granted = 0;
    unsigned int denied = 0;
    Acl_entries entries(m_list);
    while (entries.next()) {
        const bool denial = entries.type() == ACCESS_DENIED_ACE_TYPE;
        if ((denial || entries.type() == ACCESS_ALLOWED_ACE_TYPE) &&
            sid_match_or_group_member(entries.sid(), sid, groups)) {
            (denial ? denied : granted) |= entries.rights();
        }
    }
    if (entries.failed()) {
        report_unreadable_entry(status);
        return;
    }
    rights = granted & ~denied;
}

// Takes over an entry of a kind that this class does not make, unless the list has the same already.
void Tam_acl::_copy_entry(const ACE_HEADER& entry, unsigned int revision, Tam_status& status)
{
    Acl_entries entries(m_list);
    while (entries.next()) {
        if (entries.header().AceSize == entry.AceSize && std::memcmp(&entries.header(), &entry, entry.AceSize) == 0) {
            return;
        }
    }
    const auto add = [&](ACL& list) {
        // The call takes an entry that it does not change.
        return detail::win32.add_ace(&list, DWORD{list.AclRevision}, MAXDWORD, const_cast<ACE_HEADER*>(&entry),
                                     DWORD{entry.AceSize});
    };
    _insert_entry(entries, entry.AceSize, revision, Acl_entries::is_denial(entry.AceType), add, status);
}

// Replaces the list by one with another entry of size bytes, which add puts before or behind the earlier ones.
template <class Add>
void Tam_acl::_insert_entry(const Acl_entries& entries, unsigned int size, unsigned int revision, bool first,
                            const Add& add, Tam_status& status)
{
    if (entries.failed()) {
        report_unreadable_entry(status);
        return;
    }
    const DWORD new_size = entries.end() + size;
    Owned_list list = new_list(new_size);
    if (list == nullptr) {
        status = TAM_E_OUT_OF_MEMORY;
        return;
    }
    if (m_list != nullptr) {
        revision = std::max<unsigned int>(revision, m_list->AclRevision);
    }
    if (!detail::win32.initialize_acl(list.get(), new_size, DWORD{revision})) {
        detail::push_last_error(status, TAM_E_ACL_INITIALIZE);
        return;
    }
    const bool added = first ? add(*list) && copy_aces(*list, m_list, entries.end())
                             : copy_aces(*list, m_list, entries.end()) && add(*list);
    if (!added) {
        detail::push_last_error(status, TAM_E_ACL_ENTRY_ADD);
        return;
    }
    List_delete()(std::exchange(m_list, list.release()));
}

template <class Trustee>
void Tam_acl::_set_rights(const Trustee& trustee, Tam_access_modes mode, unsigned int rights, Tam_status& status)
{
    detail::run(status, [&] {
        if (const Owned_sid sid = detail::create_sid(trustee, status)) {
            set_sid_rights(sid.get(), map_access_mode(mode), rights, status);
        }
    });
}

template <class Trustee>
void Tam_acl::_get_rights(const Trustee& trustee, unsigned int& rights, Tam_status& status) const
{
    rights = 0;
    detail::run(status, [&] {
        if (const Owned_sid sid = detail::create_sid(trustee, status)) {
            get_sid_rights(sid.get(), rights, status);
        }
    });
}

} // namespace tam
