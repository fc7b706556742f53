#include "service_control.h"

#include <memory>
#include <mutex>
#include <type_traits>

#include <windows.h>

#include <tam/config.h>
#include <tam/file/path.h>
#include <tam/status.h>
#include <tam/thread.h>

#include "report.h"
#include "service.h"
#include "spooler_messages.h"

using namespace tam;

namespace {

constexpr unsigned int STEP_LIMIT = 30'000;  // milliseconds for a step of starting or stopping
constexpr unsigned int STATE_LIMIT = 60'000; // milliseconds that start_service and stop_service wait
constexpr unsigned int STATE_PERIOD = 50;

constexpr const wchar_t* MESSAGE_MODULES[] = {L"spooler_messages.dll", L"tam_messages.dll"};
constexpr wchar_t EVENT_SOURCES[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application";

struct Close {
    void operator()(SC_HANDLE handle) const { ::CloseServiceHandle(handle); }
};
using Service_handle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Close>;

Service_handle open_manager(DWORD access, Tam_status& status)
{
    Service_handle manager(::OpenSCManagerW(nullptr, nullptr, access));
    status = manager ? 0 : Tam_status::get_last_error();
    return manager;
}

Service_handle open_service(const std::wstring& name, DWORD access, Tam_status& status)
{
    const Service_handle manager = open_manager(SC_MANAGER_CONNECT, status);
    Service_handle service;
    if (manager) {
        service.reset(::OpenServiceW(manager.get(), name.c_str(), access));
        status = service ? 0 : Tam_status::get_last_error();
    }
    return service;
}

void wait_for_state(SC_HANDLE service, DWORD wanted, Tam_status& status)
{
    const unsigned long long start = ::GetTickCount64();
    SERVICE_STATUS state{};
    do {
        if (!::QueryServiceStatus(service, &state)) {
            status = Tam_status::get_last_error();
            return;
        }
        if (state.dwCurrentState == wanted) {
            return;
        }
        tam_thread_sleep(STATE_PERIOD);
    } while (state.dwCurrentState != SERVICE_STOPPED && ::GetTickCount64() - start < STATE_LIMIT);
    status = state.dwWin32ExitCode;
    status.push(SPOOLER_E_STATE, Tam_uint_status_arg(wanted, false), Tam_uint_status_arg(state.dwCurrentState, false));
}

void push_failure(Tam_status& status, unsigned int code, const std::wstring& name)
{
    if (!status.ok()) {
        status.push(code, Tam_wstring_status_arg(name));
    }
}

std::wstring quoted(const std::wstring& text)
{
    return L'"' + text + L'"';
}

} // namespace

std::wstring program_path()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::wstring beside_program(const std::wstring& file)
{
    return Tam_path(program_path()).filename(file).text();
}

//! [install]
void install_service(const std::wstring& name, const std::wstring& profile, Tam_status& status)
{
    const std::wstring command = quoted(program_path()) + L" service " + quoted(name) + L' ' + quoted(profile);
    const Service_handle manager = open_manager(SC_MANAGER_CREATE_SERVICE, status);
    Service_handle service;
    if (manager) {
        service.reset(::CreateServiceW(manager.get(), name.c_str(), name.c_str(), SERVICE_ALL_ACCESS,
                                       SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                                       command.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
        status = service ? 0 : Tam_status::get_last_error();
    }
    for (const wchar_t* const module : MESSAGE_MODULES) {
        if (status.ok()) {
            tam_register_resources(name, beside_program(module), status);
        }
    }
    if (service && !status.ok()) {
        ::DeleteService(service.get());
    }
    push_failure(status, SPOOLER_E_INSTALL, name);
}
//! [install]

void remove_service(const std::wstring& name, Tam_status& status)
{
    {
        const Service_handle service = open_service(name, DELETE, status);
        if (service && !::DeleteService(service.get())) {
            status = Tam_status::get_last_error();
        }
    }
    Tam_status source;
    tam_remove_reg_key(HKEY_LOCAL_MACHINE, EVENT_SOURCES, L"", name, source);
    if (!source.ok()) {
        status.push(source);
    }
    push_failure(status, SPOOLER_E_REMOVE, name);
}

void start_service(const std::wstring& name, Tam_status& status)
{
    const Service_handle service = open_service(name, SERVICE_START | SERVICE_QUERY_STATUS, status);
    if (service && !::StartServiceW(service.get(), 0, nullptr)) {
        status = Tam_status::get_last_error();
    }
    if (status.ok()) {
        wait_for_state(service.get(), SERVICE_RUNNING, status);
    }
    push_failure(status, SPOOLER_E_CONTROL_START, name);
}

void stop_service(const std::wstring& name, Tam_status& status)
{
    const Service_handle service = open_service(name, SERVICE_STOP | SERVICE_QUERY_STATUS, status);
    SERVICE_STATUS ignored;
    if (service && !::ControlService(service.get(), SERVICE_CONTROL_STOP, &ignored)) {
        status = Tam_status::get_last_error();
    }
    if (status.ok()) {
        wait_for_state(service.get(), SERVICE_STOPPED, status);
    }
    push_failure(status, SPOOLER_E_CONTROL_STOP, name);
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
        m_service.start([this] { _tell(SERVICE_START_PENDING); }, status);
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
    static DWORD WINAPI _control(DWORD control, DWORD, void*, void* self)
    {
        return static_cast<Hosted_service*>(self)->_obey(control);
    }

    DWORD _obey(DWORD control)
    {
        Tam_status status; // reload() reports it
        switch (control) {
        case SERVICE_CONTROL_STOP:
        case SERVICE_CONTROL_SHUTDOWN:
            _tell(SERVICE_STOP_PENDING);
            m_service.stop();
            return NO_ERROR;
        case SERVICE_CONTROL_PARAMCHANGE:
            m_service.reload(status);
            return NO_ERROR;
        case SERVICE_CONTROL_INTERROGATE: // the manager knows the last state that it was told
            return NO_ERROR;
        default:
            return ERROR_CALL_NOT_IMPLEMENTED;
        }
    }

    // Each call while starting or stopping is a check point: it is going on.
    void _tell(DWORD state, const Tam_status& failure = Tam_status())
    {
        const std::lock_guard guard(m_lock);
        if (m_state.dwCurrentState == SERVICE_STOPPED) { // a control that came too late
            return;
        }
        const bool is_pending = state == SERVICE_START_PENDING || state == SERVICE_STOP_PENDING;
        m_state.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
        m_state.dwCheckPoint = is_pending ? m_state.dwCheckPoint + 1 : 0;
        m_state.dwWaitHint = is_pending ? STEP_LIMIT : 0;
        m_state.dwControlsAccepted =
            state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN | SERVICE_ACCEPT_PARAMCHANGE : 0;
        m_state.dwCurrentState = state;
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
    status.clear();
    if (!::StartServiceCtrlDispatcherW(services)) { // returns when the service has stopped
        status = Tam_status::get_last_error();
        status.push(SPOOLER_E_DISPATCHER);
    }
}
