#include "service_control.h"

#include <memory>
#include <mutex>
#include <type_traits>

#include <windows.h>

#include "report.h"
#include "service.h"

using namespace tam;

namespace {

constexpr unsigned int STEP_LIMIT = 30'000; // milliseconds for starting or stopping
constexpr unsigned int STATE_PERIOD = 50;   // milliseconds
constexpr unsigned int STATE_POLLS = 1200;  // a minute
constexpr unsigned int PATH_LIMIT = 32'767; // units; the system's own

constexpr wchar_t EVENT_SOURCES[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application";

struct Close {
    void operator()(SC_HANDLE handle) const { ::CloseServiceHandle(handle); }
};
using Service_handle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Close>;

// The result of a call of the system.
void set_status(Tam_status& status, bool succeeded)
{
    status = succeeded ? 0 : Tam_status::get_last_error();
}

Service_handle open_service(const std::wstring& name, DWORD access, Tam_status& status)
{
    const Service_handle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    Service_handle service(manager ? ::OpenServiceW(manager.get(), name.c_str(), access) : nullptr);
    set_status(status, service != nullptr);
    return service;
}

// Starts or stops a service, and waits until it has come so far.
void change_state(const std::wstring& name, bool start, Tam_status& status)
{
    const DWORD access = start ? SERVICE_START : SERVICE_STOP;
    const DWORD wanted = start ? SERVICE_RUNNING : SERVICE_STOPPED;
    const Service_handle service = open_service(name, access | SERVICE_QUERY_STATUS, status);
    if (!service) {
        return;
    }
    SERVICE_STATUS state{};
    set_status(status, start ? ::StartServiceW(service.get(), 0, nullptr)
                             : ::ControlService(service.get(), SERVICE_CONTROL_STOP, &state));
    for (unsigned int poll = 0; status.ok() && poll < STATE_POLLS; ++poll) {
        set_status(status, ::QueryServiceStatus(service.get(), &state));
        if (!status.ok() || state.dwCurrentState == wanted) {
            return;
        }
        if (state.dwCurrentState == SERVICE_STOPPED) { // it could not start
            status = state.dwWin32ExitCode;
            return;
        }
        tam_thread_sleep(STATE_PERIOD);
    }
    if (status.ok()) {
        status = ERROR_SERVICE_REQUEST_TIMEOUT;
    }
}

std::wstring program_path()
{
    std::wstring path(PATH_LIMIT, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), PATH_LIMIT));
    return path;
}

} // namespace

//! [install]
void install_service(const std::wstring& name, const std::wstring& profile, Tam_status& status)
{
    const std::wstring command = L'"' + program_path() + L"\" service \"" + name + L"\" \"" + profile + L'"';
    const Service_handle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE));
    const Service_handle service(manager ? ::CreateServiceW(manager.get(), name.c_str(), name.c_str(),
                                                            SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                                            SERVICE_AUTO_START, SERVICE_ERROR_NORMAL, command.c_str(),
                                                            nullptr, nullptr, nullptr, nullptr, nullptr)
                                         : nullptr);
    set_status(status, service != nullptr);
    for (const wchar_t* const module : MESSAGE_MODULES) {
        if (status.ok()) {
            tam_register_resources(name, Tam_path(program_path()).filename(module), status);
        }
    }
    if (service && !status.ok()) {
        ::DeleteService(service.get());
    }
}
//! [install]

void remove_service(const std::wstring& name, const std::wstring&, Tam_status& status)
{
    const Service_handle service = open_service(name, DELETE, status);
    if (service) {
        set_status(status, ::DeleteService(service.get()));
    }
    Tam_status source;
    tam_remove_reg_key(HKEY_LOCAL_MACHINE, EVENT_SOURCES, L"", name, source);
    if (!source.ok()) {
        status.push(source);
    }
}

void start_service(const std::wstring& name, const std::wstring&, Tam_status& status)
{
    change_state(name, true, status);
}

void stop_service(const std::wstring& name, const std::wstring&, Tam_status& status)
{
    change_state(name, false, status);
}

namespace {

// The service in the hands of the service control manager. One per process.
class Hosted_service {
public:
    Hosted_service(const std::wstring& name, const std::wstring& profile)
        : m_name(name), m_report(name, false), m_service(name, profile, m_report)
    {}

    //! [host]
    // What the manager calls the service's main function, on a thread of its own.
    void run()
    {
        m_handle = ::RegisterServiceCtrlHandlerExW(m_name.c_str(), _control, this);
        if (m_handle == nullptr) {
            m_report(Tam_status(Tam_status::get_last_error()));
            return;
        }
        _tell(SERVICE_START_PENDING);
        Tam_status status;
        m_service.start(status);
        if (status.ok()) {
            _tell(SERVICE_RUNNING);
            m_service.run(status);
        }
        if (!status.ok()) {
            m_report(status);
        }
        _tell(SERVICE_STOPPED, status);
    }
    //! [host]

private:
    static DWORD WINAPI _control(DWORD control, DWORD, void*, void* context)
    {
        Hosted_service& self = *static_cast<Hosted_service*>(context);
        if (control == SERVICE_CONTROL_STOP || control == SERVICE_CONTROL_SHUTDOWN) {
            self._tell(SERVICE_STOP_PENDING);
            self.m_service.stop();
        }
        return NO_ERROR;
    }

    void _tell(DWORD state, const Tam_status& failure = Tam_status())
    {
        const std::lock_guard guard(m_lock);
        if (m_state.dwCurrentState == SERVICE_STOPPED) { // a control that came too late
            return;
        }
        m_state.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
        m_state.dwCurrentState = state;
        m_state.dwWaitHint = STEP_LIMIT; // looked at while it starts or stops
        m_state.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
        m_state.dwWin32ExitCode = failure.ok() ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
        m_state.dwServiceSpecificExitCode = failure.ok() ? 0 : failure.value();
        ::SetServiceStatus(m_handle, &m_state);
    }

    const std::wstring m_name;
    const Report m_report;
    Service m_service;
    SERVICE_STATUS_HANDLE m_handle = nullptr;
    Tam_critical m_lock; // of the state
    SERVICE_STATUS m_state{};
};

Hosted_service* hosted_service = nullptr; // the main function of a service gets no argument of ours

} // namespace

void run_as_service(const std::wstring& name, const std::wstring& profile, Tam_status& status)
{
    Hosted_service service(name, profile);
    hosted_service = &service;
    std::wstring name_to_pass = name;
    const SERVICE_TABLE_ENTRYW services[] = {
        {name_to_pass.data(), [](DWORD, wchar_t**) { hosted_service->run(); }},
        {nullptr, nullptr},
    };
    set_status(status, ::StartServiceCtrlDispatcherW(services)); // returns when the service has stopped
}
