#include <tests/support/test.h>

namespace tam {
namespace {

using test::chain;
using Entry = std::pair<std::wstring, std::wstring>;

class Profile_reader : public testing::Test {
protected:
    // A file of these code units.
    std::wstring profile(const std::wstring& text, const std::wstring& name = L"profile.ini") const
    {
        return folder.file(name, {reinterpret_cast<const char*>(text.data()), text.size() * 2});
    }

    std::vector<std::wstring> sections()
    {
        Tam_object_vector<std::wstring> names;
        names.push_back(L"from before");
        reader.get_section_list(names, status);
        return {names.begin(), names.end()};
    }

    // The entries from the cursor on.
    std::vector<Entry> entries()
    {
        std::vector<Entry> all;
        while (!reader.end_of_entries()) {
            all.emplace_back();
            reader.get_current_entry(all.back(), status);
            reader.move_to_next_entry(status);
        }
        return all;
    }

    std::vector<Entry> entries(const std::wstring& section)
    {
        reader.set_current_section(section, status);
        EXPECT_EQ(chain(status), L"");
        return entries();
    }

    const test::Temporary_folder folder;
    Tam_status status;
    Tam_profile_reader reader;
};

TEST_F(Profile_reader, splits_lines_into_key_and_value)
{
    const struct {
        const wchar_t* line;
        Entry entry;
    } cases[] = {
        {L"a=b", {L"a", L"b"}},
        {L" \t key one = value one \t", {L"key one", L"value one"}},
        {L"a=b=c", {L"a", L"b=c"}},
        {L"a\\=b=c", {L"a=b", L"c"}},
        {L"a\\=b\\=c=\\=d", {L"a=b=c", L"=d"}},
        {L"=b", {L"", L"b"}},
        {L"a=", {L"a", L""}},
        {L"=", {L"", L""}},
        {L"x=a\\0Ab\\0Dc\\5Cd", {L"x", L"a\nb\rc\\d"}},
        {L"x\\5C=a", {L"x\\", L"a"}},
        {L"x=\\0A", {L"x", L"\n"}},
        {L"x= \\0A ", {L"x", L"\n"}},
        {L"path=C:\\dir", {L"path", L"C:\\dir"}},
        {L"x=\\0a\\0d\\5c\\0B", {L"x", L"\\0a\\0d\\5c\\0B"}},
        {L"x=\\x\\=y", {L"x", L"\\x\\=y"}},
        {L"x=\\\\0A", {L"x", L"\\\\0A"}},
        {L"x=a\\", {L"x", L"a\\"}},
        {L"x=a\\0", {L"x", L"a\\0"}},
        {L" plain \\0A ", {L"plain \\0A", L""}},
        {L"a\\=b", {L"a\\=b", L""}},
        {L";note = \\0A ", {L";note = \\0A ", L""}},
        {L" ;note=1", {L";note", L"1"}},
        {L"", {L"", L""}},
        {L" \t", {L"", L""}},
        {L" [no header]", {L"[no header]", L""}},
        {L"[no header] ", {L"[no header]", L""}},
        {L"[", {L"[", L""}},
        {L"]", {L"]", L""}},
        {L"\xFEFFx=1", {L"\xFEFFx", L"1"}},
        {L"\xFEFF[x=1", {L"[x", L"1"}},
        {L"\xD800\xDC00=\xDC00\xD800", {L"\xD800\xDC00", L"\xDC00\xD800"}},
    };
    std::wstring text = L"lines=before\r\nthe first header\r\n[Main]\r\n";
    std::vector<Entry> expected;
    for (const auto& [line, entry] : cases) {
        text += line;
        text += L"\r\n";
        expected.push_back(entry);
    }
    reader.open(profile(text), status);
    EXPECT_EQ(chain(status), L"");
    const std::vector<Entry> read = entries(L"Main");
    ASSERT_EQ(read.size(), expected.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        EXPECT_EQ(read[i], expected[i]) << i;
    }
}

TEST_F(Profile_reader, finds_sections_without_regard_to_case)
{
    reader.open(profile(L"\xFEFF[Main]\r\na=1\n[ two words ]\r[Empty]\n[MAIN]\nb=2\n[x]y]\n[Last1]\n[Last2]"), status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(sections(),
              (std::vector<std::wstring>{L"Main", L" two words ", L"Empty", L"MAIN", L"x]y", L"Last1", L"Last2"}));
    EXPECT_EQ(entries(L"mAIN"), (std::vector<Entry>{{L"a", L"1"}})) << "the first of two";
    EXPECT_TRUE(entries(L" TWO WORDS ").empty());
    EXPECT_TRUE(entries(L"last2").empty());
    EXPECT_TRUE(entries(L"X]Y").empty());
    reader.get_current_entry(*std::make_unique<Entry>(), status);
    EXPECT_EQ(chain(status), L"C2000054(x]y)") << "the name is the file's";
    reader.set_current_section(L"two words", status);
    EXPECT_EQ(chain(status), L"C2000051(two words)");
    reader.set_current_section(L"last", status);
    EXPECT_EQ(chain(status), L"C2000051(last)");
}

TEST_F(Profile_reader, walks_the_entries_with_a_cursor)
{
    reader.open(profile(L"[S]\na=1\n\nB=2\nb=3"), status);
    reader.set_current_section(L"s", status);
    Entry entry;
    reader.move_to_key(L"b", status);
    reader.get_current_entry(entry, status);
    EXPECT_EQ(entry, Entry(L"B", L"2"));
    reader.move_to_next_entry(status);
    EXPECT_EQ(entries(), (std::vector<Entry>{{L"b", L"3"}}));
    EXPECT_EQ(chain(status), L"");
    reader.move_to_next_entry(status);
    EXPECT_EQ(chain(status), L"C2000054(S)");
    reader.get_current_entry(entry, status);
    EXPECT_EQ(chain(status), L"C2000054(S)");
    EXPECT_EQ(entry, Entry(L"B", L"2")) << "unchanged";
    reader.move_to_key(L"A", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(entries().size(), 4U);
    reader.reset_section_position(status);
    EXPECT_EQ(entries(), (std::vector<Entry>{{L"a", L"1"}, {L"", L""}, {L"B", L"2"}, {L"b", L"3"}}));
    reader.move_to_key(L"", status);
    EXPECT_EQ(entries().size(), 3U);
    reader.reset_section_position(status);
    reader.move_to_key(L"ab", status);
    EXPECT_EQ(chain(status), L"C2000054(S)");
    EXPECT_TRUE(reader.end_of_entries());
}

TEST_F(Profile_reader, says_what_it_lacks)
{
    Entry entry;
    const auto failures = [&] {
        std::vector<std::wstring> codes;
        const auto collect = [&] { codes.push_back(chain(std::exchange(status, Tam_status()))); };
        reader.reset_section_position(status);
        collect();
        reader.get_current_entry(entry, status);
        collect();
        reader.move_to_next_entry(status);
        collect();
        reader.move_to_key(L"a", status);
        collect();
        return codes;
    };
    EXPECT_TRUE(sections().empty());
    EXPECT_EQ(chain(status), L"C200004F()");
    EXPECT_EQ(failures(), std::vector<std::wstring>(4, L"C200004F()"));
    EXPECT_TRUE(reader.end_of_entries());

    const std::wstring path = profile(L"[S]\na=1\n[]\nb=2\n");
    reader.open(path, status);
    EXPECT_EQ(failures(), std::vector<std::wstring>(4, L"C2000052"));
    reader.set_current_section(L"", status);
    EXPECT_EQ(chain(status), L"C2000052") << "an empty name means that none is current";

    reader.set_current_section(L"S", status);
    reader.set_current_section(L"unknown", status);
    EXPECT_EQ(chain(status), L"C2000051(unknown)");
    EXPECT_EQ(entries().size(), 1U) << "S is still current";

    reader.close(status);
    EXPECT_EQ(chain(status), L"");
    const std::wstring closed = L"C200004F(" + path + L")";
    EXPECT_EQ(failures(), std::vector<std::wstring>(4, closed));
    reader.set_current_section(L"S", status);
    EXPECT_EQ(chain(status), closed);
    reader.close(status);
    EXPECT_EQ(chain(status), closed) << "nothing happens, not even to the status";
    EXPECT_TRUE(reader.end_of_entries());
}

TEST_F(Profile_reader, reports_a_file_that_cannot_be_opened)
{
    const std::wstring path = folder / L"missing.ini";
    const Tam_profile_reader failed(path, status);
    EXPECT_EQ(chain(status), L"C2000059(" + path + L") C2000026(" + path + L") C200001E(" + path + L")");
    status.clear();
    Tam_object_vector<std::wstring> names;
    failed.get_section_list(names, status);
    EXPECT_EQ(chain(status), L"C200004F(" + path + L")");

    reader.open(profile(L"[S]\na=1\n"), status);
    reader.set_current_section(L"S", status);
    reader.open(path, status);
    EXPECT_FALSE(status.ok());
    EXPECT_TRUE(reader.end_of_entries());
    reader.open(folder.path(), status);
    EXPECT_EQ(chain(status),
              L"C2000059(" + folder.path() + L") C2000026(" + folder.path() + L") C200001F(" + folder.path() + L")");
}

TEST_F(Profile_reader, shares_its_file_and_gives_it_up)
{
    const std::wstring first = profile(L"[A]\na=1\n[B]\nb=2", L"first.ini");
    const std::wstring second = profile(L"[C]", L"second.ini");
    const auto open_for = [&](DWORD access, DWORD sharing) {
        const HANDLE file = ::CreateFileW(first.c_str(), access, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        return file != INVALID_HANDLE_VALUE && ::CloseHandle(file);
    };
    reader.open(first, status);
    reader.set_current_section(L"A", status);
    EXPECT_TRUE(open_for(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE));
    EXPECT_FALSE(open_for(GENERIC_READ, 0));
    reader.open(second, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(open_for(GENERIC_READ, 0)) << "the first file is closed";
    EXPECT_EQ(sections(), std::vector<std::wstring>{L"C"});
    reader.reset_section_position(status);
    EXPECT_EQ(chain(status), L"C2000052");
}

TEST_F(Profile_reader, reads_long_lines_in_pieces)
{
    std::wstring line(100000, L'x');
    for (std::size_t i = 0; i < line.size(); i += 7) {
        line[i] = static_cast<wchar_t>(L'a' + i % 23);
    }
    // A piece that looks like a header is one.
    const std::wstring odd = std::wstring(1024, L'y') + L"[piece]";
    reader.open(profile(L"[S]\n" + line + L"\n" + odd + L"\nz=1\n"), status);
    EXPECT_EQ(sections(), (std::vector<std::wstring>{L"S", L"piece"}));
    std::wstring all;
    for (const Entry& entry : entries(L"S")) {
        EXPECT_LE(entry.first.size(), 1024U);
        all += entry.first;
    }
    EXPECT_EQ(all, line + std::wstring(1024, L'y'));
    EXPECT_EQ(entries(L"piece"), (std::vector<Entry>{{L"z", L"1"}}));
}

TEST_F(Profile_reader, reads_many_sections)
{
    std::wstring text;
    for (int i = 0; i < 50000; ++i) {
        text += L"[Section" + std::to_wstring(i) + L"]\nkey=" + std::to_wstring(i * 3) + L"\n";
    }
    reader.open(profile(text), status);
    EXPECT_EQ(sections().size(), 50000U);
    EXPECT_EQ(entries(L"SECTION49999"), (std::vector<Entry>{{L"key", L"149997"}}));
    EXPECT_EQ(entries(L"section12345"), (std::vector<Entry>{{L"key", L"37035"}}));
}

} // namespace
} // namespace tam
