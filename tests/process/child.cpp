// Does what its arguments say, by raw calls of the platform:
//
//     exit CODE            ends with the code
//     sleep MILLISECONDS   ends with 0 after a while
//     echo FILE WORD ...   writes all its arguments, the zeroth included, into the file, a line each, as UTF-16
//     send PIPE COUNT      opens the pipe and writes so many bytes of the pattern
//     serve PIPE COUNT     the same as server of the pipe
//     receive PIPE         opens the pipe, reads to the end and ends with the checksum
//     die PIPE COUNT       opens the pipe, writes so many bytes and is gone, without closing anything

#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

#include <windows.h>

#include <tests/process/pattern.h>

namespace {

constexpr std::size_t CHUNK = 64 * 1024;
constexpr int FAILED = 99;
constexpr UINT KILLED = 77;

HANDLE open_pipe(const wchar_t* path, DWORD access)
{
    return ::CreateFileW(path, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

bool write(HANDLE pipe, std::size_t count)
{
    std::vector<unsigned char> chunk;
    for (std::size_t sent = 0; sent < count; sent += chunk.size()) {
        chunk.resize(count - sent < CHUNK ? count - sent : CHUNK);
        for (std::size_t i = 0; i < chunk.size(); ++i) {
            chunk[i] = tam::test::pattern_byte(sent + i);
        }
        DWORD written = 0;
        if (!::WriteFile(pipe, chunk.data(), static_cast<DWORD>(chunk.size()), &written, nullptr)) {
            return false;
        }
    }
    return true;
}

int receive(HANDLE pipe)
{
    std::vector<unsigned char> chunk(CHUNK);
    tam::test::Checksum sum;
    DWORD read = 0;
    while (::ReadFile(pipe, chunk.data(), static_cast<DWORD>(chunk.size()), &read, nullptr)) {
        for (DWORD i = 0; i < read; ++i) {
            sum.add(chunk[i]);
        }
    }
    return static_cast<int>(sum.value());
}

int serve(const wchar_t* path, std::size_t count)
{
    const HANDLE pipe = ::CreateNamedPipeW(path, PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, CHUNK, CHUNK, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) {
        return FAILED;
    }
    if (!::ConnectNamedPipe(pipe, nullptr) && ::GetLastError() != ERROR_PIPE_CONNECTED) {
        return FAILED;
    }
    const bool done = write(pipe, count);
    ::FlushFileBuffers(pipe);
    return done ? 0 : FAILED;
}

int echo(const wchar_t* path, int count, wchar_t** words)
{
    std::wstring text;
    for (int i = 0; i < count; ++i) {
        text += std::wstring(words[i]) + L'\n';
    }
    const HANDLE file = ::CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    const BOOL done =
        ::WriteFile(file, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)), &written, nullptr);
    return done ? 0 : FAILED;
}

} // namespace

int wmain(int count, wchar_t** words)
{
    if (count < 3) {
        return FAILED;
    }
    const std::wstring command = words[1];
    const unsigned long long number = std::wcstoull(words[count - 1], nullptr, 10);
    if (command == L"exit") {
        return static_cast<int>(std::wcstoll(words[2], nullptr, 10));
    }
    if (command == L"sleep") {
        ::Sleep(static_cast<DWORD>(number));
        return 0;
    }
    if (command == L"echo") {
        return echo(words[2], count, words);
    }
    if (command == L"send") {
        return write(open_pipe(words[2], GENERIC_WRITE), number) ? 0 : FAILED;
    }
    if (command == L"serve") {
        return serve(words[2], number);
    }
    if (command == L"receive") {
        return receive(open_pipe(words[2], GENERIC_READ));
    }
    if (command == L"die") {
        write(open_pipe(words[2], GENERIC_WRITE), number);
        ::TerminateProcess(::GetCurrentProcess(), KILLED);
    }
    return FAILED;
}
