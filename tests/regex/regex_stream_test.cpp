#include <tam/regex/regular_expression.h>

#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tam/stream/buffered_istream.h>
#include <tam/stream/unbuffered_istream.h>
#include <tests/regex/both.h>
#include <tests/stream/vector_buffer.h>
#include <tests/support/chain.h>

namespace tam {
namespace {

template <class Kind>
class Regex_stream : public testing::Test {
public:
    using Expression = typename Kind::Expression;
    using String = typename Kind::String;
    using Lines = std::vector<std::pair<unsigned long long, String>>;

    static constexpr std::size_t UNIT = sizeof(typename String::value_type);
    static constexpr std::size_t BLOCK = Expression::STREAM_BLOCK / UNIT; // in units

    Expression compiled(const std::string& pattern)
    {
        Expression expression(Kind::text(pattern), status);
        EXPECT_EQ(test::chain(status), L"");
        return expression;
    }

    std::unique_ptr<Tam_istream> open(Tam_eol eol = TAM_EOL_ANY)
    {
        return std::make_unique<Tam_unbuffered_istream>(buffer, false, status, eol);
    }

    static bool collect(const String& line, unsigned long long number, void* lines)
    {
        static_cast<Lines*>(lines)->emplace_back(number, line);
        return true;
    }

    // Lines read one by one and searched as strings are what grep has to find, wherever its blocks end.
    void expect_lines_of(const Expression& expression, const std::string& text)
    {
        buffer.data = "?" + test::bytes(Kind::text(text)) + std::string(UNIT - 1, 'x');
        for (const unsigned int eol : {0, 1, 2, 3, 4}) {
            const auto stream = open(static_cast<Tam_eol>(eol));
            Lines expected;
            stream->seek(1);
            for (unsigned long long number = 1;; ++number) {
                String line;
                if constexpr (UNIT == 1) {
                    stream->readln(100000, line, status);
                } else {
                    stream->wreadln(100000, line, status);
                }
                if (status == TAM_E_END_OF_DATA) {
                    break;
                }
                std::size_t start = 0;
                std::size_t length = 0;
                if (expression.search(line, 0, start, length, status)) {
                    expected.emplace_back(number, line);
                }
            }
            Lines found;
            stream->seek(1);
            EXPECT_EQ(expression.grep(*stream, collect, &found, status), expected.size());
            ASSERT_EQ(found, expected) << eol;
            EXPECT_TRUE(status.is_clear());
            EXPECT_EQ(stream->tell(), buffer.data.size());
        }
    }

    test::Vector_buffer buffer;
    Tam_status status;
};
TYPED_TEST_SUITE(Regex_stream, test::Both);

// The text lies behind `before` other bytes.
TYPED_TEST(Regex_stream, finds_what_the_same_search_finds_in_a_string)
{
    const std::size_t block = this->BLOCK;
    std::vector<std::string> texts{"", "ac", "xx"};
    for (std::size_t size = block - 5; size != block + 3; ++size) {
        texts.push_back(std::string(size, 'x') + "abbc y");
        texts.push_back("a" + std::string(2 * size, 'b') + "c");
        texts.push_back(std::string(size, 'x') + "ab");
    }
    for (const char* const pattern : {"ab*c", "ab+c?", "abbc", "^a[bc]*$", "\\bab*c\\b", "(x+|a)b*$", "[bc]c"}) {
        const auto expression = this->compiled(pattern);
        for (const std::string& row : texts) {
            const auto text = TypeParam::text(row);
            for (const std::size_t before : {0, 3}) {
                this->buffer.data = std::string(before, 'a') + test::bytes(text);
                const bool in_portions = before != 0;
                this->buffer.portion = [in_portions](unsigned long long) { return in_portions ? 7777U : 0xFFFFFFFFU; };
                SCOPED_TRACE(std::string(pattern) + " " + std::to_string(row.size()) + row.substr(0, 2));
                const auto stream = this->open();
                for (const bool longest : {false, true}) {
                    std::size_t start = 0;
                    std::size_t length = 0;
                    const bool found = longest ? expression.search_longest(text, 0, start, length, this->status)
                                               : expression.search(text, 0, start, length, this->status);
                    unsigned long long found_start = 9;
                    unsigned long long found_length = 9;
                    stream->seek(before);
                    EXPECT_EQ(longest ? expression.search_longest(*stream, found_start, found_length, this->status)
                                      : expression.search(*stream, found_start, found_length, this->status),
                              found);
                    EXPECT_EQ(found_start, found ? start + before / this->UNIT : 0);
                    EXPECT_EQ(found_length, length);
                    EXPECT_EQ(stream->tell(), before + (start + length) * this->UNIT);
                }
                stream->seek(before);
                const bool whole = expression.match(text, this->status);
                EXPECT_EQ(expression.match(*stream, this->status), whole);
                EXPECT_EQ(stream->tell(), whole ? this->buffer.data.size() : before);
                EXPECT_TRUE(this->status.is_clear());
            }
        }
    }
}

TYPED_TEST(Regex_stream, grep_finds_the_lines_that_a_search_line_by_line_finds)
{
    std::mt19937 random(11);
    for (const char* const pattern :
         {"b$", "^a", "a.b", "^$", "\r", "\n", "ab|ba$", "", "aab", "\\bb", "b\\b", "[^a]a$", "a\\s", "(^|b)b"}) {
        const auto expression = this->compiled(pattern);
        for (int round = 0; round != 60; ++round) {
            std::string text;
            for (unsigned int length = random() % 40; length != 0; --length) {
                text += "aaaabbb\r\n \r\n"[random() % 12];
            }
            const unsigned int most = 1 + random() % 5;
            this->buffer.portion = [most](unsigned long long) { return most; };
            SCOPED_TRACE(std::string(pattern) + " in " + testing::PrintToString(text));
            this->expect_lines_of(expression, text);
        }
    }
}

// Blocks without a match, after others without one, are searched in several places at once.
TYPED_TEST(Regex_stream, grep_finds_rare_lines_in_long_texts)
{
    const auto block = static_cast<unsigned int>(8192 * this->UNIT);
    this->buffer.portion = [block](unsigned long long) { return block; };
    std::mt19937 random(12);
    std::string quiet;
    for (unsigned int length = 0; length != 48000; ++length) {
        quiet += "ccccccc \r\n\r\n"[random() % 12];
    }
    for (const char* const pattern : {"[a-c]b", "(c|a)*b$"}) {
        const auto expression = this->compiled(pattern);
        for (std::size_t place = 47900; place > 39000; place -= 1900) {
            std::string text = quiet;
            text.replace(place, 2, "ab");
            SCOPED_TRACE(std::string(pattern) + " " + std::to_string(place));
            this->expect_lines_of(expression, text);
        }
    }
}

TYPED_TEST(Regex_stream, grep_gives_lines_of_any_length_up_to_a_maximum)
{
    const std::size_t block = this->BLOCK;
    std::vector<std::string> matching;
    std::vector<std::size_t> ends;
    std::string text;
    for (const std::size_t length : {block - 2, block - 1, block, 3 * block, std::size_t{0}, block + 1}) {
        matching.push_back(std::string(length, 'y') + "ab");
        text += std::string(length, 'y') + "\r\n" + matching.back() + "\r\n";
        ends.push_back(text.size());
    }
    this->buffer.data = test::bytes(TypeParam::text(text));
    for (const char* const pattern : {"ab", "y*ab$", "[a-c]b"}) {
        const auto expression = this->compiled(pattern);
        for (const unsigned int max : {0U, 1U, 4U, 6U}) {
            const auto stream = this->open();
            Tam_object_vector<typename TypeParam::String> lines;
            lines.push_back(TypeParam::text("earlier"));
            const unsigned int expected = max == 0 ? 6 : max;
            ASSERT_EQ(expression.grep(*stream, lines, max, this->status), expected);
            ASSERT_EQ(lines.size(), expected);
            for (unsigned int i = 0; i != expected; ++i) {
                EXPECT_TRUE(lines.at(i) == TypeParam::text(matching[i])) << i;
            }
            EXPECT_EQ(stream->tell(), ends[expected - 1] * this->UNIT);
        }
    }
}

TYPED_TEST(Regex_stream, grep_stops_when_its_callback_says_so)
{
    this->buffer.data = test::bytes(TypeParam::text("b\na1\nb\na2\na3\n"));
    const auto stream = this->open();
    const auto expression = this->compiled("a");
    struct Seen {
        std::vector<unsigned long long> numbers;
        bool throws;
    } seen{{}, false};
    const auto callback = [](const typename TypeParam::String&, unsigned long long number, void* argument) {
        Seen& to = *static_cast<Seen*>(argument);
        to.numbers.push_back(number);
        if (to.throws) {
            throw std::runtime_error("enough");
        }
        return number < 4;
    };
    EXPECT_EQ(expression.grep(*stream, callback, &seen, this->status), 2U);
    EXPECT_EQ(seen.numbers, (std::vector<unsigned long long>{2, 4}));
    EXPECT_EQ(stream->tell(), 10 * this->UNIT);

    seen.throws = true;
    EXPECT_THROW(expression.grep(*stream, callback, &seen, this->status), std::runtime_error);
    EXPECT_EQ(seen.numbers.back(), 1U);
    EXPECT_EQ(stream->tell(), 10 * this->UNIT);
    seen.throws = false;
    EXPECT_EQ(expression.grep(*stream, callback, &seen, this->status), 1U);
}

TYPED_TEST(Regex_stream, a_failing_stream_is_left_where_it_was)
{
    const std::string line = "a" + std::string(3 * this->BLOCK, 'b');
    this->buffer.data = test::bytes(TypeParam::text("a\n" + line + "c"));
    const auto stream = this->open();
    const auto expression = this->compiled("ab*c");
    unsigned long long start = 9;
    unsigned long long length = 9;
    const auto expect_failure = [&](bool result, const wchar_t* chain) {
        EXPECT_FALSE(result);
        EXPECT_EQ(test::chain(this->status), chain);
        EXPECT_EQ(start + length, 0U);
        EXPECT_EQ(stream->tell(), 2 * this->UNIT);
    };
    stream->seek(2 * this->UNIT);
    // The reading forwards fails, and then the one back to the match's start.
    this->buffer.fail_from = 2 * this->BLOCK * this->UNIT;
    expect_failure(expression.search(*stream, start, length, this->status), L"C200001B 1117");
    expect_failure(expression.match(*stream, this->status), L"C200001B 1117");
    Tam_object_vector<typename TypeParam::String> lines;
    stream->seek(0ULL);
    EXPECT_EQ(this->compiled("a").grep(*stream, lines, 0, this->status), 1U);
    EXPECT_EQ(test::chain(this->status), L"C200001B 1117");
    EXPECT_EQ(stream->tell(), 0U);
    stream->seek(2 * this->UNIT);

    this->buffer.fail_from = ~0ULL;
    this->buffer.before_read = [this] {
        const auto& reads = this->buffer.reads;
        if (reads.size() > 1 && reads.back().position < reads[reads.size() - 2].position) {
            this->buffer.fail_from = 0;
        }
    };
    this->buffer.reads.clear();
    expect_failure(expression.search(*stream, start, length, this->status), L"C200001B 1117");
    EXPECT_GT(this->buffer.reads.size(), 4U);

    Tam_unbuffered_istream detached;
    EXPECT_FALSE(expression.search(detached, start, length, this->status));
    EXPECT_EQ(test::chain(this->status), L"C2000017");
}

} // namespace
} // namespace tam
