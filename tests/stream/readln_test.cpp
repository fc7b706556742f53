#include <tests/support/test.h>

#include <tests/stream/vector_buffer.h>

namespace tam {
namespace {

using test::Vector_buffer;

constexpr unsigned int END = 0xC2000019;
constexpr unsigned int NO_LINE_END = 0xC200001C;

struct Line {
    std::string text;
    unsigned int status;
    unsigned long long after; // the stream's position

    bool operator==(const Line&) const = default;
};

void PrintTo(const Line& line, std::ostream* out)
{
    *out << testing::PrintToString(line.text) << " status " << std::hex << line.status << std::dec << " after "
         << line.after;
}

std::string bytes_of(const std::wstring& units)
{
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

enum class Reader { NARROW, WIDE, WIDE_LE, WIDE_BE };

// Reads one line with the reader; UTF-16 text comes as its bytes.
Line read_line(Tam_istream& stream, Reader reader, unsigned int max)
{
    std::string line = "what was there before";
    std::wstring wide = L"what was there before";
    Tam_status status = 5U;
    switch (reader) {
    case Reader::NARROW:
        stream.readln(max, line, status);
        return {line, status.value(), stream.tell()};
    case Reader::WIDE:
        stream.wreadln(max, wide, status);
        break;
    case Reader::WIDE_LE:
        stream.wreadln_le(max, wide, status);
        break;
    case Reader::WIDE_BE:
        stream.wreadln_be(max, wide, status);
        break;
    }
    return {bytes_of(wide), status.value(), stream.tell()};
}

// The same with the reader of a position, which leaves the stream's alone.
Line read_line_at(Tam_istream& stream, unsigned long long position, Reader reader, unsigned int max)
{
    std::string line;
    std::wstring wide;
    Tam_status status;
    switch (reader) {
    case Reader::NARROW:
        stream.readln_at(position, max, line, status);
        return {line, status.value(), stream.tell()};
    case Reader::WIDE:
        stream.wreadln_at(position, max, wide, status);
        break;
    case Reader::WIDE_LE:
        stream.wreadln_le_at(position, max, wide, status);
        break;
    case Reader::WIDE_BE:
        stream.wreadln_be_at(position, max, wide, status);
        break;
    }
    return {bytes_of(wide), status.value(), stream.tell()};
}

// What a line reader is documented to do, step by step, one unit after the other.
Line reference_line(const Tam_istream& stream, unsigned long long start, Reader reader, unsigned int max,
                    unsigned int eol)
{
    const unsigned int size = reader == Reader::NARROW ? 1 : 2;
    const unsigned int limit = max + 2;
    enum { IN_LINE, CR_SEEN, ENDED } state = IN_LINE;
    std::vector<unsigned int> units;
    unsigned int consumed = 0;
    unsigned int scanned = 0;
    unsigned int excluded = 0;
    Tam_status status;
    while (state != ENDED && status.ok() && consumed < limit) {
        const unsigned int chunk = std::min(limit - consumed, 78U);
        unsigned char bytes[156];
        unsigned int delivered = 0;
        do {
            delivered += stream.read_at(start + std::uint64_t{consumed} * size + delivered, chunk * size - delivered,
                                        bytes + delivered, status);
        } while (delivered < size && status.ok());
        for (unsigned int i = 0; i + size <= delivered; i += size) {
            units.push_back(size == 1                   ? bytes[i]
                            : reader == Reader::WIDE_BE ? bytes[i] * 256U + bytes[i + 1]
                                                        : bytes[i + 1] * 256U + bytes[i]);
        }
        consumed = static_cast<unsigned int>(units.size());
        for (; scanned < consumed && state != ENDED; ++scanned) {
            const unsigned int u = units[scanned];
            const bool cr = state == CR_SEEN;
            if (eol == 0 && u == 13) {
                state = CR_SEEN;
            } else if (eol == 0 && u == 10) {
                state = ENDED;
                excluded = cr ? 2 : 1;
            } else if (eol == 0 && cr) {
                state = ENDED;
                excluded = 1;
                break; // given back
            } else if ((eol == 1 && u == 13) || (eol == 2 && u == 10)) {
                state = ENDED;
                excluded = 1;
            } else if (eol == 3 && u == 13) {
                state = CR_SEEN;
            } else if (eol == 3 && u == 10 && cr) {
                state = ENDED;
                excluded = 2;
            } else {
                state = IN_LINE;
            }
        }
    }
    if (eol == 0 && state == CR_SEEN) {
        state = ENDED;
        excluded = 1;
    }
    if (scanned - excluded > max) {
        scanned = max + excluded;
    }
    Line line{{}, 0, start + (std::uint64_t{scanned}) * size};
    for (unsigned int i = 0; i < scanned - excluded; ++i) {
        line.text += static_cast<char>(units[i]);
        if (size == 2) {
            line.text += static_cast<char>(units[i] / 256);
        }
    }
    if (consumed != 0 && status.value() == END) {
        status.clear();
    }
    if (state != ENDED && status.ok()) {
        status.push(NO_LINE_END);
    }
    line.status = status.value();
    return line;
}

struct Readln_case {
    const char* name;
    std::string bytes;
    unsigned int eol;
    unsigned int max;
    std::vector<Line> lines; // the last one repeats
};

class Readln : public testing::TestWithParam<Readln_case> {};

TEST_P(Readln, gives)
{
    const Readln_case& given = GetParam();
    const Vector_buffer buffer(given.bytes);
    Tam_status status;
    Tam_buffered_istream buffered(buffer, false, status, static_cast<Tam_eol>(given.eol));
    Tam_unbuffered_istream unbuffered(buffer, false, status, static_cast<Tam_eol>(given.eol));
    for (const Line& line : given.lines) {
        EXPECT_EQ(read_line(buffered, Reader::NARROW, given.max), line);
        EXPECT_EQ(read_line(unbuffered, Reader::NARROW, given.max), line);
    }
}

INSTANTIATE_TEST_SUITE_P(
    lines, Readln,
    testing::Values(
        Readln_case{"any_end",
                    "a\r\nb\rc\nd",
                    0,
                    9,
                    {{"a", 0, 3}, {"b", 0, 5}, {"c", 0, 7}, {"d", NO_LINE_END, 8}, {"", END, 8}}},
        Readln_case{"pairs_only", "a\r\nb\rc\nd", 3, 9, {{"a", 0, 3}, {"b\rc\nd", NO_LINE_END, 8}, {"", END, 8}}},
        Readln_case{"cr", "a\nb\rc\r\r", 1, 9, {{"a\nb", 0, 4}, {"c", 0, 6}, {"", 0, 7}, {"", END, 7}}},
        Readln_case{"lf", "a\rb\n\nc", 2, 9, {{"a\rb", 0, 4}, {"", 0, 5}, {"c", NO_LINE_END, 6}}},
        Readln_case{"no_end", "a\r\nb", 4, 9, {{"a\r\nb", NO_LINE_END, 4}, {"", END, 4}}},
        Readln_case{"pieces", "abcdef\n", 0, 3, {{"abc", NO_LINE_END, 3}, {"def", 0, 7}, {"", END, 7}}},
        Readln_case{"cr_at_the_end", "a\r", 0, 9, {{"a", 0, 2}, {"", END, 2}}},
        Readln_case{"cr_at_the_end_of_pairs", "a\r", 3, 9, {{"a\r", NO_LINE_END, 2}, {"", END, 2}}},
        Readln_case{"cr_cr", "a\r\rb\r\r\n", 0, 9, {{"a\r", 0, 3}, {"b\r", 0, 7}}},
        Readln_case{"cr_cr_of_pairs", "a\r\r\nb", 3, 9, {{"a\r", 0, 4}}},
        Readln_case{"exactly_max", "abc\r\nd", 0, 3, {{"abc", 0, 5}}},
        Readln_case{"max_and_one", "abcd\ne", 0, 3, {{"abc", 0, 4}, {"", 0, 5}, {"e", NO_LINE_END, 6}}},
        Readln_case{"max_and_one_before_a_pair", "abcd\r\ne", 3, 3, {{"abc", NO_LINE_END, 3}, {"d", 0, 6}}},
        Readln_case{"max_of_none", "\nab\n", 0, 0, {{"", 0, 1}, {"", NO_LINE_END, 1}, {"", NO_LINE_END, 1}}},
        Readln_case{"max_that_wraps_to_nothing", "ab\n", 0, 0xFFFFFFFE, {{"", NO_LINE_END, 0}, {"", NO_LINE_END, 0}}},
        Readln_case{
            "max_that_wraps_to_one", "ab\n", 0, 0xFFFFFFFF, {{"a", NO_LINE_END, 1}, {"b", NO_LINE_END, 2}, {"", 0, 3}}},
        Readln_case{"largest_max", "ab", 0, 0xFFFFFFFD, {{"ab", NO_LINE_END, 2}}},
        Readln_case{"nothing", "", 0, 9, {{"", END, 0}, {"", END, 0}}},
        Readln_case{"zeros",
                    std::string("\0\0\n\0", 4),
                    0,
                    9,
                    {{std::string(2, '\0'), 0, 3}, {std::string(1, '\0'), NO_LINE_END, 4}}}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST(Wreadln, forms_units_in_the_order_of_its_name)
{
    // A and U+0D0A in one order are U+4100 and U+0A0D in the other; neither is a line end.
    const Vector_buffer buffer(std::string("\x00\x41\x0D\x0A\x00\x0A\x42\x00\x0A\x00\x43", 11));
    Tam_status status;
    Tam_buffered_istream stream(buffer, false, status);
    EXPECT_EQ(read_line(stream, Reader::WIDE_BE, 9), (Line{bytes_of(L"A\x0D0A"), 0, 6}));
    EXPECT_EQ(read_line(stream, Reader::WIDE_LE, 9), (Line{bytes_of(L"B"), 0, 10}));
    EXPECT_EQ(read_line(stream, Reader::WIDE, 9), (Line{"", END, 10})) << "half a unit is never delivered";
    stream.seek(0);
    EXPECT_EQ(read_line(stream, Reader::WIDE, 2), (Line{bytes_of(L"\x4100\x0A0D"), NO_LINE_END, 4}));
    EXPECT_EQ(read_line_at(stream, 6, Reader::WIDE, 9), (Line{bytes_of(L"B"), 0, 4}));
}

// Text of lines around length units long, with line ends of every kind and what only looks like one.
std::string random_text(std::mt19937& random, std::size_t size, unsigned int length, bool wide)
{
    std::string text;
    while (text.size() < size) {
        for (unsigned int n = random() % (length + 2); n != 0; --n) {
            const char* const halves = "ab\r\n";
            text += "ab\r\0"[random() % 30 == 0 ? 2 + random() % 2 : random() % 2];
            if (wide) {
                text += random() % 8 == 0 ? halves[random() % 4] : '\0';
            }
        }
        const std::string end[] = {"\r\n", "\n", "\r", "\r\r\n"};
        for (const char unit : end[random() % 4]) {
            if (wide && random() % 2 == 0) {
                text += '\0';
                text += unit;
            } else {
                text += unit;
                text += wide ? std::string(1, '\0') : "";
            }
        }
    }
    text.resize(size);
    return text;
}

// A stream of a caller's own, whose read_at the line readers must call for every byte.
class Own_read_at : public Tam_buffered_istream {
public:
    using Tam_buffered_istream::Tam_buffered_istream;
    unsigned int read_at(unsigned long long position, unsigned int count, void* destination,
                         Tam_status& status) const override
    {
        const unsigned int n = Tam_buffered_istream::read_at(position, count, destination, status);
        std::replace(static_cast<char*>(destination), static_cast<char*>(destination) + n, 'x', 'y');
        return n;
    }
};

TEST(Line_readers, call_the_read_at_of_a_derived_class_for_every_byte)
{
    const Vector_buffer buffer("xx\nxxxx\n" + std::string(200, ' '));
    Tam_status status;
    Own_read_at stream(buffer, false, status);
    EXPECT_EQ(read_line(stream, Reader::NARROW, 9), (Line{"yy", 0, 3}));
    EXPECT_EQ(read_line(stream, Reader::NARROW, 9), (Line{"yyyy", 0, 8}));
}

TEST(Line_readers, all_read_the_lines_that_the_rules_say)
{
    const unsigned int seed = 20240611;
    std::mt19937 random(seed);
    const unsigned int lengths[] = {3, 20, 78, 200, 20000};
    const std::size_t sizes[] = {0, 1, 30, 500, 16383, 16384, 16385, 33000};
    for (unsigned int round = 0; round < 700; ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
        const auto reader = static_cast<Reader>(random() % 4);
        const unsigned int length = lengths[random() % std::size(lengths)];
        const unsigned int eol = random() % 8 == 0 ? 4 : random() % 4;
        Vector_buffer buffer(random_text(random, sizes[random() % std::size(sizes)], length, reader != Reader::NARROW));
        if (random() % 4 == 0 && !buffer.data.empty()) {
            buffer.fail_from = random() % buffer.data.size();
        }
        if (random() % 4 == 0) {
            // Short and odd reads, the same at the same position.
            buffer.portion = [](unsigned long long position) {
                return static_cast<unsigned int>(position * 7 % 101 + 1);
            };
        }
        const unsigned int maxima[] = {length, length + 1, length / 2 + 1, 1, 77, 0xFFFFFFFD};
        Tam_status status;
        const auto convention = static_cast<Tam_eol>(eol);
        Tam_buffered_istream buffered(buffer, false, status, convention);
        Tam_unbuffered_istream unbuffered(buffer, false, status, convention);
        Own_read_at derived(buffer, false, status, convention);
        const Tam_unbuffered_istream source(buffer, false, status);
        unsigned long long position = random() % 3;
        buffered.seek(position);
        unbuffered.seek(position);
        derived.seek(position);
        for (unsigned int lines = 0; lines < 400; ++lines) {
            const unsigned int max = maxima[random() % std::size(maxima)];
            const Line expected = reference_line(source, position, reader, max, eol);
            ASSERT_EQ(read_line(buffered, reader, max), expected) << lines << ", max " << max;
            ASSERT_EQ(read_line(unbuffered, reader, max), expected) << lines << ", max " << max;
            ASSERT_EQ(read_line(derived, reader, max), expected) << lines << ", max " << max;
            ASSERT_EQ(read_line_at(buffered, position, reader, max), expected) << lines << ", max " << max;
            position = expected.after;
            if (expected.status != 0 && expected.status != NO_LINE_END) {
                break;
            }
            if (random() % 50 == 0) {
                position = random() % (buffer.data.size() + 3);
                buffered.seek(position);
                unbuffered.seek(position);
                derived.seek(position);
            }
        }
    }
}

// A stream of a caller's own: delivers what its script says and keeps what it was asked for.
class Scripted_stream : public Tam_istream {
public:
    struct Request {
        unsigned long long position;
        unsigned int count;
        bool operator==(const Request&) const = default;
    };

    void detach() override {}
    unsigned int read(unsigned int, void*, Tam_status&) override { return 0; }
    unsigned int read_at(unsigned long long position, unsigned int count, void* destination,
                         Tam_status& status) const override
    {
        requests.push_back({position, count});
        if (requests.size() > portions.size()) {
            status = END;
            return 0;
        }
        const unsigned int n = std::min(count, portions[requests.size() - 1]);
        std::memset(destination, 'x', n);
        return n;
    }

    std::vector<unsigned int> portions;
    mutable std::vector<Request> requests;
};

TEST(Line_readers, ask_for_78_units_at_most_and_never_more_than_they_need)
{
    Scripted_stream stream;
    stream.portions = {78, 78, 10, 100};
    Tam_status status;
    std::string line;
    stream.readln_at(5, 170, line, status);
    EXPECT_EQ(stream.requests, (std::vector<Scripted_stream::Request>{{5, 78}, {83, 78}, {161, 16}, {171, 6}}));
    EXPECT_EQ(line, std::string(170, 'x'));
    EXPECT_EQ(status.value(), NO_LINE_END);
}

TEST(Line_readers, ask_again_while_nothing_or_half_a_unit_arrives)
{
    Scripted_stream stream;
    stream.portions = {0, 1, 0, 2, 4};
    Tam_status status;
    std::wstring line;
    stream.wreadln_at(0, 3, line, status);
    // The third byte was half a unit and is read again with the next piece.
    EXPECT_EQ(stream.requests,
              (std::vector<Scripted_stream::Request>{{0, 10}, {0, 10}, {1, 9}, {1, 9}, {2, 8}, {6, 4}}));
    EXPECT_EQ(line.size(), 3U);
    EXPECT_EQ(status.value(), NO_LINE_END);
}

TEST(Line_readers, follow_a_buffer_that_grows)
{
    Vector_buffer buffer("ab");
    buffer.before_read = [&buffer] {
        if (buffer.reads.size() == 2) {
            buffer.data += "c\nd";
        }
    };
    Tam_status status;
    Tam_buffered_istream stream(buffer, true, status);
    EXPECT_EQ(read_line(stream, Reader::NARROW, 9), (Line{"abc", 0, 4}));
    EXPECT_EQ(read_line(stream, Reader::NARROW, 9), (Line{"d", NO_LINE_END, 5}));
    buffer.data += "e\n";
    EXPECT_EQ(read_line(stream, Reader::NARROW, 9), (Line{"e", 0, 7}));
}

} // namespace
} // namespace tam
