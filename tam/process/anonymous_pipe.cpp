#include <tam/process/anonymous_pipe.h>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/win32.h>
#include <tam/security/security.h>
#include <tam/status/status.h>

namespace tam {

Tam_anonymous_pipe::Tam_anonymous_pipe(Tam_status& status, unsigned int size, Tam_security* security)
{
    status.clear();
    SECURITY_ATTRIBUTES* const attributes = security != nullptr ? security->security_attributes(false) : nullptr;
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    if (!detail::win32.create_pipe(&read_end, &write_end, attributes, size)) {
        detail::assign_failure(status, TAM_E_PIPE_CREATE);
        return;
    }
    m_read = read_end;
    m_write = write_end;
}

Tam_anonymous_pipe::~Tam_anonymous_pipe()
{
    _close_write_end();
    if (m_read != nullptr) {
        ::CloseHandle(m_read);
    }
}

unsigned int Tam_anonymous_pipe::write(const unsigned char* data, unsigned int size, Tam_status& status)
{
    status.clear();
    if (m_write == nullptr) {
        detail::assign_failure(status, TAM_E_PIPE_NO_WRITE_END);
        return 0;
    }
    DWORD written = 0;
    if (!detail::win32.write_file(m_write.load(), data, size, &written, nullptr)) {
        detail::assign_failure(status, TAM_E_PIPE_WRITE);
    }
    return written;
}

unsigned int Tam_anonymous_pipe::read(unsigned char* data, unsigned int size, Tam_status& status)
{
    status.clear();
    // The write end, not the read end.
    if (m_write == nullptr) {
        detail::assign_failure(status, TAM_E_PIPE_NO_WRITE_END_TO_READ);
        return 0;
    }
    DWORD read = 0;
    if (!detail::win32.read_file(m_read, data, size, &read, nullptr)) {
        detail::assign_failure(status, TAM_E_PIPE_READ);
    }
    return read;
}

void Tam_anonymous_pipe::add_security(Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, m_read, status);
    if (status.ok()) {
        security.associate_with_object(TAM_SEC_OBJ_KERNEL, m_write.load(), status);
    }
}

void Tam_anonymous_pipe::_close_write_end() noexcept
{
    if (void* const write_end = m_write.exchange(nullptr)) {
        ::CloseHandle(write_end);
    }
}

} // namespace tam
