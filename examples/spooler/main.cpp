// The spooler: a service that digests the files put into a folder. See README.md.
//
//     spooler console [NAME [PROFILE]]    runs in this window, until Ctrl+C or the client's "stop"
//     spooler install [NAME [PROFILE]]    makes it a service of the system
//     spooler start   [NAME]
//     spooler stop    [NAME]
//     spooler remove  [NAME]
//
// NAME is "spooler" when it is left out: the name of the service, of its pipe, its event source and its registry
// parameters. PROFILE is then NAME.ini. Several may run beside each other under different names.
//
// Exit code 0; 1 with the whole status chain on standard error when something failed; 2 when called wrongly.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "report.h"
#include "service.h"
#include "service_control.h"

using namespace tam;

namespace {

enum Exit_code { DONE = 0, FAILED = 1, WRONG_USAGE = 2 };

Service* console_service = nullptr; // what Ctrl+C stops

BOOL WINAPI stop_console_service(DWORD)
{
    console_service->stop();
    return TRUE;
}

void run_in_console(const std::wstring& name, const std::wstring& profile, Tam_status& status)
{
    const Report report(name, true);
    Service service(name, profile, report);
    service.start(status);
    if (status.ok()) {
        console_service = &service;
        ::SetConsoleCtrlHandler(stop_console_service, TRUE);
        service.run(status);
        ::SetConsoleCtrlHandler(stop_console_service, FALSE);
    }
    if (!status.ok()) {
        const Report event_log(name, false); // main() prints it
        event_log(status);
    }
}

constexpr struct {
    const wchar_t* name;
    void (*run)(const std::wstring& name, const std::wstring& profile, Tam_status& status);
} MODES[] = {
    {L"console", run_in_console}, {L"install", install_service}, {L"start", start_service},
    {L"stop", stop_service},      {L"remove", remove_service},   {L"service", run_as_service}, // as it is installed
};

std::wstring full_path(const std::wstring& path)
{
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stderr), _O_U8TEXT);
    const std::wstring mode = argc > 1 ? argv[1] : L"";
    const std::wstring name = argc > 2 ? argv[2] : L"spooler";
    const auto* const called =
        std::find_if(std::begin(MODES), std::end(MODES), [&](const auto& one) { return mode == one.name; });
    if (called == std::end(MODES) || argc > 4 || name.empty() || name.find_first_of(L"\"\\/") != std::wstring::npos) {
        std::fputws(L"usage: spooler console|install [NAME [PROFILE]]\n"
                    L"       spooler start|stop|remove [NAME]\n",
                    stderr);
        return WRONG_USAGE;
    }
    load_messages();
    Tam_status status;
    try {
        called->run(name, full_path(argc > 3 ? argv[3] : name + L".ini"), status);
    } catch (const std::exception& error) {
        status.push(SPOOLER_E_EXCEPTION, Tam_wstring_status_arg(std::string(error.what())));
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_COMMAND, Tam_wstring_status_arg(mode), Tam_wstring_status_arg(name));
        print(status);
        return FAILED;
    }
    return DONE;
}
