#include <tam/detail/regex_cache.h>

#include <windows.h>

namespace tam::detail {

namespace {

// Where the calling thread looks first. Thread identifiers are multiples of 4.
std::size_t first_slot()
{
    return ::GetCurrentThreadId() / 4;
}

} // namespace

template <class Unit>
Regex_cache_pool<Unit>::~Regex_cache_pool()
{
    for (const Slot& slot : m_slots) {
        delete slot.cache.load();
    }
}

template <class Unit>
std::unique_ptr<Regex_cache<Unit>> Regex_cache_pool<Unit>::_take()
{
    const std::size_t first = first_slot();
    for (std::size_t i = 0; i != MAXIMUM; ++i) {
        std::atomic<Cache*>& slot = m_slots[(first + i) % MAXIMUM].cache;
        if (slot.load(std::memory_order_relaxed) != nullptr) {
            if (Cache* const taken = slot.exchange(nullptr, std::memory_order_acq_rel)) {
                return std::unique_ptr<Cache>(taken);
            }
        }
    }
    return std::make_unique<Cache>();
}

template <class Unit>
void Regex_cache_pool<Unit>::_give_back(std::unique_ptr<Cache> cache) noexcept
{
    const std::size_t first = first_slot();
    for (std::size_t i = 0; i != MAXIMUM; ++i) {
        std::atomic<Cache*>& slot = m_slots[(first + i) % MAXIMUM].cache;
        Cache* none = nullptr;
        if (slot.compare_exchange_strong(none, cache.get(), std::memory_order_acq_rel)) {
            cache.release();
            return;
        }
    }
}

template class Regex_cache_pool<char>;
template class Regex_cache_pool<wchar_t>;

} // namespace tam::detail
