#pragma once

#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include <windows.h>

namespace tam::detail {

struct Sid_delete {
    void operator()(void* sid) const noexcept { ::operator delete(sid); }
};

// Owns one security identifier, in memory of operator new.
using Owned_sid = std::unique_ptr<void, Sid_delete>;

inline Owned_sid copy_sid(void* sid)
{
    const std::size_t size = ::GetLengthSid(sid);
    Owned_sid copy(::operator new(size));
    std::memcpy(copy.get(), sid, size);
    return copy;
}

// Owns the security identifiers in sids, each in memory of operator new: the form in which the group cache takes and
// gives them.
struct Sid_table {
    Sid_table() = default;
    Sid_table(Sid_table&&) noexcept = default;
    Sid_table& operator=(Sid_table&&) = delete;
    ~Sid_table()
    {
        for (void* const sid : sids) {
            ::operator delete(sid);
        }
    }

    void add(Owned_sid sid)
    {
        sids.push_back(sid.get());
        sid.release();
    }

    void add_copies(const std::vector<void*>& others)
    {
        sids.reserve(sids.size() + others.size());
        for (void* const sid : others) {
            add(copy_sid(sid));
        }
    }

    std::vector<void*> release() noexcept { return std::exchange(sids, {}); }

    std::vector<void*> sids;
};

} // namespace tam::detail
