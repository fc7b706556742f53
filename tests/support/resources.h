#pragma once

namespace tam::test {

/// Kernel handles that a process has open, registry keys included; 0: this process.
unsigned int open_handles(unsigned long process_id = 0);

/// Blocks that the C run-time's heap has given out and not got back.
unsigned int heap_blocks();

/// Blocks of the heap that the system's own allocations come from, local memory among them.
unsigned int system_blocks();

} // namespace tam::test
