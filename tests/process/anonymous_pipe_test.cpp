#include <tests/support/test.h>

#include <tests/process/fixture.h>
#include <tests/process/pattern.h>

using namespace tam;
using test::chain;

namespace {

class Anonymous_pipe : public test::Limited {};

} // namespace

TEST_F(Anonymous_pipe, gives_what_was_written_in_its_order)
{
    Tam_status status(5);
    Tam_anonymous_pipe pipe(status, 0, nullptr);
    ASSERT_EQ(chain(status), L"");
    unsigned char hello[] = {'h', 'e', 'l', 'l', 'o'};
    unsigned char again[] = {0, 255, 10};
    status = 5;
    EXPECT_EQ(pipe.write(hello, 5, status), 5U);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(pipe.write(again, 3, status), 3U);

    unsigned char read[100] = {};
    EXPECT_EQ(pipe.read(read, 2, status), 2U);
    status = 5;
    EXPECT_EQ(pipe.read(read + 2, 98, status), 6U) << "what is there, without waiting for the rest";
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(std::memcmp(read, "hello\0\xFF\n", 8), 0);
}

TEST_F(Anonymous_pipe, holds_as_much_as_its_size)
{
    Tam_status status;
    Tam_anonymous_pipe pipe(status, 100000);
    std::vector<unsigned char> data(100000, 'x');
    EXPECT_EQ(pipe.write(data.data(), 100000, status), 100000U);
}

TEST_F(Anonymous_pipe, reader_waits_for_data)
{
    Tam_status status;
    Tam_anonymous_pipe pipe(status, 0);
    std::atomic<bool> written = false;
    bool early = true;
    unsigned char byte = 0;
    std::thread reader([&] {
        Tam_status reader_status;
        pipe.read(&byte, 1, reader_status);
        early = !written;
    });
    ::Sleep(30);
    written = true;
    unsigned char seven = 7;
    pipe.write(&seven, 1, status);
    reader.join();
    EXPECT_FALSE(early);
    EXPECT_EQ(byte, 7);
}

TEST_F(Anonymous_pipe, records_of_many_posters_never_tear)
{
    constexpr unsigned int POSTERS = 6;
    constexpr unsigned int RECORDS = 500;
    struct Record {
        unsigned int poster;
        unsigned int number;
        unsigned int proof;
    };
    static_assert(sizeof(Record) == 12);
    const auto proof = [](unsigned int poster, unsigned int number) { return ~(poster * 0x01000193U ^ number); };

    Tam_status status;
    Tam_anonymous_pipe pipe(status); // 4096 bytes are no multiple of a record
    std::vector<std::thread> posters;
    std::atomic<unsigned int> failed = 0;
    for (unsigned int poster = 0; poster < POSTERS; ++poster) {
        posters.emplace_back([&, poster] {
            Tam_status own;
            for (unsigned int number = 0; number < RECORDS; ++number) {
                Record record{poster, number, proof(poster, number)};
                failed += pipe.write(reinterpret_cast<unsigned char*>(&record), sizeof record, own) != sizeof record;
            }
        });
    }
    std::vector<unsigned int> next(POSTERS, 0);
    for (unsigned int i = 0; i < POSTERS * RECORDS; ++i) {
        Record record{};
        ASSERT_EQ(pipe.read(reinterpret_cast<unsigned char*>(&record), sizeof record, status), sizeof record);
        ASSERT_LT(record.poster, POSTERS);
        ASSERT_EQ(record.number, next[record.poster]++);
        ASSERT_EQ(record.proof, proof(record.poster, record.number));
    }
    for (std::thread& poster : posters) {
        poster.join();
    }
    EXPECT_EQ(failed, 0U);
}

TEST_F(Anonymous_pipe, security_is_associated_with_one_end_and_reported_for_the_other)
{
    Tam_status status;
    Tam_security creation;
    Tam_anonymous_pipe pipe(status, 0, &creation);
    Tam_security security;
    pipe.add_security(security, status);
    EXPECT_EQ(chain(status), L"C2000078");
    status = 5;
    pipe.add_security(security, status);
    EXPECT_EQ(chain(status), L"C2000078");
}

TEST_F(Anonymous_pipe, leaves_no_handle)
{
    Tam_status status;
    const unsigned int before = test::open_handles();
    {
        const Tam_anonymous_pipe pipe(status);
        EXPECT_EQ(test::open_handles(), before + 2);
    }
    EXPECT_EQ(test::open_handles(), before);
}
