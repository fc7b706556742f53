#pragma once

#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>

struct _ACE_HEADER;
struct _ACL;

namespace tam {

class Tam_status;

namespace detail {
class Acl_entries;
struct Security_access;
} // namespace detail

/// Trustees that are the same on every machine, and those that depend on who asks.
enum Tam_standard_trustees : unsigned int {
    TAM_TRUSTEE_EVERYONE = 0,       ///< S-1-1-0
    TAM_TRUSTEE_LOCAL_SYSTEM = 1,   ///< the local system account, S-1-5-18
    TAM_TRUSTEE_SERVICES = 2,       ///< S-1-5-6
    TAM_TRUSTEE_USERS = 3,          ///< the built-in group Users, S-1-5-32-545
    TAM_TRUSTEE_ADMINISTRATORS = 4, ///< the built-in group Administrators, S-1-5-32-544
    TAM_TRUSTEE_PROCESS_USER = 5,   ///< the user of the process
    TAM_TRUSTEE_THREAD_USER = 6,    ///< whom the calling thread acts for, if anybody, else the user of the process
};

/// What an entry of an access list does with its rights.
enum Tam_access_modes : unsigned int {
    TAM_ACCESS_GRANT = 0,
    TAM_ACCESS_DENY = 1,
    TAM_ACCESS_AUDIT = 2, ///< see Tam_acl::set_rights()
};

/// A discretionary access-control list: who may do what with an object, in the system's binary form.
///
/// It may hold no list at all, which is another thing than an empty one: an empty list grants nobody anything, no list
/// grants everybody everything. An object holds no list after a constructor with a status has reported a failure: do not
/// give it to a Tam_security then. A failed change leaves the list as it was.
///
/// Trustees are given as Tam_standard_trustees or by the name of an account, `DOMAIN\name` or `name`. Rights are the
/// system's 32-bit access masks; bits are taken as they are, generic rights are not mapped to others.
///
/// Denials come before grants in the list, so that they win whoever reads it in order. Entries in a list that was made
/// elsewhere can be of kinds that this class does not make (for single properties of an object, with conditions): they
/// are kept bit by bit, counted and shown by get_entry(), and merged as they are; effective rights do not heed them.
///
/// Every operation clears its status first. With every one of them the status can become TAM_E_OUT_OF_MEMORY
/// (0xC2000001), alone or beneath TAM_E_SID, when there was no memory. Operations with a trustee first make its
/// identifier, which can fail:
///  - TAM_E_SID (0xC2000074) over the system's reason: there is no account of that name (1332), or it could not be
///    looked up;
///  - for TAM_TRUSTEE_PROCESS_USER and TAM_TRUSTEE_THREAD_USER, TAM_E_SID over TAM_E_TOKEN_OPEN (0xC2000072), or over
///    TAM_E_TOKEN_USER (0xC2000073; the length that the system asked for), over the system's reason;
///  - std::invalid_argument "Invalid argument to Tam_acl::create_sid()" is thrown for a value that is none of
///    Tam_standard_trustees.
///
/// An object has no lock: it belongs to one thread at a time. It is copied with a status only.
class TAM_API Tam_acl {
public:
    /// An empty list.
    /// @throws Tam_sys_call_fail  "::InitializeAcl"
    /// @throws std::bad_alloc     no memory
    Tam_acl();

    /// A list with one entry that grants the rights: starts with no list and does what set_rights() does. After a
    /// failure this object holds no list.
    Tam_acl(Tam_standard_trustees trustee, unsigned int rights, Tam_status& status);
    Tam_acl(const std::wstring& name, unsigned int rights, Tam_status& status);

    /// A copy of other's list.
    /// @param status  cleared first; TAM_E_OUT_OF_MEMORY (0xC2000001) when there was no memory: then this object holds
    ///                no list
    Tam_acl(const Tam_acl& other, Tam_status& status);

    Tam_acl(const Tam_acl&) = delete;
    Tam_acl& operator=(const Tam_acl&) = delete;

    ~Tam_acl();

    /// Adds the entries of other, in its order, each as set_rights() would; other can be this object. When other holds
    /// no list or an empty one, nothing changes.
    ///
    /// What entries say about inheritance is not taken over. An entry of a kind that this class does not make is taken
    /// over bit by bit, denials to the front and others to the end, unless the list has the same entry already.
    /// @param status  what set_rights() reports of the list, and TAM_E_ACL_ENTRY_READ (0xC200006F) over 1336 when an
    ///                entry of other cannot be read; then no entry has been added
    void merge(const Tam_acl& other, Tam_status& status);

    /// Replaces the list by an empty one.
    /// @param status  TAM_E_OUT_OF_MEMORY (0xC2000001) when there was no memory
    /// @throws Tam_sys_call_fail  "::InitializeAcl"
    void erase(Tam_status& status);

    /// Grants the rights to the trustee, or denies them.
    ///
    /// Where the list has an entry of that mode for the trustee, the rights are added to those of the first such entry.
    /// Else a new entry is made: a denial at the front of the list, a grant at its end. TAM_ACCESS_AUDIT looks for an
    /// audit entry to add to, which only lists made elsewhere have; without one it adds a **grant** at the end, each
    /// time. It is kept so.
    ///
    /// The first rights in an object without a list make one, and take everything from everybody else.
    /// @param status  what making the trustee's identifier reports, see the class; then, the list being as it was:
    ///   - TAM_E_ACL_ENTRY_READ (0xC200006F) over 1336: an entry of the list cannot be read
    ///   - TAM_E_ACL_INITIALIZE (0xC2000070) over the system's reason: the list would become too long; an access list
    ///     has at most 65535 bytes
    ///   - TAM_E_ACL_ENTRY_ADD (0xC2000071) over the system's reason
    /// @throws std::invalid_argument  for a trustee, see the class; then "Invalid argument to
    ///                                Tam_acl::map_access_mode()" for a mode that is none of Tam_access_modes
    void set_rights(Tam_standard_trustees trustee, Tam_access_modes mode, unsigned int rights, Tam_status& status);
    void set_rights(const std::wstring& name, Tam_access_modes mode, unsigned int rights, Tam_status& status);

    /// The effective rights of the trustee: what the entries for the trustee and for its groups grant, less what they
    /// deny, wherever in the list they stand. Without a list: 0xF0000000, the four generic rights, and no other bit.
    ///
    /// Everyone is a group of each trustee. A user's other groups are asked of this machine and of the domain controller
    /// of the user's domain, and remembered for the whole process (Tam_acl_group_cache); indirect membership counts for
    /// local groups. A domain controller that is not found is left out without a word. Groups that could not be
    /// determined to the end are a failure and are not remembered, so that no denial goes unseen.
    ///
    /// A group is not looked into for groups that it belongs to. Entries of kinds that this class does not make, and
    /// audits, are not heeded.
    /// @param rights  0 when status reports a failure
    /// @param status  what making the trustee's identifier reports, see the class; then
    ///   - the system's reason alone: the trustee's name could not be looked up
    ///   - TAM_E_LOCAL_GROUPS (0xC2000081) or TAM_E_GLOBAL_GROUPS (0xC2000082) over the system's reason: the user's
    ///     groups could not be determined. A user that is not found there (2221) has no groups, which is no failure
    ///   - TAM_E_LOCAL_GROUPS_TRUNCATED (0xC200007F) or TAM_E_GLOBAL_GROUPS_TRUNCATED (0xC2000080) with the number of
    ///     all groups: not all were read
    ///   - TAM_E_SID (0xC2000074) over the system's reason: a group could not be looked up
    ///   - TAM_E_ACL_ENTRY_READ (0xC200006F) over 1336: an entry of the list cannot be read
    /// @throws std::invalid_argument  for a trustee, see the class
    /// @throws Tam_sys_call_fail      as the members of Tam_mutex, for the memory of groups
    void get_rights(Tam_standard_trustees trustee, unsigned int& rights, Tam_status& status) const;
    void get_rights(const std::wstring& name, unsigned int& rights, Tam_status& status) const;

    /// Whether the trustee has each of the wanted rights; false when status reports a failure.
    /// @param found   null, or where to store all rights of the trustee; 0 after a failure
    /// @param status  as for get_rights(), which also says what is thrown
    bool test_rights(Tam_standard_trustees trustee, unsigned int wanted, Tam_status& status,
                     unsigned int* found = nullptr) const;
    bool test_rights(const std::wstring& name, unsigned int wanted, Tam_status& status,
                     unsigned int* found = nullptr) const;

    /// The number of entries; 0 also without a list.
    void get_entry_count(unsigned int& count, Tam_status& status) const;

    /// One entry of the list.
    /// @param index   0 is the first
    /// @param name    the trustee's name as get_trustee_name() gives it. Empty when it could not be looked up, and for
    ///                an entry of a kind whose trustee is not known
    /// @param mode    for an entry that this class does not make: the number of its kind in the system's form
    /// @param rights  0 for an entry that is too short to have any
    /// @param status  TAM_E_ACL_ENTRY_INDEX (0xC200007C) for an index that is not below the number of entries, or
    ///                TAM_E_ACL_ENTRY_READ (0xC200006F) over 1336 when the entry cannot be read: name, mode and rights
    ///                are as they were. Else the system's reason when the name could not be looked up: mode and rights
    ///                are set
    void get_entry(unsigned int index, std::wstring& name, Tam_access_modes& mode, unsigned int& rights,
                   Tam_status& status) const;

    /// The trustee's name: `DOMAIN\name`, or `name` where the domain is empty. For an identifier that belongs to no
    /// account it is `BUILTIN\Account Unknown`, which is no failure.
    /// @param name    as it was when status reports a failure
    /// @param status  what making the trustee's identifier reports, see the class; or the system's reason alone when
    ///                the name could not be looked up
    /// @throws std::invalid_argument  for a trustee, see the class
    static void get_trustee_name(Tam_standard_trustees trustee, std::wstring& name, Tam_status& status);

    /// The names of the groups of a user, asked of this machine (local groups, indirect membership included, then global
    /// ones) and then the same of the domain controller of the user's domain, where one is found. Everyone is not among
    /// them. A name can come twice. Nothing is remembered.
    /// @param name    `DOMAIN\user` or `user`; an account that is not found has no groups, which is no failure
    /// @param groups  cleared first; after a failure it has what was read so far
    /// @param status  TAM_E_LOCAL_GROUPS, TAM_E_GLOBAL_GROUPS, TAM_E_LOCAL_GROUPS_TRUNCATED and
    ///                TAM_E_GLOBAL_GROUPS_TRUNCATED, as for get_rights()
    static void get_groups(const std::wstring& name, Tam_object_vector<std::wstring>& groups, Tam_status& status);

private:
    friend class Tam_security;
    friend struct detail::Security_access;

    Tam_acl(_ACL* list, Tam_status& status);

    _ACL* get_list() const noexcept { return m_list; }

    void copy_acl(const _ACL* list, Tam_status& status);
    void set_sid_rights(void* sid, unsigned int type, unsigned int rights, Tam_status& status);
    void get_sid_rights(void* sid, unsigned int& rights, Tam_status& status) const;
    void _copy_entry(const _ACE_HEADER& entry, unsigned int revision, Tam_status& status);
    template <class Add>
    void _insert_entry(const detail::Acl_entries& entries, unsigned int size, unsigned int revision, bool first,
                       const Add& add, Tam_status& status);

    template <class Trustee>
    void _set_rights(const Trustee& trustee, Tam_access_modes mode, unsigned int rights, Tam_status& status);
    template <class Trustee>
    void _get_rights(const Trustee& trustee, unsigned int& rights, Tam_status& status) const;

    _ACL* m_list = nullptr; // owned, in memory of operator new; null: no list
};

} // namespace tam
