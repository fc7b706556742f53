#include <tests/support/test.h>

#include <tests/support/registry_branch.h>

namespace tam {
namespace {

using test::bytes_of;
using test::chain;
using test::Temporary_folder;
using Entry = std::pair<std::wstring, std::wstring>;

// From the cursor on.
template <class Profile>
std::vector<Entry> entries_of(Profile& profile)
{
    std::vector<Entry> all;
    Tam_status status;
    while (!profile.end_of_entries()) {
        all.emplace_back();
        profile.get_current_entry(all.back(), status);
        profile.move_to_next_entry(status);
    }
    EXPECT_EQ(chain(status), L"");
    return all;
}

template <class Profile>
std::vector<std::wstring> sections_of(const Profile& profile)
{
    Tam_object_vector<std::wstring> names;
    names.push_back(L"from before");
    Tam_status status;
    profile.get_section_list(names, status);
    return {names.begin(), names.end()};
}

class Profile_access : public testing::Test {
protected:
    void write(const std::wstring& text) { folder.file(L"profile.ini", bytes_of(text)); }

    void open(const std::wstring& text, Tam_file_access access = TAM_FILE_READ_WRITE)
    {
        profile.close(status);
        write(text);
        profile.open(path, TAM_FILE_OPEN_EXISTING, access, status);
        ASSERT_EQ(chain(status), L"");
    }

    // The profile with one more entry at the beginning of its section S.
    void edit(const std::wstring& key)
    {
        profile.set_current_section(L"S", status);
        profile.insert_entry({key, L"1"}, status);
        ASSERT_EQ(chain(status), L"");
    }

    std::vector<Entry> entries(const std::wstring& section)
    {
        profile.set_current_section(section, status);
        EXPECT_EQ(chain(status), L"");
        return entries_of(profile);
    }

    const Temporary_folder folder;
    const std::wstring path = folder / L"profile.ini";
    const std::wstring backup = folder / L"profile.bak";
    Tam_status status;
    Tam_profile_access profile;
};

using Operation = std::function<void(Tam_profile_access&, Tam_status&)>;
using Codes = std::vector<std::wstring>;

const std::vector<Operation>& edits()
{
    static const std::vector<Operation> all = {
        [](auto& p, auto& s) { p.create_new_section(L"s", s); },
        [](auto& p, auto& s) {
            p.insert_entry({L"a", L""}, s);
        },
        [](auto& p, auto& s) { p.delete_entry(s); },
        [](auto& p, auto& s) { p.rename_section(L"S", s); },
        [](auto& p, auto& s) { p.copy_section(L"other", s); },
        [](auto& p, auto& s) { p.delete_section(s); },
    };
    return all;
}

const std::vector<Operation>& looks()
{
    static const std::vector<Operation> all = {
        [](auto& p, auto& s) { p.reset_section_position(s); },
        [](auto& p, auto& s) {
            Entry entry(L"kept", L"");
            p.get_current_entry(entry, s);
            EXPECT_EQ(entry.first, L"kept");
        },
        [](auto& p, auto& s) { p.move_to_next_entry(s); },
        [](auto& p, auto& s) { p.move_to_key(L"a", s); },
        [](auto& p, auto& s) { p.set_current_section(L"missing", s); },
    };
    return all;
}

Codes codes(const std::vector<Operation>& operations, Tam_profile_access& profile)
{
    Codes all;
    for (const Operation& operation : operations) {
        Tam_status status(5);
        status.push(6); // cleared by every operation
        operation(profile, status);
        all.push_back(chain(status));
    }
    return all;
}

TEST_F(Profile_access, says_what_it_lacks)
{
    std::vector<Operation> all = edits();
    all.insert(all.end(), looks().begin(), looks().end());
    Tam_security security;
    all.insert(all.end(), {
                              [](auto& p, auto& s) { p.commit_changes(s); },
                              [](auto& p, auto& s) { p.abort_changes(s); },
                              [](auto& p, auto& s) { p.rollback(s); },
                              [&](auto& p, auto& s) { p.add_security(security, s); },
                              [](auto& p, auto& s) {
                                  Tam_object_vector<std::wstring> names;
                                  names.push_back(L"from before");
                                  p.get_section_list(names, s);
                                  EXPECT_EQ(names.size(), 0U);
                              },
                          });
    EXPECT_EQ(codes(all, profile), Codes(all.size(), L"C200005B"));
    EXPECT_TRUE(profile.end_of_entries());
    status = 5;
    profile.close(status);
    EXPECT_EQ(chain(status), L"5") << "nothing happens, not even to the status";

    open(L"[S]\r\n", TAM_FILE_READ);
    EXPECT_EQ(codes(edits(), profile), Codes(edits().size(), L"C200005C"));
    EXPECT_EQ(codes(looks(), profile),
              (Codes{L"C2000052", L"C2000052", L"C2000052", L"C2000052", L"C2000051(missing)"}));

    open(L"[S]\r\n");
    EXPECT_EQ(codes(edits(), profile),
              (Codes{L"C2000056(s)", L"C2000052", L"C2000052", L"C2000052", L"C2000052", L"C2000052"}));
    profile.set_current_section(L"s", status);
    EXPECT_EQ(codes(looks(), profile),
              (Codes{L"", L"C2000054(S)", L"C2000054(S)", L"C2000054(S)", L"C2000051(missing)"}));
    const std::vector<Operation> refused = {
        [](auto& p, auto& s) { p.delete_entry(s); },
        [](auto& p, auto& s) { p.rename_section(L"s", s); }, // its own name, too
        [](auto& p, auto& s) { p.copy_section(L"S", s); },
    };
    EXPECT_EQ(codes(refused, profile), (Codes{L"C2000054(S)", L"C2000056(s)", L"C2000056(S)"}));
    profile.commit_changes(status);
    EXPECT_FALSE(Temporary_folder::exists(backup)) << "what was refused modified nothing";

    profile.close(status);
    EXPECT_EQ(codes(all, profile), Codes(all.size(), L"C200005B"));
}

TEST_F(Profile_access, reports_a_file_that_cannot_be_opened)
{
    const unsigned int handles = test::open_handles();
    Tam_profile_access failed(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    EXPECT_EQ(chain(status), L"C2000026(" + path + L") C200001E(" + path + L")");
    failed.open(folder.path(), TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, status);
    EXPECT_EQ(chain(status), L"C2000026(" + folder.path() + L") C200001F(" + folder.path() + L")");
    failed.open(L"", TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, status);
    EXPECT_EQ(chain(status), L"C2000026() C200001D()");
    failed.open(path, TAM_FILE_OPEN_EMPTY, TAM_FILE_READ, status);
    EXPECT_EQ(chain(status), L"C2000026(" + path + L") C2000025");
    write(L"[S]\r\n");
    failed.open(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_WRITE, status);
    EXPECT_EQ(chain(status), L"C2000058(, " + path + L") C200001B 5");
    failed.commit_changes(status);
    EXPECT_EQ(chain(status), L"C200005B");

    open(L"[S]\r\na=1\r\n");
    profile.set_current_section(L"S", status);
    profile.open(folder / L"missing.ini", TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, status);
    EXPECT_TRUE(profile.end_of_entries()) << "the earlier file is closed all the same";
    EXPECT_EQ(Temporary_folder::bytes_of(path), bytes_of(L"[S]\r\na=1\r\n"));
    EXPECT_EQ(test::open_handles(), handles + 4) << "the mutexes of one more object";
}

TEST_F(Profile_access, shares_its_file_for_reading)
{
    const auto open_for = [&](DWORD access, DWORD sharing) {
        const HANDLE file = ::CreateFileW(path.c_str(), access, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        return file != INVALID_HANDLE_VALUE && ::CloseHandle(file);
    };
    open(L"[S]\r\n");
    EXPECT_TRUE(open_for(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE));
    EXPECT_FALSE(open_for(GENERIC_READ, 0)) << "nobody gets it alone";
    EXPECT_FALSE(open_for(GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE));
    const Tam_profile_access second(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    EXPECT_EQ(chain(status), L"C2000026(" + path + L") 32");
    profile.close(status);
    EXPECT_TRUE(open_for(GENERIC_READ | GENERIC_WRITE, 0));
}

TEST_F(Profile_access, reads_trimmed_lines)
{
    open(L"\xFEFF; no section\r\nx=1\n \t[ Main ]\x3000\r\n\r\n  \r ; note = 1 \n a\\=b = c\\0Ad "
         L"\n[a=b]\n[]\nkey\n\xFEFF[Late]\n[MAIN]\nz=");
    EXPECT_EQ(sections_of(profile), (Codes{L" Main ", L"a=b", L"", L"Late", L"MAIN"}));
    EXPECT_EQ(entries(L" main "), (std::vector<Entry>{{L"; note = 1", L""}, {L"a=b", L"c\nd"}}));
    EXPECT_EQ(entries(L""), (std::vector<Entry>{{L"key", L""}}));
    profile.delete_section(status);
    EXPECT_EQ(chain(status), L"") << "a section without a name can be current";
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(
        Temporary_folder::bytes_of(path),
        bytes_of(
            L"\xFEFF[ Main ]\r\n; note = 1\r\na\\=b=c\\0Ad\r\n\r\n[a=b]\r\n\r\n[Late]\r\n\r\n[MAIN]\r\nz=\r\n\r\n"));
}

TEST_F(Profile_access, reads_long_lines_in_pieces)
{
    open(L"[S]\r\n" + std::wstring(1020, L'k') + L"=123456\r\n");
    EXPECT_EQ(entries(L"S"), (std::vector<Entry>{{std::wstring(1020, L'k'), L"123"}, {L"456", L""}}));
}

TEST_F(Profile_access, inserts_before_the_cursor_and_stays_there)
{
    open(L"[S]\r\na=1\r\nb=2\r\n");
    edit(L"first");
    Entry entry;
    profile.get_current_entry(entry, status);
    EXPECT_EQ(entry.first, L"first");
    profile.move_to_key(L"B", status);
    profile.insert_entry({L"middle", L""}, status);
    profile.move_to_key(L"none", status);
    profile.insert_entry({L"last", L""}, status);
    EXPECT_EQ(entries_of(profile), (std::vector<Entry>{{L"last", L""}}));
    EXPECT_EQ(entries(L"S"),
              (std::vector<Entry>{{L"first", L"1"}, {L"a", L"1"}, {L"middle", L""}, {L"b", L"2"}, {L"last", L""}}));
    profile.move_to_key(L"middle", status);
    profile.delete_entry(status);
    EXPECT_EQ(entries_of(profile), (std::vector<Entry>{{L"b", L"2"}, {L"last", L""}})) << "on the next one";
}

TEST_F(Profile_access, keeps_or_gives_up_the_current_section)
{
    open(L"[S]\r\na=1\r\nb=2\r\n[T]\r\n");
    profile.set_current_section(L"s", status);
    profile.move_to_next_entry(status);
    const std::vector<Entry> rest = {{L"b", L"2"}};
    Entry entry;
    profile.create_new_section(L"new", status);
    profile.copy_section(L"copy", status);
    profile.get_current_entry(entry, status);
    EXPECT_EQ(entry, rest[0]);
    profile.rename_section(L"renamed", status);
    profile.get_current_entry(entry, status);
    EXPECT_EQ(entry, rest[0]);
    profile.insert_entry({L"x", L""}, status);
    EXPECT_EQ(sections_of(profile), (Codes{L"renamed", L"T", L"new", L"copy"}));
    EXPECT_EQ(entries(L"copy"), (std::vector<Entry>{{L"a", L"1"}, rest[0]}));
    profile.delete_section(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(profile.end_of_entries());
    profile.reset_section_position(status);
    EXPECT_EQ(chain(status), L"C2000052");
    EXPECT_EQ(sections_of(profile), (Codes{L"renamed", L"T", L"new"}));
    profile.set_current_section(L"S", status);
    EXPECT_EQ(chain(status), L"C2000051(S)");
}

TEST_F(Profile_access, commits_once_and_rolls_back_to_the_same_bytes)
{
    const std::wstring odd = L"; lost\n [S]\r a = 1\n\n\n" + std::wstring(3000, L'\n') + L"[T]";
    open(odd);
    profile.commit_changes(status);
    profile.rollback(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(Temporary_folder::exists(backup));
    EXPECT_EQ(Temporary_folder::bytes_of(path), bytes_of(odd)) << "nothing was changed, so nothing is written";

    edit(L"new");
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"");
    const std::string first = bytes_of(L"[S]\r\nnew=1\r\na=1\r\n\r\n[T]\r\n\r\n");
    EXPECT_EQ(Temporary_folder::bytes_of(path), first) << "cut where the shorter contents end";
    EXPECT_EQ(Temporary_folder::bytes_of(backup), bytes_of(odd)) << "and it can be opened";
    const HANDLE alone = ::CreateFileW(backup.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(alone, INVALID_HANDLE_VALUE) << "the backup is closed";
    ::CloseHandle(alone);
    ::SetFileAttributesW(backup.c_str(), FILE_ATTRIBUTE_READONLY);

    edit(L"newer" + std::wstring(900, L'x'));
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(backup), first);
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW((folder / L"*.*").c_str(), &found);
    unsigned int files = 1;
    while (::FindNextFileW(search, &found)) {
        ++files;
    }
    ::FindClose(search);
    EXPECT_EQ(files, 4U) << "two, and the folder and its parent: the earlier backup is gone";

    edit(L"not committed");
    profile.rollback(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(path), first);
    EXPECT_FALSE(Temporary_folder::exists(backup));
    profile.reset_section_position(status);
    EXPECT_EQ(chain(status), L"C2000052");
    EXPECT_EQ(entries(L"S").size(), 2U);

    edit(L"not committed");
    profile.rollback(status); // without a backup now
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(entries(L"S").size(), 2U);
    edit(L"not committed");
    profile.abort_changes(status);
    EXPECT_EQ(entries(L"S").size(), 2U);
    profile.abort_changes(status);
    profile.get_current_entry(*std::make_unique<Entry>(), status);
    EXPECT_EQ(chain(status), L"C2000054(S)") << "with nothing to abort, the section stays current";
    edit(L"not committed");
    profile.close(status);
    EXPECT_EQ(Temporary_folder::bytes_of(path), first);
}

TEST_F(Profile_access, makes_new_files_and_empties_old_ones)
{
    profile.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, status);
    profile.create_new_section(L"S", status);
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(path), bytes_of(L"[S]\r\n\r\n"));
    EXPECT_EQ(Temporary_folder::bytes_of(backup), "");
    profile.set_current_section(L"S", status);
    profile.delete_section(status);
    profile.commit_changes(status);
    EXPECT_EQ(Temporary_folder::bytes_of(path), "") << "no section, no text";
    profile.rollback(status);
    profile.open(path, TAM_FILE_OPEN_EMPTY, TAM_FILE_ALL, status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_TRUE(sections_of(profile).empty());
}

TEST_F(Profile_access, stops_a_commit_that_cannot_be_backed_up)
{
    const std::string old = bytes_of(L"[S]\r\n");
    open(L"[S]\r\n");
    edit(L"a");
    ::CreateDirectoryW(backup.c_str(), nullptr);
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"C2000026(" + backup + L") C200001F(" + backup + L")");
    EXPECT_EQ(Temporary_folder::bytes_of(path), old);
    ::RemoveDirectoryW(backup.c_str());

    folder.file(L"profile.bak", "earlier");
    const HANDLE locked =
        ::CreateFileW(backup.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    profile.commit_changes(status);
    ::CloseHandle(locked);
    EXPECT_EQ(chain(status).substr(0, 10 + backup.size()), L"C2000023(" + backup + L",");
    EXPECT_TRUE(chain(status).ends_with(L") 32")) << "somebody has the earlier backup open";
    EXPECT_EQ(Temporary_folder::bytes_of(path), old);
    EXPECT_EQ(Temporary_folder::bytes_of(backup), "earlier");

    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"") << "the edits were kept";
    EXPECT_EQ(Temporary_folder::bytes_of(path), bytes_of(L"[S]\r\na=1\r\n\r\n"));
    EXPECT_EQ(Temporary_folder::bytes_of(backup), old);

    // Somebody takes the backup away.
    ::MoveFileW(backup.c_str(), (folder / L"elsewhere").c_str());
    edit(L"b");
    profile.rollback(status);
    EXPECT_EQ(chain(status), L"C2000026(" + backup + L") C200001E(" + backup + L")");
    EXPECT_EQ(Temporary_folder::bytes_of(path), bytes_of(L"[S]\r\na=1\r\n\r\n"));
    EXPECT_EQ(entries(L"S").size(), 2U);
    ::MoveFileW((folder / L"elsewhere").c_str(), backup.c_str());
    profile.rollback(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(path), old);

    // A profile that is its own backup.
    const std::wstring own = folder.file(L"own.bak", old);
    profile.open(own, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    edit(L"a");
    profile.commit_changes(status);
    EXPECT_TRUE(chain(status).starts_with(L"C2000023(" + own)) << "it cannot be moved";
    EXPECT_EQ(Temporary_folder::bytes_of(own), old);
}

TEST_F(Profile_access, finds_the_backup_of_a_relative_path)
{
    wchar_t before[MAX_PATH];
    ::GetCurrentDirectoryW(MAX_PATH, before);
    ::CreateDirectoryW((folder / L"a").c_str(), nullptr);
    ::CreateDirectoryW((folder / L"a\\b").c_str(), nullptr);
    write(L"[S]\r\n");
    ::SetCurrentDirectoryW((folder / L"a\\b").c_str());
    profile.open(L"..\\..\\profile.ini", TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    ::SetCurrentDirectoryW(before);
    edit(L"a");
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(Temporary_folder::bytes_of(backup), bytes_of(L"[S]\r\n"));
}

TEST_F(Profile_access, associates_security_with_the_file)
{
    open(L"[S]\r\n", TAM_FILE_READ);
    Tam_security security;
    profile.add_security(security, status);
    EXPECT_EQ(chain(status), L"");
    profile.add_security(security, status);
    EXPECT_EQ(chain(status), L"C2000078");
}

TEST_F(Profile_access, brings_hostile_texts_back_or_as_documented)
{
    const std::wstring limit(1022, L'x');
    const struct {
        Entry given;
        std::vector<Entry> expected; // empty: the same
    } cases[] = {
        {{L"a=b==", L"=c="}, {}},
        {{L"\\", L"\\\\0A\\=\\"}, {}},
        {{L"\\0A", L"C:\\dir\\"}, {}},
        {{L"a\nb\r", L"\r\n"}, {}},
        {{L"", L""}, {}},
        {{L"", L";no comment"}, {}},
        {{L";comment", L""}, {}},
        {{L"[a", L"b"}, {}},
        {{L"a]", L"[b]"}, {}},
        {{L"]", L"["}, {}},
        {{L"\xFEFF", L"\xFEFF"}, {}},
        {{L"\xD800", L"\xDC00\xD800"}, {}},
        {{std::wstring(L"a\0b", 3), std::wstring(1, L'\0')}, {}},
        {{limit, L"1"}, {}},
        {{L" a\t", L"\x3000 b "}, {{L"a", L"b"}}},
        {{L" ;x", L"1"}, {{L";x=1", L""}}},
        {{L";x", L"lost"}, {{L";x", L""}}},
        {{L";x\ny", L""}, {{L";x", L""}, {L"y", L""}}},
        {{L"\xFEFF[", L"x"}, {{L"[", L"x"}}},
        {{limit, L"12"}, {{limit, L"1"}}},
        {{limit, L"123"}, {{limit, L"1"}, {L"23", L""}}},
    };
    open(L"[S]\r\n");
    profile.set_current_section(L"S", status);
    std::vector<Entry> expected;
    for (const auto& [given, read] : cases) {
        profile.insert_entry(given, status);
        profile.move_to_next_entry(status);
        if (read.empty()) {
            expected.push_back(given);
        }
        expected.insert(expected.end(), read.begin(), read.end());
    }
    profile.insert_entry({L"[x", L"y]"}, status); // looks like a section
    const Codes names = {L" s ", L"]", L"[", L"=;\\", L"\xD800", L"\xFEFF", std::wstring(1022, L'n')};
    for (const std::wstring& name : names) {
        profile.create_new_section(name, status);
    }
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"");
    profile.close(status);
    profile.open(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, status);
    Tam_profile_reader reader(path, status);
    EXPECT_EQ(chain(status), L"");
    Codes all = {L"S", L"x=y"};
    all.insert(all.end(), names.begin(), names.end());
    EXPECT_EQ(sections_of(profile), all);
    EXPECT_EQ(sections_of(reader), all);
    const std::vector<Entry> read = entries(L"S");
    for (std::size_t i = 0; i < std::min(read.size(), expected.size()); ++i) {
        EXPECT_EQ(read[i], expected[i]) << i;
    }
    EXPECT_EQ(read.size(), expected.size());
    // The reader does not trim lines, and keeps empty ones, such as what is left of the line of 1025 units.
    std::replace(expected.begin(), expected.end(), Entry(L";x=1", L""), Entry(L";x", L"1"));
    expected.insert(expected.end() - 2, Entry());
    reader.set_current_section(L"S", status);
    EXPECT_EQ(entries_of(reader), expected);
}

} // namespace
} // namespace tam
