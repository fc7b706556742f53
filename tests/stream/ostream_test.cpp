#include <tests/support/test.h>

#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

using test::chain;

// Notes each write, and fails or keeps the status on demand.
class Noting_buffer : public test::Vector_buffer {
public:
    std::vector<unsigned int> writes; ///< the count of each
    unsigned int room = ~0U;          ///< a write past it stores what fits and fails
    bool clears = true;               ///< a buffer need not clear the status that it is given

protected:
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override
    {
        const Tam_status before = status;
        writes.push_back(count);
        const auto fits = static_cast<unsigned int>(std::min<unsigned long long>(count, room - position));
        Vector_buffer::write(position, fits, source, status);
        if (fits < count) {
            status = 112;
            status.push(TAM_E_WRITE);
        } else if (!clears) {
            status = before;
        }
    }
};

class Ostream : public testing::Test {
protected:
    void init(Tam_eol eol)
    {
        stream.detach();
        buffer.data.clear();
        buffer.writes.clear();
        stream.init(buffer, status, eol);
    }

    Noting_buffer buffer;
    Tam_status status;
    Tam_ostream stream{buffer, status, TAM_EOL_CR_LF};
};

TEST_F(Ostream, is_the_only_writer_until_it_is_detached_or_destroyed)
{
    Tam_ostream second;
    {
        Tam_ostream refused(buffer, status, TAM_EOL_LF);
        EXPECT_EQ(chain(status), L"C2000033");
        refused.write(1, "x", status);
        EXPECT_EQ(chain(status), L"C2000017");
    }
    EXPECT_EQ(buffer.num_ostream(), 1U); // the refused stream takes nothing back
    stream.detach();
    stream.detach();
    EXPECT_EQ(buffer.num_ostream(), 0U);
    {
        const Tam_ostream third(buffer, status, TAM_EOL_LF);
        EXPECT_EQ(chain(status), L"");
        second.init(buffer, status, TAM_EOL_LF);
        EXPECT_EQ(chain(status), L"C2000033");
    }
    second.init(buffer, status, TAM_EOL_LF);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(buffer.num_ostream(), 1U);
}

TEST_F(Ostream, stays_with_its_buffer_when_another_one_refuses_it)
{
    Noting_buffer other;
    const Tam_ostream writer(other, status, TAM_EOL_LF);
    stream.write(2, "ab", status);
    stream.init(other, status, TAM_EOL_LF);
    EXPECT_EQ(chain(status), L"C2000033");
    EXPECT_EQ(stream.tell(), 0U);
    stream.writeln("c", status);
    EXPECT_EQ(buffer.data, "c\n");
}

TEST_F(Ostream, reports_that_it_is_detached)
{
    stream.write(2, "ab", status);
    stream.detach();
    const auto detached = [this](auto operation) {
        status = 5U;
        operation();
        EXPECT_EQ(chain(status), L"C2000017");
    };
    detached([&] { stream.write(1, "x", status); });
    detached([&] { stream.write_at(0, 1, "x", status); });
    detached([&] { stream.write_le(1, status); });
    detached([&] { stream.write_be(1ULL, status); });
    detached([&] { stream.writeln("x", status); });
    detached([&] { stream.wwriteln(L"x", status); });
    detached([&] { stream.wwriteln_le(L"x", status); });
    detached([&] { stream.wwriteln_be(L"x", status); });
    detached([&] { stream.seek(TAM_SEEK_START, 0, status); });
    detached([&] { EXPECT_EQ(stream.size(status), 0U); });
    EXPECT_EQ(stream.tell(), 0U);
    EXPECT_EQ(buffer.data, "ab");
}

TEST_F(Ostream, writes_at_its_position_and_elsewhere)
{
    stream.write(10, "0123456789", status);
    const Tam_ostream& constant = stream;
    constant.write_at(0, 2, "ab", status);
    EXPECT_EQ(stream.tell(), 10U);
    stream.seek(TAM_SEEK_END, -3, status);
    EXPECT_EQ(stream.tell(), 7U);
    stream.write(1, "c", status);
    stream.seek(5);
    stream.write(0, nullptr, status);
    EXPECT_EQ(stream.tell(), 5U);
    EXPECT_EQ(buffer.data, "ab23456c89");
    EXPECT_EQ(stream.size(status), 10U);
    EXPECT_EQ(chain(status), L"");
    stream.seek(TAM_SEEK_START, -1, status);
    EXPECT_EQ(chain(status), L"C2000018");
    EXPECT_EQ(stream.tell(), 5U);
}

TEST_F(Ostream, writes_integers_in_both_byte_orders)
{
    const auto expect = [this](auto value, const std::string& big) {
        init(TAM_EOL_ANY);
        stream.write_be(value, status);
        EXPECT_EQ(buffer.data, big);
        stream.write_le(value, status);
        EXPECT_EQ(buffer.data.substr(big.size()), std::string(big.rbegin(), big.rend()));
        EXPECT_EQ(buffer.writes, (std::vector<unsigned int>{sizeof value, sizeof value}));
    };
    expect(static_cast<short>(-2), "\xFF\xFE");
    expect(static_cast<unsigned short>(0x8102), "\x81\x02");
    expect(0x01020304, "\x01\x02\x03\x04");
    expect(0x81020304U, "\x81\x02\x03\x04");
    expect(-2LL, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE");
    expect(0x8102030405060788ULL, "\x81\x02\x03\x04\x05\x06\x07\x88");
}

TEST_F(Ostream, ends_lines_by_its_convention)
{
    const struct {
        unsigned int eol;
        std::string narrow;
        std::string little;
        std::string big;
    } rows[] = {
        {0, "", "", ""},
        {1, "\r", std::string("\r\0", 2), std::string("\0\r", 2)},
        {2, "\n", std::string("\n\0", 2), std::string("\0\n", 2)},
        {3, "\r\n", std::string("\r\0\n\0", 4), std::string("\0\r\0\n", 4)},
        {4, "", "", ""},
        {0xFFFFFFFF, "", "", ""},
    };
    const std::string text("a\0b", 3);
    const std::wstring wide_text{L'A', L'\0', L'\u20AC'};
    const std::string little("A\0\0\0\xAC\x20", 6);
    const std::string big("\0A\0\0\x20\xAC", 6);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.eol);
        const auto eol = static_cast<Tam_eol>(row.eol);
        const auto end = static_cast<unsigned int>(row.narrow.size());
        const auto writes = [end](unsigned int count, unsigned int unit) {
            return end == 0 ? std::vector<unsigned int>{count} : std::vector<unsigned int>{count, end * unit};
        };
        init(eol);
        stream.writeln(text, status);
        EXPECT_EQ(buffer.data, text + row.narrow);
        EXPECT_EQ(buffer.writes, writes(3, 1));
        EXPECT_EQ(stream.tell(), 3 + end);
        init(eol);
        stream.wwriteln(wide_text, status);
        EXPECT_EQ(buffer.data, little + row.little);
        EXPECT_EQ(buffer.writes, writes(6, 2));
        init(eol);
        stream.wwriteln_le(wide_text, status);
        EXPECT_EQ(buffer.data, little + row.little);
        init(eol);
        stream.wwriteln_be(wide_text, status);
        EXPECT_EQ(buffer.data, big + row.big);
        EXPECT_EQ(buffer.writes, std::vector<unsigned int>{6 + 2 * end});
        init(eol);
        stream.writeln("", status); // an empty line is a write of nothing and its end
        EXPECT_EQ(buffer.data, row.narrow);
        EXPECT_EQ(buffer.writes, writes(0, 1));
        EXPECT_EQ(chain(status), L"");
    }
}

TEST_F(Ostream, writes_no_line_end_behind_a_text_that_failed)
{
    buffer.room = 2;
    stream.writeln("abc", status);
    EXPECT_EQ(chain(status), L"C200001A 112");
    EXPECT_EQ(buffer.data, "ab");
    EXPECT_EQ(stream.tell(), 2U);
    buffer.room = 4;
    buffer.writes.clear();
    stream.wwriteln(L"x", status);
    EXPECT_EQ(chain(status), L"C200001A 112"); // the text fits, its end does not
    EXPECT_EQ(buffer.data, std::string("abx\0", 4));
    EXPECT_EQ(buffer.writes, (std::vector<unsigned int>{2, 4}));
}

TEST_F(Ostream, leaves_the_status_to_its_buffer)
{
    status = 5U;
    stream.write(1, "a", status);
    EXPECT_EQ(chain(status), L"");
    buffer.clears = false;
    status = 5U;
    stream.writeln("b", status);
    EXPECT_EQ(chain(status), L"5");
    EXPECT_EQ(buffer.data, "ab"); // an earlier failure that stays keeps the line end away
}

} // namespace
} // namespace tam
