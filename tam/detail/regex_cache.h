#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include <tam/detail/regex_automaton.h>
#include <tam/regex/regular_expression.h>
#include <tam/stream/eol.h>

namespace tam::detail {

// What one search at a time works with: automata that grow while they are used, and memory for a block of a stream.
template <class Unit>
class Regex_cache {
public:
    Regex_automaton& automaton(Regex_automaton::Goal goal, const Regex_language& language)
    {
        std::unique_ptr<Regex_automaton>& slot = m_automata[static_cast<std::size_t>(goal)];
        if (slot == nullptr) {
            slot = std::make_unique<Regex_automaton>(language, goal);
        }
        return *slot;
    }

    // The automaton for LINES.
    Regex_automaton& lines(Tam_eol eol, const Regex_language& language)
    {
        std::unique_ptr<Regex_automaton>& slot = m_automata[static_cast<std::size_t>(Regex_automaton::Goal::LINES)];
        if (slot == nullptr || m_eol != eol) {
            slot = std::make_unique<Regex_automaton>(language, Regex_automaton::Goal::LINES, eol);
            m_eol = eol;
        }
        return *slot;
    }

    std::vector<Unit>& block(std::size_t units)
    {
        m_block.resize(units);
        return m_block;
    }

private:
    std::array<std::unique_ptr<Regex_automaton>, Regex_automaton::GOALS> m_automata;
    Tam_eol m_eol = TAM_EOL_ANY; // that of LINES
    std::vector<Unit> m_block;
};

// Caches between their uses. A thread finds the one it used before, as long as no other took it.
template <class Unit>
class Regex_cache_pool {
public:
    static constexpr std::size_t MAXIMUM = Tam_regular_expression::MAXIMUM_CACHES;

    using Cache = Regex_cache<Unit>;

    // A cache for the length of a scope. One that an exception leaves may be half changed, and is not kept.
    class Lease {
    public:
        explicit Lease(Regex_cache_pool& pool) : m_pool(pool), m_cache(pool._take()) {}
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        ~Lease()
        {
            if (m_is_done) {
                m_pool._give_back(std::move(m_cache));
            }
        }

        Cache& operator*() const { return *m_cache; }
        void done() { m_is_done = true; }

    private:
        Regex_cache_pool& m_pool;
        std::unique_ptr<Cache> m_cache;
        bool m_is_done = false;
    };

    Regex_cache_pool() = default;
    Regex_cache_pool(const Regex_cache_pool&) = delete;
    Regex_cache_pool& operator=(const Regex_cache_pool&) = delete;
    ~Regex_cache_pool();

private:
    static constexpr std::size_t CACHE_LINE = 64;

    // Each on a line of its own: the threads' slots are not to disturb each other.
    struct alignas(CACHE_LINE) Slot {
        std::atomic<Cache*> cache = nullptr; // owned
    };

    std::unique_ptr<Cache> _take();
    void _give_back(std::unique_ptr<Cache> cache) noexcept;

    std::array<Slot, MAXIMUM> m_slots;
};

} // namespace tam::detail
