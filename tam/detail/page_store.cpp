#include <tam/detail/page_store.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include <tam/detail/failure.h>
#include <tam/detail/seek.h>
#include <tam/status/codes.h>

namespace tam::detail {

namespace {

constexpr unsigned int BLOCK_SIZE = Tam_page_buffer::BLOCK_SIZE;
constexpr unsigned int BLOCK_SHIFT = 13;
constexpr unsigned int BLOCK_MASK = BLOCK_SIZE - 1;
static_assert(BLOCK_SIZE == 1U << BLOCK_SHIFT);

constexpr unsigned int GROUP_SIZE = 1024; // blocks that are described at a time

constexpr const wchar_t* SWAP_FILE_EXTENSION = L"buf";

unsigned int memory_limit(unsigned int size_hint, unsigned int memory_blocks)
{
    if (size_hint > std::uint64_t{memory_blocks} * BLOCK_SIZE) {
        return Tam_page_buffer::FALLBACK_MEMORY_BLOCKS;
    }
    return std::min(memory_blocks, Tam_page_buffer::MAXIMUM_MEMORY_BLOCKS);
}

} // namespace

Page_store::Page_store(unsigned int size_hint, unsigned int memory_blocks, bool many_readers)
    : m_limit(memory_limit(size_hint, memory_blocks)),
      m_region(win32.virtual_alloc(static_cast<void*>(nullptr), SIZE_T{m_limit} * BLOCK_SIZE, DWORD{MEM_RESERVE},
                                   DWORD{PAGE_READWRITE}))
{
    if (many_readers) {
        m_turns.emplace();
    }
}

Page_store::~Page_store()
{
    if (!m_swap_file.is_open()) {
        return;
    }
    m_swap_file.close();
    try {
        Tam_status ignored;
        Tam_file::remove(m_swap_path, ignored, false);
    } catch (const std::exception&) { // no memory: the file stays
    }
}

void Page_store::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    seek_in(m_length, mode, offset, position, status);
}

unsigned int Page_store::read(unsigned long long& position, unsigned int count, void* destination, Tam_status& status)
{
    status.clear();
    if (position >= m_length) {
        assign_failure(status, TAM_E_END_OF_DATA);
        return 0;
    }
    const auto total = static_cast<unsigned int>(std::min<unsigned long long>(count, m_length - position));
    auto* const bytes = static_cast<unsigned char*>(destination);
    unsigned int done = 0;
    while (done < total) {
        unsigned int moved = 0;
        try {
            moved = _read_block(position, total - done, bytes + done, status);
        } catch (const std::bad_alloc&) { // for the report of a failure
        }
        if (moved == 0) {
            status.clear(); // and the same block is tried again, for as long as it takes
        }
        position += moved;
        done += moved;
    }
    return done;
}

void Page_store::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    status.clear();
    const auto* bytes = static_cast<const unsigned char*>(source);
    try {
        while (count != 0) {
            const unsigned int moved = _write_block(position, count, bytes, status);
            if (moved == 0) {
                return;
            }
            position += moved;
            bytes += moved;
            count -= moved;
            m_length = std::max(m_length, position);
        }
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
}

// Returns the bytes moved, at least 1; 0 when the block could not be read back.
unsigned int Page_store::_read_block(unsigned long long position, unsigned int count, unsigned char* destination,
                                     Tam_status& status)
{
    // Without a swap file no block moves, and readers need not take turns.
    std::unique_lock<Tam_critical> turn;
    if (m_turns && m_swap_file.is_open()) {
        turn = std::unique_lock(*m_turns);
    }
    const unsigned int offset = position & BLOCK_MASK;
    const unsigned int moved = std::min(count, BLOCK_SIZE - offset);
    Block* const block = _find(position >> BLOCK_SHIFT);
    // The hand goes round the blocks with data. That of a write goes to the block of the first byte behind them, which
    // may be one more; both are meant.
    const unsigned long long last = (m_length - 1) >> BLOCK_SHIFT;
    if (block != nullptr && block->swapped_out && !_swap_in(*block, last, status)) {
        return 0;
    }
    if (block == nullptr || block->memory == nullptr) {
        std::memset(destination, 0, moved);
    } else {
        std::memcpy(destination, block->memory + offset, moved);
    }
    return moved;
}

// Returns the bytes moved, at least 1; 0 with the reason in status.
unsigned int Page_store::_write_block(unsigned long long position, unsigned int count, const unsigned char* source,
                                      Tam_status& status)
{
    const unsigned long long index = position >> BLOCK_SHIFT;
    // A block behind the region never has memory while the region has pieces left.
    if ((index >= m_limit && m_committed < m_limit) || index >= Tam_page_buffer::MAXIMUM_BLOCKS) {
        assign_failure(status, TAM_E_OUT_OF_MEMORY);
        return 0;
    }
    Block& block = _find_or_make(index);
    if ((block.memory == nullptr || block.swapped_out) && !_make_resident(block, index, status)) {
        return 0;
    }
    const unsigned int offset = position & BLOCK_MASK;
    const unsigned int moved = std::min(count, BLOCK_SIZE - offset);
    std::memcpy(block.memory + offset, source, moved); // dirty stays as it is
    return moved;
}

bool Page_store::_make_resident(Block& block, unsigned long long index, Tam_status& status)
{
    const unsigned long long last = m_length >> BLOCK_SHIFT;
    if (block.swapped_out) {
        return _swap_in(block, last, status);
    }
    if (m_committed < m_limit) {
        block.memory = _commit(index, status);
        return block.memory != nullptr;
    }
    block.memory = _evict(last, status);
    if (block.memory == nullptr) {
        return false;
    }
    std::memset(block.memory, 0, BLOCK_SIZE);
    _advance_hand(last);
    return true;
}

// The piece of the region that is this block's own place; null with the reason in status.
unsigned char* Page_store::_commit(unsigned long long index, Tam_status& status)
{
    if (!m_region) {
        assign_failure(status, TAM_E_OUT_OF_MEMORY);
        return nullptr;
    }
    unsigned char* const piece = static_cast<unsigned char*>(m_region.get()) + index * BLOCK_SIZE;
    if (win32.virtual_alloc(static_cast<void*>(piece), SIZE_T{BLOCK_SIZE}, DWORD{MEM_COMMIT}, DWORD{PAGE_READWRITE}) ==
        nullptr) {
        push_last_error(status, TAM_E_OUT_OF_MEMORY);
        return nullptr;
    }
    ++m_committed;
    return piece;
}

// Reads a block back that is swapped out. last: the last index before the hand starts again at 0.
bool Page_store::_swap_in(Block& block, unsigned long long last, Tam_status& status)
{
    if (block.memory == nullptr) {
        block.memory = _evict(last, status);
        if (block.memory == nullptr) {
            return false;
        }
    }
    if (!_seek_swap_file(block.file_offset, status)) {
        return false;
    }
    if (m_swap_file.read(block.memory, BLOCK_SIZE, status) < BLOCK_SIZE) {
        push_failure(status, TAM_E_WRITE);
        return false;
    }
    m_swap_position = block.file_offset + BLOCK_SIZE;
    block.swapped_out = false;
    _advance_hand(last);
    return true;
}

// Takes the memory of the block under the hand; null with the reason in status. The hand moves only where that block
// has none to give.
unsigned char* Page_store::_evict(unsigned long long last, Tam_status& status)
{
    auto victim = _resident(m_hand, last);
    if (!victim) {
        victim = _resident(0, last);
    }
    if (!victim) {
        assign_failure(status, TAM_E_WRITE);
        return nullptr;
    }
    m_hand = *victim;
    Block& block = *_find(m_hand);
    if (block.dirty && !_swap_out(block, status)) {
        return nullptr;
    }
    block.swapped_out = true;
    return std::exchange(block.memory, nullptr);
}

bool Page_store::_swap_out(Block& block, Tam_status& status)
{
    _open_swap_file(status);
    if (!status.ok() || !_seek_swap_file(m_swap_end, status)) {
        return false;
    }
    const unsigned int written = m_swap_file.write(block.memory, BLOCK_SIZE, status);
    if (written < BLOCK_SIZE) {
        if (status.ok()) {
            assign_failure(status, TAM_E_WRITE);
        }
        return false;
    }
    block.file_offset = m_swap_end;
    m_swap_end += BLOCK_SIZE;
    m_swap_position = m_swap_end;
    block.dirty = false;
    return true;
}

void Page_store::_open_swap_file(Tam_status& status)
{
    if (m_swap_file.is_open()) {
        return;
    }
    try {
        m_swap_path = Tam_file::temp_name(SWAP_FILE_EXTENSION);
        m_swap_file.open(m_swap_path, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, TAM_FILE_RANDOM_ACCESS,
                         TAM_FILE_SHARE_NONE, status);
        if (!status.ok()) {
            push_failure(status, TAM_E_WRITE);
        }
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) { // no turn to make up a name, or an impossible temporary directory
        assign_failure(status, TAM_E_WRITE);
    }
}

// Comes before a transfer, which sets m_swap_position when it succeeds. Blocks that follow each other need no seek.
bool Page_store::_seek_swap_file(unsigned long long offset, Tam_status& status)
{
    if (std::exchange(m_swap_position, std::nullopt) == offset) {
        return true;
    }
    m_swap_file.seek(offset, status);
    if (!status.ok()) {
        push_failure(status, TAM_E_WRITE);
        return false;
    }
    return true;
}

// Null for a block of a group that was never written to: a new block.
Page_store::Block* Page_store::_find(unsigned long long index) const
{
    const unsigned long long group = index / GROUP_SIZE;
    if (group >= m_groups.size() || m_groups[group] == nullptr) {
        return nullptr;
    }
    return &m_groups[group][index % GROUP_SIZE];
}

Page_store::Block& Page_store::_find_or_make(unsigned long long index)
{
    const unsigned long long group = index / GROUP_SIZE;
    if (group >= m_groups.size()) {
        m_groups.resize(group + 1);
    }
    if (m_groups[group] == nullptr) {
        m_groups[group] = std::make_unique<Block[]>(GROUP_SIZE);
    }
    return m_groups[group][index % GROUP_SIZE];
}

// The first block with memory from first to last.
std::optional<unsigned long long> Page_store::_resident(unsigned long long first, unsigned long long last) const
{
    for (unsigned long long index = first; index <= last; ++index) {
        const Block* const block = _find(index);
        if (block == nullptr) {
            index |= GROUP_SIZE - 1; // nor has any other of its group
        } else if (block->memory != nullptr) {
            return index;
        }
    }
    return std::nullopt;
}

// Moves the hand from a block that is swapped out to the next that is not. New blocks are not swapped out; so the hand
// may come to stand on one without memory. After a write far behind the end all blocks up to last can be swapped out:
// then the hand goes round once and stays.
void Page_store::_advance_hand(unsigned long long last)
{
    for (unsigned long long step = 0; step <= last; ++step) {
        const Block* const block = _find(m_hand);
        if (block == nullptr || !block->swapped_out) {
            return;
        }
        m_hand = m_hand < last ? m_hand + 1 : 0;
    }
}

} // namespace tam::detail
