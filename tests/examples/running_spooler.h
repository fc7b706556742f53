#pragma once

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <tests/support/registry_branch.h>
#include <tests/support/temporary_folder.h>
#include <tests/support/time_limit.h>
#include <tests/support/unique_name.h>

namespace tam::test {

/// How long a test waits for what must come.
constexpr DWORD PATIENCE = 20000;

/// A process whose standard output and error go to a file. Ended with the scope.
class Program {
public:
    Program(const std::wstring& program, const std::wstring& arguments, const std::wstring& output)
    {
        wchar_t own[MAX_PATH];
        ::GetModuleFileNameW(nullptr, own, MAX_PATH);
        std::wstring command = own;
        command = L"\"" + command.substr(0, command.rfind(L'\\') + 1) + program + L".exe\" " + arguments;
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        const HANDLE file = ::CreateFileW(output.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          &inherit, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = start.hStdError = file;
        EXPECT_TRUE(
            ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &m_process));
        ::CloseHandle(file);
    }
    ~Program()
    {
        kill();
        ::CloseHandle(m_process.hThread);
        ::CloseHandle(m_process.hProcess);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void kill()
    {
        ::TerminateProcess(m_process.hProcess, 99);
        ::WaitForSingleObject(m_process.hProcess, PATIENCE);
    }

    /// Waits for the end; STILL_ACTIVE when it does not come.
    DWORD exit_code(DWORD milliseconds = PATIENCE) const
    {
        ::WaitForSingleObject(m_process.hProcess, milliseconds);
        DWORD code = STILL_ACTIVE;
        ::GetExitCodeProcess(m_process.hProcess, &code);
        return code;
    }

    DWORD id() const { return m_process.dwProcessId; }

private:
    PROCESS_INFORMATION m_process{};
};

/// Whether the condition became true in time.
template <class Condition>
bool becomes_true(Condition condition, DWORD milliseconds = PATIENCE)
{
    const ULONGLONG start = ::GetTickCount64();
    while (!condition()) {
        if (::GetTickCount64() - start > milliseconds) {
            return false;
        }
        ::Sleep(10);
    }
    return true;
}

/// A client of the pipe, by raw calls.
class Client {
public:
    /// Waits until there is an instance without a client.
    explicit Client(const std::wstring& name)
    {
        const std::wstring path = L"\\\\.\\pipe\\" + name;
        becomes_true([&] {
            m_pipe = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
            return m_pipe != INVALID_HANDLE_VALUE;
        });
    }
    ~Client() { ::CloseHandle(m_pipe); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    HANDLE handle() const { return m_pipe; }

    void say(const std::wstring& text) const
    {
        DWORD written;
        ::WriteFile(m_pipe, text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)), &written, nullptr);
    }

    /// The answer without its end; empty when the service broke off.
    std::wstring hear() const
    {
        std::wstring text;
        wchar_t chunk[4096];
        DWORD read;
        while (::ReadFile(m_pipe, chunk, sizeof chunk, &read, nullptr) && read != 0) {
            text.append(chunk, read / sizeof(wchar_t));
            if (text.back() == L'\0') {
                return text.substr(0, text.size() - 1);
            }
        }
        return L"";
    }

private:
    HANDLE m_pipe = INVALID_HANDLE_VALUE;
};

/// A line of the journal, without its id and time, and how often it is there.
struct Journal_line {
    std::wstring outcome;
    unsigned int crc = 0;
    unsigned long long bytes = 0;
    unsigned long long lines = 0;
    unsigned int times = 0;

    bool operator==(const Journal_line&) const = default;
    friend void PrintTo(const Journal_line& line, std::ostream* out)
    {
        *out << (line.outcome == L"done" ? "done " : "not done ") << line.crc << ' ' << line.bytes << ' ' << line.lines
             << " times " << line.times;
    }
};

/// The CRC-32 of bytes, as the system computes it.
unsigned int system_crc(const std::string& bytes);

/// A test with a folder, a profile and a name of its own for the service.
class Spooler : public testing::Test {
protected:
    Spooler() { write_profile(); }

    void write_profile(const std::wstring& settings = L"") const
    {
        m_folder.file(L"spooler.ini", bytes_of(L"\xFEFF[Spooler]\r\n" + settings + L"\r\nFolder = " + m_spool +
                                               L"\r\nPeriod = 20\r\n"));
    }

    Program start(const std::wstring& mode = L"console") const
    {
        return {L"spooler", mode + L" " + m_name + L" \"" + m_folder / L"spooler.ini" + L"\"",
                m_folder / L"report.txt"};
    }
    DWORD control(const std::wstring& mode) const
    {
        return Program(L"spooler", mode + L" " + m_name, m_folder / L"report.txt").exit_code();
    }

    std::wstring ask(const std::wstring& request) const
    {
        const Client client(m_name);
        client.say(request + L"\n");
        return client.hear();
    }

    /// A figure of the service's status.
    unsigned long long figure(const std::wstring& name) const
    {
        const std::wstring status = ask(L"status");
        const std::size_t line = status.find(L"\n" + name + L" ");
        return line == std::wstring::npos ? 0 : std::wcstoull(status.c_str() + line + 1 + name.size(), nullptr, 10);
    }
    bool comes_to(const std::wstring& name, unsigned long long value) const
    {
        return becomes_true([&] { return figure(name) == value; });
    }

    /// Puts a whole file into the spool folder at once.
    void spool(const std::wstring& name, const std::string& bytes) const
    {
        const std::wstring file = m_folder.file(L"being written", bytes);
        EXPECT_TRUE(::MoveFileW(file.c_str(), incoming(name).c_str()));
    }
    std::wstring incoming(const std::wstring& name) const { return m_spool + L"\\incoming\\" + name; }

    /// The files in one of the folders: their names, without ids, and their paths.
    std::multimap<std::wstring, std::wstring> files(const std::wstring& folder) const
    {
        std::multimap<std::wstring, std::wstring> found;
        const std::wstring path = m_spool + L"\\" + folder + L"\\";
        WIN32_FIND_DATAW data;
        const HANDLE search = ::FindFirstFileW((path + L"*").c_str(), &data);
        for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = ::FindNextFileW(search, &data)) {
            const std::wstring key = data.cFileName;
            if (key[0] != L'.') {
                found.emplace(key.substr(key.find(L'_') + 1), path + key);
            }
        }
        ::FindClose(search);
        return found;
    }

    /// The journal by the names of the files.
    std::map<std::wstring, Journal_line> journal() const
    {
        const std::string bytes = Temporary_folder::bytes_of(m_spool + L"\\journal.txt");
        EXPECT_EQ(bytes.size() % 2, 0U);
        std::wistringstream text(std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2));
        std::map<std::wstring, Journal_line> lines;
        std::wstring id, time, outcome, crc, size, count, name;
        while (std::getline(text, id, L'\t') && std::getline(text, time, L'\t') && std::getline(text, outcome, L'\t') &&
               std::getline(text, crc, L'\t') && std::getline(text, size, L'\t') && std::getline(text, count, L'\t') &&
               std::getline(text, name, L'\r') && text.get() == L'\n') {
            lines[name] = {outcome, static_cast<unsigned int>(std::wcstoul(crc.c_str(), nullptr, 16)),
                           std::wcstoull(size.c_str(), nullptr, 10), std::wcstoull(count.c_str(), nullptr, 10),
                           lines[name].times + 1};
        }
        return lines;
    }
    /// The line that the journal must have of a file.
    static Journal_line expected(const std::string& bytes)
    {
        unsigned long long lines = 0;
        for (std::size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n', end + 1)) {
            ++lines;
        }
        return {L"done", system_crc(bytes), bytes.size(), lines, 1};
    }

    /// How often the text is in what the programs have printed.
    unsigned int reported(const std::string& text) const
    {
        const std::string all = Temporary_folder::bytes_of(m_folder / L"report.txt");
        unsigned int count = 0;
        for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + 1)) {
            ++count;
        }
        return count;
    }

    const Time_limit m_limit{200000};
    const Temporary_folder m_folder;
    const std::wstring m_spool = m_folder / L"spool";
    const std::wstring m_name = unique_name(L"spooler");
};

} // namespace tam::test
