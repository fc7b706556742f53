#include <tests/support/test.h>

#include <tests/stream/buffer_model.h>
#include <tests/stream/seek_cases.h>
#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

using test::Buffer_model;
using test::Buffer_rules;
using test::chain;
using test::thrown;

constexpr unsigned long long LARGEST = 0x7FFFFFFFFFFFFFFF;

// A buffer of 100 bytes, 0 to 99, with faults on demand.
class Underlying : public test::Vector_buffer {
public:
    Underlying() : Vector_buffer(std::string(100, '\0'))
    {
        for (unsigned int i = 0; i < 100; ++i) {
            data[i] = static_cast<char>(i);
        }
    }
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override
    {
        if (throws_in_seek) {
            throw 5;
        }
        status = fails_in_seek;
        if (status.ok()) {
            Vector_buffer::seek(mode, offset, position, status);
        }
    }

    bool throws_in_seek = false;
    unsigned int fails_in_seek = 0;
};

class Sub_buffer : public testing::Test {
protected:
    std::string read(const Tam_sub_buffer& buffer, unsigned int count)
    {
        std::string bytes(count, '?');
        bytes.resize(buffer.read(m_wait, m_position, count, bytes.data(), m_status));
        return bytes;
    }

    bool m_wait = false;
    Underlying m_underlying;
    Tam_status m_status{5};
    unsigned long long m_position = 0;
};

TEST_F(Sub_buffer, does_what_its_model_does)
{
    Buffer_rules rules;
    rules.writing = Buffer_rules::REFUSED;
    rules.other_modes_count_as_current = false;
    rules.empty_read_is_the_end = true; // as in the buffer below
    rules.block_size = 1000;
    rules.largest = 11000;
    Buffer_model::Bytes bytes(10000);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(i * i / 7);
    }
    Tam_memory_buffer memory;
    unsigned long long position = 0;
    for (int copy = 0; copy < 3; ++copy) {
        memory.write(position, 10000, bytes.data(), m_status);
    }
    {
        Buffer_model model(rules, bytes);
        Tam_sub_buffer window(memory, 10000, 10000);
        test::Buffer_walk(window, model).run(1000);
    }
    Buffer_model model(rules, bytes);
    Tam_sub_buffer open(memory, 20000, Tam_sub_buffer::OPEN_END);
    test::Buffer_walk(open, model).run(1000);
}

TEST_F(Sub_buffer, reads_no_further_than_its_window)
{
    const Tam_sub_buffer buffer(m_underlying, 10, 20ULL);
    EXPECT_EQ(read(buffer, 50), m_underlying.data.substr(10, 10));
    EXPECT_EQ(m_position, 10U);
    EXPECT_EQ(read(buffer, 1), "");
    EXPECT_EQ(chain(m_status), L"C2000019");
    EXPECT_EQ(m_underlying.reads.size(), 1U);
    m_position = 3;
    m_wait = true;
    EXPECT_EQ(read(buffer, 4), m_underlying.data.substr(13, 4));
    EXPECT_EQ(m_underlying.reads.back().position, 13U);
    EXPECT_EQ(m_underlying.reads.back().count, 4U);
    EXPECT_TRUE(m_underlying.reads.back().wait);
    m_position = 0;
    EXPECT_EQ(read(buffer, 0xFFFFFFF), m_underlying.data.substr(10, 10));
    // No position, although the sum with the start would be one.
    for (const unsigned long long position : {0ULL - 5, 0ULL - 10, 0ULL - 1, LARGEST}) {
        m_position = position;
        EXPECT_EQ(read(buffer, 1), "");
        EXPECT_EQ(chain(m_status), L"C2000019");
    }
}

TEST_F(Sub_buffer, may_be_longer_than_what_lies_below)
{
    const Tam_sub_buffer buffer(m_underlying, 90, 1000);
    EXPECT_EQ(read(buffer, 50), m_underlying.data.substr(90));
    EXPECT_EQ(read(buffer, 50), "");
    EXPECT_EQ(chain(m_status), L"C2000019");
    buffer.seek(TAM_SEEK_END, 0, m_position, m_status);
    EXPECT_EQ(m_position, 1000U);
    const Tam_sub_buffer empty(m_underlying, 10, 0);
    m_position = 0;
    EXPECT_EQ(read(empty, 1), "");
}

TEST_F(Sub_buffer, with_an_open_end_follows_what_lies_below)
{
    const Tam_sub_buffer buffer(m_underlying, 90, LARGEST);
    buffer.seek(TAM_SEEK_END, -1, m_position, m_status);
    EXPECT_EQ(m_position, 9U);
    m_underlying.data += "more";
    EXPECT_EQ(read(buffer, 50), "\x63more");
    buffer.seek(TAM_SEEK_END, 0, m_position, m_status);
    EXPECT_EQ(m_position, 14U);
    m_position = 0ULL - 90; // position 0 below, were it counted so
    EXPECT_EQ(read(buffer, 1), "");
    EXPECT_EQ(chain(m_status), L"C2000019");
    const Tam_sub_buffer beyond(m_underlying, 200, LARGEST);
    m_position = 1;
    beyond.seek(TAM_SEEK_END, 0, m_position, m_status);
    EXPECT_EQ(chain(m_status), L"C2000018");
    beyond.seek(TAM_SEEK_END, 96, m_position, m_status);
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(m_position, 0U);
}

TEST_F(Sub_buffer, seeks_in_its_window)
{
    const Tam_sub_buffer buffer(m_underlying, 10, 20ULL);
    test::expect_seeks(buffer, {{0, 3, 7, 3},
                                {0, -1, 7, 7, true}, // before the window, although there are bytes
                                {0, 2147483647, 7, 2147483647},
                                {1, -7, 7, 0},
                                {1, -8, 7, 7, true},
                                {1, 100, 7, 107},
                                {1, 0, LARGEST - 10, LARGEST - 10},
                                {1, 1, LARGEST - 10, LARGEST - 10, true},
                                {1, -1, LARGEST, LARGEST - 1},
                                {1, 6, 0ULL - 1, 0ULL - 1, true},
                                {2, -10, 7, 0},
                                {2, -11, 7, 7, true},
                                {2, 5, 7, 15},
                                {3, 0, 7, 7, true}, // no mode of a sub-buffer
                                {0xFFFFFFFF, 0, 7, 7, true}});
}

TEST_F(Sub_buffer, reports_what_fails_below)
{
    const Tam_sub_buffer buffer(m_underlying, 10, LARGEST);
    m_position = 7;
    m_underlying.fails_in_seek = TAM_E_NO_FILE;
    buffer.seek(TAM_SEEK_END, 0, m_position, m_status);
    EXPECT_EQ(chain(m_status), L"C2000031");
    m_underlying.throws_in_seek = true;
    buffer.seek(TAM_SEEK_END, 0, m_position, m_status);
    EXPECT_EQ(chain(m_status), L"C2000018");
    buffer.seek(TAM_SEEK_CURRENT, 1, m_position, m_status); // does not ask below
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(m_position, 8U);
    m_underlying.fail_from = 18;
    EXPECT_EQ(read(buffer, 5), "");
    EXPECT_EQ(chain(m_status), L"C200001B 1117");
    EXPECT_EQ(m_position, 8U);
    m_underlying.before_read = [] { throw std::runtime_error("x"); };
    EXPECT_EQ(read(buffer, 5), "");
    EXPECT_EQ(chain(m_status), L"C200001B");
    EXPECT_EQ(m_position, 8U);
}

// A read that delivers something and fails: the count is handed on, the position stays.
TEST_F(Sub_buffer, keeps_its_position_when_a_read_fails_half_way)
{
    struct Half : Underlying {
        unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                          Tam_status& status) const override
        {
            const unsigned int done = Underlying::read(wait, position, count / 2, destination, status);
            status = TAM_E_READ;
            return done;
        }
    };
    const Half underlying;
    const Tam_sub_buffer buffer(underlying, 10, 20ULL);
    EXPECT_EQ(read(buffer, 8), underlying.data.substr(10, 4));
    EXPECT_EQ(m_position, 0U);
    EXPECT_EQ(chain(m_status), L"C200001B");
}

TEST_F(Sub_buffer, takes_no_writer)
{
    Tam_sub_buffer buffer(m_underlying, 10, 10);
    buffer.connect_ostream(m_status);
    EXPECT_EQ(chain(m_status), L"C2000033");
    EXPECT_EQ(buffer.num_ostream(), 0U);
    m_underlying.connect_ostream(m_status); // what lies below still does
    EXPECT_EQ(chain(m_status), L"");
    buffer.write(m_position, 1, "x", m_status);
    EXPECT_EQ(chain(m_status), L"C200001A");
    m_status.clear();
    buffer.write(m_position, 0, nullptr, m_status);
    EXPECT_EQ(chain(m_status), L"C200001A");
    EXPECT_EQ(m_position, 0U);
    EXPECT_EQ(m_underlying.data[10], 10);
}

TEST_F(Sub_buffer, refuses_a_window_that_ends_before_it_starts)
{
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_sub_buffer(m_underlying, 10, -1); }),
              "Tam_sub_buffer::Tam_sub_buffer - length is less than zero");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { Tam_sub_buffer(m_underlying, 10, 9ULL); }),
              "Tam_sub_buffer::Tam_sub_buffer - end value is less than start value");
    EXPECT_EQ(thrown<std::overflow_error>([&] { Tam_sub_buffer(m_underlying, LARGEST, 1); }),
              "Stream position too large.");
    const Tam_sub_buffer empty(m_underlying, 10, 10ULL);
    const Tam_sub_buffer open(m_underlying, LARGEST, 0); // its end means "open"
    open.seek(TAM_SEEK_START, 0, m_position, m_status);
    EXPECT_EQ(chain(m_status), L"");
}

} // namespace
} // namespace tam
