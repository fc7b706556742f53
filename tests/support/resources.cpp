#include <tests/support/resources.h>

#include <cstddef>
#include <vector>

#include <windows.h>

#include <malloc.h>
#include <winternl.h>

namespace tam::test {

namespace {

// Wine has no GetProcessHandleCount. This class of NtQuerySystemInformation lists the handles of all processes.
constexpr auto HANDLE_INFORMATION = static_cast<SYSTEM_INFORMATION_CLASS>(16);
constexpr NTSTATUS BUFFER_TOO_SMALL = static_cast<NTSTATUS>(0xC0000004);

struct Handle_entry {
    ULONG process;
    BYTE type;
    BYTE flags;
    USHORT handle;
    void* object;
    ACCESS_MASK access;
};

struct Handle_list {
    ULONG count;
    Handle_entry entries[1];
};

unsigned int blocks_of(HANDLE heap)
{
    PROCESS_HEAP_ENTRY entry{};
    unsigned int count = 0;
    ::HeapLock(heap);
    while (::HeapWalk(heap, &entry)) {
        count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1U : 0U;
    }
    ::HeapUnlock(heap);
    return count;
}

} // namespace

unsigned int open_handles(unsigned long process_id)
{
    const ULONG process = process_id != 0 ? process_id : ::GetCurrentProcessId();
    std::vector<std::byte> memory(64 * 1024);
    while (::NtQuerySystemInformation(HANDLE_INFORMATION, memory.data(), static_cast<ULONG>(memory.size()), nullptr) ==
           BUFFER_TOO_SMALL) {
        memory.resize(memory.size() * 2);
    }
    const auto* const list = reinterpret_cast<const Handle_list*>(memory.data());
    unsigned int count = 0;
    for (ULONG i = 0; i < list->count; ++i) {
        count += list->entries[i].process == process ? 1U : 0U;
    }
    return count;
}

unsigned int heap_blocks()
{
    return blocks_of(reinterpret_cast<HANDLE>(_get_heap_handle()));
}

unsigned int system_blocks()
{
    return blocks_of(::GetProcessHeap());
}

} // namespace tam::test
