// Sends a request to a running spooler and shows the answer.
//
//     spooler_client NAME status
//     spooler_client NAME journal N    the last N lines
//     spooler_client NAME reload       reads the settings again
//     spooler_client NAME stop
//
// Exit code 0; 1 when the request failed, or with the status chain on standard error when no service answered; 2 when
// called wrongly.

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <tam/process/named_pipe.h>
#include <tam/thread/sleep.h>

#include "protocol.h"
#include "report.h"
#include "spooler_messages.h"

using namespace tam;

namespace {

enum Exit_code { DONE = 0, FAILED = 1, WRONG_USAGE = 2 };

constexpr unsigned int RETRY_PERIOD = 20; // milliseconds
constexpr unsigned int RETRIES = 250;

// While all its instances have clients the pipe is busy.
std::unique_ptr<Tam_named_pipe_client> open_pipe(const std::wstring& name, Tam_status& status)
{
    std::unique_ptr<Tam_named_pipe_client> pipe;
    for (unsigned int i = 0; i < RETRIES; ++i) {
        pipe = std::make_unique<Tam_named_pipe_client>(L".", name,
                                                       Tam_pipe_client_options{Tam_pipe_client_options::BOTH}, status);
        if (!is_caused_by(status, ERROR_PIPE_BUSY)) {
            break;
        }
        tam_thread_sleep(RETRY_PERIOD);
    }
    return pipe;
}

// Waits until something has arrived; nothing when the pipe was closed. A unit can arrive in halves.
std::wstring_view read_units(const Tam_named_pipe_client& pipe, wchar_t (&chunk)[4096], Tam_status& status)
{
    auto* const bytes = reinterpret_cast<unsigned char*>(chunk);
    unsigned int count = 0;
    unsigned int arrived = 0;
    do {
        arrived = pipe.read(sizeof chunk - count, bytes + count, status);
        count += arrived;
    } while (arrived != 0 && count % sizeof(wchar_t) != 0);
    return {chunk, count / sizeof(wchar_t)};
}

// Prints the answer as it arrives. Its last line says whether the request was done; without one the service broke off.
Exit_code show_answer(const Tam_named_pipe_client& pipe, Tam_status& status)
{
    wchar_t chunk[4096];
    std::wstring line;
    for (;;) {
        const std::wstring_view units = read_units(pipe, chunk, status);
        if (units.empty()) {
            status.push(SPOOLER_E_BROKEN_OFF);
            return FAILED;
        }
        for (const wchar_t unit : units) {
            if (unit != L'\n') {
                line += unit;
            } else if (line == protocol::DONE || line == protocol::FAILED) {
                return line == protocol::DONE ? DONE : FAILED;
            } else {
                std::fputws((line.substr(1) + L"\n").c_str(), stdout);
                line.clear();
            }
        }
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    _setmode(_fileno(stderr), _O_U8TEXT);
    if (argc < 3 || argc > 4) {
        std::fputws(L"usage: spooler_client NAME status|journal N|reload|stop\n", stderr);
        return WRONG_USAGE;
    }
    load_messages();
    const std::wstring name = argv[1];
    const std::wstring request = argv[2] + (argc > 3 ? L' ' + std::wstring(argv[3]) : L"") + L'\n';
    Tam_status status;
    const std::unique_ptr<Tam_named_pipe_client> pipe = open_pipe(name, status);
    Exit_code result = FAILED;
    if (!status.ok()) {
        status.push(SPOOLER_E_NO_SERVICE, Tam_wstring_status_arg(name));
    } else {
        const auto bytes = static_cast<unsigned int>(request.size() * sizeof(wchar_t));
        pipe->write(bytes, reinterpret_cast<const unsigned char*>(request.data()), status);
        result = show_answer(*pipe, status);
    }
    if (!status.ok()) {
        print(status);
    }
    return result;
}
