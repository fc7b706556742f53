// Output streams with input streams over every kind of buffer: what one writes the others read back.

#include <tests/support/test.h>

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

} // namespace
} // namespace tam
