// Runs a program to its end, and talks to a client through a named pipe.
//
// Prints:
//     exit code 3
//     the client says: 2 jobs

#include <iostream>
#include <string>

#include <windows.h>

#include <tam/process.h>
#include <tam/status.h>

using namespace tam;

int main()
{
    Tam_status status;

    // The search path is not searched, so the program is given by its full path.
    wchar_t system[MAX_PATH];
    GetSystemDirectoryW(system, MAX_PATH);
    Tam_process command(std::wstring(system) + L"\\cmd.exe", L"/c exit 3", {Tam_process_details::COMPLETE}, status);
    std::wcout << L"exit code " << command.get_exit_code(status) << L'\n';

    // The server reads, clients write; one instance, with room for 4096 bytes.
    const std::wstring name = L"first_steps." + std::to_wstring(GetCurrentProcessId());
    Tam_named_pipe_server server(name, {Tam_pipe_server_options::INBOUND, false, false, 4096, 4096, 0, 1}, status);
    Tam_named_pipe_client client(L".", name, {Tam_pipe_client_options::WRITE}, status);
    if (!status.ok()) {
        return 1;
    }
    const unsigned char report[] = {'2', ' ', 'j', 'o', 'b', 's'};
    client.write(sizeof(report), report, status);
    server.wait_for_client(status);

    // A transfer that fails is told by its count alone.
    unsigned char received[64];
    const unsigned int count = server.read(sizeof(received), received, status);
    std::wcout << L"the client says: " << std::wstring(received, received + count) << L'\n';
}
