#pragma once

namespace tam::test {

/// Kernel handles that this process has open, registry keys included.
unsigned int open_handles();

/// Blocks that the C run-time's heap has given out and not got back.
unsigned int heap_blocks();

/// Blocks of the heap that the system's own allocations come from, local memory among them.
unsigned int system_blocks();

} // namespace tam::test
