#include <tam/detail/win32.h>

#ifdef TAM_STATIC

namespace tam::detail {

Win32_calls win32;

} // namespace tam::detail

#endif
