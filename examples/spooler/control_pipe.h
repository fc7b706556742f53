#pragma once

#include <list>
#include <string>

#include <tam/tam.h>

#include "report.h"

class Connection;
class Service;

// Has the service answer clients at a named pipe, which its operators can open. At most CLIENTS at a time; the next ones
// find the pipe busy. A client that takes longer than the settings allow is dropped.
class Control_pipe {
public:
    static constexpr unsigned int CLIENTS = 3;

    Control_pipe(const std::wstring& name, Service& service, const Report& report)
        : m_name(name), m_service(service), m_report(report)
    {}
    ~Control_pipe() { stop(); }

    void start(tam::Tam_status& status);

    // Lets clients that are there finish, but not for long, and ends all threads.
    void stop();

private:
    void _serve();
    void _serve_client(const Connection& connection) const;
    bool _wait_for_data(const Connection& connection, unsigned long long since) const;

    const std::wstring m_name;
    Service& m_service;
    const Report& m_report;
    tam::Tam_security m_security;
    std::list<tam::Tam_thread> m_threads; // each with an instance of the pipe of its own
    tam::Tam_event m_stop;
};
