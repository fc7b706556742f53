// Output streams with input streams over every kind of buffer: what one writes the others read back.

#include <chrono>
#include <future>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include <tam/file/file_buffer.h>
#include <tam/stream/buffered_istream.h>
#include <tam/stream/copy.h>
#include <tam/stream/memory_buffer.h>
#include <tam/stream/ostream.h>
#include <tam/stream/raw_memory_buffer.h>
#include <tam/stream/sub_buffer.h>
#include <tam/stream/unbuffered_istream.h>
#include <tests/support/chain.h>
#include <tests/support/temporary_folder.h>

namespace tam {
namespace {

using test::chain;
using test::Temporary_folder;

// A buffer to write and the one to read that data from, which is mostly the same.
template <class Buffer>
struct Pair {
    Buffer buffer;
    const Tam_buffer& readable = buffer;
    unsigned long long start = 0; // of what is readable, in buffer
};

template <class Buffer>
struct File_pair {
    Temporary_folder folder;
    Tam_status status;
    Buffer buffer{folder / L"file", TAM_FILE_OPEN_EMPTY, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_NONE, status};
    const Tam_buffer& readable = buffer;
    unsigned long long start = 0;
};

struct Raw_pair {
    static constexpr unsigned int SIZE = 100'000;

    Tam_raw_memory_buffer buffer{SIZE, ::operator new(SIZE), Tam_raw_memory_buffer::DELETE_BYTES};
    const Tam_buffer& readable = buffer;
    unsigned long long start = 0;
};

struct Sub_pair {
    Tam_memory_buffer buffer;
    const Tam_sub_buffer readable{buffer, 5000, Tam_sub_buffer::OPEN_END};
    unsigned long long start = 5000;
};

template <class Pair>
class Stream_pair : public testing::Test {
protected:
    // Writes with a stream of that convention.
    template <class Write>
    void write(Tam_eol eol, const Write& write)
    {
        Tam_ostream out(m_pair.buffer, m_status, eol);
        out.seek(m_pair.start);
        write(out);
        EXPECT_EQ(chain(m_status), L"");
        m_length = out.tell() - m_pair.start;
    }

    // Reads with each kind of stream what was written.
    template <class Read>
    void read(Tam_eol eol, const Read& read)
    {
        // Of a raw buffer all is data, so that the reader sees a window.
        const Tam_sub_buffer window(m_pair.readable, 0, m_length);
        Tam_unbuffered_istream unbuffered(window, false, m_status, eol);
        read(unbuffered);
        Tam_buffered_istream buffered(window, false, m_status, eol);
        read(buffered);
    }

    Pair m_pair;
    Tam_status m_status;
    unsigned long long m_length = 0;
};

using Pairs = testing::Types<Pair<Tam_memory_buffer>, Pair<Tam_memory_buffer_mt>, Raw_pair, Sub_pair,
                             File_pair<Tam_file_buffer>, File_pair<Tam_file_buffer_mt>>;
TYPED_TEST_SUITE(Stream_pair, Pairs);

TYPED_TEST(Stream_pair, integers_come_back_in_both_byte_orders)
{
    const auto exchange = [this](auto value) {
        this->write(TAM_EOL_ANY, [&](Tam_ostream& out) {
            out.write_le(value, this->m_status);
            out.write_be(value, this->m_status);
        });
        this->read(TAM_EOL_ANY, [&](Tam_istream& in) {
            auto little = value;
            auto big = value;
            in.read_le(little, this->m_status);
            in.read_be(big, this->m_status);
            EXPECT_EQ(chain(this->m_status), L"");
            EXPECT_EQ(little, value);
            EXPECT_EQ(big, value);
            EXPECT_EQ(in.tell(), 2 * sizeof value);
        });
    };
    exchange(static_cast<short>(-12345));
    exchange(static_cast<unsigned short>(54321));
    exchange(-1234567890);
    exchange(3234567890U);
    exchange(-1234567890123456789LL);
    exchange(12345678901234567890ULL);
}

TYPED_TEST(Stream_pair, lines_come_back_under_every_convention)
{
    const std::vector<std::string> lines{"", "one", std::string(5000, 'x'), "\x80\xFF", ""};
    const std::vector<std::wstring> wide_lines{L"", L"one", std::wstring(5000, L'\u20AC'), L"\xD800", L""};
    for (const unsigned int number : {1U, 2U, 3U}) {
        SCOPED_TRACE(number);
        const auto eol = static_cast<Tam_eol>(number);
        this->write(eol, [&](Tam_ostream& out) {
            for (std::size_t i = 0; i < lines.size(); ++i) {
                out.writeln(lines[i], this->m_status);
                out.wwriteln(wide_lines[i], this->m_status);
                out.wwriteln_le(wide_lines[i], this->m_status);
                out.wwriteln_be(wide_lines[i], this->m_status);
            }
        });
        this->read(eol, [&](Tam_istream& in) {
            std::string line;
            std::wstring wide;
            for (std::size_t i = 0; i < lines.size(); ++i) {
                in.readln(6000, line, this->m_status);
                EXPECT_EQ(chain(this->m_status), L"");
                EXPECT_EQ(line, lines[i]);
                in.wreadln(6000, wide, this->m_status);
                EXPECT_EQ(wide, wide_lines[i]);
                in.wreadln_le(6000, wide, this->m_status);
                EXPECT_EQ(wide, wide_lines[i]);
                in.wreadln_be(6000, wide, this->m_status);
                EXPECT_EQ(wide, wide_lines[i]);
                EXPECT_EQ(chain(this->m_status), L"");
            }
            in.readln(6000, line, this->m_status);
            EXPECT_EQ(chain(this->m_status), L"C2000019");
        });
    }
}

TYPED_TEST(Stream_pair, a_second_writer_is_refused)
{
    const Tam_ostream first(this->m_pair.buffer, this->m_status, TAM_EOL_LF);
    EXPECT_EQ(chain(this->m_status), L"");
    Tam_ostream second(this->m_pair.buffer, this->m_status, TAM_EOL_LF);
    EXPECT_EQ(chain(this->m_status), L"C2000033");
    second.writeln("x", this->m_status);
    EXPECT_EQ(chain(this->m_status), L"C2000017");
}

TYPED_TEST(Stream_pair, a_copy_takes_what_remains)
{
    std::string bytes(50'001, '?');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * i / 7);
    }
    this->write(TAM_EOL_ANY, [&](Tam_ostream& out) { out.write(50'001, bytes.data(), this->m_status); });
    this->read(TAM_EOL_ANY, [&](Tam_istream& in) {
        Tam_memory_buffer copy;
        Tam_ostream out(copy, this->m_status, TAM_EOL_ANY);
        out.seek(3);
        in.seek(2);
        this->m_status = 5U;
        tam_copy_stream(in, out, this->m_status);
        EXPECT_EQ(chain(this->m_status), L"");
        EXPECT_EQ(in.tell(), bytes.size());
        EXPECT_EQ(out.tell(), bytes.size() + 1);
        std::string copied(bytes.size(), '?');
        unsigned long long position = 3;
        copied.resize(copy.read(false, position, 50'001, copied.data(), this->m_status));
        EXPECT_EQ(copied, bytes.substr(2));
        tam_copy_stream(in, out, this->m_status); // nothing remains
        EXPECT_EQ(chain(this->m_status), L"");
        EXPECT_EQ(out.tell(), bytes.size() + 1);
    });
}

TEST(Copy_stream, reports_a_failing_write_but_not_a_buffer_that_is_full)
{
    const std::string bytes(40'000, 'x');
    char target[20'000];
    Tam_status status;
    Tam_memory_buffer source;
    unsigned long long position = 0;
    source.write(position, 40'000, bytes.data(), status);
    Tam_raw_memory_buffer fixed(sizeof target, target, Tam_raw_memory_buffer::KEEP);
    Tam_buffered_istream in(source, false, status);
    Tam_ostream out(fixed, status, TAM_EOL_ANY);
    tam_copy_stream(in, out, status);
    EXPECT_EQ(chain(status), L"C200001A C2000069");
    EXPECT_EQ(in.tell(), 32'768U);
    EXPECT_EQ(out.tell(), 16'384U);
    out.seek(sizeof target);
    tam_copy_stream(in, out, status);
    EXPECT_EQ(chain(status), L"");
    in.detach();
    tam_copy_stream(in, out, status);
    EXPECT_EQ(chain(status), L"C2000017");
}

// A reader that waits follows a writer in another thread line by line, until it detaches.
template <class Pair>
class Following_streams : public testing::Test {};

using Following_pairs = testing::Types<Pair<Tam_memory_buffer_mt>, File_pair<Tam_file_buffer_mt>>;
TYPED_TEST_SUITE(Following_streams, Following_pairs);

TYPED_TEST(Following_streams, see_every_line_of_a_live_writer)
{
    constexpr unsigned int LINES = 15;
    const auto text_of = [](unsigned int line) { return std::string(1 + line * 97 % 300, 'a') + std::to_string(line); };
    const auto follow = [&]<class Stream>(std::type_identity<Stream>) {
        TypeParam pair;
        Tam_status status;
        Tam_ostream out(pair.buffer, status, TAM_EOL_CR_LF);
        auto lines = std::async(std::launch::async, [&] {
            Tam_status end;
            Stream in(pair.readable, true, end, TAM_EOL_CR_LF);
            std::string line;
            unsigned int count = 0;
            for (in.readln(1000, line, end); end.ok(); in.readln(1000, line, end)) {
                count += line == text_of(count);
            }
            return end == TAM_E_END_OF_DATA ? count : 0;
        });
        for (unsigned int line = 0; line < LINES; ++line) {
            out.writeln(text_of(line), status); // two writes: the reader waits between them
            EXPECT_EQ(chain(status), L"");
        }
        EXPECT_EQ(lines.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
        out.detach();
        ASSERT_EQ(lines.wait_for(std::chrono::seconds(30)), std::future_status::ready);
        EXPECT_EQ(lines.get(), LINES);
    };
    follow(std::type_identity<Tam_buffered_istream>());
    follow(std::type_identity<Tam_unbuffered_istream>());
}

} // namespace
} // namespace tam
