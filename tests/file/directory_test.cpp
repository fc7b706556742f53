#include <tests/support/test.h>

#include <tests/support/run_child.h>

using tam::Tam_directory;
using tam::Tam_object_vector;
using tam::Tam_status;
using tam::test::chain;
using tam::test::Temporary_folder;
using tam::test::thrown;

namespace {

constexpr unsigned int ALL = 0xFFFFFFFF;

bool is_directory(const std::wstring& path)
{
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace

TEST(Directory, create_and_remove_report_the_system_under_their_code)
{
    const Temporary_folder folder;
    const std::wstring path = folder / L"d";
    Tam_status status(0x42000001); // both leave the status of the caller alone when they succeed
    Tam_directory::create(path, status);
    EXPECT_EQ(chain(status), L"42000001");
    EXPECT_TRUE(is_directory(path));

    Tam_directory::create(path, status);
    EXPECT_EQ(chain(status), L"C200002D(" + path + L") 183");
    const std::wstring file = folder.file(L"d\\f", "");
    Tam_directory::remove(path, status);
    EXPECT_EQ(chain(status), L"C200002E(" + path + L") 145");
    ::DeleteFileW(file.c_str());
    status.clear();
    Tam_directory::remove(path, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_FALSE(Temporary_folder::exists(path));
    Tam_directory::remove(path, status);
    EXPECT_EQ(chain(status), L"C200002E(" + path + L") 2");
    Tam_directory::create(folder / L"none\\d", status);
    EXPECT_EQ(chain(status), L"C200002D(" + folder / L"none\\d" + L") 3");
}

TEST(Directory, empty_arguments_are_thrown)
{
    Tam_status status;
    Tam_object_vector<std::wstring> names;
    names.push_back(L"kept");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_directory::create(L"", status); }),
              "Tam_directory::create - empty path.");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_directory::remove(L"", status); }),
              "Tam_directory::remove - empty path.");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_directory::list(L"", names, ALL); }),
              "Tam_directory::list - empty mask.");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_directory::exist(L""); }), "Tam_directory::exist - empty mask.");
    EXPECT_EQ(names.size(), 1U);
    status = 5;
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_directory::rename(L"", L"", false, status); }),
              "Tam_directory::rename - empty old_dirpath.");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_directory::rename(L"x", L"", false, status); }),
              "Tam_directory::rename - empty new_dirpath.");
    EXPECT_TRUE(status.is_clear());
}

TEST(Directory, rename_moves_a_directory_with_its_contents)
{
    const Temporary_folder folder;
    Tam_status status(5);
    Tam_directory::create(folder / L"old", status);
    folder.file(L"old\\f", "x");
    Tam_directory::rename(folder / L"old\\", folder / L"new\\", false, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_FALSE(Temporary_folder::exists(folder / L"old"));
    EXPECT_EQ(Temporary_folder::bytes_of(folder / L"new\\f"), "x");

    // An empty directory and a file make room.
    Tam_directory::create(folder / L"empty", status);
    Tam_directory::rename(folder / L"new", folder / L"empty", true, status);
    EXPECT_TRUE(status.is_clear());
    folder.file(L"file", "");
    Tam_directory::rename(folder / L"empty", folder / L"file", true, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(Temporary_folder::bytes_of(folder / L"file\\f"), "x");
}

TEST(Directory, rename_reports_what_is_in_the_way)
{
    const Temporary_folder folder;
    const std::wstring a = folder / L"a";
    const std::wstring b = folder / L"b";
    const std::wstring file = folder.file(L"file", "");
    Tam_status status;
    Tam_directory::create(a, status);
    Tam_directory::create(b, status);
    folder.file(L"b\\f", "");

    Tam_directory::rename(a + L"\\", b + L"\\", false, status);
    EXPECT_EQ(chain(status), L"C2000030(" + a + L", " + b + L") C200002F(" + b + L")");
    Tam_directory::rename(a, b, true, status);
    EXPECT_EQ(chain(status), L"C2000030(" + a + L", " + b + L") C200002E(" + b + L") 145");
    Tam_directory::rename(file, folder / L"x", false, status);
    EXPECT_EQ(chain(status), L"C2000030(" + file + L", " + folder / L"x" + L") C200002C(" + file + L")");
    Tam_directory::rename(a, folder / L"none\\x", false, status);
    EXPECT_EQ(chain(status), L"C2000030(" + a + L", " + folder / L"none\\x" + L") 3");
    EXPECT_TRUE(is_directory(a) && is_directory(b) && Temporary_folder::exists(b + L"\\f"));
}

TEST(Directory, list_gives_up_to_max_names_of_files_and_directories)
{
    const Temporary_folder folder;
    for (const wchar_t* name : {L"1.x", L"2.x", L"3.x", L"4.y"}) {
        folder.file(name, "");
    }
    Tam_status status;
    Tam_directory::create(folder / L"5.x", status);
    const struct {
        const wchar_t* mask;
        unsigned int max;
        unsigned int count;
    } rows[] = {
        {L"*", ALL, 5},   {L"*", ALL - 1, 5}, {L"*", 6, 5},         {L"*", 5, 5},       {L"*", 2, 2},  {L"*", 0, 0},
        {L"*.x", ALL, 4}, {L"4.y", 1, 1},     {L"none\\*", ALL, 0}, {L"none*", ALL, 0}, {L"", ALL, 0},
    };
    Tam_object_vector<std::wstring> names;
    for (const auto& row : rows) {
        Tam_directory::list(folder / row.mask, names, row.max);
        EXPECT_EQ(names.size(), row.count) << row.max;
    }
    names.push_back(folder / L"5.?");
    Tam_directory::list(names.front(), names, ALL);
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(names.front(), L"5.x");
}

TEST(Directory, exist_asks_for_anything_that_matches)
{
    const Temporary_folder folder;
    EXPECT_FALSE(Tam_directory::exist(folder / L"*"));
    EXPECT_TRUE(Tam_directory::exist(folder.path()));
    EXPECT_FALSE(Tam_directory::exist(folder / L"")); // a name is missing behind the separator
    folder.file(L"f.txt", "");
    EXPECT_TRUE(Tam_directory::exist(folder / L"f.txt"));
    EXPECT_TRUE(Tam_directory::exist(folder / L".\\sub\\..\\*.txt"));
    EXPECT_FALSE(Tam_directory::exist(folder / L"*.bin"));
    EXPECT_FALSE(Tam_directory::exist(folder / L"none\\*"));

    wchar_t before[MAX_PATH];
    ::GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(::SetCurrentDirectoryW(folder.path().c_str()));
    const bool relative = Tam_directory::exist(L"f.txt");
    ::SetCurrentDirectoryW(before);
    EXPECT_TRUE(relative);
}

namespace {

// The value TMP of the default user's environment, for the length of a scope. Makes the key if there is none.
class Default_user_temp {
public:
    Default_user_temp(DWORD type, const std::wstring& text, bool terminated)
    {
        DWORD disposition = 0;
        if (::RegCreateKeyExW(HKEY_USERS, KEY, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_key, &disposition) !=
            ERROR_SUCCESS) {
            return;
        }
        m_created = disposition == REG_CREATED_NEW_KEY;
        const DWORD size_bytes = static_cast<DWORD>((text.size() + (terminated ? 1 : 0)) * sizeof(wchar_t));
        m_set = ::RegSetValueExW(m_key, L"TMP", 0, type, reinterpret_cast<const BYTE*>(text.c_str()), size_bytes) ==
                ERROR_SUCCESS;
    }
    ~Default_user_temp()
    {
        if (m_key != nullptr) {
            ::RegDeleteValueW(m_key, L"TMP");
            ::RegCloseKey(m_key);
        }
        if (m_created) {
            ::RegDeleteKeyW(HKEY_USERS, KEY);
        }
    }
    Default_user_temp(const Default_user_temp&) = delete;
    Default_user_temp& operator=(const Default_user_temp&) = delete;

    bool is_set() const { return m_set; }

    static bool exists()
    {
        DWORD size_bytes = 0;
        return ::RegGetValueW(HKEY_USERS, KEY, L"TMP", RRF_RT_ANY, nullptr, nullptr, &size_bytes) == ERROR_SUCCESS;
    }

private:
    static constexpr wchar_t KEY[] = L".DEFAULT\\Environment";
    HKEY m_key = nullptr;
    bool m_created = false;
    bool m_set = false;
};

// What a new process takes as the temporary directory, with TMP set to that text or, for null, not set.
std::wstring temp_directory_of_child(const wchar_t* tmp)
{
    const Temporary_folder folder;
    wchar_t before[MAX_PATH];
    ::GetEnvironmentVariableW(L"TMP", before, MAX_PATH);
    ::SetEnvironmentVariableW(L"TMP", tmp);
    const std::wstring path = folder / L"out";
    const DWORD code = tam::test::run_child(L"temp_directory_child", L"\"" + path + L"\"");
    ::SetEnvironmentVariableW(L"TMP", before);
    const std::string bytes = Temporary_folder::bytes_of(path);
    std::wstring both(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(both.data(), bytes.data(), bytes.size());
    const std::wstring first(both.c_str());
    return code == 0 && both == first + L'\0' + first + L'\0' ? first : L"failed";
}

} // namespace

TEST(Directory, temp_directory_is_tmp_in_directory_form_and_stays)
{
    EXPECT_EQ(temp_directory_of_child(L"C:\\a\\.\\b"), L"C:\\a\\b\\");
    const std::wstring deep = L"C:\\" + std::wstring(3000, L'x');
    EXPECT_EQ(temp_directory_of_child(deep.c_str()), deep + L"\\");
}

TEST(Directory, temp_directory_without_tmp_comes_from_the_default_user)
{
    if (Default_user_temp::exists()) {
        GTEST_SKIP() << "the default user has a TMP of its own";
    }
    EXPECT_EQ(temp_directory_of_child(nullptr), L"C:\\");
    wchar_t root[MAX_PATH];
    ::GetEnvironmentVariableW(L"SystemRoot", root, MAX_PATH);
    const std::wstring deep = L"D:\\" + std::wstring(300, L'y');
    const struct {
        DWORD type;
        std::wstring text;
        bool terminated;
        std::wstring directory;
    } rows[] = {
        {REG_SZ, L"D:\\plain", true, L"D:\\plain\\"},
        {REG_SZ, L"D:\\bare", false, L"D:\\bare\\"},
        {REG_SZ, deep, true, deep + L"\\"},
        {REG_SZ, L"%SystemRoot%\\t", true, L"%SystemRoot%\\t\\"},
        {REG_EXPAND_SZ, L"%SystemRoot%\\t", true, std::wstring(root) + L"\\t\\"},
        {REG_EXPAND_SZ, deep, true, deep.substr(0, 255) + L"\\"},
        {REG_BINARY, L"D:\\binary", true, L"C:\\"},
    };
    for (const auto& row : rows) {
        const Default_user_temp value(row.type, row.text, row.terminated);
        if (!value.is_set()) {
            GTEST_SKIP() << "the default user's registry cannot be written";
        }
        EXPECT_EQ(temp_directory_of_child(nullptr), row.directory);
    }
    const Default_user_temp value(REG_SZ, L"D:\\second", true);
    EXPECT_EQ(temp_directory_of_child(L"E:\\first"), L"E:\\first\\");
}
