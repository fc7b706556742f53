#pragma once

#include <string>

#include <tam/tam.h>

#include "control_pipe.h"
#include "report.h"
#include "settings.h"
#include "spooler.h"

// The whole service: settings, spooler and pipe, and the timer that drives them. Its name is also that of its pipe, of its
// event source and of its registry parameters.
class Service {
public:
    Service(const std::wstring& name, const std::wstring& profile, const Report& report);

    // Brings everything up.
    void start(tam::Tam_status& status);

    // Works until stop() was called, and ends everything then. status tells why it had to end by itself.
    void run(tam::Tam_status& status);

    // Ends run() within a period. Any thread may call it.
    void stop() { m_stop.signal(); }

    // Reads the settings again, all but the folder. Good ones are used from the next tick on; otherwise the earlier ones
    // stay, which is reported. Any thread may call it.
    void reload(tam::Tam_status& status);

    // Does what a client asks for. The result is the answer as control_pipe.h says. Any thread may call it.
    std::wstring answer(const std::wstring& request);

    Settings settings() const;

private:
    bool _tick();
    std::wstring _describe_state() const;

    const std::wstring m_name;
    const std::wstring m_profile;
    const Report& m_report;
    tam::Tam_event m_stop;
    tam::Tam_event m_reload; // the settings have changed
    mutable tam::Tam_read_write_semaphore m_settings_lock;
    Settings m_settings;
    Spooler m_spooler;
    Control_pipe m_pipe;
};
