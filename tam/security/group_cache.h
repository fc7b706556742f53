#pragma once

#include <vector>

#include <tam/datetime/time.h>
#include <tam/detail/export.h>
#include <tam/thread/mutex.h>

namespace tam {

/// Remembers the groups of trustees, so that repeated questions about the rights of one trustee cost no network calls.
///
/// Tam_acl keeps one for the whole process. It is emptied as a whole: by the first get_groups() at or after the expiry
/// time, which from then on is CACHE_TIMEOUT later. The expiry time begins as the time of construction, so that the
/// first get_groups() always starts from an empty cache and drops what set_groups() stored before it.
///
/// The expiry time is a time of day and wraps at midnight: so it is, and so it stays. Entries made less than
/// CACHE_TIMEOUT before midnight are dropped by the next look-up, because "00:05" is earlier than any time of that
/// evening; and where nobody looks anything up between an expiry time late in the evening and midnight, the entries stay
/// until that time of the next day.
///
/// Identifiers are the system's (SID), given as pointers to valid ones. Any thread may call any member. The object can be
/// neither copied nor moved.
class TAM_API Tam_acl_group_cache {
public:
    /// 900 seconds.
    static const Tam_time_period CACHE_TIMEOUT;

    /// An empty cache.
    /// @throws Tam_sys_call_fail  "::CreateMutex"
    Tam_acl_group_cache();

    Tam_acl_group_cache(const Tam_acl_group_cache&) = delete;
    Tam_acl_group_cache& operator=(const Tam_acl_group_cache&) = delete;

    ~Tam_acl_group_cache();

    /// True when the trustee is known: groups is then replaced by copies of its groups' identifiers. They are the
    /// caller's, who releases each with `operator delete`; what groups held before is not released. Else groups is left
    /// alone. Of several entries for one trustee the oldest counts.
    /// @param sid  the trustee's identifier
    /// @throws Tam_sys_call_fail  as the members of Tam_mutex
    /// @throws std::bad_alloc     no memory for the copies; groups is as it was
    bool get_groups(void* sid, std::vector<void*>& groups);

    /// Appends an entry with copies of the trustee's identifier and of those of its groups, whether or not it has one.
    /// @throws Tam_sys_call_fail  as the members of Tam_mutex
    /// @throws std::bad_alloc     no memory; nothing is stored
    void set_groups(void* sid, const std::vector<void*>& groups);

private:
    struct Entry;

    void check_expiry();
    void erase() noexcept;

    std::vector<Entry> m_entries;
    Tam_time m_expiry;
    Tam_mutex m_mutex; // guards both
};

} // namespace tam
