#include <tests/support/test.h>

#include <tests/process/fixture.h>
#include <tests/process/pattern.h>

using namespace tam;
using test::chain;
using test::child_program;
using test::unique_name;

namespace {

constexpr unsigned int BUFFER = 64 * 1024;
constexpr std::size_t TRANSFER = 8 * 1024 * 1024;

class Named_pipe : public test::Limited {
protected:
    const std::wstring m_name = unique_name();
    const std::wstring m_path = L"\\\\.\\pipe\\" + m_name;
    Tam_status m_status;

    static Tam_pipe_server_options options(unsigned int mode, unsigned int instances = 1, bool overlapped = false)
    {
        return {mode, false, overlapped, BUFFER, BUFFER, 1000, instances};
    }

    // Reads until nothing comes. The longest wait is the fixture's limit.
    unsigned int checksum_to_the_end(const Tam_named_pipe& pipe)
    {
        std::vector<unsigned char> chunk(50000);
        test::Checksum sum;
        while (const unsigned int read = pipe.read(50000, chunk.data(), m_status)) {
            for (unsigned int i = 0; i < read; ++i) {
                sum.add(chunk[i]);
            }
        }
        return sum.value();
    }

    Tam_process start(const std::wstring& arguments)
    {
        Tam_process child(child_program(), arguments, {2, false, 0}, m_status);
        EXPECT_EQ(chain(m_status), L"");
        return child;
    }

    unsigned long long exit_code(const Tam_process& child)
    {
        child.wait(m_status, 20000);
        return child.get_exit_code(m_status);
    }
};

const unsigned char HELLO[] = {'h', 'e', 'l', 'l', 'o'};

} // namespace

TEST_F(Named_pipe, carries_bytes_both_ways)
{
    for (const bool overlapped : {false, true}) {
        SCOPED_TRACE(overlapped);
        m_status = 5;
        const Tam_named_pipe_server server(m_name, options(2, 1, overlapped), m_status);
        ASSERT_EQ(chain(m_status), L"5") << "only the client clears the status at its start";
        const Tam_named_pipe_client client(L".", m_name, {2}, m_status);
        ASSERT_EQ(chain(m_status), L"");
        m_status = 5;
        server.wait_for_client(m_status);
        ASSERT_EQ(chain(m_status), L"");

        m_status = 5;
        unsigned char read[10] = {};
        EXPECT_EQ(server.write(5, HELLO, m_status), 5U);
        EXPECT_EQ(client.read(2, read, m_status), 2U);
        EXPECT_EQ(client.read(8, read + 2, m_status), 3U) << "what is there, without waiting for the rest";
        EXPECT_EQ(std::string(read, read + 5), "hello");
        EXPECT_EQ(client.write(3, HELLO + 2, m_status), 3U);
        EXPECT_EQ(server.read(10, read, m_status), 3U);
        EXPECT_EQ(std::string(read, read + 3), "llo");
        EXPECT_EQ(chain(m_status), L"5") << "transfers do not touch the status";
    }
}

TEST_F(Named_pipe, modes_of_both_ends_must_agree)
{
    const wchar_t* const REFUSED = L"C200004E 5";
    const struct {
        unsigned int server;
        unsigned int client;
        const wchar_t* opened;
        unsigned int to_client; // bytes of five that arrive
        unsigned int to_server;
    } cases[] = {
        {0, 0, L"", 5, 0}, {0, 1, REFUSED, 0, 0},        {0, 2, REFUSED, 0, 0}, {1, 0, REFUSED, 0, 0},
        {1, 1, L"", 0, 5}, {1, 2, REFUSED, 0, 0},        {2, 0, L"", 5, 0},     {2, 1, L"", 0, 5},
        {2, 2, L"", 5, 5}, {2, 3, L"C200004E 87", 0, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::Message() << row.server << " and " << row.client);
        const Tam_named_pipe_server server(m_name, options(row.server), m_status);
        const Tam_named_pipe_client client(L".", m_name, {row.client}, m_status);
        EXPECT_EQ(chain(m_status), row.opened);
        if (row.opened[0] != L'\0') {
            m_status.clear();
            continue;
        }
        unsigned char read[5];
        server.write(5, HELLO, m_status);
        EXPECT_EQ(client.read(5, read, m_status), row.to_client);
        EXPECT_EQ(client.write(5, HELLO, m_status), row.to_server);
        if (row.to_server != 0 || row.server == Tam_pipe_server_options::OUTBOUND) { // else it waits
            EXPECT_EQ(server.read(5, read, m_status), row.to_server);
        }
        EXPECT_EQ(chain(m_status), L"") << "failed transfers are not reported";
    }
}

TEST_F(Named_pipe, without_a_pipe_every_operation_says_so)
{
    const Tam_named_pipe_client client(L".", m_name, {2}, m_status);
    EXPECT_EQ(chain(m_status), L"C200004E 2");
    unsigned char byte = 0;
    EXPECT_EQ(client.read(1, &byte, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200004D");
    m_status.clear();
    EXPECT_EQ(client.write(1, &byte, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200004D");

    m_status.clear();
    Tam_named_pipe_server server(m_name, options(3), m_status);
    EXPECT_EQ(chain(m_status), L"C200004C 87");
    server.wait_for_client(m_status);
    EXPECT_EQ(chain(m_status), L"C200004D");
    m_status.clear();
    EXPECT_EQ(server.read(1, &byte, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200004D");
    Tam_security security;
    server.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000075");
}

TEST_F(Named_pipe, instances_serve_a_client_each)
{
    const Tam_named_pipe_server first(m_name, options(2, 2), m_status);
    const Tam_named_pipe_server second(m_name, options(2, 2), m_status);
    ASSERT_EQ(chain(m_status), L"");
    const Tam_named_pipe_server third(m_name, options(2, 2), m_status);
    EXPECT_EQ(chain(m_status), L"C200004C 231");

    const Tam_named_pipe_client one(L".", m_name, {2}, m_status);
    const Tam_named_pipe_client two(L".", m_name, {2}, m_status);
    ASSERT_EQ(chain(m_status), L"");
    const Tam_named_pipe_client three(L".", m_name, {2}, m_status);
    EXPECT_EQ(chain(m_status), L"C200004E 231");

    m_status.clear();
    first.wait_for_client(m_status);
    second.wait_for_client(m_status);
    one.write(1, HELLO, m_status);
    two.write(1, HELLO + 1, m_status);
    unsigned char heard[2] = {};
    EXPECT_EQ(first.read(1, &heard[0], m_status), 1U);
    EXPECT_EQ(second.read(1, &heard[1], m_status), 1U);
    EXPECT_EQ(heard[0] + heard[1], 'h' + 'e');
}

TEST_F(Named_pipe, server_waits_for_its_client)
{
    for (const bool overlapped : {false, true}) {
        SCOPED_TRACE(overlapped);
        const Tam_named_pipe_server server(m_name, options(2, 1, overlapped), m_status);
        std::atomic<bool> connected = false;
        std::thread waiting([&] {
            Tam_status status(5);
            server.wait_for_client(status);
            EXPECT_EQ(chain(status), L"");
            connected = true;
        });
        ::Sleep(50);
        EXPECT_FALSE(connected);
        const Tam_named_pipe_client client(L".", m_name, {2}, m_status);
        EXPECT_EQ(chain(m_status), L"");
        waiting.join();
    }
}

TEST_F(Named_pipe, client_that_came_and_went_is_not_noticed_by_the_wait)
{
    const Tam_named_pipe_server server(m_name, options(2), m_status);
    {
        const Tam_named_pipe_client client(L".", m_name, {2}, m_status);
        client.write(5, HELLO, m_status);
    }
    server.wait_for_client(m_status);
    EXPECT_EQ(chain(m_status), L"");
    unsigned char read[10];
    EXPECT_EQ(server.read(10, read, m_status), 5U);
    EXPECT_EQ(server.read(10, read, m_status), 0U);
    EXPECT_EQ(server.write(5, HELLO, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"");
}

TEST_F(Named_pipe, one_thread_reads_while_another_writes_an_overlapped_end)
{
    const Tam_named_pipe_server server(m_name, options(2, 1, true), m_status);
    const Tam_named_pipe_client client(L".", m_name, {2}, m_status);
    unsigned char heard[5] = {};
    std::thread reader([&] {
        Tam_status status;
        EXPECT_EQ(server.read(5, heard, status), 5U);
    });
    ::Sleep(30);
    unsigned char byte = 0;
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(server.write(1, HELLO, m_status), 1U);
        ASSERT_EQ(client.read(1, &byte, m_status), 1U);
    }
    client.write(5, HELLO, m_status);
    reader.join();
    EXPECT_EQ(std::string(heard, heard + 5), "hello");
}

TEST_F(Named_pipe, closing_the_server_waits_for_what_the_client_has_not_read)
{
    auto server = std::make_unique<Tam_named_pipe_server>(m_name, options(0), m_status);
    const Tam_named_pipe_client client(L".", m_name, {0}, m_status);
    server->write(5, HELLO, m_status);
    std::atomic<bool> closed = false;
    std::thread closing([&] {
        server.reset();
        closed = true;
    });
    ::Sleep(50);
    EXPECT_FALSE(closed);
    unsigned char read[10];
    EXPECT_EQ(client.read(10, read, m_status), 5U);
    closing.join();
    EXPECT_EQ(client.read(10, read, m_status), 0U);
}

TEST_F(Named_pipe, server_receives_from_another_process)
{
    const Tam_named_pipe_server server(m_name, options(1), m_status);
    const Tam_process child = start(L"send " + m_path + L" " + std::to_wstring(TRANSFER));
    server.wait_for_client(m_status);
    EXPECT_EQ(checksum_to_the_end(server), test::pattern_checksum(TRANSFER));
    EXPECT_EQ(exit_code(child), 0U);
}

TEST_F(Named_pipe, server_sends_to_another_process)
{
    Tam_process child;
    {
        const Tam_named_pipe_server server(m_name, options(0), m_status);
        child = start(L"receive " + m_path);
        server.wait_for_client(m_status);
        std::vector<unsigned char> data(TRANSFER);
        for (std::size_t i = 0; i < TRANSFER; ++i) {
            data[i] = test::pattern_byte(i);
        }
        EXPECT_EQ(server.write(TRANSFER, data.data(), m_status), TRANSFER);
    }
    EXPECT_EQ(exit_code(child), test::pattern_checksum(TRANSFER));
}

TEST_F(Named_pipe, client_receives_from_another_process)
{
    const Tam_process child = start(L"serve " + m_path + L" " + std::to_wstring(TRANSFER));
    while (!::WaitNamedPipeW(m_path.c_str(), 1000)) {
        ASSERT_TRUE(child.is_running());
        ::Sleep(5);
    }
    const Tam_named_pipe_client client(L".", m_name, {0}, m_status);
    ASSERT_EQ(chain(m_status), L"");
    EXPECT_EQ(checksum_to_the_end(client), test::pattern_checksum(TRANSFER));
    EXPECT_EQ(exit_code(child), 0U);
}

TEST_F(Named_pipe, client_that_dies_is_told_by_the_counts)
{
    const Tam_named_pipe_server server(m_name, options(1), m_status);
    const Tam_process child = start(L"die " + m_path + L" 1000");
    server.wait_for_client(m_status);
    EXPECT_EQ(checksum_to_the_end(server), test::pattern_checksum(1000));
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(exit_code(child), 77U);
}

TEST_F(Named_pipe, security_is_associated_once)
{
    Tam_security creation;
    Tam_named_pipe_server server(m_name, options(2), m_status, &creation);
    Tam_security security;
    m_status = 5;
    server.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"");
    server.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000078");
}

TEST_F(Named_pipe, leaves_no_handle)
{
    const unsigned int before = test::open_handles();
    for (const bool overlapped : {false, true}) {
        const Tam_named_pipe_server server(m_name, options(2, 1, overlapped), m_status);
        const Tam_named_pipe_server second(m_name, options(2, 1, overlapped), m_status);
        const Tam_named_pipe_client client(L".", m_name, {2}, m_status);
        const Tam_named_pipe_client refused(L".", m_name, {2}, m_status);
        unsigned char byte = 0;
        server.write(1, &byte, m_status);
        client.read(1, &byte, m_status);
        EXPECT_EQ(test::open_handles(), before + 2);
    }
    EXPECT_EQ(test::open_handles(), before);
}
