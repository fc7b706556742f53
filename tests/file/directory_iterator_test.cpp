#include <tests/support/test.h>

using tam::Tam_directory_iterator;
using tam::Tam_status;
using tam::test::Temporary_folder;

namespace {

std::vector<std::wstring> names(Tam_directory_iterator entry)
{
    std::vector<std::wstring> all;
    for (; !entry.end(); ++entry) {
        all.push_back((*entry).name);
    }
    std::sort(all.begin(), all.end());
    return all;
}

} // namespace

TEST(Directory_iterator, yields_files_and_directories_but_the_dot_entries)
{
    const Temporary_folder folder;
    folder.file(L"a.txt", "");
    folder.file(L"B.TXT", "");
    folder.file(L"c.bin", "");
    ::CreateDirectoryW((folder / L"d.txt").c_str(), nullptr);

    using Names = std::vector<std::wstring>;
    EXPECT_EQ(names({folder.path(), L"*"}), (Names{L"B.TXT", L"a.txt", L"c.bin", L"d.txt"}));
    EXPECT_EQ(names({folder.path() + L"\\", L"?.txt"}), (Names{L"B.TXT", L"a.txt", L"d.txt"}));
    EXPECT_EQ(names({folder.path(), L"c.bin"}), Names{L"c.bin"});
    EXPECT_TRUE((*Tam_directory_iterator(folder.path(), L"d.txt")).is_directory);
    EXPECT_FALSE((*Tam_directory_iterator(folder.path(), L"a.txt")).is_directory);
}

TEST(Directory_iterator, is_at_begin_until_it_leaves_a_real_entry)
{
    const Temporary_folder folder;
    folder.file(L"a", "");
    folder.file(L"b", "");
    Tam_directory_iterator entry(folder.path(), L"*");
    EXPECT_TRUE(entry.begin());
    ++entry;
    EXPECT_FALSE(entry.begin());
    EXPECT_FALSE(entry.end());
    ++entry;
    EXPECT_TRUE(entry.end());
    EXPECT_TRUE((*entry).name.empty());
    EXPECT_TRUE(entry.status().is_clear());
    ++entry;
    EXPECT_TRUE(entry.end() && entry.status().is_clear());
}

TEST(Directory_iterator, ends_with_an_ok_status_over_an_empty_directory)
{
    const Temporary_folder folder;
    const Tam_directory_iterator entry(folder.path(), L"*");
    EXPECT_TRUE(entry.end());
    EXPECT_TRUE(entry.begin());
    EXPECT_TRUE((*entry).name.empty());
    EXPECT_TRUE(entry.status().is_clear());
}

TEST(Directory_iterator, reports_a_search_that_finds_nothing_with_the_directory)
{
    const Temporary_folder folder;
    const struct {
        std::wstring directory;
        unsigned int error;
    } rows[] = {{folder.path(), ERROR_FILE_NOT_FOUND}, {folder / L"missing", ERROR_PATH_NOT_FOUND}};
    for (const auto& row : rows) {
        const Tam_directory_iterator entry(row.directory, L"*.none");
        EXPECT_TRUE(entry.end());
        EXPECT_TRUE((*entry).name.empty());
        EXPECT_EQ(tam::test::chain(entry.status()), L"C2000061(" + row.directory + L") " + std::to_wstring(row.error));
    }
}

TEST(Directory_iterator, takes_the_empty_directory_as_the_current_one_and_a_backslash_as_the_root)
{
    const Temporary_folder folder;
    folder.file(L"only here", "");
    wchar_t before[MAX_PATH];
    ::GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(::SetCurrentDirectoryW(folder.path().c_str()));
    const std::vector<std::wstring> here = names({L"", L"*"});
    const std::vector<std::wstring> root = names({L"\\", L"*"});
    const std::vector<std::wstring> same_root = names({folder.path().substr(0, 2), L"*"});
    ::SetCurrentDirectoryW(before);
    EXPECT_EQ(here, std::vector<std::wstring>{L"only here"});
    EXPECT_FALSE(root.empty());
    EXPECT_EQ(root, same_root);
}

TEST(Directory_iterator, copies_share_the_search_and_the_last_one_closes_it)
{
    const Temporary_folder folder;
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
        folder.file(name, "");
    }
    const unsigned int handles = tam::test::open_handles();
    const unsigned int blocks = tam::test::heap_blocks();
    {
        std::optional<Tam_directory_iterator> first(std::in_place, folder.path(), L"*");
        EXPECT_GT(tam::test::open_handles(), handles);
        Tam_directory_iterator second(folder / L"missing", L"*");
        EXPECT_FALSE(*first == second);
        second = *first;
        EXPECT_TRUE(second == *first);
        const std::wstring left = (**first).name;
        ++*first;
        EXPECT_TRUE(second != *first);
        EXPECT_EQ((*second).name, left);
        const std::wstring passed = (**first).name;
        first.reset();
        ++second; // to what follows the entry that the other copy has taken
        EXPECT_FALSE(second.end());
        EXPECT_TRUE((*second).name != left && (*second).name != passed);
        second = Tam_directory_iterator(folder.path(), L"a");
        EXPECT_EQ((*second).name, L"a");
    }
    EXPECT_EQ(tam::test::open_handles(), handles);
    EXPECT_EQ(tam::test::heap_blocks(), blocks);
    EXPECT_TRUE(::MoveFileW(folder.path().c_str(), (folder.path() + L"x").c_str()));
    EXPECT_TRUE(::MoveFileW((folder.path() + L"x").c_str(), folder.path().c_str()));
}
