#include "report.h"

#include <cstdio>
#include <mutex>

using namespace tam;

void load_messages()
{
    for (const wchar_t* const module : MESSAGE_MODULES) {
        Tam_status status;
        Tam_messages_list::m_global_messages.add(module, status);
        if (!status.ok()) {
            print(status);
        }
    }
}

std::wstring describe(const Tam_status& status)
{
    std::wstring text;
    std::wstring line;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, line);
        tam_trim(line);
        text += (one == &status ? L"" : L"    ") + line + L'\n';
    }
    return text;
}

void print(const Tam_status& status)
{
    std::fputws(describe(status).c_str(), stderr);
    std::fflush(stderr);
}

bool is_caused_by(const Tam_status& status, unsigned int code)
{
    const Tam_status* one = &status;
    while (one != nullptr && *one != code) {
        one = one->child();
    }
    return one != nullptr;
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
    Tam_status ignored; // there is no other place to report to
    if (m_log != nullptr) {
        tam_report_to_syslog(m_log, 0, status, true, ignored);
    }
    if (m_console) {
        const std::lock_guard guard(m_print_lock);
        print(status);
    }
}
//! [report]
