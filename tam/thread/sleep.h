#pragma once

#include <tam/detail/export.h>

namespace tam {

/// Stops the calling thread for that long; 0 gives up the rest of its time slice, 0xFFFFFFFF stops it for ever.
TAM_API void tam_thread_sleep(unsigned int milliseconds);

/// Gives up the rest of the calling thread's time slice, if another thread is ready to run.
TAM_API void tam_thread_yield();

} // namespace tam
