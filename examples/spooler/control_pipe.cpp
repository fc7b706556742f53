#include "control_pipe.h"

#include <algorithm>
#include <exception>
#include <mutex>

#include <windows.h>

#include <tam/security.h>
#include <tam/text.h>

#include "access.h"
#include "protocol.h"
#include "spooler_messages.h"

using namespace tam;

namespace {

constexpr unsigned int BUFFER_BYTES = 16 * 1024;
constexpr unsigned int CHUNK_UNITS = 4096;  // of an answer are sent at once
constexpr unsigned int STOP_GRACE = 1000;   // milliseconds for clients that are there
constexpr unsigned int RETRY_PERIOD = 1000; // milliseconds between attempts to make the pipe again
constexpr unsigned int STOP_PERIOD = 10;    // milliseconds between attempts to break off

} // namespace

Connection::~Connection()
{
    ::DisconnectNamedPipe(m_handle);
}

void Connection::cancel()
{
    ::CancelIoEx(m_handle, nullptr);
}

// False when no whole line comes.
bool Connection::read_request(std::wstring& request) const
{
    unsigned char bytes[protocol::REQUEST_LIMIT * sizeof(wchar_t)];
    unsigned int count = 0;
    for (;;) {
        Tam_status status;
        const unsigned int arrived = read(sizeof bytes - count, bytes + count, status);
        count += arrived;
        request.assign(reinterpret_cast<const wchar_t*>(bytes), count / sizeof(wchar_t));
        if (const std::size_t end = request.find(L'\n'); end != std::wstring::npos) {
            request.resize(end);
            return true;
        }
        if (arrived == 0 || count == sizeof bytes) {
            return false;
        }
    }
}

bool Connection::send(const std::wstring& text) const
{
    const auto bytes = static_cast<unsigned int>(text.size() * sizeof(wchar_t));
    Tam_status status;
    return write(bytes, reinterpret_cast<const unsigned char*>(text.data()), status) == bytes;
}

void Connection::wait_for_close() const
{
    unsigned char unwanted[64];
    Tam_status status;
    while (read(sizeof unwanted, unwanted, status) != 0) {
    }
}

//! [pipe]
std::unique_ptr<Connection> Control_pipe::_make_connection(Tam_status& status) const
{
    Tam_acl acl;
    grant_to_operators(acl, FILE_ALL_ACCESS, status);
    std::unique_ptr<Connection> connection;
    if (status.ok()) {
        Tam_security security(acl, status);
        const Tam_pipe_server_options options{
            Tam_pipe_server_options::BOTH_WAYS, false, true, BUFFER_BYTES, BUFFER_BYTES, 0, CLIENTS};
        if (status.ok()) {
            connection = std::make_unique<Connection>(m_name, options, status, &security);
        }
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_PIPE, Tam_wstring_status_arg(m_name));
    }
    return connection;
}
//! [pipe]

void Control_pipe::start(Tam_status& status)
{
    m_stop.reset();
    status.clear();
    for (unsigned int i = 0; i < CLIENTS && status.ok(); ++i) {
        std::unique_ptr<Connection> connection = _make_connection(status);
        if (status.ok()) {
            Desk& desk = m_desks.emplace_back(*this);
            desk.connection = std::move(connection);
            desk.thread = std::make_unique<Tam_thread>(
                [](void* self) { static_cast<Desk*>(self)->pipe._serve(*static_cast<Desk*>(self)); }, &desk, status);
        }
    }
    if (!status.ok()) {
        stop();
    }
}

void Control_pipe::stop()
{
    m_stop.signal();
    const unsigned long long now = ::GetTickCount64();
    for (Desk& desk : m_desks) {
        Tam_status status;
        do {
            const std::lock_guard guard(desk.lock);
            if (desk.connection != nullptr && (desk.client_since == 0 || ::GetTickCount64() - now > STOP_GRACE)) {
                desk.connection->cancel();
            }
        } while (!desk.thread->wait(STOP_PERIOD, status) && status.ok());
        if (!status.ok()) {
            m_report(status);
        }
    }
    m_desks.clear();
}

void Control_pipe::drop_late_clients(unsigned int limit)
{
    for (Desk& desk : m_desks) {
        const std::lock_guard guard(desk.lock);
        if (desk.client_since != 0 && ::GetTickCount64() - desk.client_since > limit) {
            desk.connection->cancel(); // each time: it may have begun another transfer
            if (!desk.is_dropped) {
                m_report(Tam_status(SPOOLER_W_CLIENT_DROPPED, Tam_uint_status_arg(limit, false)));
            }
            desk.is_dropped = true;
        }
    }
}

// The thread of a desk.
void Control_pipe::_serve(Desk& desk)
{
    bool is_reported = false;
    while (!m_stop.signaled()) {
        if (desk.connection == nullptr) {
            Tam_status status;
            std::unique_ptr<Connection> connection = _make_connection(status);
            if (!status.ok()) {
                if (!is_reported) {
                    m_report(status);
                }
                is_reported = true;
                m_stop.wait(RETRY_PERIOD);
                continue;
            }
            is_reported = false;
            const std::lock_guard guard(desk.lock);
            desk.connection = std::move(connection);
        }
        Tam_status status;
        desk.connection->wait_for_client(status);
        if (m_stop.signaled()) {
            return;
        }
        {
            const std::lock_guard guard(desk.lock);
            desk.client_since = ::GetTickCount64();
        }
        try {
            _serve_client(*desk.connection);
        } catch (const std::exception& error) { // such as no memory
            m_report(Tam_status(SPOOLER_E_EXCEPTION, Tam_wstring_status_arg(tam_stow(error.what()))));
        }
        const std::lock_guard guard(desk.lock);
        desk.client_since = 0;
        desk.is_dropped = false;
        desk.connection.reset();
    }
}

void Control_pipe::_serve_client(const Connection& connection) const
{
    std::wstring request;
    if (!connection.read_request(request)) {
        return;
    }
    std::wstring text;
    bool is_sent = true;
    const bool is_done = m_answer(request, [&](std::wstring line) {
        std::replace(line.begin(), line.end(), L'\n', L' ');
        text += L' ' + line + L'\n';
        if (text.size() > CHUNK_UNITS) {
            is_sent = is_sent && connection.send(text);
            text.clear();
        }
    });
    text += is_done ? protocol::DONE : protocol::FAILED;
    text += L'\n';
    if (is_sent && connection.send(text)) {
        connection.wait_for_close(); // the client has read all then
    }
}
