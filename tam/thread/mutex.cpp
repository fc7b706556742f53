#include <tam/thread/mutex.h>

#include <cstdio>

#include <windows.h>

#include <tam/detail/wait.h>
#include <tam/detail/win32.h>
#include <tam/security/security.h>
#include <tam/status/exceptions.h>
#include <tam/status/status.h>

namespace tam {

namespace {

HANDLE create(const wchar_t* name, bool owned, Tam_security* security)
{
    SECURITY_ATTRIBUTES* const attributes = security != nullptr ? security->security_attributes(false) : nullptr;
    const HANDLE handle = detail::win32.create_mutex(attributes, owned ? TRUE : FALSE, name);
    if (handle == nullptr) {
        throw Tam_sys_call_fail("::CreateMutex");
    }
    return handle;
}

} // namespace

Tam_mutex::Tam_mutex(bool owned, Tam_security* security) : m_handle(create(nullptr, owned, security)) {}

Tam_mutex::Tam_mutex(const std::wstring& name, bool owned, Tam_security* security)
    : m_handle(create(name.c_str(), owned, security))
{}

Tam_mutex::~Tam_mutex()
{
    ::CloseHandle(m_handle);
}

void Tam_mutex::lock()
{
    if (detail::win32.wait_for_single_object(m_handle, INFINITE) == WAIT_FAILED) {
        const int reason = static_cast<int>(::GetLastError());
        char text[64];
        std::snprintf(text, sizeof text, "::WaitForSingleObject failed, reason %d", reason);
        throw Tam_sys_call_fail(text);
    }
}

void Tam_mutex::unlock()
{
    if (!detail::win32.release_mutex(m_handle) && ::GetLastError() != ERROR_NOT_OWNER) {
        throw Tam_sys_call_fail("::ReleaseMutex");
    }
}

bool Tam_mutex::try_lock()
{
    return try_lock(0);
}

bool Tam_mutex::try_lock(unsigned int milliseconds)
{
    return detail::wait_for(m_handle, milliseconds) != WAIT_TIMEOUT;
}

void Tam_mutex::add_security(Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, m_handle, status);
}

} // namespace tam
