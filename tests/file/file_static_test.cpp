#include <tests/support/test.h>

#include <tam/detail/win32.h>

using namespace tam;
using test::chain;
using test::failing;
using test::Swap;
using test::Temporary_folder;

namespace {

// What reached CreateFileW last.
struct Create_arguments {
    DWORD rights;
    DWORD sharing;
    SECURITY_ATTRIBUTES* attributes;
    DWORD disposition;
    DWORD flags;
};
Create_arguments g_created;

HANDLE WINAPI record_create_file(const wchar_t*, DWORD rights, DWORD sharing, SECURITY_ATTRIBUTES* attributes,
                                 DWORD disposition, DWORD flags, HANDLE)
{
    g_created = {rights, sharing, attributes, disposition, flags};
    ::SetLastError(ERROR_NOT_READY);
    return INVALID_HANDLE_VALUE;
}

const std::wstring REASON = std::to_wstring(ERROR_DISK_FULL);

} // namespace

TEST(File_calls, the_lowest_flag_alone_reaches_the_system)
{
    const Swap guard(detail::win32.create_file, &record_create_file);
    const struct {
        unsigned int flags;
        DWORD expected;
    } cases[] = {
        {0, 0},
        {1, FILE_FLAG_WRITE_THROUGH},
        {2, FILE_FLAG_NO_BUFFERING},
        {4, FILE_FLAG_RANDOM_ACCESS},
        {8, FILE_FLAG_SEQUENTIAL_SCAN},
        {16, FILE_FLAG_DELETE_ON_CLOSE},
        {3, FILE_FLAG_WRITE_THROUGH},
        {6, FILE_FLAG_NO_BUFFERING},
        {0xFFFFFFFF, FILE_FLAG_WRITE_THROUGH},
        {0xFFFFFFE8, FILE_FLAG_SEQUENTIAL_SCAN},
        {0xFFFFFFE0, 0},
    };
    for (const auto& c : cases) {
        Tam_status status;
        Tam_file(L"C:\\tam_test_none", TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ, c.flags, TAM_FILE_SHARE_NONE, status);
        EXPECT_EQ(g_created.flags, c.expected) << c.flags;
        EXPECT_EQ(chain(status), L"C2000026(C:\\tam_test_none) " + std::to_wstring(ERROR_NOT_READY));
    }
    Tam_status status;
    Tam_file::create_empty_file(L"C:\\tam_test_none", status, true);
    EXPECT_EQ(g_created.flags, DWORD{FILE_FLAG_WRITE_THROUGH});
    EXPECT_EQ(g_created.sharing, 0U);
    EXPECT_EQ(g_created.rights, DWORD{GENERIC_WRITE});
    EXPECT_EQ(g_created.attributes, nullptr);
    Tam_file::create_empty_file(L"C:\\tam_test_none", status, false);
    EXPECT_EQ(g_created.flags, 0U);
}

TEST(File_calls, mode_access_and_sharing_reach_the_system)
{
    const Temporary_folder folder;
    const std::wstring existing = folder.file(L"existing", "");
    const std::wstring missing = folder / L"missing";
    const Swap guard(detail::win32.create_file, &record_create_file);
    const struct {
        const std::wstring& path;
        unsigned int mode;
        unsigned int access;
        unsigned int sharing;
        Create_arguments expected;
    } cases[] = {
        {existing, 0, 0, 0, {GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0}},
        {existing, 1, 1, 1, {GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0}},
        {missing, 1, 2, 2, {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0}},
        {existing, 0, 3, 3, {GENERIC_ALL, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0}},
        {missing, 2, 3, 0, {GENERIC_ALL, 0, nullptr, CREATE_NEW, 0}},
        {existing, 2, 3, 0, {GENERIC_ALL | GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING, 0}},
        {existing, 3, 4, 4, {0, 0, nullptr, OPEN_EXISTING, 0}},
    };
    for (const auto& c : cases) {
        Tam_status status;
        Tam_file(c.path, static_cast<Tam_file_open>(c.mode), static_cast<Tam_file_access>(c.access), 0,
                 static_cast<Tam_file_sharing>(c.sharing), status);
        SCOPED_TRACE(testing::Message() << c.mode << c.access << c.sharing);
        EXPECT_EQ(g_created.rights, c.expected.rights);
        EXPECT_EQ(g_created.sharing, c.expected.sharing);
        EXPECT_EQ(g_created.disposition, c.expected.disposition);
        EXPECT_EQ(g_created.attributes, nullptr);
    }
    Tam_security security;
    Tam_status status;
    Tam_file(missing, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status, &security);
    EXPECT_EQ(g_created.attributes, security.security_attributes(false));
}

TEST(File_calls, failures_carry_the_systems_reason_and_keep_no_handle)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "abc");
    const std::wstring to = folder / L"to";
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    const unsigned int handles = test::open_handles();
    {
        auto& calls = detail::win32;
        Tam_status status;
        Tam_file file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);
        const auto expect = [&status](auto& call, const std::wstring& code, auto operation) {
            const auto guard = failing<ERROR_DISK_FULL>(call);
            operation();
            EXPECT_EQ(chain(status), code + L" " + REASON);
        };
        char one;
        file.seek(2ULL, status);
        expect(calls.read_file, L"C200001B", [&] { EXPECT_EQ(file.read(&one, 1, status), 0U); });
        expect(calls.write_file, L"C200001A", [&] { EXPECT_EQ(file.write(&one, 1, status), 0U); });
        expect(calls.flush_file_buffers, L"C200001A", [&] { file.flush(status); });
        expect(calls.set_end_of_file, L"C2000063", [&] { file.truncate(status); });
        expect(calls.set_file_pointer_ex, L"C2000027", [&] {
            EXPECT_EQ(file.tell(), 0U);
            file.seek(TAM_SEEK_END, 0, status);
        });
        EXPECT_EQ(file.tell(), 2U);
        expect(calls.get_file_size_ex, L"C2000027", [&] { EXPECT_EQ(file.length(), 0U); });
        const std::wstring both = L"(" + path + L", " + to + L")";
        expect(calls.copy_file, L"C2000022" + both, [&] { Tam_file::copy(path, to, false, status); });
        expect(calls.move_file, L"C2000023" + both, [&] { Tam_file::move(path, to, status); });
        const std::wstring deleting = L"C2000024(" + path + L")";
        expect(calls.delete_file, deleting, [&] { Tam_file::remove(path, status, false); });
        expect(calls.set_file_attributes, deleting, [&] { Tam_file::remove(path, status, true); });
        expect(calls.get_disk_free_space_ex, L"C2000029(" + path.substr(0, 3) + L")", [&] {
            unsigned long long numbers[3] = {1, 2, 3};
            Tam_file_system(path).stats(numbers[0], numbers[1], numbers[2], status);
            EXPECT_TRUE(numbers[0] == 1 && numbers[1] == 2 && numbers[2] == 3);
        });
        const Swap guard(
            calls.get_file_attributes, +[](const wchar_t*) WINAPI -> DWORD {
                ::SetLastError(ERROR_DISK_FULL);
                return INVALID_FILE_ATTRIBUTES;
            });
        Tam_file::remove(path, status, true);
        EXPECT_EQ(chain(status), deleting + L" " + REASON);
    }
    EXPECT_EQ(Temporary_folder::bytes_of(path), "abc");
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(File_calls, a_search_that_fails_is_reported_by_remove)
{
    const Temporary_folder folder;
    const std::wstring path = folder.file(L"file", "");
    const std::wstring directory = folder.path() + L"\\";
    Tam_status status;
    {
        const auto guard = failing<ERROR_ACCESS_DENIED, -1>(detail::win32.find_first_file);
        Tam_file::remove(path, status, false);
        EXPECT_EQ(chain(status), L"C2000024(" + path + L") C2000061(" + directory + L") 5");
    }
    const auto guard = failing<ERROR_DISK_FULL>(detail::win32.find_next_file);
    Tam_file::remove(path, status, false);
    EXPECT_EQ(chain(status), L"C2000024(" + path + L") C2000062(" + directory + L") " + REASON);
    EXPECT_EQ(Tam_file::length(path), 0U);
}

TEST(File_calls, an_end_of_file_error_is_the_end_only_when_nothing_was_read)
{
    const Temporary_folder folder;
    Tam_status status;
    Tam_file file(folder.file(L"file", "abc"), TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
    static DWORD delivered;
    const Swap guard(
        detail::win32.read_file, +[](HANDLE, void*, DWORD, DWORD* done, OVERLAPPED*) WINAPI -> BOOL {
            *done = delivered;
            ::SetLastError(ERROR_HANDLE_EOF);
            return FALSE;
        });
    char bytes[4];
    delivered = 0;
    EXPECT_EQ(file.read(bytes, 4, status), 0U);
    EXPECT_EQ(chain(status), L"C2000019");
    delivered = 2;
    EXPECT_EQ(file.read(bytes, 4, status), 2U);
    EXPECT_EQ(chain(status), L"C200001B " + std::to_wstring(ERROR_HANDLE_EOF));
}

TEST(File_calls, no_mutex_means_no_temporary_name)
{
    const Temporary_folder folder;
    const auto guard = failing<ERROR_INVALID_HANDLE>(detail::win32.create_mutex);
    EXPECT_EQ(Tam_file::temp_name(folder.path(), L"tmp"), L"");
}

TEST(File_buffer_calls, failures_move_the_position_by_what_was_done)
{
    const Temporary_folder folder;
    Tam_status status;
    Tam_file_buffer buffer(folder.file(L"file", "abc"), TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, 0,
                           TAM_FILE_SHARE_NONE, status);
    char bytes[4] = {};
    unsigned long long position = 1;
    {
        const auto guard = failing<ERROR_DISK_FULL>(detail::win32.set_file_pointer_ex);
        EXPECT_EQ(buffer.read(false, position, 4, bytes, status), 0U);
        EXPECT_EQ(chain(status), L"C2000027 " + REASON);
        buffer.write(position, 4, bytes, status);
        EXPECT_EQ(chain(status), L"C2000027 " + REASON);
        buffer.seek(TAM_SEEK_END, 0, position, status);
        EXPECT_EQ(chain(status), L"C2000027 " + REASON);
        EXPECT_EQ(position, 1U);
    }
    {
        const auto guard = failing<ERROR_DISK_FULL>(detail::win32.read_file);
        EXPECT_EQ(buffer.read(false, position, 4, bytes, status), 0U);
        EXPECT_EQ(chain(status), L"C200001B " + REASON);
    }
    {
        const auto guard = failing<ERROR_DISK_FULL>(detail::win32.write_file);
        buffer.write(position, 4, bytes, status);
        EXPECT_EQ(chain(status), L"C200001A " + REASON);
    }
    EXPECT_EQ(position, 1U);
    // A system that writes less without an error.
    const Swap guard(
        detail::win32.write_file, +[](HANDLE, const void*, DWORD count, DWORD* done, OVERLAPPED*) WINAPI -> BOOL {
            *done = count / 2;
            return TRUE;
        });
    buffer.write(position, 4, bytes, status);
    EXPECT_EQ(chain(status), L"C200001A");
    EXPECT_EQ(position, 3U);
}
