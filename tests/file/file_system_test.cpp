#include <tests/support/test.h>

using namespace tam;
using test::chain;

TEST(File_system, tells_the_kind_of_volume)
{
    EXPECT_EQ(Tam_file_system::type(L"C:\\"), Tam_file_system::FIXED);
    EXPECT_EQ(Tam_file_system(L"C:\\no such folder\\file").type(), Tam_file_system::FIXED);
    // No root directory, though the current drive has one.
    EXPECT_EQ(Tam_file_system::type(L""), Tam_file_system::NO_ROOT);
    EXPECT_EQ(Tam_file_system(L"a\\b").type(), Tam_file_system::NO_ROOT);
    EXPECT_EQ(Tam_file_system(L"").type(), Tam_file_system::NO_ROOT);
}

TEST(File_system, numbers_are_those_of_the_system)
{
    const test::Temporary_folder folder;
    const Tam_file_system volume(folder.path());
    unsigned long long total = 0;
    unsigned long long free = 0;
    unsigned long long available = 0;
    Tam_status status;
    volume.stats(total, free, available, status);
    EXPECT_EQ(chain(status), L"");
    ULARGE_INTEGER raw_available;
    ULARGE_INTEGER raw_total;
    ULARGE_INTEGER raw_free;
    ASSERT_TRUE(::GetDiskFreeSpaceExW(folder.path().c_str(), &raw_available, &raw_total, &raw_free));
    EXPECT_EQ(total, raw_total.QuadPart);
    // Others use the disk meanwhile.
    EXPECT_NEAR(static_cast<double>(free), static_cast<double>(raw_free.QuadPart), 1e9);
    EXPECT_NEAR(static_cast<double>(available), static_cast<double>(raw_available.QuadPart), 1e9);
    EXPECT_LE(available, free);

    // The empty path asks about the current drive.
    total = 0;
    Tam_file_system::stats(L"", total, free, available, status);
    EXPECT_EQ(chain(status), L"");
    ASSERT_TRUE(::GetDiskFreeSpaceExW(nullptr, nullptr, &raw_total, nullptr));
    EXPECT_EQ(total, raw_total.QuadPart);
}
