#include <tests/support/test.h>

#include <tam/detail/profile_line.h>

namespace tam::detail {
namespace {

std::wstring line_of(const Profile_entry& entry)
{
    std::wstring line;
    append_profile_entry(line, entry);
    EXPECT_TRUE(line.ends_with(L"\r\n"));
    line.resize(line.size() - 2);
    return line;
}

TEST(Profile_line, is_read_back_as_the_entry_that_it_was_made_of)
{
    EXPECT_EQ(line_of({L"a=b", L"1\n2\r3\\4=5"}), L"a\\=b=1\\0A2\\0D3\\5C4\\=5");
    EXPECT_EQ(line_of({L";a=b", L"lost"}), L";a=b");

    const unsigned int seed = 5;
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        Profile_entry entry;
        for (std::wstring* text : {&entry.first, &entry.second}) {
            for (unsigned int n = random() % 9; n != 0; --n) {
                *text += L"\\\\==0A5CD;\n\r x["[random() % 15];
            }
            tam_trim(*text);
        }
        if (entry.first.starts_with(L';')) {
            entry.second.clear();
            std::erase_if(entry.first, [](wchar_t unit) { return unit == L'\n' || unit == L'\r'; });
        }
        ASSERT_EQ(split_profile_line(line_of(entry)), entry) << "seed " << seed << " round " << round;
    }
}

} // namespace
} // namespace tam::detail
