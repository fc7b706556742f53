#include <tests/support/test.h>

using tam::Tam_object_vector;
using tam::test::Temporary_folder;

namespace {

using Strings = std::vector<std::wstring>;

Strings strings(const Tam_object_vector<std::wstring>& vector)
{
    return Strings(vector.begin(), vector.end());
}

std::wstring quoted(const std::wstring& text)
{
    std::wstring result;
    tam::tam_quote(text, result);
    return result;
}

} // namespace

TEST(Search, parse_path_splits_at_semicolons_outside_quotes)
{
    const struct {
        std::wstring list;
        Strings pieces;
    } rows[] = {
        {L"", {}},
        {L";;", {}},
        {L"C:\\a", {L"C:\\a"}},
        {L"C:\\a;;D:\\b c;", {L"C:\\a", L"D:\\b c"}},
        {L"a;\"b c\";d", {L"a", L"b c", L"d"}},
        {L"a;" + quoted(L"C:\\temp\\new;x") + L";d", {L"a", L"C:\\temp\\new;x", L"d"}},
        {L"\"C:\\temp\"", {L"C:\temp"}}, // not as tam_quote() writes it: \t is a tab
        {L"a\"b;c\"", {L"a\"b;c\""}},
        {L"\"open;x", {L"\"open;x"}},
    };
    for (const auto& row : rows) {
        Tam_object_vector<std::wstring> pieces;
        pieces.push_back(L"old");
        tam::tam_parse_path(row.list, pieces);
        EXPECT_EQ(strings(pieces), row.pieces);
    }
}

TEST(Search, find_files_takes_the_directories_in_turn)
{
    const Temporary_folder first;
    const Temporary_folder second;
    const std::wstring a = first.file(L"a.txt", "");
    const std::wstring b = second.file(L"b.txt", "");
    second.file(L"c.bin", "");
    ::CreateDirectoryW((second / L"d.txt").c_str(), nullptr);

    Tam_object_vector<std::wstring> directories;
    directories.push_back(second.path());
    directories.push_back(first / L"missing");
    directories.push_back(first.path() + L"\\");
    Tam_object_vector<std::wstring> files;
    files.push_back(L"old");
    tam::tam_find_files(directories, L"txt", files);
    EXPECT_EQ(strings(files), (Strings{b, a}));

    tam::tam_find_files(first.path() + L";" + quoted(second.path()), L"", files);
    Strings all = strings(files);
    std::sort(all.begin() + 1, all.end());
    EXPECT_EQ(all, (Strings{a, b, second / L"c.bin"}));
    tam::tam_find_files(first.path(), L"none", files);
    EXPECT_TRUE(files.empty());

    tam::tam_find_files(directories, L"bin", directories);
    EXPECT_EQ(strings(directories), Strings{second / L"c.bin"});
}
