#pragma once

#include <windows.h>

#include <tam/detail/win32.h>
#include <tam/status/exceptions.h>

namespace tam::detail {

// Waits for a kernel object that an operation without a status waits for. The result is anything but WAIT_FAILED.
inline DWORD wait_for(HANDLE handle, DWORD milliseconds)
{
    const DWORD result = win32.wait_for_single_object(handle, milliseconds);
    if (result == WAIT_FAILED) {
        throw Tam_sys_call_fail("::WaitForSingleObject");
    }
    return result;
}

} // namespace tam::detail
