#include <tam/thread/event.h>

#include <windows.h>

#include <tam/detail/wait.h>
#include <tam/detail/win32.h>
#include <tam/security/security.h>
#include <tam/status/exceptions.h>
#include <tam/status/status.h>

namespace tam {

namespace {

HANDLE create(const wchar_t* name, bool signaled, Tam_security* security)
{
    SECURITY_ATTRIBUTES* const attributes = security != nullptr ? security->security_attributes(false) : nullptr;
    const HANDLE handle = detail::win32.create_event(attributes, TRUE, signaled ? TRUE : FALSE, name);
    if (handle == nullptr) {
        throw Tam_sys_call_fail("::CreateEvent");
    }
    return handle;
}

} // namespace

Tam_event::Tam_event(bool signaled, Tam_security* security) : m_handle(create(nullptr, signaled, security)) {}

Tam_event::Tam_event(const std::wstring& name, bool signaled, Tam_security* security)
    : m_handle(create(name.c_str(), signaled, security))
{}

Tam_event::~Tam_event()
{
    ::CloseHandle(m_handle);
}

void Tam_event::reset()
{
    if (!detail::win32.reset_event(m_handle)) {
        throw Tam_sys_call_fail("::ResetEvent");
    }
}

void Tam_event::signal()
{
    if (!detail::win32.set_event(m_handle)) {
        throw Tam_sys_call_fail("::SetEvent");
    }
}

void Tam_event::pulse()
{
    if (!detail::win32.pulse_event(m_handle)) {
        throw Tam_sys_call_fail("::PulseEvent");
    }
}

void Tam_event::wait()
{
    detail::wait_for(m_handle, INFINITE);
}

bool Tam_event::wait(unsigned int milliseconds)
{
    return detail::wait_for(m_handle, milliseconds) == WAIT_OBJECT_0;
}

bool Tam_event::signaled() const
{
    return detail::wait_for(m_handle, 0) != WAIT_TIMEOUT;
}

void Tam_event::add_security(Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, m_handle, status);
}

} // namespace tam
