#include "control_pipe.h"

#include <windows.h>

#include "access.h"
#include "protocol.h"
#include "service.h"

using namespace tam;

namespace {

// Room for a whole answer: a client that does not read it cannot make the service wait.
constexpr Tam_pipe_server_options OPTIONS{
    Tam_pipe_server_options::BOTH_WAYS, false, false, 4096, protocol::ANSWER_LIMIT, 0, Control_pipe::CLIENTS};

// All in milliseconds.
constexpr unsigned int POLL_PERIOD = 10;
constexpr unsigned int STOP_GRACE = 1000;     // for clients that are there
constexpr unsigned int RETRY_PERIOD = 60'000; // between attempts to make the pipe again

} // namespace

// An instance of the pipe.
class Connection : public Tam_named_pipe_server {
public:
    using Tam_named_pipe_server::Tam_named_pipe_server;

    // What the client has not read by then is lost: the base would wait for it without a limit.
    ~Connection() { ::DisconnectNamedPipe(m_handle); }

    // Sets count to the bytes that a read would get without waiting. False when the client is gone.
    bool peek(DWORD& count) const { return ::PeekNamedPipe(m_handle, nullptr, 0, nullptr, &count, nullptr); }
};

//! [pipe]
void Control_pipe::start(Tam_status& status)
{
    grant_to_operators(m_security, status);
    if (status.ok()) {
        const Connection first(m_name, OPTIONS, status, &m_security); // so that a failure shows at once
    }
    for (unsigned int i = 0; i < CLIENTS && status.ok(); ++i) {
        m_threads.emplace_back([](void* self) { static_cast<Control_pipe*>(self)->_serve(); }, this, status);
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_PIPE, Tam_wstring_status_arg(m_name));
    }
}

void Control_pipe::_serve()
{
    while (!m_stop.signaled()) {
        Tam_status status;
        const Connection connection(m_name, OPTIONS, status, &m_security);
        if (!status.ok()) {
            status.push(SPOOLER_E_PIPE, Tam_wstring_status_arg(m_name));
            m_report(status);
            m_stop.wait(RETRY_PERIOD);
            continue;
        }
        connection.wait_for_client(status);
        m_report.guard([&] { _serve_client(connection); });
    }
}
//! [pipe]

void Control_pipe::stop()
{
    m_stop.signal();
    for (const Tam_thread& thread : m_threads) {
        Tam_status status;
        while (!thread.wait(POLL_PERIOD, status) && status.ok()) {
            // One that waits for a client gets this one.
            const Tam_named_pipe_client client(L".", m_name, {Tam_pipe_client_options::BOTH}, status);
            status.clear();
        }
    }
    m_threads.clear();
}

void Control_pipe::_serve_client(const Connection& connection) const
{
    const unsigned long long since = ::GetTickCount64();
    Tam_status status;
    unsigned char bytes[protocol::REQUEST_LIMIT * sizeof(wchar_t)];
    unsigned int count = 0;
    std::size_t end = std::wstring::npos;
    std::wstring request;
    while (end == std::wstring::npos) {
        if (count == sizeof bytes || !_wait_for_data(connection, since)) {
            return;
        }
        count += connection.read(sizeof bytes - count, bytes + count, status);
        request.assign(reinterpret_cast<const wchar_t*>(bytes), count / sizeof(wchar_t));
        end = request.find(L'\n');
    }
    const std::wstring answer = m_service.answer(request.substr(0, end)) + protocol::END;
    connection.write(static_cast<unsigned int>(answer.size() * sizeof(wchar_t)),
                     reinterpret_cast<const unsigned char*>(answer.data()), status);
    while (_wait_for_data(connection, since)) { // the client has read all when it closes its end
        connection.read(sizeof bytes, bytes, status);
    }
}

// Waits until there is something to read. False when the client is gone, or has been there for too long.
bool Control_pipe::_wait_for_data(const Connection& connection, unsigned long long since) const
{
    const unsigned int limit = m_service.settings().client_limit;
    DWORD count = 0;
    while (connection.peek(count)) {
        const unsigned long long passed = ::GetTickCount64() - since;
        if (m_stop.signaled() && passed > STOP_GRACE) {
            return false;
        }
        if (passed > limit) {
            m_report(Tam_status(SPOOLER_W_CLIENT_DROPPED, Tam_uint_status_arg(limit, false)));
            return false;
        }
        if (count != 0) {
            return true;
        }
        tam_thread_sleep(POLL_PERIOD);
    }
    return false;
}
