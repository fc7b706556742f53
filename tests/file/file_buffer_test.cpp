#include <tests/support/test.h>

#include <tests/stream/follow.h>
#include <tests/stream/seek_cases.h>

using namespace tam;
using test::chain;
using test::Temporary_folder;

namespace {

constexpr unsigned long long GIB = 1ULL << 30;

// Both buffers promise the same to one thread.
template <class Buffer>
class File_buffer : public testing::Test {
protected:
    void open(const std::wstring& path)
    {
        m_buffer.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, m_status);
        ASSERT_EQ(chain(m_status), L"");
    }

    std::string read(unsigned int count, bool wait = false)
    {
        std::string bytes(count, '?');
        bytes.resize(m_buffer.read(wait, m_position, count, bytes.data(), m_status));
        return bytes;
    }

    void write(const std::string& bytes)
    {
        m_buffer.write(m_position, static_cast<unsigned int>(bytes.size()), bytes.data(), m_status);
    }

    Temporary_folder m_folder;
    Tam_status m_status{1};
    unsigned long long m_position = 0;
    Buffer m_buffer;
};

using Buffers = testing::Types<Tam_file_buffer, Tam_file_buffer_mt>;

} // namespace

TYPED_TEST_SUITE(File_buffer, Buffers);

TYPED_TEST(File_buffer, without_a_file_every_operation_says_so)
{
    this->m_position = 7;
    EXPECT_EQ(this->read(1), "");
    EXPECT_EQ(chain(this->m_status), L"C2000031");
    this->m_status.clear();
    this->write("");
    EXPECT_EQ(chain(this->m_status), L"C2000031");
    this->m_status.clear();
    this->m_buffer.seek(TAM_SEEK_START, 0, this->m_position, this->m_status);
    EXPECT_EQ(chain(this->m_status), L"C2000031");
    EXPECT_EQ(this->m_position, 7U);
    this->m_buffer.close();
}

TYPED_TEST(File_buffer, writes_and_reads_at_the_position)
{
    this->open(this->m_folder / L"file");
    this->write("abcdef");
    EXPECT_EQ(this->m_position, 6U);
    this->m_position = 4;
    this->write("XY");
    this->m_position = 2;
    EXPECT_EQ(this->read(3), "cdX");
    EXPECT_EQ(this->m_position, 5U);
    EXPECT_EQ(this->read(3), "Y");
    EXPECT_EQ(chain(this->m_status), L"");
    EXPECT_EQ(this->read(3), "");
    EXPECT_EQ(chain(this->m_status), L"C2000019");
    // With no writer connected there is nothing to wait for.
    EXPECT_EQ(this->read(3, true), "");
    EXPECT_EQ(chain(this->m_status), L"C2000019");
    EXPECT_EQ(this->m_position, 6U);
    // Nothing asked for is no end, even where a writer could be waited for.
    this->m_buffer.connect_ostream(this->m_status);
    EXPECT_EQ(this->read(0, true), "");
    EXPECT_EQ(chain(this->m_status), L"");
    // Nothing written, and an earlier failure does not stay.
    this->m_status = 1;
    this->write("");
    EXPECT_EQ(chain(this->m_status), L"");
    this->m_position = 1ULL << 63;
    EXPECT_EQ(this->read(1), "");
    EXPECT_EQ(chain(this->m_status), L"C2000027 " + std::to_wstring(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(Temporary_folder::bytes_of(this->m_folder / L"file"), "abcdXY");
}

TYPED_TEST(File_buffer, seeks_from_start_low_half_of_the_position_or_end)
{
    this->open(this->m_folder.file(L"file", "0123456789"));
    const std::wstring negative = L"C2000027 " + std::to_wstring(ERROR_NEGATIVE_SEEK);
    test::expect_seeks(this->m_buffer,
                       {{0, 4, 9, 4},
                        {0, -1, 9, 9, true},
                        {1, -2, 9, 7},
                        {1, -10, 9, 9, true},
                        {2, -2, 0, 8},
                        {2, 5, 0, 15},
                        {2, -11, 3, 3, true},
                        {7, -2, 9, 7},
                        // Between 2 and 4 GiB the low half is not negative, and the sum may pass 4 GiB.
                        {1, -1, 3 * GIB, 3 * GIB - 1},
                        {1, 1, 0xFFFFFFFF, 0x100000000},
                        // Beyond that the high half is lost.
                        {1, 3, 5 * GIB, GIB + 3},
                        {1, -1, 4 * GIB, 4 * GIB, true}},
                       negative);
}

TYPED_TEST(File_buffer, holds_the_first_file_until_it_is_closed)
{
    const std::wstring path = this->m_folder.file(L"first", "abc");
    this->open(path);
    Tam_status status;
    Tam_file other;
    this->m_buffer.open(path, TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, status);
    EXPECT_EQ(chain(status), L"C2000032");
    status = 1;
    this->m_buffer.attach(other, status);
    EXPECT_EQ(chain(status), L"C2000032");
    EXPECT_EQ(this->read(3), "abc");
    this->m_buffer.close();
    EXPECT_EQ(this->read(3), "");
    EXPECT_EQ(chain(this->m_status), L"C2000031");
    this->m_buffer.attach(other, status);
    EXPECT_EQ(chain(status), L"");
}

TYPED_TEST(File_buffer, keeps_a_file_whose_opening_failed)
{
    const std::wstring missing = this->m_folder / L"missing";
    Tam_status status;
    TypeParam buffer(missing, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
    EXPECT_EQ(chain(status), L"C2000026(" + missing + L") C200001E(" + missing + L")");
    unsigned long long position = 0;
    char byte;
    EXPECT_EQ(buffer.read(false, position, 1, &byte, status), 0U);
    EXPECT_EQ(chain(status), L"C2000027 C2000028");
    buffer.open(missing, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
    EXPECT_EQ(chain(status), L"C2000032");
    buffer.close();
    buffer.open(missing, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ, 0, TAM_FILE_SHARE_NONE, status);
    EXPECT_EQ(chain(status), L"");
}

TYPED_TEST(File_buffer, finds_its_place_wherever_it_or_the_caller_left_the_file)
{
    const std::wstring path = this->m_folder.file(L"file", "0123456789");
    Tam_file file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ_WRITE, this->m_status);
    this->m_buffer.attach(file, this->m_status);
    EXPECT_EQ(this->read(2), "01");
    file.seek(7, this->m_status);
    EXPECT_EQ(this->read(2), "23");
    file.seek(9, this->m_status);
    this->write("ab");
    this->m_buffer.close();
    this->m_position = 0;
    this->open(path);
    EXPECT_EQ(this->read(3), "012");
    unsigned long long end = 0;
    this->m_buffer.seek(TAM_SEEK_END, 0, end, this->m_status);
    EXPECT_EQ(this->read(2), "3a");
    this->write("X");
    this->m_position = 6;
    this->write("Y");
    EXPECT_EQ(this->read(9), "789");
    EXPECT_EQ(this->read(9), ""); // the end
    this->m_position = 5;
    EXPECT_EQ(this->read(9), "XY789");
    EXPECT_EQ(chain(this->m_status), L"");
}

TYPED_TEST(File_buffer, leaves_an_attached_file_open_and_closes_its_own)
{
    const std::wstring path = this->m_folder.file(L"file", "abc");
    const unsigned int handles = test::open_handles();
    const unsigned int blocks = test::heap_blocks();
    {
        Tam_status status(1);
        Tam_file file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);
        {
            TypeParam attached(file, status);
            EXPECT_EQ(chain(status), L"");
            attached.close();
            EXPECT_TRUE(file.is_open());
            attached.attach(file, status);
        }
        EXPECT_TRUE(file.is_open());
        TypeParam own(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);
        own.close();
        own.open(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);
        EXPECT_EQ(chain(status), L"");
    }
    EXPECT_EQ(test::open_handles(), handles);
    EXPECT_EQ(test::heap_blocks(), blocks);
}

TEST(File_buffer_mt, a_waiting_reader_follows_the_writer_to_its_end)
{
    const Temporary_folder folder;
    Tam_status status;
    Tam_file_buffer_mt buffer(folder / L"file", TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_NONE,
                              status);
    test::expect_that_a_reader_follows(buffer, 300, 100, &test::odd_piece);
}

// Writers and readers of one file share its position; the lock keeps each one's seek and transfer together.
TEST(File_buffer_mt, threads_do_not_disturb_each_others_positions)
{
    const Temporary_folder folder;
    Tam_status status;
    Tam_file_buffer_mt buffer(folder / L"file", TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_NONE,
                              status);
    constexpr unsigned int ROUNDS = 200;
    std::vector<std::future<bool>> threads;
    for (unsigned int thread = 0; thread < 4; ++thread) {
        threads.push_back(std::async(std::launch::async, [&buffer, thread] {
            bool right = true;
            for (unsigned int i = 0; i < ROUNDS; ++i) {
                unsigned long long position = (i * 4 + thread) * sizeof i;
                Tam_status result;
                buffer.write(position, sizeof i, &i, result);
                position -= sizeof i;
                unsigned int back = ~i;
                right = right && buffer.read(false, position, sizeof back, &back, result) == sizeof back && back == i;
            }
            return right;
        }));
    }
    for (auto& thread : threads) {
        ASSERT_EQ(thread.wait_for(std::chrono::seconds(60)), std::future_status::ready);
        EXPECT_TRUE(thread.get());
    }
}
