#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/support/failing_new.h>

namespace tam {
namespace {

using test::chain;
using test::Swap;

constexpr unsigned int BLOCK = 8192;
constexpr unsigned int LIMIT = 2;
const std::wstring REASON = std::to_wstring(ERROR_DISK_FULL);

// How many calls of a function fail, with ERROR_DISK_FULL, or transfer no more than so many bytes without an error.
struct Faults {
    unsigned int fail = 0;
    std::optional<DWORD> done;
    unsigned int calls = 0;

    bool next()
    {
        ++calls;
        if (fail == 0) {
            return false;
        }
        --fail;
        ::SetLastError(ERROR_DISK_FULL);
        return true;
    }
};

Faults g_create;
Faults g_write;
Faults g_read;
Faults g_seek;
Faults g_alloc;
std::wstring g_swap_path;
DWORD g_created_with[4];
void* g_region;
unsigned int g_regions;

HANDLE WINAPI create_file(const wchar_t* path, DWORD rights, DWORD sharing, SECURITY_ATTRIBUTES* attributes,
                          DWORD disposition, DWORD flags, HANDLE model)
{
    g_swap_path = path;
    const DWORD arguments[] = {rights, sharing, disposition, flags};
    std::copy(std::begin(arguments), std::end(arguments), g_created_with);
    return g_create.next() ? INVALID_HANDLE_VALUE
                           : ::CreateFileW(path, rights, sharing, attributes, disposition, flags, model);
}

BOOL WINAPI write_file(HANDLE file, const void* source, DWORD count, DWORD* done, OVERLAPPED* overlapped)
{
    if (!g_write.next()) {
        return ::WriteFile(file, source, count, done, overlapped);
    }
    return g_write.done && ::WriteFile(file, source, *g_write.done, done, overlapped);
}

BOOL WINAPI read_file(HANDLE file, void* destination, DWORD count, DWORD* done, OVERLAPPED* overlapped)
{
    if (!g_read.next()) {
        return ::ReadFile(file, destination, count, done, overlapped);
    }
    std::fill_n(static_cast<char*>(destination), count, '#');
    return g_read.done && ::ReadFile(file, destination, *g_read.done, done, overlapped);
}

BOOL WINAPI set_file_pointer(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method)
{
    return !g_seek.next() && ::SetFilePointerEx(file, distance, position, method);
}

void* WINAPI virtual_alloc(void* address, SIZE_T size, DWORD type, DWORD protection)
{
    if (g_alloc.next()) {
        return nullptr;
    }
    void* const memory = ::VirtualAlloc(address, size, type, protection);
    if (type == MEM_RESERVE) {
        g_region = memory;
        ++g_regions;
        EXPECT_TRUE(size == LIMIT * BLOCK && protection == PAGE_READWRITE);
    } else {
        const SIZE_T offset = static_cast<std::size_t>(static_cast<char*>(address) - static_cast<char*>(g_region));
        EXPECT_TRUE(offset < LIMIT * BLOCK && offset % BLOCK == 0 && size == BLOCK && type == MEM_COMMIT);
    }
    return memory;
}

BOOL WINAPI virtual_free(void* address, SIZE_T size, DWORD type)
{
    EXPECT_TRUE(address == g_region && size == 0 && type == MEM_RELEASE);
    --g_regions;
    return ::VirtualFree(address, size, type);
}

std::string block_of(unsigned int index)
{
    return std::string(BLOCK, static_cast<char>('a' + index));
}

// The twins share what is tested here.
class Page_buffer_calls : public testing::Test {
protected:
    Page_buffer_calls()
    {
        for (Faults* const faults : {&g_create, &g_write, &g_read, &g_seek, &g_alloc}) {
            *faults = {};
        }
        m_buffer.emplace(0, LIMIT);
    }

    ~Page_buffer_calls() override
    {
        m_buffer.reset();
        EXPECT_EQ(g_regions, 0U);
        EXPECT_TRUE(g_swap_path.empty() || !test::Temporary_folder::exists(g_swap_path));
        g_swap_path.clear();
    }

    std::wstring write(unsigned int index)
    {
        const std::string bytes = block_of(index);
        unsigned long long position = 1ULL * index * BLOCK;
        m_status = 5U;
        m_buffer->write(position, BLOCK, bytes.data(), m_status);
        EXPECT_EQ(position, (index + (m_status.ok() ? 1ULL : 0ULL)) * BLOCK);
        return chain(m_status);
    }

    void write_all(unsigned int count)
    {
        for (unsigned int i = 0; i < count; ++i) {
            EXPECT_EQ(write(i), L"") << i;
        }
    }

    // Blocks 0 to count - 1 are as written.
    void expect_all(unsigned int count)
    {
        for (unsigned int i = 0; i < count; ++i) {
            unsigned long long position = 1ULL * i * BLOCK;
            std::string bytes(BLOCK, '?');
            EXPECT_EQ(m_buffer->read(false, position, BLOCK, bytes.data(), m_status), BLOCK);
            EXPECT_EQ(chain(m_status), L"");
            EXPECT_TRUE(bytes == block_of(i)) << i;
        }
    }

    const Swap<decltype(detail::win32.create_file)> m_create{detail::win32.create_file, &create_file};
    const Swap<decltype(detail::win32.write_file)> m_write{detail::win32.write_file, &write_file};
    const Swap<decltype(detail::win32.read_file)> m_read{detail::win32.read_file, &read_file};
    const Swap<decltype(detail::win32.set_file_pointer_ex)> m_seek{detail::win32.set_file_pointer_ex,
                                                                   &set_file_pointer};
    const Swap<decltype(detail::win32.virtual_alloc)> m_alloc{detail::win32.virtual_alloc, &virtual_alloc};
    const Swap<decltype(detail::win32.virtual_free)> m_free{detail::win32.virtual_free, &virtual_free};
    Tam_status m_status;
    std::optional<Tam_page_buffer> m_buffer;
};

// What a transfer of the swap file can suffer, with the chain that it gives.
struct Transfer_fault {
    Faults& faults;
    std::optional<DWORD> done;
    std::wstring expected;
};

} // namespace

TEST_F(Page_buffer_calls, the_swap_file_lives_from_the_first_eviction_to_the_destructor)
{
    write_all(LIMIT);
    EXPECT_EQ(g_create.calls, 0U);
    EXPECT_EQ(write(LIMIT), L"");
    EXPECT_EQ(g_create.calls, 1U);
    EXPECT_EQ(g_created_with[0], GENERIC_READ | GENERIC_WRITE);
    EXPECT_EQ(g_created_with[1], 0U);
    EXPECT_EQ(g_created_with[2], DWORD{CREATE_NEW});
    EXPECT_EQ(g_created_with[3], DWORD{FILE_FLAG_RANDOM_ACCESS});
    EXPECT_EQ(g_swap_path.substr(g_swap_path.size() - 4), L".buf");
    EXPECT_TRUE(test::Temporary_folder::exists(g_swap_path));
}

// Blocks 0 and 1 are written once, in the order of eviction; block 2, the last, is dirty until it leaves.
TEST_F(Page_buffer_calls, a_block_is_written_to_the_swap_file_once)
{
    write_all(3);
    EXPECT_EQ(g_write.calls, 1U);
    expect_all(3);
    expect_all(3);
    EXPECT_EQ(g_write.calls, 3U);
    write_all(3);
    EXPECT_EQ(g_write.calls, 3U);
    EXPECT_EQ(g_create.calls, 1U);
}

TEST_F(Page_buffer_calls, a_swap_file_that_cannot_be_opened_fails_the_write_and_nothing_else)
{
    write_all(LIMIT);
    const auto expected = [](DWORD reason) {
        return L"C200001A C2000026(" + g_swap_path + L") " + std::to_wstring(reason);
    };
    g_create.fail = 1;
    std::wstring found = write(LIMIT);
    EXPECT_EQ(found, expected(ERROR_DISK_FULL));
    {
        const Swap vanished(
            detail::win32.create_file,
            +[](const wchar_t* path, DWORD rights, DWORD sharing, SECURITY_ATTRIBUTES* attributes, DWORD disposition,
                DWORD flags, HANDLE model) WINAPI -> HANDLE {
                g_swap_path = path;
                return ::CreateFileW((g_swap_path + L".gone\\x").c_str(), rights, sharing, attributes, disposition,
                                     flags, model);
            });
        found = write(LIMIT);
        EXPECT_EQ(found, expected(ERROR_PATH_NOT_FOUND));
    }
    {
        const auto no_turn = test::failing<0, WAIT_FAILED>(detail::win32.wait_for_single_object);
        EXPECT_EQ(write(LIMIT), L"C200001A");
    }
    expect_all(LIMIT);
    EXPECT_EQ(write(LIMIT), L"");
    expect_all(LIMIT + 1);
}

TEST_F(Page_buffer_calls, a_block_that_cannot_be_swapped_out_stays_and_is_swapped_out_later)
{
    const Transfer_fault cases[] = {
        {g_seek, {}, L"C200001A C2000027 " + REASON},
        {g_write, {}, L"C200001A " + REASON},
        {g_write, 1000, L"C200001A"},
    };
    for (const Transfer_fault& c : cases) {
        SCOPED_TRACE(testing::Message() << &c - cases);
        m_buffer.reset();
        m_buffer.emplace(0, LIMIT);
        write_all(LIMIT + 1);
        expect_all(1); // the file's position is not at the end now
        c.faults = {3, c.done};
        for (unsigned int i = 0; i < 3; ++i) {
            EXPECT_EQ(write(LIMIT + 1), c.expected);
        }
        expect_all(LIMIT + 1);
        EXPECT_EQ(write(LIMIT + 1), L"");
        // A read has the same trouble with the last dirty block, and tries until it succeeds.
        c.faults = {5, c.done};
        expect_all(LIMIT + 2);
        EXPECT_EQ(c.faults.fail, 0U);
        write_all(2 * LIMIT);
        expect_all(2 * LIMIT);
    }
}

TEST_F(Page_buffer_calls, a_block_that_cannot_be_swapped_in_keeps_its_copy_and_the_memory_taken_for_it)
{
    const Transfer_fault cases[] = {
        {g_seek, {}, L"C200001A C2000027 " + REASON},
        {g_read, {}, L"C200001A C200001B " + REASON},
        {g_read, 1000, L"C200001A"},
        {g_read, 0, L"C200001A C2000019"},
    };
    for (const Transfer_fault& c : cases) {
        SCOPED_TRACE(testing::Message() << &c - cases);
        m_buffer.reset();
        m_buffer.emplace(0, LIMIT);
        write_all(LIMIT + 1);
        c.faults = {3, c.done};
        for (unsigned int i = 0; i < 3; ++i) {
            EXPECT_EQ(write(0), c.expected);
        }
        const unsigned int writes = g_write.calls;
        expect_all(1); // without another eviction
        EXPECT_EQ(g_write.calls, writes);
        expect_all(LIMIT + 1);
        c.faults = {5, c.done};
        expect_all(LIMIT + 1);
        EXPECT_EQ(c.faults.fail, 0U);
        write_all(2 * LIMIT);
        expect_all(2 * LIMIT);
    }
}

TEST_F(Page_buffer_calls, memory_is_committed_at_its_own_place_and_only_there)
{
    g_alloc.fail = 1;
    EXPECT_EQ(write(1), L"C2000001 " + REASON);
    EXPECT_EQ(write(1), L"");
    g_alloc = {};
    EXPECT_EQ(write(LIMIT), L"C2000001");
    EXPECT_EQ(g_alloc.calls, 0U);
    write_all(2 * LIMIT);
    EXPECT_EQ(g_alloc.calls, 1U);
    expect_all(2 * LIMIT);

    m_buffer.reset();
    g_alloc = {};
    g_alloc.fail = 1;
    m_buffer.emplace(0, LIMIT);
    EXPECT_EQ(write(0), L"C2000001");
    EXPECT_EQ(write(LIMIT), L"C2000001");
    EXPECT_EQ(g_alloc.calls, 1U);
    unsigned long long position = 0;
    m_buffer->seek(TAM_SEEK_END, 0, position, m_status);
    EXPECT_EQ(position, 0U);
}

TEST_F(Page_buffer_calls, an_allocation_that_fails_is_a_status_and_loses_nothing)
{
    const std::string bytes = block_of(0) + block_of(1) + block_of(2);
    const auto fail_each = [&] {
        unsigned long long position = 0;
        const unsigned int failures = test::fail_each_allocation(
            [&] {
                m_buffer.emplace(0, LIMIT);
                position = 0;
            },
            [&] { m_buffer->write(position, 3 * BLOCK, bytes.data(), m_status); },
            [&](unsigned int nth, bool) {
                EXPECT_EQ(chain(m_status), L"C2000001") << nth;
                EXPECT_EQ(position % BLOCK, 0U);
                expect_all(static_cast<unsigned int>(position / BLOCK));
                write_all(3);
                expect_all(3);
            });
        EXPECT_GT(failures, 2U);
        EXPECT_EQ(chain(m_status), L"");
        m_buffer.reset();
        EXPECT_FALSE(test::Temporary_folder::exists(g_swap_path));
        m_status.clear();
    };
    fail_each(); // the system keeps something from the first time
    const long long blocks = test::live_blocks();
    const unsigned int handles = test::open_handles();
    fail_each();
    EXPECT_EQ(test::live_blocks(), blocks);
    EXPECT_EQ(test::open_handles(), handles);
}

} // namespace tam
