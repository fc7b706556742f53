#include "service.h"

#include "protocol.h"

using namespace tam;

namespace {

// The number that follows the prefix in text; 0 where there is none.
int number_behind(const std::wstring& prefix, const std::wstring& text)
{
    const std::wstring number = text.starts_with(prefix) ? text.substr(prefix.size()) : L"";
    return tam_is_int32(number) ? tam_wtoi32(number) : 0;
}

} // namespace

Service::Service(const std::wstring& name, const std::wstring& profile, const Report& report)
    : m_name(name), m_profile(profile), m_report(report), m_spooler(report), m_pipe(name, *this, report)
{}

void Service::start(Tam_status& status)
{
    m_settings = read_settings(m_profile, m_name, status);
    if (status.ok()) {
        m_spooler.open(m_settings.folder, status);
    }
    if (status.ok()) {
        m_pipe.start(status);
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_START, Tam_wstring_status_arg(m_name));
    }
}

//! [timer]
void Service::run(Tam_status& status)
{
    m_report(Tam_status(SPOOLER_I_STARTED, Tam_wstring_status_arg(m_name), Tam_wstring_status_arg(m_settings.folder)));
    status.clear();
    while (status.ok() && !m_stop.signaled()) {
        m_reload.reset();
        const Settings now = settings();
        m_spooler.start(now.workers, status);
        if (status.ok()) {
            Tam_timer timer;
            timer.init([](void* self) { return static_cast<Service*>(self)->_tick(); }, now.period, status, 0, this);
        }
        m_spooler.stop();
    }
    m_pipe.stop();
    m_report(Tam_status(SPOOLER_I_STOPPED, Tam_wstring_status_arg(m_name)));
}

// Returns whether the timer is to go on as it is.
bool Service::_tick()
{
    m_report.guard([&] { m_spooler.look(); });
    return !m_stop.signaled() && !m_reload.signaled();
}
//! [timer]

void Service::reload(Tam_status& status)
{
    Settings next = read_settings(m_profile, m_name, status);
    if (!status.ok()) {
        m_report(status);
        return;
    }
    m_report(Tam_status(SPOOLER_I_RELOADED, Tam_wstring_status_arg(m_profile)));
    const Tam_write_lock guard(m_settings_lock);
    next.folder = m_settings.folder;
    m_settings = next;
    m_reload.signal();
}

std::wstring Service::answer(const std::wstring& request)
{
    Tam_status status;
    std::wstring text;
    if (request == L"status") {
        text = _describe_state();
    } else if (request == L"stop") {
        stop();
    } else if (request == L"reload") {
        reload(status);
    } else if (const int count = number_behind(L"journal ", request); count >= 1 && count <= protocol::JOURNAL_LIMIT) {
        text = m_spooler.journal().last_lines(static_cast<unsigned int>(count), status);
    } else {
        status = Tam_status(SPOOLER_E_REQUEST, Tam_wstring_status_arg(request));
    }
    return status.ok() ? protocol::DONE + text : protocol::FAILED + describe(status);
}

std::wstring Service::_describe_state() const
{
    const Settings now = settings();
    const Figures figures = m_spooler.figures();
    return L"service " + m_name + L"\nfolder  " + now.folder + L"\nworkers " + std::to_wstring(now.workers) +
           L"\nwaiting " + std::to_wstring(figures.waiting) + L"\nworking " + std::to_wstring(figures.working) +
           L"\ndone    " + std::to_wstring(figures.done) + L"\nfailed  " + std::to_wstring(figures.failed) +
           L"\nbytes   " + std::to_wstring(figures.bytes) + L"\n";
}

Settings Service::settings() const
{
    const Tam_read_lock guard(m_settings_lock);
    return m_settings;
}
