#include "service.h"

#include <exception>

#include <tam/text.h>
#include <tam/thread.h>

#include "spooler_messages.h"

using namespace tam;

namespace {

constexpr int JOURNAL_LIMIT = 100'000; // lines that a client can ask for

Tam_wstring_status_arg text(const std::wstring& value)
{
    return {value};
}

// The number that follows the prefix in text; 0 where there is none.
int number_behind(const std::wstring& prefix, const std::wstring& text)
{
    const std::wstring number = text.starts_with(prefix) ? text.substr(prefix.size()) : L"";
    return tam_is_int32(number) ? tam_wtoi32(number) : 0;
}

} // namespace

Service::Service(const std::wstring& name, const std::wstring& profile, const Report& report)
    : m_name(name),
      m_profile(profile),
      m_report(report),
      m_spooler(report),
      m_pipe(
          name, [this](const std::wstring& request, const Line_sink& sink) { return _answer(request, sink); }, report)
{}

void Service::start(const std::function<void()>& progress, Tam_status& status)
{
    m_settings = read_settings(m_profile, m_name, status);
    progress();
    if (status.ok()) {
        m_spooler.start(m_settings, status);
        progress();
    }
    if (status.ok()) {
        m_pipe.start(status);
        progress();
    }
    if (!status.ok()) {
        m_spooler.stop();
        status.push(SPOOLER_E_START, text(m_name));
    }
}

//! [timer]
void Service::run(Tam_status& status)
{
    m_report(Tam_status(SPOOLER_I_STARTED, text(m_name), text(m_settings.folder)));
    status.clear();
    while (status.ok() && !m_stop.signaled()) {
        Tam_timer timer;
        timer.init([](void* self) { return static_cast<Service*>(self)->_tick(); }, m_settings.period, status, 0, this);
        if (status.ok() && m_reload.signaled()) {
            _use_next_settings(status);
        }
    }
    m_pipe.stop();
    m_spooler.stop();
    m_report(Tam_status(SPOOLER_I_STOPPED, text(m_name)));
}

// Returns whether the timer is to go on as it is.
bool Service::_tick()
{
    try {
        m_pipe.drop_late_clients(m_settings.client_limit);
        m_spooler.look();
    } catch (const std::exception& error) { // such as no memory; the next tick tries again
        m_report(Tam_status(SPOOLER_E_EXCEPTION, text(tam_stow(error.what()))));
    }
    return !m_stop.signaled() && !m_reload.signaled();
}
//! [timer]

void Service::reload(Tam_status& status)
{
    const Settings settings = read_settings(m_profile, m_name, status);
    if (!status.ok()) {
        status.push(SPOOLER_E_RELOAD, text(m_profile));
        m_report(status);
        return;
    }
    const Tam_write_lock guard(m_lock);
    m_next_settings = settings;
    m_reload.signal();
}

// The workers start anew. When they cannot with the new settings, they do with the earlier ones; a failure of that too
// ends the service.
void Service::_use_next_settings(Tam_status& status)
{
    Settings next;
    {
        const Tam_write_lock guard(m_lock);
        next = m_next_settings;
        m_reload.reset();
    }
    m_spooler.stop();
    Tam_status failure;
    m_spooler.start(next, failure);
    if (!failure.ok()) {
        failure.push(SPOOLER_E_RELOAD, text(m_profile));
        m_report(failure);
        m_spooler.start(m_settings, status);
        return;
    }
    {
        const Tam_write_lock guard(m_lock);
        m_settings = next;
    }
    m_report(Tam_status(SPOOLER_I_RELOADED, text(m_profile), text(next.folder)));
}

bool Service::_answer(const std::wstring& request, const Line_sink& sink)
{
    Tam_status status;
    if (request == L"status") {
        _answer_status(sink);
    } else if (request == L"stop") {
        stop();
    } else if (request == L"reload") {
        reload(status);
    } else if (const int count = number_behind(L"journal ", request); count >= 1 && count <= JOURNAL_LIMIT) {
        read_journal_end(Spooler::journal_path(_settings()), static_cast<unsigned int>(count), sink, status);
    } else {
        status = Tam_status(SPOOLER_E_REQUEST, text(request));
    }
    if (!status.ok()) {
        describe(status, sink);
    }
    return status.ok();
}

void Service::_answer_status(const Line_sink& sink) const
{
    const Settings settings = _settings();
    const Figures figures = m_spooler.figures();
    sink(L"service " + m_name);
    sink(L"folder  " + settings.folder);
    sink(L"workers " + std::to_wstring(settings.workers));
    sink(L"waiting " + std::to_wstring(figures.waiting));
    sink(L"working " + std::to_wstring(figures.working));
    sink(L"done    " + std::to_wstring(figures.done));
    sink(L"failed  " + std::to_wstring(figures.failed));
    sink(L"bytes   " + std::to_wstring(figures.bytes));
}

Settings Service::_settings() const
{
    const Tam_read_lock guard(m_lock);
    return m_settings;
}
