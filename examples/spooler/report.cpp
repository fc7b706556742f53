#include "report.h"

#include <cstdio>
#include <mutex>

#include <tam/status.h>
#include <tam/text.h>

using namespace tam;

void describe(const Tam_status& status, const Line_sink& sink)
{
    std::wstring indent;
    std::wstring line;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, line);
        tam_trim(line);
        sink(indent + line);
        indent = L"    ";
    }
}

bool is_caused_by(const Tam_status& status, unsigned int code)
{
    const Tam_status* one = &status;
    while (one != nullptr && *one != code) {
        one = one->child();
    }
    return one != nullptr;
}

void print(const Tam_status& status)
{
    describe(status, [](const std::wstring& line) { std::fputws((line + L"\n").c_str(), stderr); });
    std::fflush(stderr);
}

void load_messages()
{
    for (const wchar_t* const module : {L"spooler_messages.dll", L"tam_messages.dll"}) {
        Tam_status status;
        Tam_messages_list::m_global_messages.add(module, status);
        if (!status.ok()) {
            print(status);
        }
    }
}

//! [report]
Report::Report(const std::wstring& event_source, bool console) : m_console(console)
{
    Tam_status status;
    m_log = tam_open_syslog(event_source, status);
    if (!status.ok()) {
        print(status);
    }
}

Report::~Report()
{
    Tam_status status;
    tam_close_syslog(m_log, status);
}

void Report::operator()(const Tam_status& status) const
{
    Tam_status failure;
    if (m_log != nullptr) {
        tam_report_to_syslog(m_log, 0, status, true, failure);
    }
    if (m_console) {
        const std::lock_guard guard(m_print_lock);
        print(status);
        if (!failure.ok()) {
            print(failure);
        }
    }
}
//! [report]
