#include <tam/detail/acl_entries.h>

#include <cstddef>

namespace tam::detail {

namespace {

// An entry with rights and, in most kinds, an identifier right behind them.
constexpr DWORD RIGHTS_OFFSET = offsetof(ACCESS_ALLOWED_ACE, Mask);
constexpr DWORD SID_OFFSET = offsetof(ACCESS_ALLOWED_ACE, SidStart);
// An entry for objects has flags there, then up to two GUIDs.
constexpr DWORD OBJECT_FLAGS_OFFSET = offsetof(ACCESS_ALLOWED_OBJECT_ACE, Flags);
constexpr DWORD OBJECT_GUIDS_OFFSET = offsetof(ACCESS_ALLOWED_OBJECT_ACE, ObjectType);

constexpr DWORD SID_HEAD = offsetof(SID, SubAuthority);

} // namespace

Acl_entries::Acl_entries(ACL* list) noexcept
    : m_list(list), m_size(list != nullptr ? list->AclSize : 0), m_left(list != nullptr ? list->AceCount : 0)
{}

bool Acl_entries::next() noexcept
{
    if (m_failed || m_left == 0) {
        return false;
    }
    m_failed = true;
    const DWORD left = m_size > m_end ? m_size - m_end : 0;
    if (left < sizeof(ACE_HEADER)) {
        return false;
    }
    const DWORD size = reinterpret_cast<const ACE_HEADER*>(_at(m_end))->AceSize;
    if (size < sizeof(ACE_HEADER) || size > left || size % sizeof(DWORD) != 0) {
        return false;
    }
    m_begin = m_end;
    m_end += size;
    m_rights = size >= SID_OFFSET ? reinterpret_cast<DWORD*>(_at(m_begin + RIGHTS_OFFSET)) : nullptr;
    m_sid = _find_sid();
    if (m_sid == nullptr && is_plain(type())) {
        return false;
    }
    --m_left;
    m_failed = false;
    return true;
}

const ACE_HEADER& Acl_entries::header() const noexcept
{
    return *reinterpret_cast<const ACE_HEADER*>(_at(m_begin));
}

bool Acl_entries::is_denial(unsigned int type) noexcept
{
    return type == ACCESS_DENIED_ACE_TYPE || type == ACCESS_DENIED_OBJECT_ACE_TYPE ||
           type == ACCESS_DENIED_CALLBACK_ACE_TYPE || type == ACCESS_DENIED_CALLBACK_OBJECT_ACE_TYPE;
}

void* Acl_entries::_find_sid() const noexcept
{
    const DWORD size = m_end - m_begin;
    DWORD offset = SID_OFFSET;
    switch (type()) {
    case ACCESS_ALLOWED_ACE_TYPE:
    case ACCESS_DENIED_ACE_TYPE:
    case SYSTEM_AUDIT_ACE_TYPE:
    case SYSTEM_ALARM_ACE_TYPE:
    case ACCESS_ALLOWED_CALLBACK_ACE_TYPE:
    case ACCESS_DENIED_CALLBACK_ACE_TYPE:
    case SYSTEM_AUDIT_CALLBACK_ACE_TYPE:
    case SYSTEM_ALARM_CALLBACK_ACE_TYPE:
    case SYSTEM_MANDATORY_LABEL_ACE_TYPE:
        break;
    case ACCESS_ALLOWED_OBJECT_ACE_TYPE:
    case ACCESS_DENIED_OBJECT_ACE_TYPE:
    case SYSTEM_AUDIT_OBJECT_ACE_TYPE:
    case SYSTEM_ALARM_OBJECT_ACE_TYPE:
    case ACCESS_ALLOWED_CALLBACK_OBJECT_ACE_TYPE:
    case ACCESS_DENIED_CALLBACK_OBJECT_ACE_TYPE:
    case SYSTEM_AUDIT_CALLBACK_OBJECT_ACE_TYPE:
    case SYSTEM_ALARM_CALLBACK_OBJECT_ACE_TYPE: {
        if (size < OBJECT_GUIDS_OFFSET) {
            return nullptr;
        }
        const DWORD flags = *reinterpret_cast<const DWORD*>(_at(m_begin + OBJECT_FLAGS_OFFSET));
        offset = OBJECT_GUIDS_OFFSET;
        offset += (flags & ACE_OBJECT_TYPE_PRESENT) != 0 ? DWORD{sizeof(GUID)} : 0;
        offset += (flags & ACE_INHERITED_OBJECT_TYPE_PRESENT) != 0 ? DWORD{sizeof(GUID)} : 0;
        break;
    }
    default:
        return nullptr;
    }
    if (size < offset + SID_HEAD) {
        return nullptr;
    }
    auto* const sid = reinterpret_cast<SID*>(_at(m_begin + offset));
    const bool fits = sid->SubAuthorityCount <= SID_MAX_SUB_AUTHORITIES &&
                      SID_HEAD + sid->SubAuthorityCount * sizeof(DWORD) <= size - offset;
    return fits && sid->Revision == SID_REVISION ? sid : nullptr;
}

} // namespace tam::detail
