#include <tests/support/test.h>

#include <tests/config/file_operations.h>
#include <tests/support/failing_new.h>
#include <tests/support/registry_branch.h>
#include <tests/support/run_child.h>

namespace tam {
namespace {

using test::bytes_of;
using test::chain;
using test::File_operation;
using test::Temporary_folder;

// A profile that is copied in several pieces, and gets one more section.
struct Profile_files {
    Profile_files()
    {
        for (int i = 0; i < 1500; ++i) {
            written += L"k" + std::to_wstring(i) + L"=value\r\n";
        }
        old_bytes = bytes_of(L"; lost\n[S]\n" + written);
        new_bytes = bytes_of(L"[S]\r\n" + written + L"\r\n[New]\r\n\r\n");
        reset();
    }

    void reset() const
    {
        folder.file(L"profile.ini", old_bytes);
        folder.file(L"profile.bak", EARLIER);
    }

    std::string file() const { return Temporary_folder::bytes_of(path); }
    std::string backup() const { return Temporary_folder::bytes_of(folder / L"profile.bak"); }
    bool has_backup() const
    {
        return ::GetFileAttributesW((folder / L"profile.bak").c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    // All files in the folder, and forgets those with names that are not the profile's.
    unsigned int count_files() const
    {
        unsigned int files = 0;
        WIN32_FIND_DATAW found;
        const HANDLE search = ::FindFirstFileW((folder / L"*").c_str(), &found);
        do {
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                ++files;
                if (!std::wstring(found.cFileName).starts_with(L"profile.")) {
                    ::DeleteFileW((folder / found.cFileName).c_str());
                }
            }
        } while (::FindNextFileW(search, &found));
        ::FindClose(search);
        return files;
    }

    static inline const std::string EARLIER = "the earlier backup";

    const Temporary_folder folder;
    const std::wstring path = folder / L"profile.ini";
    std::wstring written;
    std::string old_bytes;
    std::string new_bytes;
};

constexpr DWORD KILLED = 77;

// Kills the child at its first, second, third ... operation until it gets through; what says whether a killed one has left
// the file in a state that is neither the old nor the new one. Gives the number of those, and of all.
template <class What>
std::pair<unsigned int, unsigned int> kill_at_each_operation(const Profile_files& files, const std::wstring& task,
                                                             const What& is_torn)
{
    std::pair<unsigned int, unsigned int> torn_of{0, 0};
    for (DWORD code = KILLED; code == KILLED;) {
        SCOPED_TRACE(++torn_of.second);
        files.reset();
        code = test::run_child(L"config_crash_child",
                               L"\"" + files.path + L"\" " + task + L" " + std::to_wstring(torn_of.second));
        EXPECT_TRUE(code == KILLED || code == 0) << code;
        if (is_torn()) {
            ++torn_of.first;
            EXPECT_TRUE(files.backup() == files.old_bytes);
        }
        if (testing::Test::HasFailure()) {
            break;
        }
    }
    return torn_of;
}

TEST(Profile_access_crash, a_killed_commit_leaves_old_or_new_contents_in_file_or_backup)
{
    const Profile_files files;
    const auto [torn, of] = kill_at_each_operation(files, L"commit", [&] {
        const bool is_torn = files.file() != files.old_bytes && files.file() != files.new_bytes;
        files.count_files(); // an earlier backup may have been left aside
        Tam_status status;
        Tam_profile_access after(is_torn ? files.folder / L"profile.bak" : files.path, TAM_FILE_OPEN_EXISTING,
                                 TAM_FILE_READ, status);
        after.set_current_section(L"S", status);
        after.move_to_key(L"k1499", status);
        EXPECT_EQ(chain(status), L"");
        return is_torn;
    });
    EXPECT_TRUE(files.file() == files.new_bytes) << "by the child that was not killed";
    EXPECT_TRUE(files.backup() == files.old_bytes);
    EXPECT_GE(of, 12U);
    EXPECT_GE(torn, 1U) << "otherwise the test shows little";
}

TEST(Profile_access_crash, a_killed_rollback_leaves_the_backup_or_the_old_contents)
{
    const Profile_files files;
    const auto [torn, of] = kill_at_each_operation(files, L"rollback", [&] { return files.file() != files.old_bytes; });
    EXPECT_TRUE(files.file() == files.old_bytes);
    EXPECT_FALSE(files.has_backup());
    EXPECT_GE(of, 5U);
    EXPECT_GE(torn, 1U);
}

unsigned int operations;
unsigned int first_refused;
unsigned int last_refused;
bool writes_only;
File_operation refused;

bool refuse_some(File_operation operation)
{
    if (writes_only && operation != File_operation::WRITE) {
        return true;
    }
    ++operations;
    if (operations < first_refused || operations > last_refused) {
        return true;
    }
    refused = operation;
    return false;
}

void refuse(unsigned int first, unsigned int last)
{
    operations = 0;
    first_refused = first;
    last_refused = last;
}

TEST(Profile_access_failures, one_that_stops_a_commit_leaves_everything_as_it_was)
{
    const Profile_files files;
    unsigned int handles = 0;
    unsigned int nth = 1;
    writes_only = false;
    for (bool was_refused = true; was_refused; ++nth) {
        SCOPED_TRACE(nth);
        files.reset();
        Tam_status status;
        Tam_profile_access profile(files.path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
        profile.create_new_section(L"New", status);
        ASSERT_EQ(chain(status), L"");
        {
            const test::File_operations watched(&refuse_some);
            refuse(nth, nth);
            profile.commit_changes(status);
            was_refused = operations >= nth;
        }
        if (nth == 1) { // what the run-time opens once is open now
            handles = test::open_handles();
        }
        ASSERT_EQ(test::open_handles(), handles);
        if (!was_refused || refused == File_operation::REMOVE) {
            ASSERT_EQ(chain(status), L"");
            ASSERT_TRUE(files.file() == files.new_bytes);
            ASSERT_TRUE(files.backup() == files.old_bytes);
            ASSERT_EQ(files.count_files(), was_refused ? 3U : 2U) << "the earlier backup could not be removed";
            continue;
        }
        ASSERT_TRUE(chain(status).ends_with(L" 112")) << chain(status);
        ASSERT_TRUE(files.file() == files.old_bytes) << chain(status);
        ASSERT_TRUE(files.backup() == Profile_files::EARLIER || files.backup() == files.old_bytes) << chain(status);
        ASSERT_EQ(files.count_files(), 2U);
        profile.commit_changes(status);
        ASSERT_EQ(chain(status), L"");
        ASSERT_TRUE(files.file() == files.new_bytes);
        profile.rollback(status);
        ASSERT_TRUE(files.file() == files.old_bytes);
        ASSERT_FALSE(files.has_backup());
    }
    EXPECT_GT(nth, 25U);
}

// The disk is full from the nth write or operation on, also for what would put things right.
TEST(Profile_access_failures, lasting_ones_lose_nothing)
{
    const Profile_files files;
    unsigned int torn = 0;
    for (const bool full_disk : {true, false}) {
        writes_only = full_disk;
        for (const int mending : {0, 1, 2}) {
            bool was_refused = true;
            for (unsigned int nth = 1; was_refused; ++nth) {
                SCOPED_TRACE(std::to_string(full_disk) + " " + std::to_string(mending) + " " + std::to_string(nth));
                files.reset();
                Tam_status status;
                Tam_profile_access profile(files.path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
                profile.create_new_section(L"New", status);
                {
                    const test::File_operations watched(&refuse_some);
                    refuse(nth, ~0U);
                    profile.commit_changes(status);
                    was_refused = operations >= nth;
                    if (was_refused && !status.ok()) {
                        ASSERT_TRUE(chain(status).ends_with(L" 112")) << chain(status);
                        ASSERT_TRUE(files.file() == files.old_bytes || files.backup() == files.old_bytes);
                        torn += files.file() == files.old_bytes ? 0 : 1;
                        profile.commit_changes(status); // no better
                        ASSERT_FALSE(status.ok());
                        profile.rollback(status);
                        ASSERT_TRUE(files.file() == files.old_bytes || files.backup() == files.old_bytes);
                    }
                }
                if (mending == 0 && was_refused) {
                    profile.create_new_section(L"End", status); // a rollback may have read the file
                    profile.set_current_section(L"End", status);
                    profile.delete_section(status);
                    profile.commit_changes(status);
                    ASSERT_EQ(chain(status), L"");
                    ASSERT_TRUE(files.backup() == files.old_bytes);
                    profile.rollback(status);
                } else if (mending == 1) {
                    profile.abort_changes(status);
                } else {
                    profile.rollback(status);
                }
                ASSERT_EQ(chain(status), L"");
                if (mending != 1) {
                    ASSERT_TRUE(files.file() == files.old_bytes);
                } else {
                    ASSERT_TRUE(files.file() == files.old_bytes || files.file() == files.new_bytes);
                }
                profile.set_current_section(L"S", status);
                profile.move_to_key(L"k1499", status);
                ASSERT_EQ(chain(status), L"");
                files.count_files();
            }
        }
    }
    EXPECT_GT(torn, 10U) << "otherwise the test shows little";
}

TEST(Profile_access_failures, of_reading_leave_what_was_there)
{
    const Profile_files files;
    Tam_status status;
    Tam_profile_access profile(files.path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
    profile.create_new_section(L"New", status);
    writes_only = false;
    {
        const test::File_operations watched(&refuse_some);
        refuse(4, 4); // the second read: each comes with a seek
        profile.abort_changes(status);
        EXPECT_EQ(chain(status), L"C2000058(S, " + files.path + L") C200001B 112");
    }
    profile.set_current_section(L"New", status);
    EXPECT_EQ(chain(status), L"") << "the edits are still there";
    const unsigned int handles = test::open_handles();
    {
        const test::File_operations watched(&refuse_some);
        refuse(4, 4); // after CreateFile and a seek
        profile.close(status);
        profile.open(files.path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status);
        EXPECT_EQ(chain(status), L"C2000058(S, " + files.path + L") C2000027 112");
    }
    EXPECT_EQ(test::open_handles() + 1, handles);
    profile.commit_changes(status);
    EXPECT_EQ(chain(status), L"C200005B");
    EXPECT_TRUE(files.file() == files.old_bytes);
}

TEST(Profile_access_failures, memory_that_runs_out_is_reported)
{
    const Profile_files files;
    const std::wstring name = L"a section with a name that is long";
    const std::wstring new_name = L"another section with a name that is long";
    const std::pair<std::wstring, std::wstring> given(L"a key that takes some memory", L"a value that is long, too");
    std::pair<std::wstring, std::wstring> read;
    Tam_object_vector<std::wstring> names;
    Tam_status status;
    Tam_profile_access profile;
    const std::vector<std::function<void()>> operations_in_turn = {
        [&] { profile.open(files.path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, status); },
        [&] { profile.create_new_section(name, status); },
        [&] { profile.set_current_section(name, status); },
        [&] { profile.insert_entry(given, status); },
        [&] { profile.get_current_entry(read, status); },
        [&] { profile.get_section_list(names, status); },
        [&] { profile.commit_changes(status); },
        [&] { profile.copy_section(new_name, status); },
        [&] { profile.abort_changes(status); },
        [&] { profile.set_current_section(name, status); },
        [&] { profile.delete_entry(status); },
        [&] { profile.rename_section(new_name, status); },
        [&] { profile.commit_changes(status); },
        [&] { profile.rollback(status); },
    };
    const auto root = [&] {
        const Tam_status* reason = &status;
        while (reason->has_child()) {
            reason = reason->child();
        }
        return reason->value();
    };
    files.folder.file(L"profile.ini", bytes_of(L"[S]\r\nkey=" + std::wstring(100, L'x')));
    unsigned int failures = 0;
    for (std::size_t i = 0; i < operations_in_turn.size(); ++i) {
        for (unsigned int nth = 1; nth < 1000; ++nth) {
            bool failed = false;
            {
                const test::Failing_new failing(nth);
                operations_in_turn[i]();
                failed = failing.failed();
            }
            if (!failed || status.ok()) {
                break; // done, perhaps without something that is not needed
            }
            ++failures;
            ASSERT_EQ(root(), 0xC2000001) << i << " " << nth << " " << chain(status);
        }
        ASSERT_EQ(chain(status), L"") << i;
    }
    EXPECT_GT(failures, 30U);
    EXPECT_EQ(read, given);
    EXPECT_EQ(names.size(), 2U);
    profile.set_current_section(name, status);
    profile.move_to_key(given.first, status);
    EXPECT_EQ(chain(status), L"") << "rolled back to the first commit";
}

} // namespace
} // namespace tam
