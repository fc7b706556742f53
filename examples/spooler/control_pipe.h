#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>

#include <tam/process/named_pipe.h>
#include <tam/status/status.h>
#include <tam/thread/critical.h>
#include <tam/thread/event.h>
#include <tam/thread/thread.h>

#include "report.h"

// An instance of the pipe. Another thread can break off what it does for a client.
class Connection : public tam::Tam_named_pipe_server {
public:
    using Tam_named_pipe_server::Tam_named_pipe_server;

    // What the client has not read by then is lost: the base would wait for it without a limit.
    ~Connection();

    // Ends the wait for a client or the transfer that is under way.
    void cancel();

    bool read_request(std::wstring& request) const;
    bool send(const std::wstring& text) const;
    void wait_for_close() const;
};

// Answers clients at a named pipe, which its operators can open. At most
// CLIENTS at a time; the next ones find the pipe busy. A client that takes too long is dropped.
class Control_pipe {
public:
    static constexpr unsigned int CLIENTS = 4;

    // Answers a request by lines of text; returns whether it could be done. Called by several threads at once.
    using Answer = std::function<bool(const std::wstring& request, const Line_sink& sink)>;

    Control_pipe(const std::wstring& name, const Answer& answer, const Report& report)
        : m_name(name), m_answer(answer), m_report(report)
    {}
    ~Control_pipe() { stop(); }
    Control_pipe(const Control_pipe&) = delete;
    Control_pipe& operator=(const Control_pipe&) = delete;

    void start(tam::Tam_status& status);

    // Drops the clients that are there for more than that many milliseconds.
    void drop_late_clients(unsigned int limit);

    // Lets clients that are there finish, but not for long, and ends all threads.
    void stop();

private:
    // One thread, with the instance at which it waits for a client or serves one.
    struct Desk {
        Control_pipe& pipe;
        std::unique_ptr<Connection> connection{};
        unsigned long long client_since = 0; // GetTickCount64; 0: no client
        bool is_dropped = false;             // the client, and that was reported
        tam::Tam_critical lock{};            // of the three above
        std::unique_ptr<tam::Tam_thread> thread;
    };

    std::unique_ptr<Connection> _make_connection(tam::Tam_status& status) const;
    void _serve(Desk& desk);
    void _serve_client(const Connection& connection) const;

    const std::wstring m_name;
    const Answer m_answer;
    const Report& m_report;
    std::list<Desk> m_desks;
    tam::Tam_event m_stop;
};
