#include <tests/support/test.h>

#include <tests/support/run_child.h>

using namespace tam;
using test::chain;
using test::Temporary_folder;

namespace {

constexpr unsigned long long GIB = 1ULL << 30;

class File : public testing::Test {
protected:
    // Opens path with everything allowed, for tests of something else.
    void open(const std::wstring& path)
    {
        m_file.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, m_status);
        ASSERT_EQ(chain(m_status), L"");
    }

    Temporary_folder m_folder;
    Tam_status m_status{1}; // of an earlier failure
    Tam_file m_file;
};

} // namespace

TEST_F(File, open_reports_the_first_obstacle)
{
    const std::wstring& folder = m_folder.path();
    const std::wstring missing = m_folder / L"missing";
    const std::wstring file = m_folder.file(L"file", "abc");
    const auto bad_mode = static_cast<Tam_file_open>(3);
    const auto bad_access = static_cast<Tam_file_access>(4);
    const struct {
        std::wstring path;
        Tam_file_open mode;
        Tam_file_access access;
        std::wstring reason;
    } cases[] = {
        {L"", TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C200001D()"},
        {folder, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C200001F(" + folder + L")"},
        {missing, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, L"C200001E(" + missing + L")"},
        {missing, bad_mode, TAM_FILE_READ_WRITE, L"C200001E(" + missing + L")"},
        {missing, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C2000025"},
        {file, TAM_FILE_OPEN_EMPTY, bad_access, L"C2000025"},
        {missing + L"\\file", TAM_FILE_OPEN_ALWAYS, TAM_FILE_WRITE, L"3"},
    };
    for (const auto& c : cases) {
        m_file.open(c.path, c.mode, c.access, 0, TAM_FILE_SHARE_NONE, m_status);
        EXPECT_EQ(chain(m_status), L"C2000026(" + c.path + L") " + c.reason);
        EXPECT_FALSE(m_file.is_open());
    }
    EXPECT_FALSE(Temporary_folder::exists(missing));
    EXPECT_EQ(Temporary_folder::bytes_of(file), "abc");

    open(file);
    for (const std::wstring& path : {missing, std::wstring()}) {
        m_file.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_NONE, m_status);
        EXPECT_EQ(chain(m_status), L"C2000026(" + path + L") C200005D");
    }
    EXPECT_FALSE(Temporary_folder::exists(missing));
    EXPECT_EQ(m_file.length(), 3U);
}

TEST_F(File, the_mode_decides_what_becomes_of_the_contents)
{
    const auto bad_mode = static_cast<Tam_file_open>(0xFFFFFFFF);
    const struct {
        Tam_file_open mode;
        Tam_file_access access;
        bool existing;
        const char* contents;
    } cases[] = {
        {TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, true, "abc"},
        {bad_mode, TAM_FILE_READ, true, "abc"},
        {TAM_FILE_OPEN_ALWAYS, TAM_FILE_WRITE, true, "abc"},
        {TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ, false, ""},
        {TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, true, ""},
        {TAM_FILE_OPEN_EMPTY, TAM_FILE_ALL, true, ""},
        {TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, false, ""},
    };
    for (const auto& c : cases) {
        const std::wstring path = m_folder.file(L"file", "abc");
        ASSERT_TRUE(c.existing || ::DeleteFileW(path.c_str()));
        Tam_file(path, c.mode, c.access, 0, TAM_FILE_SHARE_NONE, m_status);
        EXPECT_EQ(chain(m_status), L"");
        EXPECT_EQ(Temporary_folder::bytes_of(path), c.contents);
    }
}

TEST_F(File, every_operation_on_a_closed_file_says_so)
{
    char byte = 0;
    m_file.seek(TAM_SEEK_START, 0, m_status);
    EXPECT_EQ(chain(m_status), L"C2000027 C2000028");
    EXPECT_EQ(m_file.read(&byte, 1, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200001B C2000028");
    m_file.seek(0ULL, m_status);
    EXPECT_EQ(chain(m_status), L"C2000027 C2000028");
    EXPECT_EQ(m_file.write(&byte, 1, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200001A C2000028");
    m_file.truncate(m_status);
    EXPECT_EQ(chain(m_status), L"C2000063 " + std::to_wstring(ERROR_INVALID_HANDLE));
    m_file.flush(m_status);
    EXPECT_EQ(chain(m_status), L"C200001A C2000028");
    Tam_security security;
    m_file.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000075");
    EXPECT_EQ(m_file.tell() + m_file.length(), 0U);
    m_file.close();

    open(m_folder / L"file");
    m_file.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"");
    m_file.add_security(security, m_status);
    EXPECT_EQ(chain(m_status), L"C2000078");
}

TEST_F(File, seeks_count_from_start_position_or_end)
{
    open(m_folder.file(L"file", "0123456789"));
    const std::wstring negative = L"C2000027 " + std::to_wstring(ERROR_NEGATIVE_SEEK);
    constexpr int MOST = 0x7FFFFFFF;
    const struct {
        unsigned int mode;
        int offset;
        unsigned long long expected;
        bool fails;
    } cases[] = {
        {0, 4, 4, false},
        {1, 3, 7, false},
        {1, -8, 7, true},
        {2, -3, 7, false},
        {2, -11, 7, true},
        {2, 5, 15, false},
        {0, -1, 15, true},
        {0, MOST, 0x7FFFFFFF, false},
        {1, MOST, 0xFFFFFFFE, false},
        {1, 5, 0x100000003, false},
        // Any other mode counts from the position.
        {3, -3, 0x100000000, false},
        {0xFFFFFFFF, -1, 0xFFFFFFFF, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.mode << ", " << c.offset);
        m_status.clear();
        m_file.seek(static_cast<Tam_seek_mode>(c.mode), c.offset, m_status);
        EXPECT_EQ(chain(m_status), c.fails ? negative : L"");
        EXPECT_EQ(m_file.tell(), c.expected);
    }
    m_file.seek(1ULL << 63, m_status);
    EXPECT_EQ(chain(m_status), negative);
    EXPECT_EQ(m_file.length(), 10U);
}

TEST_F(File, reads_and_writes_beyond_4_gib_without_filling_the_disk)
{
    const std::wstring path = m_folder / L"sparse";
    unsigned long long total = 0;
    unsigned long long before = 0;
    unsigned long long after = 0;
    unsigned long long available = 0;
    Tam_file_system::stats(m_folder.path(), total, before, available, m_status);
    open(path);
    m_file.seek(5 * GIB, m_status);
    EXPECT_EQ(m_file.write("x", 1, m_status), 1U);
    EXPECT_EQ(m_file.tell(), 5 * GIB + 1);
    EXPECT_EQ(m_file.length(), 5 * GIB + 1);
    EXPECT_EQ(Tam_file::length(path), 5 * GIB + 1);
    m_file.seek(TAM_SEEK_END, -1, m_status);
    char byte = 0;
    EXPECT_EQ(m_file.read(&byte, 1, m_status), 1U);
    EXPECT_EQ(byte, 'x');
    Tam_file_system::stats(m_folder.path(), total, after, available, m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_LT(before, after + 4 * GIB);
}

TEST_F(File, reads_what_is_there_and_then_the_end)
{
    open(m_folder.file(L"file", "abcde"));
    char bytes[4] = {};
    EXPECT_EQ(m_file.read(bytes, 4, m_status), 4U);
    EXPECT_EQ(std::string(bytes, 4), "abcd");
    EXPECT_EQ(m_file.read(bytes, 4, m_status), 1U);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(bytes[0], 'e');
    EXPECT_EQ(m_file.read(bytes, 4, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C2000019");
    // Nothing was asked for, so there is no end to report.
    EXPECT_EQ(m_file.read(bytes, 0, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(m_file.tell(), 5U);
}

TEST_F(File, a_missing_right_is_the_systems_error)
{
    const std::wstring path = m_folder.file(L"file", "abc");
    char byte = 0;
    Tam_file writer(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, m_status);
    EXPECT_EQ(writer.read(&byte, 1, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200001B 5");
    // An access beyond the table opens without any right.
    const auto none = static_cast<Tam_file_access>(4);
    Tam_file file(path, TAM_FILE_OPEN_EXISTING, none, 0, TAM_FILE_SHARE_READ_WRITE, m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(file.read(&byte, 1, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200001B 5");
    EXPECT_EQ(file.write(&byte, 1, m_status), 0U);
    EXPECT_EQ(chain(m_status), L"C200001A 5");
    EXPECT_EQ(Temporary_folder::bytes_of(path), "abc");
}

TEST_F(File, a_success_leaves_the_status_alone_but_for_read)
{
    open(m_folder / L"file");
    m_status = 5;
    EXPECT_EQ(m_file.write("ab", 2, m_status), 2U);
    m_file.flush(m_status);
    m_file.truncate(m_status);
    m_file.seek(TAM_SEEK_END, 0, m_status);
    m_file.seek(0ULL, m_status);
    EXPECT_EQ(chain(m_status), L"5");
    char byte = 0;
    EXPECT_EQ(m_file.read(&byte, 1, m_status), 1U);
    EXPECT_EQ(chain(m_status), L"");
}

TEST_F(File, truncate_makes_the_position_the_end)
{
    const std::wstring path = m_folder.file(L"file", "abcdef");
    open(path);
    m_file.seek(2ULL, m_status);
    m_file.truncate(m_status);
    EXPECT_EQ(Temporary_folder::bytes_of(path), "ab");
    m_file.seek(4ULL, m_status);
    m_file.truncate(m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(path), std::string("ab\0\0", 4));
}

TEST_F(File, create_empty_file_cuts_or_creates)
{
    const std::wstring existing = m_folder.file(L"existing", "abc");
    Tam_file::create_empty_file(existing, m_status, true);
    EXPECT_EQ(chain(m_status), L"");
    Tam_file::create_empty_file(m_folder / L"fresh", m_status, false);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(existing) + Temporary_folder::bytes_of(m_folder / L"fresh"), "");
    Tam_file::create_empty_file(L"", m_status, false);
    EXPECT_EQ(chain(m_status), L"C2000026() C200001D()");
}

TEST_F(File, copy_and_move_report_the_first_obstacle)
{
    const std::wstring& folder = m_folder.path();
    const std::wstring file = m_folder.file(L"file", "abc");
    const std::wstring other = m_folder.file(L"other", "old");
    const std::wstring missing = m_folder / L"missing";
    const struct {
        std::wstring from;
        std::wstring to;
        std::wstring copy_reason; // without overwriting
        std::wstring move_reason;
    } cases[] = {
        {L"", file, L"C200001D()", L"C200001D()"},
        {missing, L"", L"C200001D()", L"C200001D()"},
        {missing, folder, L"C200001E(" + missing + L")", L"C200001E(" + missing + L")"},
        {folder, other, L"C200001F(" + folder + L")", L"C200001F(" + folder + L")"},
        {file, other, L"C2000021(" + other + L")", L"C2000021(" + other + L")"},
        // The target is at fault, the source is the argument.
        {file, folder, L"C200001F(" + file + L")", L"C2000021(" + folder + L")"},
        {file, missing + L"\\file", L"3", L"3"},
    };
    for (const auto& c : cases) {
        Tam_file::copy(c.from, c.to, false, m_status);
        EXPECT_EQ(chain(m_status), L"C2000022(" + c.from + L", " + c.to + L") " + c.copy_reason);
        Tam_file::move(c.from, c.to, m_status);
        EXPECT_EQ(chain(m_status), L"C2000023(" + c.from + L", " + c.to + L") " + c.move_reason);
    }
    EXPECT_EQ(Temporary_folder::bytes_of(other), "old");

    Tam_file::copy(file, other, true, m_status);
    EXPECT_EQ(chain(m_status), L"");
    Tam_file::copy(file, missing, false, m_status);
    EXPECT_EQ(chain(m_status), L"");
    Tam_file::move(missing, m_folder / L"moved", m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_FALSE(Temporary_folder::exists(missing));
    for (const wchar_t* name : {L"file", L"other", L"moved"}) {
        EXPECT_EQ(Temporary_folder::bytes_of(m_folder / name), "abc");
    }
}

TEST_F(File, remove_deletes_what_matches)
{
    for (const wchar_t* name : {L"a1.tmp", L"a2.tmp", L"b1.tmp", L"a1.txt"}) {
        m_folder.file(name, "");
    }
    Tam_file::remove(m_folder / L"a?.tmp", m_status, false);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_FALSE(Temporary_folder::exists(m_folder / L"a1.tmp") || Temporary_folder::exists(m_folder / L"a2.tmp"));
    EXPECT_TRUE(Temporary_folder::exists(m_folder / L"b1.tmp") && Temporary_folder::exists(m_folder / L"a1.txt"));
    // No match is no failure, nor is a directory that does not exist.
    Tam_file::remove(m_folder / L"a1.tmp", m_status, true);
    EXPECT_EQ(chain(m_status), L"");
    Tam_file::remove(m_folder / L"missing\\*", m_status, true);
    EXPECT_EQ(chain(m_status), L"");
    Tam_file::remove(L"", m_status, false);
    EXPECT_EQ(chain(m_status), L"C200001D()");
}

TEST_F(File, remove_takes_a_bare_name_in_the_current_directory)
{
    m_folder.file(L"bare.tmp", "");
    wchar_t before[MAX_PATH];
    ::GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(::SetCurrentDirectoryW(m_folder.path().c_str()));
    Tam_file::remove(L"bare.tmp", m_status, false);
    ::SetCurrentDirectoryW(before);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_FALSE(Temporary_folder::exists(m_folder / L"bare.tmp"));
}

TEST_F(File, remove_stops_at_what_it_cannot_delete)
{
    const std::wstring fixed = m_folder.file(L"a", "");
    const std::wstring folder = m_folder / L"b";
    const std::wstring last = m_folder.file(L"c", "");
    ASSERT_TRUE(::SetFileAttributesW(fixed.c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    Tam_file::remove(m_folder / L"*", m_status, false);
    EXPECT_EQ(chain(m_status), L"C2000024(" + fixed + L") 5");
    EXPECT_TRUE(Temporary_folder::exists(fixed) && Temporary_folder::exists(last));
    Tam_file::remove(m_folder / L"*", m_status, true);
    EXPECT_EQ(chain(m_status), L"C2000024(" + folder + L") 5");
    EXPECT_FALSE(Temporary_folder::exists(fixed));
    EXPECT_TRUE(Temporary_folder::exists(folder) && Temporary_folder::exists(last));
}

// What follows proves Tam_file::temp_name.

namespace {

unsigned int milliseconds_since_midnight()
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    return ((now.wHour * 60U + now.wMinute) * 60U + now.wSecond) * 1000U + now.wMilliseconds;
}

constexpr const wchar_t* SHARED_FOLDER = L"TAM_TEST_FOLDER";

// Creates a file under each of count names; false when a name was given out before.
bool create_named_files(const std::wstring& folder, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i) {
        const HANDLE file = ::CreateFileW(Tam_file::temp_name(folder, L"tmp").c_str(), GENERIC_WRITE, 0, nullptr,
                                          CREATE_NEW, 0, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return false;
        }
        ::CloseHandle(file);
    }
    return true;
}

} // namespace

TEST(File_temp_name, is_a_number_of_the_time_of_day)
{
    const Temporary_folder folder;
    const unsigned int before = milliseconds_since_midnight();
    const std::wstring name = Tam_file::temp_name(folder.path(), L"tmp");
    const unsigned int after = milliseconds_since_midnight();
    ASSERT_LE(before, after) << "midnight passed; run it again";
    bool found = false;
    for (unsigned int t = before; t <= after; ++t) {
        const unsigned int number = t / 1000 * 1000 + t % 1000 * 100;
        found = found || name == folder / (std::to_wstring(number) + L".tmp");
    }
    EXPECT_TRUE(found) << testing::PrintToString(name);
    EXPECT_FALSE(Temporary_folder::exists(name));
    EXPECT_EQ(Tam_file::temp_name(folder.path() + L"\\", L"").find(L'.', folder.path().size()), std::wstring::npos);
}

TEST(File_temp_name, lies_in_the_temporary_directory_by_default)
{
    wchar_t directory[MAX_PATH] = {};
    ASSERT_NE(::GetEnvironmentVariableW(L"TMP", directory, MAX_PATH), 0U);
    const std::wstring name = Tam_file::temp_name(L"buf");
    EXPECT_EQ(name.substr(0, name.rfind(L'\\')), directory);
    EXPECT_EQ(name.substr(name.size() - 4), L".buf");
}

TEST(File_temp_name, waits_for_its_turn)
{
    const Temporary_folder folder;
    const HANDLE turn = ::CreateMutexW(nullptr, FALSE, L"Tam_file::temp_name");
    ASSERT_EQ(::WaitForSingleObject(turn, 20'000), WAIT_OBJECT_0);
    auto name = std::async(std::launch::async, [&] { return Tam_file::temp_name(folder.path(), L"tmp"); });
    EXPECT_EQ(name.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    ::ReleaseMutex(turn);
    ::CloseHandle(turn);
    EXPECT_EQ(name.wait_for(std::chrono::seconds(20)), std::future_status::ready);
}

// The other process of the next test.
TEST(File_temp_name, DISABLED_child)
{
    wchar_t folder[MAX_PATH] = {};
    ASSERT_NE(::GetEnvironmentVariableW(SHARED_FOLDER, folder, MAX_PATH), 0U);
    EXPECT_TRUE(create_named_files(folder, 40));
}

TEST(File_temp_name, differs_between_threads_and_processes)
{
    const Temporary_folder folder;
    ::SetEnvironmentVariableW(SHARED_FOLDER, folder.path().c_str());
    auto child = std::async(std::launch::async, [] {
        return test::run_child(L"file_test", L"--gtest_also_run_disabled_tests --gtest_brief=1 "
                                             L"--gtest_filter=File_temp_name.DISABLED_child");
    });
    std::vector<std::future<bool>> threads;
    for (int i = 0; i < 3; ++i) {
        threads.push_back(std::async(std::launch::async, [&] { return create_named_files(folder.path(), 20); }));
    }
    // In turns with the child for as long as it runs.
    bool distinct = true;
    unsigned int own = 0;
    while (own < 5000 && child.wait_for(std::chrono::seconds(0)) == std::future_status::timeout) {
        distinct = distinct && create_named_files(folder.path(), 1);
        ++own;
    }
    EXPECT_EQ(child.get(), 0U);
    ::SetEnvironmentVariableW(SHARED_FOLDER, nullptr);
    EXPECT_TRUE(distinct);
    for (auto& thread : threads) {
        EXPECT_TRUE(thread.get());
    }
}
