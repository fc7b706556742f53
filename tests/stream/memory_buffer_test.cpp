#include <tests/support/test.h>

#include <tests/stream/buffer_model.h>
#include <tests/stream/follow.h>

namespace tam {
namespace {

using test::Buffer_model;
using test::Buffer_rules;
using test::Buffer_walk;
using test::chain;

constexpr unsigned long long GIB = 1ULL << 30;

// Both buffers promise the same to one thread.
template <class Buffer>
class Memory_buffer : public testing::Test {
protected:
    void write(unsigned long long position, const std::string& bytes)
    {
        m_position = position;
        m_buffer.write(m_position, static_cast<unsigned int>(bytes.size()), bytes.data(), m_status);
    }

    std::string read(unsigned long long position, unsigned int count)
    {
        m_position = position;
        std::string bytes(count, '?');
        bytes.resize(m_buffer.read(false, m_position, count, bytes.data(), m_status));
        return bytes;
    }

    unsigned long long length()
    {
        unsigned long long end = 0;
        m_buffer.seek(TAM_SEEK_END, 0, end, m_status);
        return end;
    }

    Buffer m_buffer;
    Tam_status m_status;
    unsigned long long m_position = 0;
};

using Buffers = testing::Types<Tam_memory_buffer, Tam_memory_buffer_mt>;
TYPED_TEST_SUITE(Memory_buffer, Buffers);

TYPED_TEST(Memory_buffer, does_what_its_model_does)
{
    Buffer_rules rules;
    rules.empty_read_is_the_end = true;
    Buffer_model model(rules);
    Buffer_walk(this->m_buffer, model).run(2000);
}

// Nobody has a terabyte to give; at the other positions no table can be large enough, and the last three overflow.
TYPED_TEST(Memory_buffer, refuses_positions_that_are_too_large)
{
    this->write(0, "abc");
    for (const unsigned long long position :
         {1ULL << 40, (1ULL << 43) - 4096, 1ULL << 43, 1ULL << 44, (1ULL << 63) - 1, 0ULL - 4096, 0ULL - 2, 0ULL - 1}) {
        SCOPED_TRACE(position);
        this->write(position, "xy");
        EXPECT_EQ(chain(this->m_status), L"C200001A C2000001");
        EXPECT_EQ(this->m_position, position);
    }
    EXPECT_EQ(this->length(), 3U);
    this->write(3, "d");
    EXPECT_EQ(this->read(0, 9), "abcd");
}

// What lies between is never touched, so that it takes no memory where the system gives none out before it is used.
TYPED_TEST(Memory_buffer, counts_what_is_left_in_32_bits_unless_it_is_for_threads)
{
    constexpr bool FOR_THREADS = std::is_same_v<TypeParam, Tam_memory_buffer_mt>;
    this->write(0, "abcdefgh");
    this->write(4 * GIB + 4, "xyz");
    if (!this->m_status.ok()) {
        GTEST_SKIP() << "4 GiB are too much for this system";
    }
    EXPECT_EQ(this->length(), 4 * GIB + 7);
    EXPECT_EQ(this->read(0, 8), FOR_THREADS ? "abcdefgh" : "abcdefg");
    EXPECT_EQ(this->read(2, 8), std::string("cdefgh\0\0", FOR_THREADS ? 8 : 5));
    EXPECT_EQ(chain(this->m_status), L"");
    EXPECT_EQ(this->read(7, 1), FOR_THREADS ? "h" : "");
    EXPECT_EQ(chain(this->m_status), FOR_THREADS ? L"" : L"C2000019");
    EXPECT_EQ(this->read(8, 3), std::string(3, '\0'));
    EXPECT_EQ(this->read(4 * GIB + 3, 9), std::string("\0xyz", 4));
}

// A source that begins 6000 bytes before memory that nobody may read.
class Faulting_source {
public:
    Faulting_source()
        : m_pages(static_cast<char*>(::VirtualAlloc(nullptr, 3 * PAGE, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        std::memset(m_pages, 'f', 2 * PAGE);
        DWORD before;
        ::VirtualProtect(m_pages + 2 * PAGE, PAGE, PAGE_NOACCESS, &before);
    }
    ~Faulting_source() { ::VirtualFree(m_pages, 0, MEM_RELEASE); }
    Faulting_source(const Faulting_source&) = delete;
    Faulting_source& operator=(const Faulting_source&) = delete;

    const char* begin() const { return m_pages + 2 * PAGE - 6000; }

private:
    static constexpr unsigned int PAGE = 4096;
    char* const m_pages;
};

TYPED_TEST(Memory_buffer, reports_a_fault_in_the_source_and_keeps_its_length)
{
    const Faulting_source source;
    this->write(0, "abc");
    void* const before = tam_install_exception_translator();
    this->m_position = 2;
    this->m_buffer.write(this->m_position, 10000, source.begin(), this->m_status);
    const std::wstring text = chain(this->m_status);
    tam_set_exception_translator(before);
    EXPECT_EQ(text.substr(0, text.find(L" to ")), L"C200001A C200006B(The thread attempted");
    EXPECT_EQ(this->m_position, 2U);
    EXPECT_EQ(this->length(), 3U);
    // What arrived behind the data is gone when it becomes a gap.
    this->write(9000, "x");
    EXPECT_EQ(this->read(3, 9000), std::string(8997, '\0') + "x");
}

TYPED_TEST(Memory_buffer, reports_what_is_no_standard_exception)
{
    const Faulting_source source;
    void (*const translator)(unsigned int, EXCEPTION_POINTERS*) = [](unsigned int code, EXCEPTION_POINTERS*) {
        throw code;
    };
    void* const before = tam_set_exception_translator(reinterpret_cast<void*>(translator));
    this->m_buffer.write(this->m_position, 10000, source.begin(), this->m_status);
    tam_set_exception_translator(before);
    EXPECT_EQ(chain(this->m_status), L"C200001A C200006A");
    EXPECT_EQ(this->length(), 0U);
}

TEST(Memory_buffer_mt, lets_a_waiting_reader_follow_the_writer_to_its_end)
{
    Tam_memory_buffer_mt buffer;
    test::expect_that_a_reader_follows(buffer, 200, 100, &test::odd_piece);
}

TEST(Memory_buffer_mt, a_waiting_read_of_nothing_returns_only_when_the_writer_has_gone)
{
    Tam_memory_buffer_mt buffer;
    Tam_status status;
    unsigned long long position = 0;
    buffer.write(position, 3, "abc", status);
    buffer.connect_ostream(status);
    auto reader = std::async(std::launch::async, [&buffer] {
        Tam_status end;
        unsigned long long start = 0;
        buffer.read(true, start, 0, nullptr, end);
        return chain(end);
    });
    EXPECT_EQ(reader.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    buffer.disconnect_ostream();
    ASSERT_EQ(reader.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    EXPECT_EQ(reader.get(), L"C2000019");
}

// Each record is one write; no reader ever sees part of one or a length that it cannot read.
TEST(Memory_buffer_mt, readers_see_whole_writes)
{
    constexpr unsigned int RECORD = 5000; // across blocks
    constexpr unsigned int RECORDS = 10;
    Tam_memory_buffer_mt buffer;
    const auto read_all = [&buffer] {
        std::string record(RECORD, '?');
        unsigned int torn = 0;
        for (unsigned int seen = 0; seen < RECORDS;) {
            ::Sleep(1); // readers come first: let the writer in
            Tam_status status;
            unsigned long long position = 0;
            buffer.seek(TAM_SEEK_END, 0, position, status);
            seen = static_cast<unsigned int>(position / RECORD);
            torn += position % RECORD != 0;
            if (seen != 0) {
                position -= RECORD;
                const unsigned int done = buffer.read(false, position, RECORD, record.data(), status);
                torn += record != std::string(RECORD, static_cast<char>('a' + (seen - 1) % 26)) || done != RECORD;
            }
        }
        return torn;
    };
    auto first = std::async(std::launch::async, read_all);
    auto second = std::async(std::launch::async, read_all);
    Tam_status status;
    unsigned long long position = 0;
    for (unsigned int i = 0; i < RECORDS; ++i) {
        buffer.write(position, RECORD, std::string(RECORD, static_cast<char>('a' + i % 26)).data(), status);
    }
    ASSERT_EQ(first.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    ASSERT_EQ(second.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    EXPECT_EQ(first.get() + second.get(), 0U);
}

} // namespace
} // namespace tam
