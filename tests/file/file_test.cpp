#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <tam/file/file.h>
#include <tam/file/file_system.h>
#include <tam/security/security.h>
#include <tests/support/chain.h>
#include <tests/support/resources.h>
#include <tests/support/temporary_folder.h>

using namespace tam;
using test::chain;
using test::Temporary_folder;

namespace {

constexpr unsigned long long GIB = 1ULL << 30;

bool exists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Opens path with everything allowed, for tests of something else.
void open_for_all(Tam_file& file, const std::wstring& path)
{
    Tam_status status;
    file.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, status);
    ASSERT_EQ(chain(status), L"");
}

} // namespace

TEST(File, open_reports_the_first_obstacle)
{
    const Temporary_folder folder;
    const std::wstring missing = folder / L"missing";
    const std::wstring file = folder.file(L"file", "abc");
    const auto bad_mode = static_cast<Tam_file_open>(3);
    const auto bad_access = static_cast<Tam_file_access>(4);
    const struct {
        std::wstring path;
        Tam_file_open mode;
        Tam_file_access access;
        std::wstring reason;
    } cases[] = {
        {L"", TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C200001D()"},
        {folder.path(), TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C200001F(" + folder.path() + L")"},
        {missing, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, L"C200001E(" + missing + L")"},
        {missing, bad_mode, TAM_FILE_READ_WRITE, L"C200001E(" + missing + L")"},
        {missing, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C2000025"},
        {file, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, L"C2000025"},
        {file, TAM_FILE_OPEN_EMPTY, bad_access, L"C2000025"},
        {missing + L"\\file", TAM_FILE_OPEN_ALWAYS, TAM_FILE_WRITE, std::to_wstring(ERROR_PATH_NOT_FOUND)},
    };
    for (const auto& c : cases) {
        Tam_status status(1);
        Tam_file opened(c.path, c.mode, c.access, 0, TAM_FILE_SHARE_NONE, status);
        EXPECT_EQ(chain(status), L"C2000026(" + c.path + L") " + c.reason);
        EXPECT_FALSE(opened.is_open());
    }
    EXPECT_FALSE(exists(missing));
    EXPECT_EQ(Temporary_folder::bytes_of(file), "abc");
}

TEST(File, an_open_file_is_not_opened_again)
{
    const Temporary_folder folder;
    const std::wstring second = folder / L"second";
    Tam_file file;
    open_for_all(file, folder.file(L"first", "abc"));
    const unsigned int handles = test::open_handles();
    for (const std::wstring& path : {second, std::wstring()}) {
        Tam_status status;
        file.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_NONE, status);
        EXPECT_EQ(chain(status), L"C2000026(" + path + L") C200005D");
    }
    EXPECT_FALSE(exists(second));
    EXPECT_EQ(file.length(), 3U);
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(File, the_mode_decides_what_becomes_of_the_contents)
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
        {TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, true, ""},
        {TAM_FILE_OPEN_EMPTY, TAM_FILE_ALL, true, ""},
        {TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, false, ""},
    };
    for (const auto& c : cases) {
        const Temporary_folder folder;
        const std::wstring path = c.existing ? folder.file(L"file", "abc") : folder / L"file";
        Tam_status status;
        Tam_file file(path, c.mode, c.access, 0, TAM_FILE_SHARE_READ_WRITE, status);
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(file.tell(), 0U);
        file.close();
        EXPECT_EQ(Temporary_folder::bytes_of(path), c.contents);
    }
}

TEST(File, sharing_decides_who_else_may_open)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "abc");
    const std::wstring refused = L"C2000026(" + path + L") " + std::to_wstring(ERROR_SHARING_VIOLATION);
    const struct {
        Tam_file_sharing sharing;
        bool reads;
        bool writes;
    } cases[] = {
        {TAM_FILE_SHARE_NONE, false, false},
        {TAM_FILE_SHARE_READ, true, false},
        {TAM_FILE_SHARE_WRITE, false, true},
        {TAM_FILE_SHARE_READ_WRITE, true, true},
        {static_cast<Tam_file_sharing>(4), false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sharing);
        Tam_status status;
        const Tam_file holder(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, c.sharing, status);
        ASSERT_EQ(chain(status), L"");
        const Tam_file reader(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ_WRITE, status);
        EXPECT_EQ(chain(status), c.reads ? L"" : refused);
        const Tam_file writer(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, status);
        EXPECT_EQ(chain(status), c.writes ? L"" : refused);
    }
}

TEST(File, delete_on_close_is_used_only_as_the_lowest_flag)
{
    const Temporary_folder folder;
    const std::wstring path = folder / L"file";
    for (const unsigned int flags : {32U | 16U, 16U | 8U}) {
        Tam_status status;
        Tam_file file(path, TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, flags, TAM_FILE_SHARE_NONE, status);
        EXPECT_EQ(chain(status), L"");
        EXPECT_TRUE(exists(path));
        file.close();
        EXPECT_EQ(exists(path), flags == (16U | 8U));
    }
}

TEST(File, every_operation_on_a_closed_file_says_so)
{
    Tam_file file;
    char byte = 0;
    Tam_status status;
    file.seek(TAM_SEEK_START, 0, status);
    EXPECT_EQ(chain(status), L"C2000027 C2000028");
    file.seek(0ULL, status);
    EXPECT_EQ(chain(status), L"C2000027 C2000028");
    EXPECT_EQ(file.read(&byte, 1, status), 0U);
    EXPECT_EQ(chain(status), L"C200001B C2000028");
    EXPECT_EQ(file.write(&byte, 1, status), 0U);
    EXPECT_EQ(chain(status), L"C200001A C2000028");
    file.flush(status);
    EXPECT_EQ(chain(status), L"C200001A C2000028");
    file.truncate(status);
    EXPECT_EQ(chain(status), L"C2000063 " + std::to_wstring(ERROR_INVALID_HANDLE));
    Tam_security security;
    file.add_security(security, status);
    EXPECT_EQ(chain(status), L"C2000075");
    EXPECT_EQ(file.tell(), 0U);
    EXPECT_EQ(file.length(), 0U);
    file.close();
    EXPECT_FALSE(file.is_open());
}

TEST(File, seeks_count_from_start_position_or_end)
{
    const Temporary_folder folder;
    Tam_file file;
    open_for_all(file, folder.file(L"file", "0123456789"));
    const std::wstring negative = L"C2000027 " + std::to_wstring(ERROR_NEGATIVE_SEEK);
    const struct {
        unsigned int mode;
        int offset;
        unsigned long long expected;
        bool fails;
    } cases[] = {
        {0, 4, 4, false},
        {1, 3, 7, false},
        {1, -7, 0, false},
        {1, -1, 0, true},
        {2, -3, 7, false},
        {2, 5, 15, false},
        {2, -11, 15, true},
        {0, -1, 15, true},
        {0, 0x7FFFFFFF, 0x7FFFFFFF, false},
        {1, 0x7FFFFFFF, 0xFFFFFFFE, false},
        {1, 5, 0x100000003, false},
        // Any other mode counts from the position.
        {3, -3, 0x100000000, false},
        {0xFFFFFFFF, -1, 0xFFFFFFFF, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.mode << ", " << c.offset);
        Tam_status status;
        file.seek(static_cast<Tam_seek_mode>(c.mode), c.offset, status);
        EXPECT_EQ(chain(status), c.fails ? negative : L"");
        EXPECT_EQ(file.tell(), c.expected);
    }
    Tam_status status;
    file.seek(1ULL << 63, status);
    EXPECT_EQ(chain(status), negative);
    EXPECT_EQ(file.length(), 10U);
}

TEST(File, reads_and_writes_beyond_4_gib_without_filling_the_disk)
{
    const Temporary_folder folder;
    const std::wstring path = folder / L"sparse";
    unsigned long long total = 0;
    unsigned long long before = 0;
    unsigned long long after = 0;
    unsigned long long available = 0;
    Tam_status status;
    Tam_file_system::stats(folder.path(), total, before, available, status);
    Tam_file file;
    open_for_all(file, path);
    file.seek(5 * GIB, status);
    EXPECT_EQ(file.write("x", 1, status), 1U);
    EXPECT_EQ(file.tell(), 5 * GIB + 1);
    EXPECT_EQ(file.length(), 5 * GIB + 1);
    EXPECT_EQ(Tam_file::length(path), 5 * GIB + 1);
    file.seek(TAM_SEEK_END, -1, status);
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1, status), 1U);
    EXPECT_EQ(byte, 'x');
    Tam_file_system::stats(folder.path(), total, after, available, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_LT(before, after + 4 * GIB);
}

TEST(File, reads_what_is_there_and_then_the_end)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "abcde");
    Tam_status status(1);
    Tam_file file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);
    char bytes[4] = {};
    EXPECT_EQ(file.read(bytes, 4, status), 4U);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(std::string(bytes, 4), "abcd");
    EXPECT_EQ(file.read(bytes, 4, status), 1U);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(bytes[0], 'e');
    EXPECT_EQ(file.read(bytes, 4, status), 0U);
    EXPECT_EQ(chain(status), L"C2000019");
    // Nothing was asked for, so there is no end to report.
    EXPECT_EQ(file.read(bytes, 0, status), 0U);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(file.tell(), 5U);
}

TEST(File, a_missing_right_is_the_systems_error)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "abc");
    Tam_status status;
    char byte = 0;
    Tam_file writer(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, status);
    EXPECT_EQ(writer.read(&byte, 1, status), 0U);
    EXPECT_EQ(chain(status), L"C200001B 5");
    Tam_file reader(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ_WRITE, status);
    EXPECT_EQ(reader.write(&byte, 1, status), 0U);
    EXPECT_EQ(chain(status), L"C200001A 5");
    reader.flush(status);
    EXPECT_EQ(chain(status), L"C200001A 5");
    reader.truncate(status);
    EXPECT_EQ(status, TAM_E_FILE_TRUNCATE);
    EXPECT_TRUE(status.has_child()); // which error it is differs between systems
    // An access beyond the table opens without rights.
    Tam_file neither(path, TAM_FILE_OPEN_EXISTING, static_cast<Tam_file_access>(4), 0, TAM_FILE_SHARE_READ_WRITE,
                     status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(neither.read(&byte, 1, status), 0U);
    EXPECT_EQ(chain(status), L"C200001B 5");
    EXPECT_EQ(Temporary_folder::bytes_of(path), "abc");
}

TEST(File, a_success_leaves_the_status_alone_but_for_read)
{
    const Temporary_folder folder;
    Tam_file file;
    open_for_all(file, folder / L"file");
    Tam_status status(5);
    file.seek(TAM_SEEK_START, 0, status);
    file.seek(0ULL, status);
    EXPECT_EQ(file.write("ab", 2, status), 2U);
    file.flush(status);
    file.truncate(status);
    EXPECT_EQ(chain(status), L"5");
    file.seek(0ULL, status);
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1, status), 1U);
    EXPECT_EQ(chain(status), L"");
}

TEST(File, truncate_makes_the_position_the_end)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "abcdef");
    Tam_file file;
    open_for_all(file, path);
    Tam_status status;
    file.seek(2ULL, status);
    file.truncate(status);
    EXPECT_EQ(Temporary_folder::bytes_of(path), "ab");
    file.seek(4ULL, status);
    file.truncate(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(path), std::string("ab\0\0", 4));
    EXPECT_EQ(file.tell(), 4U);
}

TEST(File, security_is_associated_once)
{
    const Temporary_folder folder;
    Tam_file file;
    open_for_all(file, folder / L"file");
    Tam_security security;
    Tam_status status(1);
    file.add_security(security, status);
    EXPECT_EQ(chain(status), L"");
    file.add_security(security, status);
    EXPECT_EQ(chain(status), L"C2000078");
}

TEST(File, create_empty_file_cuts_or_creates)
{
    const Temporary_folder folder;
    const std::wstring existing = folder.file(L"existing", "abc");
    const std::wstring fresh = folder / L"fresh";
    Tam_status status(1);
    Tam_file::create_empty_file(existing, status, true);
    EXPECT_EQ(chain(status), L"");
    Tam_file::create_empty_file(fresh, status, false);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(existing), "");
    EXPECT_EQ(Temporary_folder::bytes_of(fresh), "");
    Tam_file::create_empty_file(folder.path(), status, false);
    EXPECT_EQ(chain(status), L"C2000026(" + folder.path() + L") C200001F(" + folder.path() + L")");
}

TEST(File, copy_and_move_report_the_first_obstacle)
{
    const Temporary_folder folder;
    const std::wstring file = folder.file(L"file", "abc");
    const std::wstring other = folder.file(L"other", "old");
    const std::wstring missing = folder / L"missing";
    const std::wstring nowhere = missing + L"\\file";
    const std::wstring& directory = folder.path();
    const std::wstring path_not_found = std::to_wstring(ERROR_PATH_NOT_FOUND);
    const struct {
        std::wstring from;
        std::wstring to;
        std::wstring copy_reason; // without overwriting
        std::wstring move_reason;
    } cases[] = {
        {L"", L"", L"C200001D()", L"C200001D()"},
        {L"", file, L"C200001D()", L"C200001D()"},
        {missing, L"", L"C200001D()", L"C200001D()"},
        {missing, directory, L"C200001E(" + missing + L")", L"C200001E(" + missing + L")"},
        {directory, other, L"C200001F(" + directory + L")", L"C200001F(" + directory + L")"},
        {file, other, L"C2000021(" + other + L")", L"C2000021(" + other + L")"},
        // The target is at fault, the source is the argument.
        {file, directory, L"C200001F(" + file + L")", L"C2000021(" + directory + L")"},
        {file, nowhere, path_not_found, path_not_found},
    };
    for (const auto& c : cases) {
        Tam_status status(1);
        Tam_file::copy(c.from, c.to, false, status);
        EXPECT_EQ(chain(status), L"C2000022(" + c.from + L", " + c.to + L") " + c.copy_reason);
        Tam_file::move(c.from, c.to, status);
        EXPECT_EQ(chain(status), L"C2000023(" + c.from + L", " + c.to + L") " + c.move_reason);
    }
    Tam_status status;
    Tam_file::copy(file, directory, true, status);
    EXPECT_EQ(chain(status), L"C2000022(" + file + L", " + directory + L") C200001F(" + file + L")");
    EXPECT_EQ(Temporary_folder::bytes_of(file), "abc");
    EXPECT_EQ(Temporary_folder::bytes_of(other), "old");
}

TEST(File, copies_replace_on_request_and_moves_never_do)
{
    const Temporary_folder folder;
    const std::wstring file = folder.file(L"file", "abc");
    const std::wstring other = folder.file(L"other", "old");
    const std::wstring fresh = folder / L"fresh";
    const std::wstring moved = folder / L"moved";
    Tam_status status(1);
    Tam_file::copy(file, other, true, status);
    EXPECT_EQ(chain(status), L"");
    Tam_file::copy(file, fresh, false, status);
    EXPECT_EQ(chain(status), L"");
    Tam_file::move(fresh, moved, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(exists(fresh));
    EXPECT_EQ(Temporary_folder::bytes_of(other), "abc");
    EXPECT_EQ(Temporary_folder::bytes_of(moved), "abc");
    EXPECT_EQ(Temporary_folder::bytes_of(file), "abc");
}

TEST(File, remove_deletes_what_matches)
{
    const Temporary_folder folder;
    for (const wchar_t* name : {L"a1.tmp", L"a2.tmp", L"b1.tmp", L"a1.txt"}) {
        folder.file(name, "");
    }
    Tam_status status(1);
    Tam_file::remove(folder / L"a?.tmp", status, false);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(exists(folder / L"a1.tmp"));
    EXPECT_FALSE(exists(folder / L"a2.tmp"));
    EXPECT_TRUE(exists(folder / L"b1.tmp"));
    EXPECT_TRUE(exists(folder / L"a1.txt"));
    Tam_file::remove(folder / L"*", status, false);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(exists(folder / L"b1.tmp"));
    // No match is no failure, nor is a directory that does not exist.
    Tam_file::remove(folder / L"a1.tmp", status, true);
    EXPECT_EQ(chain(status), L"");
    Tam_file::remove(folder / L"missing\\*", status, true);
    EXPECT_EQ(chain(status), L"");
    Tam_file::remove(L"", status, false);
    EXPECT_EQ(chain(status), L"C200001D()");
}

TEST(File, remove_takes_a_bare_name_in_the_current_directory)
{
    const Temporary_folder folder;
    folder.file(L"bare.tmp", "");
    wchar_t before[MAX_PATH];
    ::GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(::SetCurrentDirectoryW(folder.path().c_str()));
    Tam_status status;
    Tam_file::remove(L"bare.tmp", status, false);
    ::SetCurrentDirectoryW(before);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(exists(folder / L"bare.tmp"));
}

TEST(File, remove_needs_force_for_read_only_files)
{
    const Temporary_folder folder;
    const std::wstring fixed = folder.file(L"a.tmp", "");
    const std::wstring later = folder.file(L"b.tmp", "");
    ASSERT_TRUE(::SetFileAttributesW(fixed.c_str(), FILE_ATTRIBUTE_READONLY));
    Tam_status status;
    Tam_file::remove(folder / L"*.tmp", status, false);
    EXPECT_EQ(chain(status), L"C2000024(" + fixed + L") 5");
    EXPECT_TRUE(exists(fixed));
    Tam_file::remove(folder / L"*.tmp", status, true);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(exists(fixed));
    EXPECT_FALSE(exists(later));
}

TEST(File, remove_stops_at_a_directory)
{
    const Temporary_folder folder;
    const std::wstring directory = folder / L"directory";
    ASSERT_TRUE(::CreateDirectoryW(directory.c_str(), nullptr));
    Tam_status status;
    Tam_file::remove(folder / L"*", status, true);
    EXPECT_EQ(chain(status), L"C2000024(" + directory + L") 5");
    EXPECT_TRUE(exists(directory));
}

TEST(File, length_of_a_path_is_0_when_there_is_no_file)
{
    const Temporary_folder folder;
    EXPECT_EQ(Tam_file::length(folder.file(L"file", "abcde")), 5U);
    EXPECT_EQ(Tam_file::length(folder / L"missing"), 0U);
}

TEST(File, no_outcome_leaves_a_handle_open)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "abc");
    const unsigned int handles = test::open_handles();
    Tam_status status;
    {
        Tam_file file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
        const Tam_file refused(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
        file.close();
        file.open(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
        EXPECT_EQ(chain(status), L"");
        Tam_file::remove(folder / L"*", status, false);
        EXPECT_FALSE(status.ok());
        Tam_file::temp_name(folder.path(), L"tmp");
    }
    Tam_file::create_empty_file(path, status, false);
    EXPECT_EQ(test::open_handles(), handles);
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
    EXPECT_FALSE(exists(name));
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
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command =
        std::wstring(program) +
        L" --gtest_also_run_disabled_tests --gtest_filter=File_temp_name.DISABLED_child --gtest_brief=1";
    ::SetEnvironmentVariableW(SHARED_FOLDER, folder.path().c_str());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child{};
    const BOOL started =
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &child);
    ::SetEnvironmentVariableW(SHARED_FOLDER, nullptr);
    ASSERT_TRUE(started);
    std::vector<std::future<bool>> threads;
    for (int i = 0; i < 3; ++i) {
        threads.push_back(std::async(std::launch::async, [&] { return create_named_files(folder.path(), 20); }));
    }
    // In turns with the child for as long as it runs.
    bool distinct = true;
    unsigned int own = 0;
    while (own < 5000 && ::WaitForSingleObject(child.hProcess, 0) == WAIT_TIMEOUT) {
        distinct = distinct && create_named_files(folder.path(), 1);
        ++own;
    }
    DWORD exit_code = 1;
    EXPECT_EQ(::WaitForSingleObject(child.hProcess, 20'000), WAIT_OBJECT_0);
    ::GetExitCodeProcess(child.hProcess, &exit_code);
    ::CloseHandle(child.hThread);
    ::CloseHandle(child.hProcess);
    EXPECT_EQ(exit_code, 0U);
    EXPECT_TRUE(distinct);
    for (auto& thread : threads) {
        EXPECT_TRUE(thread.get());
    }
}
