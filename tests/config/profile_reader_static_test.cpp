#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/support/failing_new.h>

namespace tam {
namespace {

using test::chain;

std::wstring profile(const test::Temporary_folder& folder, int lines)
{
    std::wstring text;
    for (int i = 0; i < lines; ++i) {
        text += (i == 10 ? L"[Long section]\n" : L"a key = and a value that is long\n");
    }
    return folder.file(L"profile.ini", {reinterpret_cast<const char*>(text.data()), text.size() * 2});
}

unsigned int reads_until_failure;

BOOL WINAPI failing_read(HANDLE file, void* destination, DWORD count, DWORD* done, OVERLAPPED* overlapped)
{
    if (reads_until_failure == 0) {
        ::SetLastError(ERROR_CRC);
        return FALSE;
    }
    --reads_until_failure;
    return ::ReadFile(file, destination, count, done, overlapped);
}

// The file has six blocks of 16384 bytes, and a read at its end.
TEST(Profile_reader_failures, a_read_that_fails_while_sections_are_sought_fails_the_opening)
{
    const test::Temporary_folder folder;
    const std::wstring path = profile(folder, 1500);
    const test::Swap guard(detail::win32.read_file, &failing_read);
    for (unsigned int reads = 0; reads < 6; ++reads) {
        const unsigned int handles = test::open_handles();
        Tam_status status;
        reads_until_failure = reads;
        Tam_profile_reader reader(path, status);
        EXPECT_EQ(chain(status), L"C2000059(" + path + L") C200001B 23") << reads;
        EXPECT_EQ(test::open_handles(), handles + 1) << "nothing but the buffer's mutex is open";
        reader.set_current_section(L"Long section", status);
        EXPECT_EQ(chain(status), L"C200004F(" + path + L")");
    }
}

TEST(Profile_reader_failures, a_read_that_fails_in_a_section_leaves_it_empty)
{
    const test::Temporary_folder folder;
    const std::wstring path = profile(folder, 1500);
    const test::Swap guard(detail::win32.read_file, &failing_read);
    reads_until_failure = ~0U;
    Tam_status status;
    Tam_profile_reader reader(path, status);
    ASSERT_EQ(chain(status), L"");
    for (unsigned int reads = 0; reads < 6; ++reads) {
        reads_until_failure = reads;
        reader.set_current_section(L"Long section", status);
        EXPECT_EQ(chain(status), L"C2000058(Long section, " + path + L") C200001B 23") << reads;
        EXPECT_TRUE(reader.end_of_entries());
    }
    reads_until_failure = ~0U;
    reader.set_current_section(L"Long section", status);
    EXPECT_EQ(chain(status), L"");
    EXPECT_FALSE(reader.end_of_entries());
}

TEST(Profile_reader_failures, memory_that_runs_out_is_reported)
{
    const test::Temporary_folder folder;
    const std::wstring path = profile(folder, 30);
    const std::wstring section = L"Long section";
    unsigned int handles = 0;
    unsigned int reports = 0;
    unsigned int nth = 1;
    for (bool failed = true; failed; ++nth) {
        ASSERT_LT(nth, 1000U);
        Tam_status status;
        Tam_profile_reader reader;
        std::pair<std::wstring, std::wstring> entry;
        Tam_object_vector<std::wstring> names;
        {
            const test::Failing_new failing(nth);
            reader.open(path, status);
            if (status.ok()) {
                reader.get_section_list(names, status);
            }
            if (status.ok()) {
                reader.set_current_section(section, status);
            }
            if (status.ok()) {
                reader.get_current_entry(entry, status);
            }
            failed = failing.failed();
        }
        const Tam_status* reason = &status;
        while (reason->has_child()) {
            reason = reason->child();
        }
        if (reason->value() == 0xC2000001) {
            ++reports;
        } else {
            // Nothing failed, or only what was not needed: giving back spare memory.
            ASSERT_EQ(chain(status), L"") << "allocation " << nth;
            ASSERT_EQ(entry.second, L"and a value that is long") << "allocation " << nth;
        }
        reader.set_current_section(section, status);
        ASSERT_TRUE(status.ok() || status == 0xC200004F) << "allocation " << nth;
        reader.close(status);
        if (nth == 1) { // the first exception opens handles of the run-time's own
            handles = test::open_handles();
        }
    }
    EXPECT_GT(nth, 30U);
    EXPECT_GE(reports, nth - 3) << "of nth - 2 failures";
    EXPECT_EQ(test::open_handles() + 1, handles) << "the buffer of the first reader had a mutex";
}

} // namespace
} // namespace tam
