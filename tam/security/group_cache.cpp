#include <tam/security/group_cache.h>

#include <algorithm>
#include <utility>

#include <windows.h>

#include <tam/detail/mutex_guard.h>
#include <tam/detail/sid.h>

namespace tam {

struct Tam_acl_group_cache::Entry {
    detail::Owned_sid trustee;
    detail::Sid_table groups;
};

const Tam_time_period Tam_acl_group_cache::CACHE_TIMEOUT(900LL, 0);

Tam_acl_group_cache::Tam_acl_group_cache() : m_expiry(Tam_time::now()) {}

Tam_acl_group_cache::~Tam_acl_group_cache() = default;

bool Tam_acl_group_cache::get_groups(void* sid, std::vector<void*>& groups)
{
    detail::Mutex_guard guard(m_mutex);
    check_expiry();
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(),
                                    [sid](const Entry& one) { return ::EqualSid(one.trustee.get(), sid) != FALSE; });
    const bool found = entry != m_entries.end();
    detail::Sid_table copies;
    if (found) {
        copies.add_copies(entry->groups.sids);
    }
    guard.unlock();
    if (found) {
        groups = copies.release();
    }
    return found;
}

void Tam_acl_group_cache::set_groups(void* sid, const std::vector<void*>& groups)
{
    Entry entry;
    entry.trustee = detail::copy_sid(sid);
    entry.groups.add_copies(groups);
    detail::Mutex_guard guard(m_mutex);
    m_entries.push_back(std::move(entry));
    guard.unlock();
}

// The times compared are times of day, on purpose: see the class.
void Tam_acl_group_cache::check_expiry()
{
    const Tam_time now = Tam_time::now();
    if (now >= m_expiry) {
        erase();
        m_expiry = now + CACHE_TIMEOUT;
    }
}

void Tam_acl_group_cache::erase() noexcept
{
    m_entries.clear();
}

} // namespace tam
