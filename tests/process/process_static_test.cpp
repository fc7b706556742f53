#include <tests/support/test.h>

#include <iterator>

#include <tam/detail/win32.h>
#include <tests/process/fixture.h>

using namespace tam;
using test::chain;
using test::failing;
using test::Swap;

namespace {

const std::wstring REASON = L" " + std::to_wstring(ERROR_NOT_READY);

// What reached CreatePipe, CreateNamedPipeW and CreateFileW last.
SECURITY_ATTRIBUTES* g_attributes;
DWORD g_size;
std::wstring g_path;
DWORD g_numbers[6];

HANDLE WINAPI record_create_named_pipe(const wchar_t* path, DWORD open_mode, DWORD pipe_mode, DWORD instances,
                                       DWORD output, DWORD input, DWORD time_out, SECURITY_ATTRIBUTES* attributes)
{
    g_path = path;
    const DWORD numbers[] = {open_mode, pipe_mode, instances, output, input, time_out};
    std::copy(std::begin(numbers), std::end(numbers), g_numbers);
    g_attributes = attributes;
    ::SetLastError(ERROR_NOT_READY);
    return INVALID_HANDLE_VALUE;
}

HANDLE WINAPI record_create_file(const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* attributes,
                                 DWORD disposition, DWORD flags, HANDLE)
{
    g_path = path;
    const DWORD numbers[] = {access, sharing, disposition, flags};
    std::copy(std::begin(numbers), std::end(numbers), g_numbers);
    g_attributes = attributes;
    ::SetLastError(ERROR_NOT_READY);
    return INVALID_HANDLE_VALUE;
}

class Process_calls : public test::Limited {
protected:
    Tam_status m_status;
    Tam_security m_security;
    unsigned char m_bytes[12] = {};
};

} // namespace

TEST_F(Process_calls, free_library)
{
    const auto guard = failing<ERROR_NOT_READY>(detail::win32.free_library);
    tam_unload_library(this, m_status);
    EXPECT_EQ(chain(m_status), L"C2000005" + REASON);
}

TEST_F(Process_calls, create_pipe)
{
    // Leaves rubbish where the ends go.
    const Swap guard(
        detail::win32.create_pipe,
        +[](HANDLE* read, HANDLE* write, SECURITY_ATTRIBUTES* attributes, DWORD size) WINAPI -> BOOL {
            *read = *write = INVALID_HANDLE_VALUE;
            g_attributes = attributes;
            g_size = size;
            return FALSE;
        });
    m_status = 5;
    Tam_anonymous_pipe pipe(m_status, 777, &m_security);
    EXPECT_EQ(chain(m_status), L"C200003F");
    EXPECT_EQ(g_size, 777U);
    EXPECT_EQ(g_attributes, m_security.security_attributes(false));
    EXPECT_EQ(pipe.write(m_bytes, 12, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C2000042");
    EXPECT_EQ(pipe.read(m_bytes, 12, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C2000044");
    pipe.add_security(m_security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000075");

    const Tam_anonymous_pipe plain(m_status);
    EXPECT_EQ(g_size, 0U);
    EXPECT_EQ(g_attributes, nullptr);
}

TEST_F(Process_calls, reading_an_anonymous_pipe_tests_its_write_end)
{
    const Swap guard(
        detail::win32.create_pipe, +[](HANDLE* read, HANDLE* write, SECURITY_ATTRIBUTES*, DWORD size) WINAPI -> BOOL {
            HANDLE* const wanted = size == 1 ? read : write;
            *read = *write = nullptr;
            *wanted = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
            return TRUE;
        });
    Tam_anonymous_pipe read_end_alone(m_status, 1);
    read_end_alone.read(m_bytes, 12, m_status);
    EXPECT_EQ(chain(m_status), L"C2000044");
    Tam_anonymous_pipe write_end_alone(m_status, 2);
    write_end_alone.read(m_bytes, 12, m_status);
    EXPECT_EQ(chain(m_status), L"C2000043");
    write_end_alone.add_security(m_security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000075");
    write_end_alone.add_security(m_security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000075") << "nothing was associated before";
}

TEST_F(Process_calls, transfers_of_an_anonymous_pipe)
{
    Tam_anonymous_pipe pipe(m_status);
    {
        const auto guard = failing<ERROR_NOT_READY>(detail::win32.write_file);
        m_status = 5;
        EXPECT_EQ(pipe.write(m_bytes, 12, m_status), 0U);
        EXPECT_EQ(chain(m_status), L"C2000041");
    }
    {
        const auto guard = failing<ERROR_NOT_READY>(detail::win32.read_file);
        m_status = 5;
        EXPECT_EQ(pipe.read(m_bytes, 12, m_status), 0U);
        EXPECT_EQ(chain(m_status), L"C2000043");
    }
    EXPECT_EQ(pipe.write(m_bytes, 12, m_status), 12U);
    EXPECT_EQ(pipe.read(m_bytes, 12, m_status), 12U);
    EXPECT_EQ(chain(m_status), L"");
}

TEST_F(Process_calls, what_a_named_pipe_is_made_with)
{
    const Swap guard(detail::win32.create_named_pipe, &record_create_named_pipe);
    const struct {
        Tam_pipe_server_options options;
        DWORD open_mode;
    } cases[] = {
        {{0, false, false, 1, 2, 3, 4}, 2},
        {{1, true, false, 1, 2, 3, 4}, 0x80000001},
        {{2, false, true, 1, 2, 3, 4}, 0x40000003},
        {{2, true, true, 1, 2, 3, 4}, 0xC0000003},
    };
    for (const auto& row : cases) {
        m_status.clear();
        const Tam_named_pipe_server server(L"some\x20AC", row.options, m_status, &m_security);
        EXPECT_EQ(chain(m_status), L"C200004C" + REASON);
        EXPECT_EQ(g_path, L"\\\\.\\pipe\\some\x20AC");
        EXPECT_EQ(g_attributes, m_security.security_attributes(false));
        const DWORD expected[] = {row.open_mode, 0, 4, 2, 1, 3};
        EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), g_numbers)) << g_numbers[0];
    }
    m_status = 5;
    const Tam_named_pipe_server server(L"", {}, m_status);
    EXPECT_EQ(g_attributes, nullptr);
}

TEST_F(Process_calls, what_a_named_pipe_is_opened_with)
{
    const Swap guard(detail::win32.create_file, &record_create_file);
    const DWORD access[] = {0x80000000, 0x40000000, 0xC0000000};
    for (unsigned int mode = 0; mode < 3; ++mode) {
        const Tam_named_pipe_client client(L"server", L"name", {mode}, m_status);
        EXPECT_EQ(chain(m_status), L"C200004E" + REASON);
        EXPECT_EQ(g_path, L"\\\\server\\pipe\\name");
        EXPECT_EQ(g_attributes, nullptr);
        const DWORD expected[] = {access[mode], 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL};
        EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), g_numbers));
    }
}

TEST_F(Process_calls, transfers_of_a_named_pipe)
{
    for (const bool overlapped : {false, true}) {
        SCOPED_TRACE(overlapped);
        const std::wstring name = test::unique_name();
        const Tam_named_pipe_server server(name, {2, false, overlapped, 4096, 4096, 0, 1}, m_status);
        const Tam_named_pipe_client client(L".", name, {2}, m_status);
        const unsigned int before = test::open_handles();
        m_status = 5;
        {
            const auto guard = failing<ERROR_NOT_READY>(detail::win32.write_file);
            EXPECT_EQ(server.write(12, m_bytes, m_status), 0U);
        }
        {
            const auto guard = failing<ERROR_NOT_READY>(detail::win32.read_file);
            EXPECT_EQ(server.read(12, m_bytes, m_status), 0U);
        }
        if (overlapped) {
            const auto guard = failing<0>(detail::win32.create_event);
            EXPECT_EQ(server.write(12, m_bytes, m_status), 0U);
            EXPECT_EQ(server.read(12, m_bytes, m_status), 0U);
        }
        EXPECT_EQ(server.write(12, m_bytes, m_status), 12U);
        EXPECT_EQ(client.read(12, m_bytes, m_status), 12U);
        EXPECT_EQ(chain(m_status), L"5");
        EXPECT_EQ(test::open_handles(), before);
    }
}

TEST_F(Process_calls, terminate_process_and_get_exit_code_process)
{
    const std::wstring program = test::child_program();
    const Tam_process process(program, L"sleep 20000", {2, false, 0}, m_status);
    {
        const auto guard = failing<ERROR_NOT_READY>(detail::win32.terminate_process);
        process.terminate(m_status);
        EXPECT_EQ(chain(m_status), L"C2000049(" + program + L")" + REASON);
    }
    EXPECT_TRUE(process.is_running());
    m_status.clear();
    process.terminate(m_status);
    EXPECT_EQ(chain(m_status), L"");
    process.wait(m_status, 10000);
    {
        const auto guard = failing<ERROR_NOT_READY>(detail::win32.get_exit_code_process);
        process.get_exit_code(m_status);
        EXPECT_EQ(chain(m_status), L"C200004A(" + program + L")" + REASON);
    }
}
