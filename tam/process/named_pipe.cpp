#include <tam/process/named_pipe.h>

#include <iterator>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/security/security.h>
#include <tam/status/status.h>

namespace tam {

namespace {

// In the order of the access modes.
constexpr DWORD SERVER_ACCESS[] = {PIPE_ACCESS_OUTBOUND, PIPE_ACCESS_INBOUND, PIPE_ACCESS_DUPLEX};
constexpr DWORD CLIENT_ACCESS[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};

HANDLE create(const std::wstring& name, const Tam_pipe_server_options& options, Tam_security* security)
{
    if (options.access_mode >= std::size(SERVER_ACCESS)) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    DWORD open_mode = SERVER_ACCESS[options.access_mode];
    if (options.write_through) {
        open_mode |= FILE_FLAG_WRITE_THROUGH;
    }
    if (options.overlapped) {
        open_mode |= FILE_FLAG_OVERLAPPED;
    }
    const std::wstring path = L"\\\\.\\pipe\\" + name;
    return detail::win32.create_named_pipe(path.c_str(), open_mode, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT,
                                           options.maximum_instances, options.output_buffer_size,
                                           options.input_buffer_size, options.default_time_out,
                                           security != nullptr ? security->security_attributes(false) : nullptr);
}

HANDLE open(const std::wstring& server, const std::wstring& name, const Tam_pipe_client_options& options)
{
    // A pipe opened with no access would take an instance and carry nothing.
    if (options.access_mode >= std::size(CLIENT_ACCESS)) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const std::wstring path = L"\\\\" + server + L"\\pipe\\" + name;
    return detail::win32.create_file(path.c_str(), CLIENT_ACCESS[options.access_mode], 0, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

Tam_named_pipe::~Tam_named_pipe()
{
    if (m_handle != nullptr) {
        ::CloseHandle(m_handle);
    }
}

unsigned int Tam_named_pipe::write(unsigned int count, const unsigned char* data, Tam_status& status) const
{
    if (m_handle == nullptr) {
        detail::assign_failure(status, TAM_E_NAMED_PIPE_NONE);
        return 0;
    }
    return _run([&](DWORD* moved, OVERLAPPED* operation) {
        return detail::win32.write_file(m_handle, data, count, moved, operation);
    });
}

unsigned int Tam_named_pipe::read(unsigned int count, unsigned char* data, Tam_status& status) const
{
    if (m_handle == nullptr) {
        detail::assign_failure(status, TAM_E_NAMED_PIPE_NONE);
        return 0;
    }
    return _run([&](DWORD* moved, OVERLAPPED* operation) {
        return detail::win32.read_file(m_handle, data, count, moved, operation);
    });
}

template <class Start>
unsigned int Tam_named_pipe::_run(Start start) const
{
    DWORD moved = 0;
    if (!m_overlapped) {
        start(&moved, nullptr);
        return moved;
    }
    // The event tells the end of this operation from that of another thread's on the same handle.
    const detail::Kernel_handle done(detail::win32.create_event(nullptr, TRUE, FALSE, nullptr));
    if (!done) {
        return 0;
    }
    OVERLAPPED operation{};
    operation.hEvent = done.get();
    if ((start(nullptr, &operation) || ::GetLastError() == ERROR_IO_PENDING) &&
        !detail::win32.get_overlapped_result(m_handle, &operation, &moved, TRUE)) {
        return 0;
    }
    return moved;
}

Tam_named_pipe_server::Tam_named_pipe_server(const std::wstring& name, const Tam_pipe_server_options& options,
                                             Tam_status& status, Tam_security* security)
{
    const HANDLE handle = create(name, options, security);
    if (handle == INVALID_HANDLE_VALUE) {
        detail::push_last_error(status, TAM_E_NAMED_PIPE_CREATE);
        return;
    }
    m_handle = handle;
    m_overlapped = options.overlapped;
}

Tam_named_pipe_server::~Tam_named_pipe_server()
{
    if (m_handle != nullptr) {
        ::FlushFileBuffers(m_handle);
        ::DisconnectNamedPipe(m_handle);
    }
}

void Tam_named_pipe_server::wait_for_client(Tam_status& status) const
{
    status.clear();
    if (m_handle == nullptr) {
        detail::assign_failure(status, TAM_E_NAMED_PIPE_NONE);
        return;
    }
    _run([this](DWORD*, OVERLAPPED* operation) { return ::ConnectNamedPipe(m_handle, operation); });
}

void Tam_named_pipe_server::add_security(Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, m_handle, status);
}

Tam_named_pipe_client::Tam_named_pipe_client(const std::wstring& server, const std::wstring& name,
                                             const Tam_pipe_client_options& options, Tam_status& status)
{
    status.clear();
    const HANDLE handle = open(server, name, options);
    if (handle == INVALID_HANDLE_VALUE) {
        detail::push_last_error(status, TAM_E_NAMED_PIPE_OPEN);
        return;
    }
    m_handle = handle;
}

Tam_named_pipe_client::~Tam_named_pipe_client() = default;

} // namespace tam
