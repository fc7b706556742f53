#include <tests/support/test.h>

#include <tam/detail/win32.h>

using tam::Tam_directory;
using tam::Tam_directory_iterator;
using tam::Tam_object_vector;
using tam::Tam_status;
using tam::test::Swap;
using tam::test::Temporary_folder;

namespace {

int g_steps_left;

BOOL WINAPI fail_after_some_steps(HANDLE search, WIN32_FIND_DATAW* found)
{
    if (g_steps_left-- > 0) {
        return ::FindNextFileW(search, found);
    }
    ::SetLastError(ERROR_READ_FAULT);
    return FALSE;
}

} // namespace

TEST(Directory_iterator, reports_a_failing_step_with_the_directory_wherever_it_happens)
{
    const Temporary_folder folder;
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
        folder.file(name, "");
    }
    const Swap guard(tam::detail::win32.find_next_file, &fail_after_some_steps);
    const unsigned int handles = tam::test::open_handles();
    // The search starts at "."; two steps lead to the first real entry, five to the end.
    for (int steps = 0; steps < 5; ++steps) {
        g_steps_left = steps;
        Tam_directory_iterator entry(folder.path(), L"*");
        int seen = 0;
        for (; !entry.end(); ++entry) {
            ++seen;
        }
        EXPECT_EQ(seen, steps < 2 ? 0 : steps - 1);
        EXPECT_EQ(entry.begin(), steps < 3);
        EXPECT_TRUE((*entry).name.empty());
        EXPECT_EQ(tam::test::chain(entry.status()), L"C2000062(" + folder.path() + L") 30");

        g_steps_left = steps;
        Tam_object_vector<std::wstring> names;
        names.push_back(L"old");
        Tam_directory::list(folder / L"*", names, 0xFFFFFFFF);
        EXPECT_EQ(static_cast<int>(names.size()), seen);
    }
    EXPECT_EQ(tam::test::open_handles(), handles);
}

TEST(Directory, rename_reports_the_move_that_fails_after_the_removal)
{
    const Temporary_folder folder;
    ::CreateDirectoryW((folder / L"a").c_str(), nullptr);
    ::CreateDirectoryW((folder / L"b").c_str(), nullptr);
    const auto guard = tam::test::failing<ERROR_NOT_SAME_DEVICE>(tam::detail::win32.move_file);
    Tam_status status;
    Tam_directory::rename(folder / L"a", folder / L"b", true, status);
    EXPECT_EQ(tam::test::chain(status), L"C2000030(" + folder / L"a" + L", " + folder / L"b" + L") 17");
    EXPECT_EQ(::GetFileAttributesW((folder / L"b").c_str()), INVALID_FILE_ATTRIBUTES);
}
