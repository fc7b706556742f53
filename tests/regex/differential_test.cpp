// Patterns of random shape on random texts, against a matcher that is too simple to be wrong, and against std::regex.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <tam/regex.h>
#include <tam/stream.h>
#include <tam/text.h>

using namespace tam;

namespace {

// Places in a text, one bit each: bit i lies before unit i.
using Places = std::uint32_t;

class Random {
public:
    explicit Random(unsigned int seed) : m_engine(seed) {}

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(m_engine()) % limit; }

    template <std::size_t Size>
    const auto& one_of(const auto(&list)[Size])
    {
        return list[below(Size)];
    }

    char unit_of(const char* units)
    {
        return units[below(static_cast<unsigned int>(std::char_traits<char>::length(units)))];
    }

private:
    std::mt19937 m_engine;
};

constexpr char ALL_UNITS[] = "abcB_1 -*]\\\n\b";
constexpr char PLAIN_UNITS[] = "aaaabbbcB_1 "; // likelier ones more often, all without a meaning of their own

bool is_word(char c)
{
    return c == '_' || std::isalnum(static_cast<unsigned char>(c));
}

template <class Accepts>
std::string accepted_units(const Accepts& accepts)
{
    std::string units;
    std::copy_if(std::begin(ALL_UNITS), std::end(ALL_UNITS) - 1, std::back_inserter(units), accepts);
    return units;
}

// A piece of a pattern and the units that it takes.
struct Class {
    const char* pattern;
    bool (*accepts)(char);
};

constexpr Class ESCAPES_OUTSIDE_SETS[] = {
    {R"((\x61))", [](char c) { return c == 'a'; }}, // a letter behind it would be a digit
    {R"(\D)", [](char c) { return c != '1'; }},
    {R"(\W)", [](char c) { return !is_word(c); }},
    {R"(\S)", [](char c) { return c != ' ' && c != '\n'; }},
};

constexpr Class ESCAPES[] = {
    {R"(\d)", [](char c) { return c == '1'; }},
    {R"(\w)", [](char c) { return is_word(c); }},
    {R"(\s)", [](char c) { return c == ' ' || c == '\n'; }},
    {R"(\*)", [](char c) { return c == '*'; }},
    {R"(\])", [](char c) { return c == ']'; }},
    {R"(\\)", [](char c) { return c == '\\'; }},
    {R"(\n)", [](char c) { return c == '\n'; }},
    {R"(\142)", [](char c) { return c == 'b'; }},
};

constexpr Class SET_ELEMENTS[] = {
    {"a", [](char c) { return c == 'a'; }},
    {"b", [](char c) { return c == 'b'; }},
    {"*", [](char c) { return c == '*'; }},
    {"a-c", [](char c) { return c >= 'a' && c <= 'c'; }},
    {"A-b", [](char c) { return c >= 'A' && c <= 'b'; }},
    {"[:alpha:]", [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }},
    {"[:upper:]", [](char c) { return c == 'B'; }},
    {"[:digit:]", [](char c) { return c == '1'; }},
    {"[:space:]", [](char c) { return c == ' ' || c == '\n'; }},
    {"[:punct:]", [](char c) { return std::ispunct(static_cast<unsigned char>(c)) != 0; }},
};

enum Dialect { FULL, LINE_BORDERS, POSIX }; // POSIX: only what std::regex means in the same way

// A pattern of random shape, and where it can match: every part maps the set of all places where it may start to the set
// of all places where it may end, which leaves nothing to try in an order.
class Tree {
public:
    Tree(Random& random, unsigned int depth, Dialect dialect) : m_kind(SET), m_dialect(dialect)
    {
        const unsigned int choice = depth == 0 ? 0 : random.below(100);
        if (choice < 20) {
            _make_unit(random, dialect);
        } else if (choice < 55) {
            _make_list(SEQUENCE, random, depth, dialect);
        } else if (choice < 75) {
            _make_list(ALTERNATIVES, random, depth, dialect);
        } else {
            _make_repeat(random, depth, dialect);
        }
    }

    const std::string& pattern() const { return m_pattern; }

    Places ends(const std::string& text, Places starts) const
    {
        const auto keep = [&](const auto& is_right) {
            Places kept = 0;
            for (std::size_t i = 0; i <= text.size(); ++i) {
                kept |= starts & Places{is_right(i)} << i;
            }
            return kept;
        };
        switch (m_kind) {
        case SET:
            return keep([&](std::size_t i) { return i < text.size() && m_accepted.find(text[i]) != m_accepted.npos; })
                   << 1;
        case LINE_BEGIN:
            return keep([&](std::size_t i) { return i == 0 || (m_dialect == LINE_BORDERS && text[i - 1] == '\n'); });
        case LINE_END:
            return keep(
                [&](std::size_t i) { return i == text.size() || (m_dialect == LINE_BORDERS && text[i] == '\n'); });
        case WORD_BORDER:
            return keep([&](std::size_t i) {
                return (i > 0 && is_word(text[i - 1])) != (i < text.size() && is_word(text[i]));
            });
        case SEQUENCE:
            for (const Tree& part : m_parts) {
                starts = part.ends(text, starts);
            }
            return starts;
        case ALTERNATIVES: {
            Places reached = 0;
            for (const Tree& part : m_parts) {
                reached |= part.ends(text, starts);
            }
            return reached;
        }
        case REPEAT: {
            Places reached = m_minimum == 0 ? starts : 0;
            for (unsigned int count = 1; count <= m_maximum; ++count) {
                starts = m_parts.front().ends(text, starts);
                if ((starts & ~reached) == 0) {
                    break; // from there nothing new is reached either
                }
                reached |= count >= m_minimum ? starts : 0;
            }
            return reached;
        }
        }
        return 0;
    }

private:
    enum Kind { SET, LINE_BEGIN, LINE_END, WORD_BORDER, SEQUENCE, ALTERNATIVES, REPEAT };

    void _make_unit(Random& random, Dialect dialect)
    {
        const unsigned int choice = random.below(100);
        if (choice < 50) {
            m_pattern = random.unit_of(PLAIN_UNITS);
            m_accepted = m_pattern;
        } else if (choice < 60) {
            m_pattern = '.';
            m_accepted = accepted_units([](char c) { return c != '\n'; });
        } else if (choice < 75) {
            _make_set(random, dialect);
        } else if (choice < 80) {
            m_kind = LINE_BEGIN;
            m_pattern = '^';
        } else if (choice < 85) {
            m_kind = LINE_END;
            m_pattern = '$';
        } else if (dialect == POSIX) {
            m_pattern = "a";
            m_accepted = "a";
        } else if (choice < 90) {
            m_kind = WORD_BORDER;
            m_pattern = R"(\b)";
        } else if (choice < 92) {
            m_kind = SEQUENCE; // of nothing
        } else {
            const Class& escape = choice < 97 ? random.one_of(ESCAPES) : random.one_of(ESCAPES_OUTSIDE_SETS);
            m_pattern = escape.pattern;
            m_accepted = accepted_units(escape.accepts);
        }
    }

    void _make_set(Random& random, Dialect dialect)
    {
        std::string accepted;
        const bool negated = random.below(3) == 0;
        m_pattern = negated ? "[^" : "[";
        const auto add = [&](const char* pattern, const auto& accepts) {
            m_pattern += pattern;
            accepted += accepted_units(accepts);
        };
        if (random.below(8) == 0) {
            add("]", [](char c) { return c == ']'; });
        }
        for (unsigned int count = 1 + random.below(3); count != 0; --count) {
            const unsigned int choice = dialect == POSIX ? 0 : random.below(8);
            const Class& element = choice < 5 ? random.one_of(SET_ELEMENTS) : random.one_of(ESCAPES);
            add(element.pattern, element.accepts);
        }
        if (dialect != POSIX && random.below(8) == 0) {
            add(R"(\b)", [](char c) { return c == '\b'; });
        }
        if (dialect != POSIX && random.below(8) == 0) {
            add("a-c-", [](char c) { return (c >= 'a' && c <= 'c') || c == '-'; });
        }
        if (random.below(8) == 0) {
            add("-", [](char c) { return c == '-'; });
        }
        m_pattern += ']';
        m_accepted = accepted_units([&](char c) { return (accepted.find(c) != accepted.npos) != negated; });
    }

    void _make_list(Kind kind, Random& random, unsigned int depth, Dialect dialect)
    {
        m_kind = kind;
        for (unsigned int count = 2 + random.below(2); count != 0; --count) {
            const Tree& part = m_parts.emplace_back(random, depth - 1, dialect);
            if (kind == ALTERNATIVES) {
                m_pattern += (m_parts.size() == 1 ? "" : "|") + part.pattern();
            } else {
                m_pattern += part.m_kind == ALTERNATIVES ? "(" + part.pattern() + ")" : part.pattern();
            }
        }
    }

    void _make_repeat(Random& random, unsigned int depth, Dialect dialect)
    {
        constexpr unsigned int UNBOUNDED = 32; // more than any text has places
        m_kind = REPEAT;
        const Tree& part = m_parts.emplace_back(random, depth - 1, dialect);
        m_pattern = part.m_kind == SET || (part.m_kind == REPEAT && dialect != POSIX) ? part.pattern()
                                                                                      : "(" + part.pattern() + ")";
        m_minimum = random.below(3);
        m_maximum = m_minimum + random.below(3);
        switch (random.below(6)) {
        case 0:
            m_minimum = 0;
            m_maximum = UNBOUNDED;
            m_pattern += '*';
            break;
        case 1:
            m_minimum = 1;
            m_maximum = UNBOUNDED;
            m_pattern += '+';
            break;
        case 2:
            m_minimum = 0;
            m_maximum = 1;
            m_pattern += '?';
            break;
        case 3:
            m_maximum = UNBOUNDED;
            m_pattern += "{" + std::to_string(m_minimum) + ",}";
            break;
        case 4:
            m_maximum = m_minimum;
            m_pattern += "{" + std::to_string(m_minimum) + "}";
            break;
        default:
            m_pattern += "{" + std::to_string(m_minimum) + "," + std::to_string(m_maximum) + "}";
        }
    }

    Kind m_kind;
    Dialect m_dialect;
    std::string m_pattern;
    std::string m_accepted; // by a SET, of ALL_UNITS
    std::vector<Tree> m_parts;
    unsigned int m_minimum = 0;
    unsigned int m_maximum = 0; // of a REPEAT
};

std::string random_text(Random& random, const char* units, unsigned int longest)
{
    std::string text(random.below(longest + 1), ' ');
    std::generate(text.begin(), text.end(), [&] { return random.unit_of(units); });
    return text;
}

std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

std::string printable(const std::string& text)
{
    std::string quoted;
    tam_quote(text, quoted);
    return quoted;
}

// What the three ways to ask give, as text: "match 0 search 2+1 longest 2+4".
std::string answer(bool matches, bool found, std::size_t start, std::size_t shortest, std::size_t longest)
{
    std::string text = "match " + std::to_string(matches);
    if (found) {
        text += " search " + std::to_string(start) + "+" + std::to_string(shortest);
        text += " longest " + std::to_string(start) + "+" + std::to_string(longest);
    }
    return text;
}

// Places count from `base` on.
std::string expected_answer(const Tree& tree, const std::string& text, std::size_t base, std::size_t from)
{
    const bool matches = (tree.ends(text, 1) >> text.size() & 1) != 0;
    for (std::size_t start = from; start <= text.size(); ++start) {
        const Places ends = tree.ends(text, Places{1} << start);
        if (ends != 0) {
            return answer(matches, true, base + start, static_cast<std::size_t>(std::countr_zero(ends)) - start,
                          static_cast<std::size_t>(std::bit_width(ends)) - 1 - start);
        }
    }
    return answer(matches, false, 0, 0, 0);
}

// The lines in which there is a match, each with its line feed.
std::string expected_lines(const Tree& tree, const std::string& text)
{
    std::string lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line(text, begin, end - begin);
        if (tree.ends(line, (Places{2} << line.size()) - 1) != 0) {
            lines += line + '\n';
        }
        begin = end + 1;
    }
    return lines;
}

template <class Match, class Search, class Search_longest>
std::string given_answer(const Match& match, const Search& search, const Search_longest& search_longest)
{
    const bool matches = match();
    std::size_t start = 0;
    std::size_t shortest = 0;
    const bool found = search(start, shortest);
    std::size_t longest_start = 0;
    std::size_t longest = 0;
    const bool longest_found = search_longest(longest_start, longest);
    return found == longest_found && start == longest_start ? answer(matches, found, start, shortest, longest)
                                                            : "search and search_longest differ";
}

template <class Expression, class String>
std::string answer_for_text(const Expression& expression, const String& text, std::size_t from)
{
    Tam_status status;
    return given_answer(
        [&] { return expression.match(text, status); },
        [&](auto& start, auto& length) { return expression.search(text, from, start, length, status); },
        [&](auto& start, auto& length) { return expression.search_longest(text, from, start, length, status); });
}

// Delivers one to three bytes at a time.
class Dripping_stream : public Tam_unbuffered_istream {
public:
    using Tam_unbuffered_istream::Tam_unbuffered_istream;

    unsigned int read_at(unsigned long long position, unsigned int count, void* destination,
                         Tam_status& status) const override
    {
        const auto portion = static_cast<unsigned int>(1 + position % 3);
        return Tam_unbuffered_istream::read_at(position, std::min(count, portion), destination, status);
    }
};

// For what follows `from` in a stream, with the lines that grep finds.
template <class Expression, class String>
std::string answer_for_stream(const Expression& expression, String text, std::size_t from)
{
    constexpr std::size_t UNIT = sizeof(text[0]);
    const Tam_raw_memory_buffer buffer(text.size() * UNIT, text.data(), Tam_raw_memory_buffer::KEEP);
    Tam_status status;
    Dripping_stream stream(buffer, false, status, TAM_EOL_LF);
    const auto checked = [&](const auto& action, const auto& place_behind) {
        stream.seek(from * UNIT);
        const bool found = action();
        EXPECT_TRUE(status.ok());
        EXPECT_EQ(stream.tell(), place_behind(found) * UNIT);
        return found;
    };
    const auto behind = [&](const std::size_t& start, const std::size_t& length) {
        return [&](bool found) { return found ? start + length : from; };
    };
    std::string answer = given_answer(
        [&] {
            return checked([&] { return expression.match(stream, status); },
                           [&](bool found) { return found ? text.size() : from; });
        },
        [&](auto& start, auto& length) {
            return checked([&] { return expression.search(stream, start, length, status); }, behind(start, length));
        },
        [&](auto& start, auto& length) {
            return checked([&] { return expression.search_longest(stream, start, length, status); },
                           behind(start, length));
        });
    Tam_object_vector<String> lines;
    checked([&] { return expression.grep(stream, lines, 0, status) != 0; }, [&](bool) { return text.size(); });
    for (const String& line : lines) {
        answer.append(line.begin(), line.end()).append(1, '\n');
    }
    return answer;
}

// TAM_REGEX_SEED asks for another run, and for as many as it takes until the time is over.
unsigned int first_seed()
{
    const char* const wanted = std::getenv("TAM_REGEX_SEED");
    return wanted != nullptr ? static_cast<unsigned int>(std::strtoul(wanted, nullptr, 10)) : 20261121;
}

constexpr std::chrono::seconds TIME(6);
constexpr unsigned int PATTERNS = 1000;
constexpr unsigned int TEXTS = 12;

// Calls check(seed) with the seed of each pattern in turn, until there were enough patterns or the time is over.
template <class Check>
void with_random_patterns(unsigned int patterns, const Check& check)
{
    const auto end = std::chrono::steady_clock::now() + TIME;
    unsigned int seed = first_seed();
    const unsigned int last = seed + patterns;
    for (; seed != last && std::chrono::steady_clock::now() < end && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        check(seed);
    }
    std::printf("seeds %u to %u\n", first_seed(), seed - 1);
}

} // namespace

TEST(Regular_expression_differential, agrees_with_a_matcher_that_tries_all_places)
{
    with_random_patterns(PATTERNS, [](unsigned int seed) {
        Random random(seed);
        const bool line_borders = random.below(2) != 0;
        const Tree tree(random, 1 + random.below(4), line_borders ? LINE_BORDERS : FULL);
        Tam_status status;
        const Tam_regular_expression narrow(tree.pattern(), status, line_borders);
        ASSERT_TRUE(status.ok()) << printable(tree.pattern());
        const Tam_wregular_expression wide(widened(tree.pattern()), status, line_borders);
        ASSERT_TRUE(status.ok()) << printable(tree.pattern());
        for (unsigned int i = 0; i < TEXTS; ++i) {
            const std::string text = random_text(random, i % 3 == 0 ? ALL_UNITS : PLAIN_UNITS, 12);
            const std::size_t from =
                random.below(3) == 0 ? random.below(static_cast<unsigned int>(text.size()) + 1) : 0;
            SCOPED_TRACE(printable(tree.pattern()) + " on " + printable(text) + " from " + std::to_string(from));
            const std::string expected = expected_answer(tree, text, 0, from);
            ASSERT_EQ(answer_for_text(narrow, text, from), expected);
            ASSERT_EQ(answer_for_text(wide, widened(text), from), expected);
            if (i % 4 == 0) {
                const std::string rest(text, from);
                const std::string expected_of_rest = expected_answer(tree, rest, from, 0) + expected_lines(tree, rest);
                ASSERT_EQ(answer_for_stream(narrow, text, from), expected_of_rest);
                ASSERT_EQ(answer_for_stream(wide, widened(text), from), expected_of_rest);
            }
        }
    });
}

// It takes exponential time: fewer and flatter patterns, shorter texts.
TEST(Regular_expression_differential, agrees_with_std_regex_where_both_mean_the_same)
{
    with_random_patterns(PATTERNS, [](unsigned int seed) {
        Random random(seed);
        const Tree tree(random, 1 + random.below(2), POSIX);
        Tam_status status;
        const Tam_regular_expression ours(tree.pattern(), status);
        ASSERT_TRUE(status.ok()) << tree.pattern();
        const std::regex theirs(tree.pattern(), std::regex::extended);
        for (unsigned int i = 0; i < TEXTS; ++i) {
            const std::string text = random_text(random, PLAIN_UNITS, 8);
            std::smatch found;
            const bool is_found = std::regex_search(text, found, theirs);
            std::size_t start = 0;
            std::size_t length = 0;
            ASSERT_EQ(ours.search_longest(text, 0, start, length, status), is_found)
                << tree.pattern() << " on " << text;
            if (is_found) {
                ASSERT_EQ(start, static_cast<std::size_t>(found.position())) << tree.pattern() << " on " << text;
                // It does not always find the longest: of "baa_a" only two units for a?(.a_|a|a|a).
                ASSERT_GE(length, static_cast<std::size_t>(found.length())) << tree.pattern() << " on " << text;
            }
            ASSERT_EQ(ours.match(text, status), std::regex_match(text, theirs)) << tree.pattern() << " on " << text;
        }
    });
}
