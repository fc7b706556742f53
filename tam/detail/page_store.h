#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/file/file.h>
#include <tam/status/status.h>
#include <tam/stream/page_buffer.h>
#include <tam/stream/seek_mode.h>
#include <tam/thread/critical.h>

namespace tam::detail {

// Memory of VirtualAlloc.
struct Virtual_memory_traits {
    using Type = void*;
    static constexpr Type NONE = nullptr;
    static bool is_none(Type memory) noexcept { return memory == nullptr; }
    static void release(Type memory) noexcept { win32.virtual_free(memory, SIZE_T{0}, DWORD{MEM_RELEASE}); }
};

using Virtual_memory = Unique_handle<Virtual_memory_traits>;

// The bytes of a page buffer, with all that the comment of Tam_page_buffer says about them.
//
// Memory comes from one reserved region. Block i is given the piece at i * BLOCK_SIZE until as many pieces are committed
// as the region has; from then on pieces only move between blocks. The states of a block:
//
//     memory    swapped_out  dirty
//     null      false        true    new: reads as zeros
//     piece     false        true    written, no copy in the swap file
//     null      true         false   in the swap file only
//     piece     false        false   read back; what is written now is lost at the next eviction
//     piece     true         false   a read from the swap file failed: the contents are not valid yet
class Page_store {
public:
    // many_readers: whether several threads may be in read() at a time. write() is always alone.
    Page_store(unsigned int size_hint, unsigned int memory_blocks, bool many_readers);
    ~Page_store();
    Page_store(const Page_store&) = delete;
    Page_store& operator=(const Page_store&) = delete;

    unsigned long long length() const { return m_length; }

    // The operations of Tam_page_buffer.
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const;
    unsigned int read(unsigned long long& position, unsigned int count, void* destination, Tam_status& status);
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status);

private:
    struct Block {
        unsigned char* memory = nullptr;
        unsigned long long file_offset = 0; // of its copy in the swap file, where it has one
        bool swapped_out = false;
        bool dirty = true;
    };

    unsigned int _read_block(unsigned long long position, unsigned int count, unsigned char* destination,
                             Tam_status& status);
    unsigned int _write_block(unsigned long long position, unsigned int count, const unsigned char* source,
                              Tam_status& status);
    bool _make_resident(Block& block, unsigned long long index, Tam_status& status);
    unsigned char* _commit(unsigned long long index, Tam_status& status);
    bool _swap_in(Block& block, unsigned long long last, Tam_status& status);
    bool _swap_out(Block& block, Tam_status& status);
    unsigned char* _evict(unsigned long long last, Tam_status& status);
    void _open_swap_file(Tam_status& status);
    bool _seek_swap_file(unsigned long long offset, Tam_status& status);

    Block* _find(unsigned long long index) const;
    Block& _find_or_make(unsigned long long index);
    std::optional<unsigned long long> _resident(unsigned long long first, unsigned long long last) const;
    void _advance_hand(unsigned long long last);

    const unsigned int m_limit; // pieces in m_region
    const Virtual_memory m_region;
    std::optional<Tam_critical> m_turns; // of readers, since they evict each other's blocks; none for a single thread
    std::vector<std::unique_ptr<Block[]>> m_groups; // null: a group of new blocks
    unsigned long long m_length = 0;
    unsigned int m_committed = 0;  // pieces that have memory; never decreases
    unsigned long long m_hand = 0; // the index of the next block to evict
    Tam_file m_swap_file;          // closed before the first eviction
    std::wstring m_swap_path;
    unsigned long long m_swap_end = 0;                     // where the next block goes in the swap file
    std::optional<unsigned long long> m_swap_position = 0; // the swap file's own, where it is known
};

} // namespace tam::detail
