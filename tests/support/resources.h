#pragma once

namespace tam::test {

/// Kernel handles that this process has open, registry keys included.
unsigned int open_handles();

/// Blocks that the C run-time's heap has given out and not got back.
unsigned int heap_blocks();

} // namespace tam::test
