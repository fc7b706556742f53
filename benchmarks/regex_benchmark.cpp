#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <emmintrin.h>

#include <tam/file.h>
#include <tam/regex.h>
#include <tam/stream.h>

#include <benchmarks/benchmarks.h>
#include <benchmarks/scratch_file.h>

namespace tam::benchmarks {

namespace {

constexpr std::size_t TEXT_UNITS = 16 << 20;
constexpr std::size_t STD_UNITS = 256 << 10; // what std::regex is given: with all of the text it takes minutes
constexpr std::size_t HOSTILE_UNITS = 1 << 20;

constexpr char LITERAL[] = "Reykjavik";
constexpr char CLASSES[] = "[A-Z][a-z]+ing";
constexpr const char* WORDS[] = {"abort",  "backup",  "cancel", "disconnect", "expire",   "flush",   "grant",
                                 "halt",   "install", "jump",   "kill",       "logout",   "migrate", "notify",
                                 "online", "purge",   "query",  "restart",    "shutdown", "timeout"};

void require(bool right)
{
    if (!right) {
        throw std::logic_error("the two ways differ");
    }
}

std::string alternation()
{
    std::string pattern;
    for (const char* word : WORDS) {
        pattern += pattern.empty() ? "" : "|";
        pattern += word;
    }
    return pattern;
}

// Sentences of made-up words, a line feed about every 80 units. One word in 16 ends in "ing", one in 500 is of WORDS.
std::string sentences(std::size_t units)
{
    std::mt19937 random(1);
    const auto below = [&](unsigned int limit) { return static_cast<unsigned int>(random()) % limit; };
    std::string text;
    std::size_t line = 0;
    while (text.size() < units) {
        std::string word;
        if (below(500) == 0) {
            word = WORDS[below(std::size(WORDS))];
        } else {
            for (unsigned int length = 2 + below(8); length != 0; --length) {
                word += "etaoinshrdlucmfwypvbgk"[std::min(below(22), below(22))];
            }
            word += below(16) == 0 ? "ing" : "";
        }
        if (below(10) == 0) {
            word[0] = static_cast<char>(word[0] - 'a' + 'A');
        }
        text += word;
        const bool ends_line = text.size() - line > 80;
        text += ends_line ? '\n' : ' ';
        line = ends_line ? text.size() : line;
    }
    text.resize(units);
    return text;
}

template <class Char>
std::basic_string<Char> as(const std::string& text)
{
    return {text.begin(), text.end()};
}

template <class Char>
using Expression = std::conditional_t<sizeof(Char) == 1, Tam_regular_expression, Tam_wregular_expression>;

template <class Char>
Expression<Char> compiled(const std::string& pattern)
{
    Tam_status status;
    Expression<Char> expression(as<Char>(pattern), status);
    require(status.ok());
    return expression;
}

template <class Char>
std::size_t count_matches(const Expression<Char>& expression, const std::basic_string<Char>& text)
{
    Tam_status status;
    std::size_t count = 0;
    std::size_t start = 0;
    std::size_t length = 0;
    while (expression.search_longest(text, start + length, start, length, status)) {
        ++count;
    }
    return count;
}

template <class Char>
std::size_t count_matches_with_std(const std::basic_regex<Char>& expression, const std::basic_string<Char>& text)
{
    using Iterator = std::regex_iterator<typename std::basic_string<Char>::const_iterator>;
    return static_cast<std::size_t>(std::distance(Iterator(text.begin(), text.end(), expression), Iterator()));
}

// memchr as good run-times have it, sixteen bytes at a time; that of Wine goes byte by byte.
template <class Char>
const Char* find_unit(const Char* at, const Char* end, Char wanted)
{
    constexpr std::ptrdiff_t UNITS = sizeof(__m128i) / sizeof(Char);
    const __m128i all =
        sizeof(Char) == 1 ? _mm_set1_epi8(static_cast<char>(wanted)) : _mm_set1_epi16(static_cast<short>(wanted));
    for (; end - at >= UNITS; at += UNITS) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i equal = sizeof(Char) == 1 ? _mm_cmpeq_epi8(units, all) : _mm_cmpeq_epi16(units, all);
        const auto found = static_cast<unsigned int>(_mm_movemask_epi8(equal));
        if (found != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(found)) / sizeof(Char);
        }
    }
    return std::find(at, end, wanted);
}

template <class Char>
std::size_t find_literal(const std::basic_string<Char>& text, const std::basic_string<Char>& literal)
{
    const Char* const end = text.data() + text.size() - literal.size() + 1;
    for (const Char* at = text.data(); (at = find_unit(at, end, literal[0])) != end; ++at) {
        if (std::memcmp(at, literal.data(), literal.size() * sizeof(Char)) == 0) {
            return static_cast<std::size_t>(at - text.data());
        }
    }
    return text.npos;
}

template <class Char>
void compare_literal(const char* name, const std::string& narrow_text)
{
    std::basic_string<Char> text = as<Char>(narrow_text);
    const std::basic_string<Char> literal = as<Char>(LITERAL);
    text.replace(text.size() - literal.size(), literal.size(), literal);
    const Expression<Char> expression = compiled<Char>(LITERAL);
    std::size_t found = 0;
    std::size_t peer_found = 1;
    compare({name, "units", TEXT_UNITS,
             [&] {
                 Tam_status status;
                 std::size_t length = 0;
                 expression.search(text, 0, found, length, status);
             },
             "memchr (SSE2), memcmp", [&] { peer_found = find_literal(text, literal); }, ">= 0.5"});
    require(found == peer_found);
}

template <class Char>
void compare_with_std(const char* name, const std::string& pattern, const std::string& narrow_text)
{
    const std::basic_string<Char> text = as<Char>(narrow_text);
    const std::basic_string<Char> part(text, 0, STD_UNITS);
    const Expression<Char> expression = compiled<Char>(pattern);
    const std::basic_regex<Char> peer(as<Char>(pattern), std::regex::optimize);
    require(count_matches<Char>(expression, part) == count_matches_with_std(peer, part));
    std::size_t count = 0;
    compare({name, "units", TEXT_UNITS,
             [&] {
                 count = count_matches<Char>(expression, text);
                 consume(&count);
             },
             "std::regex, 256 K units",
             [&] {
                 count = count_matches_with_std(peer, part);
                 consume(&count);
             },
             ">= 20", STD_UNITS});
}

// What [A-Z][a-z]+ing compiles to by hand: a capital, then the end of its letters, then the last "ing" of these.
template <class Char>
std::size_t count_classes_by_hand(const std::basic_string<Char>& text)
{
    std::size_t count = 0;
    const Char* at = text.data();
    const Char* const end = at + text.size();
    while (at != end) {
        const Char c = *at++;
        if (c < 'A' || c > 'Z') {
            continue;
        }
        enum State { NOTHING, I, IN, ING } state = NOTHING;
        const Char* const first = at;
        const Char* match = nullptr;
        for (; at != end && *at >= 'a' && *at <= 'z'; ++at) {
            state = *at == 'i' ? I : *at == 'n' && state == I ? IN : *at == 'g' && state == IN ? ING : NOTHING;
            if (state == ING && at - first >= 3) {
                match = at + 1;
            }
        }
        if (match != nullptr) {
            ++count;
            at = match;
        }
    }
    return count;
}

// All words in one table with a row for each beginning of a word: what follows which unit there.
class Word_automaton {
public:
    Word_automaton() : m_rows(1)
    {
        std::vector<std::string> beginnings{""};
        for (std::size_t i = 0; i < beginnings.size(); ++i) { // breadth first: shorter ones have their rows before
            for (const char* word : WORDS) {
                const std::string longer(word, std::min(beginnings[i].size() + 1, std::strlen(word)));
                if (longer.size() > beginnings[i].size() &&
                    longer.compare(0, beginnings[i].size(), beginnings[i]) == 0 &&
                    std::find(beginnings.begin(), beginnings.end(), longer) == beginnings.end()) {
                    beginnings.push_back(longer);
                }
            }
        }
        m_rows.resize(beginnings.size());
        for (std::size_t row = 0; row < beginnings.size(); ++row) {
            m_rows[row].is_word = std::find(std::begin(WORDS), std::end(WORDS), beginnings[row]) != std::end(WORDS);
            for (unsigned int unit = 0; unit < 256; ++unit) {
                std::string rest = beginnings[row] + static_cast<char>(unit);
                auto next = std::find(beginnings.begin(), beginnings.end(), rest);
                while (next == beginnings.end()) {
                    rest.erase(0, 1);
                    next = std::find(beginnings.begin(), beginnings.end(), rest);
                }
                m_rows[row].next[unit] = static_cast<unsigned short>(next - beginnings.begin());
            }
        }
    }

    std::size_t count(const std::string& text) const
    {
        std::size_t count = 0;
        unsigned int row = 0;
        for (const char c : text) {
            row = m_rows[row].next[static_cast<unsigned char>(c)];
            if (m_rows[row].is_word) {
                ++count;
                row = 0;
            }
        }
        return count;
    }

private:
    struct Row {
        std::array<unsigned short, 256> next;
        bool is_word;
    };
    std::vector<Row> m_rows;
};

template <class Char, class By_hand>
void compare_with_automaton(const char* name, const std::string& pattern, const std::string& narrow_text,
                            const char* peer_name, const By_hand& by_hand)
{
    const std::basic_string<Char> text = as<Char>(narrow_text);
    const Expression<Char> expression = compiled<Char>(pattern);
    std::size_t count = 0;
    std::size_t peer_count = 1;
    compare({name, "units", TEXT_UNITS,
             [&] {
                 count = count_matches<Char>(expression, text);
                 consume(&count);
             },
             peer_name,
             [&] {
                 peer_count = by_hand(text);
                 consume(&peer_count);
             },
             ">= 0.67"});
    require(count == peer_count);
}

template <class Char>
void compare_grep(const char* name, const std::string& pattern, const std::string& bytes,
                  void (Tam_istream::*readln)(unsigned int, std::basic_string<Char>&, Tam_status&))
{
    const Scratch_file file(L"grep.txt", bytes);
    Tam_status status;
    Tam_file_buffer buffer(file.path(), TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN,
                           TAM_FILE_SHARE_READ, status);
    Tam_buffered_istream stream(buffer, false, status, TAM_EOL_LF);
    const Expression<Char> expression = compiled<Char>(pattern);
    Tam_object_vector<std::basic_string<Char>> lines;
    std::basic_string<Char> line;
    compare({name, "bytes", static_cast<double>(bytes.size()),
             [&] {
                 stream.seek(0);
                 require(expression.grep(stream, lines, 0, status) == 0 && status.ok());
             },
             "readln",
             [&] {
                 constexpr unsigned int LONGEST_LINE = 1024;
                 stream.seek(0);
                 do {
                     (stream.*readln)(LONGEST_LINE, line, status);
                 } while (status.ok());
                 consume(&line);
             },
             ">= 0.77"});
}

void compare_hostile(const char* name, const std::string& pattern, const std::string& text)
{
    const Tam_regular_expression hostile = compiled<char>(pattern);
    const Tam_regular_expression plain = compiled<char>("[ac][xy]");
    Tam_status status;
    std::size_t start = 0;
    std::size_t length = 0;
    compare({name, "bytes", static_cast<double>(text.size()),
             [&] { require(!hostile.search_longest(text, 0, start, length, status) && status.ok()); }, "[ac][xy]",
             [&] { require(!plain.search_longest(text, 0, start, length, status) && status.ok()); }, ">= 0.33"});
}

} // namespace

void run_regex_benchmarks()
{
    const std::string text = sentences(TEXT_UNITS);
    compare_literal<char>("regex/literal/16_M", text);
    compare_literal<wchar_t>("regex/literal/wide/16_M", text);
    compare_with_std<char>("regex/classes/16_M", CLASSES, text);
    compare_with_std<wchar_t>("regex/classes/wide/16_M", CLASSES, text);
    compare_with_std<char>("regex/20_words/16_M", alternation(), text);
    compare_with_automaton<char>("regex/classes/16_M", CLASSES, text, "loops by hand", count_classes_by_hand<char>);
    compare_with_automaton<wchar_t>("regex/classes/wide/16_M", CLASSES, text, "loops by hand",
                                    count_classes_by_hand<wchar_t>);
    const Word_automaton words;
    compare_with_automaton<char>("regex/20_words/16_M", alternation(), text, "table of the words",
                                 [&](const std::string& all) { return words.count(all); });
    compare_grep<char>("grep/no_match/16_MB", "[0-9]+x", text, &Tam_istream::readln);
    compare_grep<wchar_t>("grep/no_match/wide/16_MB", "[0-9]+x",
                          utf16_bytes(as<wchar_t>(text.substr(0, TEXT_UNITS / 2))), &Tam_istream::wreadln);
    const std::string run(HOSTILE_UNITS, 'a');
    compare_hostile("regex/(a*)*b/1_MB", "(a*)*b", run);
    compare_hostile("regex/(a|aa)+$/1_MB", "(a|aa)+$", run + 'b');
    compare_hostile("regex/(.*)(.*)(.*)x/1_MB", "(.*)(.*)(.*)x", run);
}

} // namespace tam::benchmarks
