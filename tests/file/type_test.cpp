#include <tests/support/test.h>

using namespace tam;
using test::Temporary_folder;

TEST(Type, tells_files_directories_and_nothing_apart)
{
    const Temporary_folder folder;
    const std::wstring file = folder.file(L"gr\u00FC\u00DFe \u4E16.txt", "abc");
    EXPECT_EQ(tam_type(file), TAM_TYPE_FILE);
    EXPECT_EQ(tam_type(folder.path()), TAM_TYPE_DIRECTORY);
    EXPECT_EQ(tam_type(L"C:\\"), TAM_TYPE_DIRECTORY);
    EXPECT_EQ(tam_type(folder / L"missing"), TAM_TYPE_NONE);
    EXPECT_EQ(tam_type(folder / L"*.txt"), TAM_TYPE_NONE);
    EXPECT_EQ(tam_type(file + L"\\below"), TAM_TYPE_NONE);
    EXPECT_EQ(tam_type(L""), TAM_TYPE_NONE);
}

TEST(Access, tests_what_the_access_asks_for)
{
    const Temporary_folder folder;
    const std::wstring writable = folder.file(L"writable", "");
    const std::wstring fixed = folder.file(L"fixed", "");
    ASSERT_TRUE(::SetFileAttributesW(fixed.c_str(), FILE_ATTRIBUTE_READONLY));
    const struct {
        Tam_file_access access;
        bool granted_on_fixed;
    } cases[] = {
        {TAM_FILE_READ, true},
        {TAM_FILE_WRITE, false},
        {TAM_FILE_READ_WRITE, false},
        {TAM_FILE_ALL, false},
        // Beyond the table: existence only.
        {static_cast<Tam_file_access>(4), true},
        {static_cast<Tam_file_access>(0xFFFFFFFF), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.access);
        EXPECT_TRUE(tam_access(writable, c.access));
        EXPECT_TRUE(tam_access(folder.path(), c.access));
        EXPECT_EQ(tam_access(fixed, c.access), c.granted_on_fixed);
        EXPECT_FALSE(tam_access(folder / L"missing", c.access));
    }
}
