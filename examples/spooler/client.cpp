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

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <tam/tam.h>

#include "protocol.h"
#include "report.h"

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

// Empty when the service broke off.
std::wstring ask(const Tam_named_pipe_client& pipe, const std::wstring& request, Tam_status& status)
{
    pipe.write(static_cast<unsigned int>(request.size() * sizeof(wchar_t)),
               reinterpret_cast<const unsigned char*>(request.data()), status);
    std::wstring answer;
    wchar_t chunk[4096];
    while (const unsigned int bytes = pipe.read(sizeof chunk, reinterpret_cast<unsigned char*>(chunk), status)) {
        answer.append(chunk, bytes / sizeof(wchar_t));
        if (answer.back() == protocol::END) {
            return answer;
        }
    }
    return L"";
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
    const std::wstring answer = status.ok() ? ask(*pipe, request, status) : L"";
    if (answer.empty()) {
        status.push(SPOOLER_E_NO_SERVICE, Tam_wstring_status_arg(name));
        print(status);
        return FAILED;
    }
    std::fputws(answer.c_str() + answer.find(L'\n') + 1, stdout);
    return answer.starts_with(protocol::DONE) ? DONE : FAILED;
}
