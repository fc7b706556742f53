#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <tam/container.h>
#include <tam/text.h>

#include <benchmarks/benchmarks.h>

namespace tam::benchmarks {

namespace {

constexpr unsigned int SEED = 1;
constexpr std::size_t COUNT = 100'000;

// Values of all lengths, as numbers in messages are: the number of bits is uniform.
std::vector<long long> values(int maximum_bits)
{
    std::mt19937_64 random(SEED);
    std::vector<long long> list(COUNT);
    for (long long& value : list) {
        const unsigned int bits = 1 + static_cast<unsigned int>(random()) % static_cast<unsigned int>(maximum_bits);
        value = static_cast<long long>(random() >> (64 - bits));
    }
    return list;
}

void widened_to_chars(long long value, std::wstring& out)
{
    char digits[std::numeric_limits<long long>::digits10 + 2];
    out.assign(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
}

void require(bool right)
{
    if (!right) {
        throw std::logic_error("the two ways differ");
    }
}

void compare_itow(const char* name, const std::vector<long long>& list)
{
    std::wstring ours;
    std::wstring peer;
    for (const long long value : list) {
        tam_itow(value, ours, 10, false);
        widened_to_chars(value, peer);
        require(ours == peer);
    }
    compare({name, "numbers", static_cast<double>(list.size()),
             [&] {
                 for (const long long value : list) {
                     tam_itow(value, ours, 10, false);
                     consume(ours.data());
                 }
             },
             "std::to_chars, widened",
             [&] {
                 for (const long long value : list) {
                     widened_to_chars(value, peer);
                     consume(peer.data());
                 }
             },
             ">= 0.67"});
}

// The words of a line into the same kind of list, by a plain loop over find_first_of.
void split(const std::wstring& line, Tam_object_vector<std::wstring>& words)
{
    words.clear();
    for (std::size_t first = line.find_first_not_of(L" \t"); first != line.npos;) {
        const std::size_t end = line.find_first_of(L" \t", first);
        words.push_back(line.substr(first, end - first));
        first = line.find_first_not_of(L" \t", end);
    }
}

void compare_tokenise()
{
    std::wstring line;
    for (std::size_t i = 0; i < 1000; ++i) {
        line.append(1 + i % 13, static_cast<wchar_t>(L'a' + i % 26)).append(1, L' ');
    }
    const Tam_tokeniser tokeniser;
    Tam_object_vector<std::wstring> tokens;
    Tam_object_vector<std::wstring> words;
    tokeniser.tokenise(line, tokens);
    split(line, words);
    require(std::equal(tokens.begin(), tokens.end(), words.begin(), words.end()));
    compare({"tokenise/words/8000_characters", "tokens", static_cast<double>(words.size()),
             [&] {
                 tokeniser.tokenise(line, tokens);
                 consume(&tokens);
             },
             "find_first_of",
             [&] {
                 split(line, words);
                 consume(&words);
             },
             ">= 0.8"});
}

} // namespace

void run_text_benchmarks()
{
    compare_itow("itow/radix_10/1_to_31_bits", values(31));
    compare_itow("itow/radix_10/1_to_63_bits", values(63));
    compare_tokenise();
}

} // namespace tam::benchmarks
