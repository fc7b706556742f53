#pragma once

#include <windows.h>

namespace tam::detail {

// Walks the entries of an access list in their order and never past its end, whatever the list says about itself: it may
// come from elsewhere. A null list has no entries.
class Acl_entries {
public:
    explicit Acl_entries(ACL* list) noexcept;

    // Moves to the next entry, at first to the first. False behind the last one and before an entry that cannot be read,
    // which failed() tells apart. Kinds that are not known are read; they may have no rights and no identifier.
    bool next() noexcept;
    bool failed() const noexcept { return m_failed; }

    // The entry that next() moved to.
    const ACE_HEADER& header() const noexcept;
    unsigned int type() const noexcept { return header().AceType; }
    DWORD rights() const noexcept { return m_rights != nullptr ? *m_rights : 0; }
    void add_rights(DWORD rights) noexcept { *m_rights |= rights; } // of a plain entry
    void* sid() const noexcept { return m_sid; }                    // null: none that is known

    // Bytes from the beginning of the list to the end of the entry; before the first, the size of an empty list.
    DWORD end() const noexcept { return m_end; }

    // Grants, denials and audits without conditions: the kinds that the library makes itself. They always have rights
    // and an identifier.
    static bool is_plain(unsigned int type) noexcept { return type <= SYSTEM_AUDIT_ACE_TYPE; }
    static bool is_denial(unsigned int type) noexcept;

private:
    BYTE* _at(DWORD offset) const noexcept { return reinterpret_cast<BYTE*>(m_list) + offset; }
    void* _find_sid() const noexcept;

    ACL* m_list;
    DWORD m_size; // of the list
    DWORD m_left; // entries not read
    DWORD m_begin = 0;
    DWORD m_end = sizeof(ACL);
    DWORD* m_rights = nullptr;
    void* m_sid = nullptr;
    bool m_failed = false;
};

} // namespace tam::detail
