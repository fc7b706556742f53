#pragma once

#include <functional>
#include <string>

#include <tam/status/status.h>
#include <tam/thread/event.h>
#include <tam/thread/read_write_semaphore.h>

#include "control_pipe.h"
#include "report.h"
#include "settings.h"
#include "spooler.h"

// The whole service: settings, spooler and pipe, and the timer that drives them. Its name is also that of its pipe, of its
// event source and of its registry parameters.
class Service {
public:
    Service(const std::wstring& name, const std::wstring& profile, const Report& report);

    // Brings everything up. progress is called after each step.
    void start(const std::function<void()>& progress, tam::Tam_status& status);

    // Works until stop() was called, and ends everything then. status tells why it had to end by itself.
    void run(tam::Tam_status& status);

    // Ends run() within a period. Any thread may call it.
    void stop() { m_stop.signal(); }

    // Reads the settings. Good ones are used from the next tick on; otherwise the earlier ones stay, which is reported.
    // Any thread may call it.
    void reload(tam::Tam_status& status);

private:
    bool _tick();
    void _use_next_settings(tam::Tam_status& status);
    bool _answer(const std::wstring& request, const Line_sink& sink);
    void _answer_status(const Line_sink& sink) const;
    Settings _settings() const;

    const std::wstring m_name;
    const std::wstring m_profile;
    const Report& m_report;
    tam::Tam_event m_stop;
    tam::Tam_event m_reload; // there are next settings

    // Guards the settings. Only run() changes those in use.
    mutable tam::Tam_read_write_semaphore m_lock;
    Settings m_settings;
    Settings m_next_settings;

    Spooler m_spooler;
    Control_pipe m_pipe;
};
