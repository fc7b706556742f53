#include <tests/support/test.h>

#include <tests/process/fixture.h>

using namespace tam;
using test::chain;
using test::child_program;

namespace {

class Process : public test::Limited {
protected:
    const std::wstring m_program = child_program();
    Tam_status m_status;

    // What the child of "echo FILE ..." wrote.
    static std::wstring echoed(const std::wstring& file)
    {
        const std::string bytes = test::Temporary_folder::bytes_of(file);
        return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t));
    }

    // A child that runs until it is terminated.
    Tam_process sleeper()
    {
        Tam_process process(m_program, L"sleep 20000", {2, false, 0}, m_status);
        EXPECT_EQ(chain(m_status), L"");
        return process;
    }
};

} // namespace

TEST_F(Process, that_was_never_started_does_nothing)
{
    const Tam_process process;
    m_status = 5;
    EXPECT_EQ(process.get_exit_code(m_status), 0U);
    process.terminate(m_status);
    EXPECT_EQ(chain(m_status), L"5");
    process.wait(m_status, 0xFFFFFFFF);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_FALSE(process.is_running());
}

TEST_F(Process, exit_codes_by_mode)
{
    const struct {
        const wchar_t* arguments;
        unsigned int mode;
        unsigned long long expected;
    } cases[] = {
        {L"exit 3", 0, 3},
        {L"exit 3", 1, 3},
        {L"exit 3", 2, 3},
        {L"exit 259", 2, 259},
        {L"exit -1", 0, 0xFFFFFFFFFFFFFFFF},
        {L"exit -1", 2, 0xFFFFFFFF},
        {L"exit 2147483648", 1, 0xFFFFFFFF80000000},
        {L"exit 2147483647", 0, 0x7FFFFFFF},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::Message() << testing::PrintToString(row.arguments) << " in mode " << row.mode);
        m_status = 5;
        const Tam_process process(m_program, row.arguments, {row.mode, true, 20000}, m_status);
        EXPECT_EQ(chain(m_status), L"");
        EXPECT_FALSE(process.is_running());
        m_status = 5;
        EXPECT_EQ(process.get_exit_code(m_status), row.expected);
        EXPECT_EQ(chain(m_status), L"5");
    }
}

TEST_F(Process, that_cannot_be_started_is_reported_in_the_background_only)
{
    for (const unsigned int mode : {0U, 1U}) {
        Tam_process process(L"no_such_program.exe", L"x", {mode, true, 10}, m_status);
        EXPECT_EQ(chain(m_status), L"");
        EXPECT_EQ(process.get_exit_code(m_status), 0xFFFFFFFFFFFFFFFF);
        EXPECT_EQ(chain(m_status), L"");
    }
    for (const unsigned int mode : {2U, 3U, 0xFFFFFFFFU}) {
        Tam_process process(L"no_such_program.exe", L"x", {mode, true, 10}, m_status);
        EXPECT_EQ(chain(m_status), L"C2000048(no_such_program.exe)");
        EXPECT_FALSE(process.is_running());
        m_status.clear();
        process.get_exit_code(m_status);
        EXPECT_EQ(chain(m_status), L"C200004A(no_such_program.exe) 6");
    }
}

TEST_F(Process, arguments_reach_the_child_split_at_blanks_outside_quotes)
{
    const test::Temporary_folder folder;
    const std::wstring roomy = folder / L"with blanks in it";
    ASSERT_TRUE(::CreateDirectoryW(roomy.c_str(), nullptr));
    const std::wstring copy = roomy + L"\\the child.exe";
    ASSERT_TRUE(::CopyFileW(m_program.c_str(), copy.c_str(), TRUE));
    const std::wstring file = folder / L"out";
    for (const std::wstring& program : {m_program, copy}) {
        for (const unsigned int mode : {0U, 1U, 2U}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(program) << " in mode " << mode);
            const Tam_process process(program, L"echo " + file + L" one  \"two 2\" \\\"three \x20AC",
                                      {mode, true, 20000}, m_status);
            EXPECT_EQ(chain(m_status), L"");
            EXPECT_EQ(process.get_exit_code(m_status), 0U);
            EXPECT_EQ(echoed(file), program + L"\necho\n" + file + L"\none\ntwo 2\n\"three\n\x20AC\n");
            ::DeleteFileW(file.c_str());
        }
    }
}

TEST_F(Process, in_the_background_until_it_is_terminated)
{
    Tam_process process(m_program, L"sleep 20000", {2, true, 10}, m_status);
    EXPECT_EQ(chain(m_status), L"C2000047(" + m_program + L", sleep 20000)");
    EXPECT_TRUE(process.is_running());
    process.wait(m_status, 0x500000000); // the low half alone counts
    EXPECT_EQ(chain(m_status), L"C2000047(" + m_program + L", sleep 20000)");
    m_status.clear();
    process.get_exit_code(m_status);
    EXPECT_EQ(chain(m_status), L"C200004B(" + m_program + L")");

    m_status = 5;
    process.terminate(m_status);
    EXPECT_EQ(chain(m_status), L"5");
    process.wait(m_status, 10000);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_FALSE(process.is_running());
    EXPECT_EQ(process.get_exit_code(m_status), 0U);
    EXPECT_EQ(chain(m_status), L"");
}

TEST_F(Process, second_start_is_refused_while_the_first_runs)
{
    Tam_process process = sleeper();
    process.start_process(L"second.exe", L"for nothing", {2, true, 0}, m_status);
    EXPECT_EQ(chain(m_status), L"C2000048(second.exe) C2000060");
    EXPECT_TRUE(process.is_running());
    process.wait(m_status, 0);
    EXPECT_EQ(chain(m_status), L"C2000047(second.exe, for nothing)");

    process.start_process(m_program, L"exit 3", {0, false, 0}, m_status);
    EXPECT_EQ(chain(m_status), L"C2000048(" + m_program + L") C2000060");
    m_status.clear();
    EXPECT_EQ(process.get_exit_code(m_status), 0U) << "the mode is the new one's, nothing ran";
    EXPECT_EQ(chain(m_status), L"");

    process.terminate(m_status);
    process.wait(m_status, 10000);
    process.start_process(m_program, L"exit 4", {2, true, 20000}, m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(process.get_exit_code(m_status), 4U);
}

TEST_F(Process, copies_share_the_handle_and_each_closes_it)
{
    const std::wstring name = test::unique_name();
    const std::wstring path = L"\\\\.\\pipe\\" + name;
    const Tam_process process(m_program, L"serve " + path + L" 0", {2, false, 0}, m_status);
    {
        const Tam_process copy(process);
        Tam_process assigned;
        assigned = process;
        EXPECT_TRUE(copy.is_running());
        EXPECT_TRUE(assigned.is_running());
    }
    EXPECT_FALSE(process.is_running()) << "its handle is closed";

    // The child ends when it has had its client.
    while (!::WaitNamedPipeW(path.c_str(), 1000)) {
        ::Sleep(5);
    }
    const Tam_named_pipe_client client(L".", name, {0}, m_status);
    EXPECT_EQ(chain(m_status), L"");
}

TEST_F(Process, moving_hands_the_program_on)
{
    Tam_process first = sleeper();
    Tam_process second = std::move(first);
    EXPECT_FALSE(first.is_running());
    EXPECT_TRUE(second.is_running());
    first = std::move(second);
    EXPECT_TRUE(first.is_running());
    first.terminate(m_status);
    first.wait(m_status, 10000);
    EXPECT_EQ(chain(m_status), L"");
}

TEST_F(Process, leaves_no_handle)
{
    {
        const Tam_process warm_up(m_program, L"exit 0", {2, true, 20000}, m_status);
    }
    const unsigned int before = test::open_handles();
    {
        Tam_process process(m_program, L"exit 0", {2, true, 20000}, m_status);
        EXPECT_EQ(test::open_handles(), before + 1);
        process.start_process(m_program, L"exit 0", {2, true, 20000}, m_status);
        EXPECT_EQ(test::open_handles(), before + 1) << "the earlier program's";
        process = Tam_process(m_program, L"exit 0", {2, true, 20000}, m_status);
        EXPECT_EQ(test::open_handles(), before + 1) << "the one that was assigned to";
        process.start_process(m_program, L"exit 0", {0, false, 0}, m_status);
        EXPECT_EQ(test::open_handles(), before);
    }
    EXPECT_EQ(test::open_handles(), before);
}
