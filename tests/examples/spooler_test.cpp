#include <algorithm>
#include <cstdint>
#include <memory>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <tests/examples/running_spooler.h>

using namespace tam::test;

extern "C" __declspec(dllimport) DWORD WINAPI RtlComputeCrc32(DWORD initial, const BYTE* data, INT length);

unsigned int tam::test::system_crc(const std::string& bytes)
{
    return ::RtlComputeCrc32(0, reinterpret_cast<const BYTE*>(bytes.data()), static_cast<INT>(bytes.size()));
}

namespace {

const std::string CHAIN_OF_A_LONG_LINE = "\n    Line 2 has 65536 bytes or more: this is no text.\r\n"
                                         "    The line is too long, or the data ended before the end of the line.\r\n";

// Whom the access list of a file or pipe grants something.
std::set<std::wstring> trustees_of(HANDLE object)
{
    ACL* list = nullptr;
    void* descriptor = nullptr;
    ::GetSecurityInfo(object, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                      &descriptor);
    wchar_t* text = nullptr;
    ::ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION,
                                                           &text, nullptr);
    std::wstring entries = text;
    ::LocalFree(text);
    ::LocalFree(descriptor);
    std::set<std::wstring> names;
    for (std::size_t end = entries.find(L')'); end != std::wstring::npos; end = entries.find(L')', end + 1)) {
        names.insert(entries.substr(0, end).substr(entries.rfind(L';', end) + 1));
    }
    return names;
}

std::string large_text()
{
    std::string text(200 << 20, 'x');
    for (std::size_t i = 9; i < text.size(); i += 10) { // short lines, so that it takes long
        text[i] = '\n';
    }
    return text;
}

} // namespace

TEST_F(Spooler, journals_what_is_in_the_files_and_keeps_them)
{
    const Program service = start();
    const std::map<std::wstring, std::string> spooled = {
        {L"empty", ""},
        {L"no end", "one\ntwo\r\nthree"},
        {L"\x017D\x6F22 name.txt", "\r\n\n\r"},
        {L"longest line", std::string(65535, 'x') + "\n" + std::string(65535, 'y')},
        {L"blocks", std::string(16384, '\n') + std::string(16383, 'z') + "\nend\n"},
    };
    ASSERT_TRUE(comes_to(L"workers", 4));
    for (const auto& [name, bytes] : spooled) {
        spool(name, bytes);
    }
    spool(L"too long", "first\n" + std::string(65536, 'x') + "\n");
    spool(L"no text", "first\n" + std::string(100000, '\0'));
    ASSERT_TRUE(comes_to(L"done", spooled.size()));
    ASSERT_TRUE(comes_to(L"failed", 2));

    // A second one of the same name lies beside the first.
    spool(L"empty", "not empty");
    ASSERT_TRUE(comes_to(L"done", spooled.size() + 1));
    EXPECT_EQ(files(L"done").count(L"empty"), 2U);

    std::map<std::wstring, Journal_line> journal = Spooler::journal();
    for (const auto& [name, bytes] : spooled) {
        if (name != L"empty") {
            EXPECT_EQ(journal[name], expected(bytes));
        }
    }
    Journal_line second = expected("not empty");
    second.times = 2;
    EXPECT_EQ(journal[L"empty"], second);
    EXPECT_EQ(journal[L"too long"].outcome, L"failed");
    EXPECT_EQ(journal[L"no text"].outcome, L"failed");
    EXPECT_EQ(files(L"failed").size(), 2U);
    EXPECT_EQ(reported("The file \"incoming\\no text\" could not be digested.\r" + CHAIN_OF_A_LONG_LINE), 1U);
    EXPECT_EQ(Temporary_folder::bytes_of(files(L"done").find(L"blocks")->second), spooled.at(L"blocks"));

    EXPECT_EQ(ask(L"stop"), L"done\n");
    EXPECT_EQ(service.exit_code(), 0U);
}

TEST_F(Spooler, tries_a_file_in_use_again_and_reports_it_once)
{
    const Program service = start();
    ASSERT_TRUE(comes_to(L"workers", 4));
    const HANDLE locked = ::CreateFileW(incoming(L"locked").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    const HANDLE shared = ::CreateFileW(incoming(L"shared").c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    // Each of these is found by another look.
    for (unsigned int i = 1; i <= 5; ++i) {
        spool(L"other " + std::to_wstring(i), "other");
        ASSERT_TRUE(comes_to(L"done", i));
    }
    EXPECT_EQ(reported("locked\" cannot be taken yet"), 1U);
    EXPECT_EQ(reported("_shared\" cannot be taken yet"), 1U);
    EXPECT_EQ(journal().count(L"locked"), 0U);

    DWORD written;
    ::WriteFile(locked, "late\n", 5, &written, nullptr);
    ::WriteFile(shared, "later\n", 6, &written, nullptr);
    ::CloseHandle(locked);
    ::CloseHandle(shared);
    ASSERT_TRUE(comes_to(L"done", 7));
    EXPECT_EQ(journal()[L"locked"], expected("late\n"));
    EXPECT_EQ(journal()[L"shared"], expected("later\n"));
    EXPECT_TRUE(files(L"work").empty());
    EXPECT_EQ(figure(L"failed"), 0U);
}

TEST_F(Spooler, survives_a_large_file_and_one_that_vanishes)
{
    write_profile(L"Workers = 1\r\n");
    const std::string text = large_text();
    const Journal_line line = expected(text);
    {
        const Program service = start();
        ASSERT_TRUE(comes_to(L"workers", 1));
        // The only worker is busy with the large file when the other one vanishes.
        spool(L"large", text);
        ASSERT_TRUE(comes_to(L"working", 1));
        spool(L"vanishes", "x");
        ASSERT_TRUE(becomes_true([&] { return figure(L"waiting") == 1 || figure(L"done") != 0; }));
        EXPECT_TRUE(::DeleteFileW(incoming(L"vanishes").c_str())) << "the large file was too small";
        ASSERT_TRUE(comes_to(L"done", 1));
        ASSERT_TRUE(comes_to(L"waiting", 0));
        EXPECT_EQ(journal()[L"large"], line);
        EXPECT_EQ(journal().size(), 1U);

        // A stop does not wait for a large file.
        ASSERT_TRUE(::MoveFileW(files(L"done").find(L"large")->second.c_str(), incoming(L"again").c_str()));
        ASSERT_TRUE(comes_to(L"working", 1));
        const ULONGLONG start = ::GetTickCount64();
        EXPECT_EQ(ask(L"stop"), L"done\n");
        EXPECT_EQ(service.exit_code(), 0U);
        EXPECT_LT(::GetTickCount64() - start, 3000U);
        EXPECT_EQ(files(L"work").size(), 1U);
    }
    const Program service = start();
    ASSERT_TRUE(becomes_true([&] { return journal().size() == 2; }));
    EXPECT_EQ(journal()[L"again"], line);
    EXPECT_EQ(reported("could not be"), 0U);
}

TEST_F(Spooler, digests_each_of_5000_files_once_however_often_it_is_killed)
{
    constexpr unsigned int COUNT = 5000;
    std::map<std::wstring, Journal_line> expected_lines;
    ASSERT_TRUE(::CreateDirectoryW(m_spool.c_str(), nullptr));
    ASSERT_TRUE(::CreateDirectoryW((m_spool + L"\\incoming").c_str(), nullptr));
    for (unsigned int i = 0; i < COUNT; ++i) {
        const std::wstring name = L"file " + std::to_wstring(i);
        const std::string bytes = "This is file\n" + std::to_string(i * 7919) + "\n";
        m_folder.file(L"spool\\incoming\\" + name, bytes);
        expected_lines[name] = expected(bytes);
    }
    for (unsigned int kill = 1; kill <= 4; ++kill) {
        Program service = start();
        ASSERT_TRUE(becomes_true([&] { return figure(L"done") >= 100; })) << "after " << kill << " kills";
        ::Sleep(kill * 7 % 10); // into different steps
        service.kill();
    }
    const Program service = start();
    ASSERT_TRUE(becomes_true([&] { return figure(L"waiting") + figure(L"working") == 0 && files(L"incoming").empty(); },
                             100000));
    ASSERT_TRUE(comes_to(L"working", 0));
    EXPECT_TRUE(journal() == expected_lines);
    EXPECT_EQ(files(L"done").size(), COUNT);
    for (const wchar_t* const folder : {L"incoming", L"work", L"failed"}) {
        EXPECT_TRUE(files(folder).empty()) << folder;
    }
}

TEST_F(Spooler, journals_a_file_and_moves_it_or_does_neither)
{
    for (const wchar_t* const folder : {L"", L"\\work", L"\\done"}) {
        ASSERT_TRUE(::CreateDirectoryW((m_spool + folder).c_str(), nullptr));
    }
    // Killed between the two, and while it wrote a line.
    m_folder.file(L"spool\\work\\9-9_late", "late\n");
    m_folder.file(L"spool\\journal.txt", bytes_of(L"9-9\t\tdone\t0\t0\t0\tlate\r\n9-10\t2026"));
    // Cannot be moved.
    m_folder.file(L"spool\\work\\8-8_taken", "twice\n");
    const std::wstring obstacle = m_folder.file(L"spool\\done\\8-8_taken", "");
    const Program service = start();
    ASSERT_TRUE(comes_to(L"done", 1));
    ASSERT_TRUE(becomes_true([&] { return reported("8-8_taken\" cannot be taken yet") == 1; }));
    EXPECT_EQ(journal().size(), 1U);
    EXPECT_EQ(journal()[L"late"], expected("late\n"));
    EXPECT_TRUE(::DeleteFileW(obstacle.c_str()));
    ASSERT_TRUE(comes_to(L"done", 2));
    EXPECT_EQ(journal()[L"taken"], expected("twice\n"));
    EXPECT_EQ(reported("8-8_taken\" cannot be taken yet"), 1U);
    EXPECT_TRUE(files(L"work").empty());
}

TEST_F(Spooler, answers_clients_beside_each_other_and_drops_those_that_say_nothing)
{
    write_profile(L"ClientLimit = 400\r\n");
    const Program service = start();
    ASSERT_TRUE(comes_to(L"workers", 4));
    for (unsigned int i = 1; i <= 300; ++i) { // enough for an answer that fills every buffer
        spool(L"a file with a rather long name, number " + std::to_wstring(i), "");
    }
    ASSERT_TRUE(comes_to(L"done", 300));
    {
        const Client slow(m_name);
        slow.say(L"journal");
        EXPECT_NE(ask(L"status").find(L"service " + m_name), std::wstring::npos);
        slow.say(L" 2\n");
        const std::wstring lines = slow.hear();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), L'\n'), 3);
        EXPECT_NE(lines.find(L"\ta file with a rather long name, number "), std::wstring::npos);
    }
    const std::wstring all = ask(L"journal 100");
    EXPECT_EQ(std::count(all.begin(), all.end(), L'\n'), 101);

    const Client silent(m_name);
    const Client deaf(m_name);
    deaf.say(L"journal 100\n");
    const Client stays(m_name);
    stays.say(L"status\n");
    const Client talkative(m_name);
    talkative.say(std::wstring(300, L'x'));
    EXPECT_EQ(talkative.hear(), L"") << "its line was too long";
    EXPECT_NE(ask(L"status").find(L"done\n"), std::wstring::npos);
    EXPECT_TRUE(becomes_true([&] { return reported("was dropped") == 3; }));
    EXPECT_EQ(silent.hear(), L"");

    for (const wchar_t* const request : {L"", L"Status", L"journal", L"journal 0", L"journal 101", L"journal x"}) {
        EXPECT_EQ(ask(request), L"failed\nThe request \"" + std::wstring(request) +
                                    L"\" is none of: status, journal N (1 to 100), reload, stop.\n");
    }
    // Operators alone may use the pipe and the folder. Wine forgets administrators in the list of a folder.
    const std::set<std::wstring> operators = trustees_of(Client(m_name).handle());
    EXPECT_EQ(operators.size(), 3U);
    EXPECT_TRUE(operators.contains(L"SY") && operators.contains(L"BA"));
    const HANDLE folder = ::CreateFileW(incoming(L"").c_str(), READ_CONTROL, 7, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    const std::set<std::wstring> found = trustees_of(folder);
    ::CloseHandle(folder);
    EXPECT_TRUE(!found.empty() && std::includes(operators.begin(), operators.end(), found.begin(), found.end()));
    // A client that says nothing does not hold up a stop.
    const Client last(m_name);
    EXPECT_EQ(ask(L"stop"), L"done\n");
    EXPECT_EQ(service.exit_code(3000), 0U);
}

TEST_F(Spooler, keeps_its_settings_when_the_new_ones_are_wrong)
{
    const Program service = start();
    ASSERT_TRUE(comes_to(L"workers", 4));
    const struct {
        std::wstring settings;
        std::wstring reason;
    } wrong[] = {
        {L"Workers = 17", L"The setting Workers is \"17\"; it must be a number from 1 to 16."},
        {L"Period = 19", L"The setting Period is \"19\"; it must be a number from 20 to 5000."},
        {L"ClientLimit = x", L"The setting ClientLimit is \"x\"; it must be a number from 100 to 60000."},
        {L"Workers = 1\\0Adone", L"The setting Workers is \"1\ndone\"; it must be a number from 1 to 16."},
        {L"Folder = spool", L"The setting Folder is \"spool\"; it must be a full path."},
    };
    const std::wstring profile = m_folder / L"spooler.ini";
    for (const auto& row : wrong) {
        write_profile(row.settings);
        EXPECT_EQ(ask(L"reload"), L"failed\nThe settings of \"" + profile +
                                      L"\" cannot be used; earlier ones stay.\n    " + row.reason + L"\n");
    }
    spool(L"file", "still digested");
    ASSERT_TRUE(comes_to(L"done", 1));
    write_profile(L"Workers = 3");
    EXPECT_EQ(ask(L"reload"), L"done\n");
    EXPECT_EQ(figure(L"workers"), 3U);
}

TEST_F(Spooler, does_not_start_twice_or_without_settings)
{
    const Program service = start();
    ASSERT_TRUE(comes_to(L"workers", 4));
    EXPECT_EQ(start().exit_code(), 1U) << "the folder belongs to the first";
    EXPECT_EQ(reported("The service \"" + std::string(m_name.begin(), m_name.end()) + "\" could not start."), 1U);
    EXPECT_EQ(Program(L"spooler", L"console x none.ini", m_folder / L"report.txt").exit_code(), 1U);
    EXPECT_EQ(reported("none.ini\" cannot be used; "), 1U);
    EXPECT_EQ(Program(L"spooler", L"dance", m_folder / L"report.txt").exit_code(), 2U);

    EXPECT_EQ(Program(L"spooler_client", m_name + L" journal 1", m_folder / L"answer.txt").exit_code(), 0U);
    EXPECT_EQ(Program(L"spooler_client", m_name + L" journal 0", m_folder / L"answer.txt").exit_code(), 1U);
    EXPECT_EQ(Program(L"spooler_client", m_name + L" status", m_folder / L"answer.txt").exit_code(), 0U);
    EXPECT_NE(Temporary_folder::bytes_of(m_folder / L"answer.txt").find("\r\nworkers 4\r\n"), std::string::npos);
    EXPECT_EQ(Program(L"spooler_client", m_name, m_folder / L"answer.txt").exit_code(), 2U);
    EXPECT_EQ(ask(L"stop"), L"done\n");
    EXPECT_EQ(service.exit_code(), 0U);
    EXPECT_EQ(Program(L"spooler_client", m_name + L" status", m_folder / L"report.txt").exit_code(), 1U);
    EXPECT_EQ(reported("No service answers at the pipe"), 1U);
    EXPECT_EQ(reported("\n    A named pipe could not be opened.\r\n    File not found."), 1U);
}

namespace {

struct Service_closer {
    void operator()(SC_HANDLE handle) const { ::CloseServiceHandle(handle); }
};
using Service_handle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Service_closer>;

Service_handle open_service(const std::wstring& name)
{
    const Service_handle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    return Service_handle(::OpenServiceW(manager.get(), name.c_str(), SERVICE_ALL_ACCESS));
}

DWORD state_of(const std::wstring& name)
{
    SERVICE_STATUS state{};
    ::QueryServiceStatus(open_service(name).get(), &state);
    return state.dwCurrentState;
}

bool exists(const std::wstring& key)
{
    HKEY opened = nullptr;
    const bool found = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS;
    ::RegCloseKey(opened);
    return found;
}

} // namespace

TEST_F(Spooler, runs_under_the_service_control_manager)
{
    const std::wstring services = L"SYSTEM\\CurrentControlSet\\Services\\";
    const std::wstring source = services + L"EventLog\\Application\\" + m_name;
    const struct Removal { // also when the test fails
        std::wstring name, source;
        ~Removal()
        {
            if (const Service_handle service = open_service(name)) {
                SERVICE_STATUS ignored;
                ::ControlService(service.get(), SERVICE_CONTROL_STOP, &ignored);
                ::DeleteService(service.get());
            }
            ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, source.c_str());
        }
    } removal{m_name, source};

    ASSERT_EQ(start(L"install").exit_code(), 0U);
    EXPECT_TRUE(exists(source));
    HKEY key = nullptr;
    ASSERT_EQ(::RegCreateKeyW(HKEY_LOCAL_MACHINE, (services + m_name + L"\\Parameters").c_str(), &key), ERROR_SUCCESS);
    ::RegSetValueExW(key, L"Workers", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"2"), 2 * sizeof(wchar_t));

    ASSERT_EQ(control(L"start"), 0U);
    EXPECT_EQ(state_of(m_name), DWORD{SERVICE_RUNNING});
    EXPECT_EQ(figure(L"workers"), 2U) << "the parameter overrides the profile";
    spool(L"file", "digested by a service\n");
    ASSERT_TRUE(comes_to(L"done", 1));
    EXPECT_EQ(journal()[L"file"], expected("digested by a service\n"));

    ::RegDeleteValueW(key, L"Workers");
    ::RegCloseKey(key);
    EXPECT_EQ(control(L"start"), 1U) << "it runs";
    EXPECT_EQ(control(L"stop"), 0U);
    EXPECT_EQ(state_of(m_name), DWORD{SERVICE_STOPPED});
    EXPECT_EQ(control(L"stop"), 1U);

    // A service that cannot start says why.
    write_profile(L"Workers = 0");
    EXPECT_EQ(control(L"start"), 1U);
    SERVICE_STATUS state{};
    ::QueryServiceStatus(open_service(m_name).get(), &state);
    EXPECT_EQ(state.dwWin32ExitCode, DWORD{ERROR_SERVICE_SPECIFIC_ERROR});
    EXPECT_EQ(state.dwServiceSpecificExitCode, 0xC3010048U);

    EXPECT_EQ(control(L"remove"), 0U);
    EXPECT_FALSE(exists(source));
    EXPECT_FALSE(exists(services + m_name));
    EXPECT_EQ(control(L"remove"), 1U);
}
