// The spooler: a service that digests the files put into a folder. See README.md.
//
//     spooler console [NAME [PROFILE]]    runs in this window, until Ctrl+C or the client's "stop"
//     spooler install [NAME [PROFILE]]    makes it a service of the system
//     spooler start   [NAME]
//     spooler stop    [NAME]
//     spooler remove  [NAME]
//
// NAME is "spooler" when it is left out: the name of the service, of its pipe, its event source and its registry
// parameters. PROFILE is then NAME.ini beside the program. Several may run beside each other under different names.
//
// Exit code 0; 1 with the whole status chain on standard error when something failed; 2 when called wrongly.

#include <cstdio>
#include <exception>
#include <string>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <tam/text.h>

#include "report.h"
#include "service.h"
#include "service_control.h"
#include "spooler_messages.h"

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
    service.start([] {}, status);
    if (status.ok()) {
        console_service = &service;
        ::SetConsoleCtrlHandler(stop_console_service, TRUE);
        service.run(status);
        ::SetConsoleCtrlHandler(stop_console_service, FALSE);
    }
    if (!status.ok()) {
        report(status);
    }
}

std::wstring full_path(const std::wstring& path)
{
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

int usage()
{
    std::fputws(L"usage: spooler console|install [NAME [PROFILE]]\n"
                L"       spooler start|stop|remove [NAME]\n",
                stderr);
    return WRONG_USAGE;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stderr), _O_U8TEXT);
    const std::wstring mode = argc > 1 ? argv[1] : L"";
    const std::wstring name = argc > 2 ? argv[2] : L"spooler";
    const std::wstring profile = argc > 3 ? full_path(argv[3]) : beside_program(name + L".ini");
    const bool takes_profile = mode == L"console" || mode == L"install" || mode == L"service";
    if (argc > (takes_profile ? 4 : 3) || name.empty() || name.find_first_of(L"\"\\/") != std::wstring::npos) {
        return usage();
    }
    load_messages();
    Tam_status status;
    try {
        if (mode == L"console") {
            run_in_console(name, profile, status);
            return status.ok() ? DONE : FAILED;
        }
        if (mode == L"service") { // how install_service() has it called
            run_as_service(name, profile, status);
        } else if (mode == L"install") {
            install_service(name, profile, status);
        } else if (mode == L"start") {
            start_service(name, status);
        } else if (mode == L"stop") {
            stop_service(name, status);
        } else if (mode == L"remove") {
            remove_service(name, status);
        } else {
            return usage();
        }
    } catch (const std::exception& error) {
        status.push(SPOOLER_E_EXCEPTION, Tam_wstring_status_arg(tam_stow(error.what())));
    }
    if (!status.ok()) {
        print(status);
        return FAILED;
    }
    return DONE;
}
