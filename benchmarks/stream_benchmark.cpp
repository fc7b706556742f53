#include <benchmarks/benchmarks.h>

#include <codecvt>
#include <filesystem>
#include <fstream>
#include <locale>
#include <stdexcept>
#include <string>

#include <benchmarks/scratch_file.h>
#include <tam/file.h>
#include <tam/stream.h>

namespace tam::benchmarks {

namespace {

constexpr std::size_t LINE_UNITS = 59; // and a line feed
constexpr std::size_t NARROW_LINES = 100'000'000 / (LINE_UNITS + 1);
constexpr std::size_t WIDE_LINES = 200'000;
constexpr unsigned int LONGEST_LINE = 1024;

std::wstring text_of(std::size_t lines)
{
    std::wstring text;
    text.reserve(lines * (LINE_UNITS + 1));
    for (std::size_t line = 0; line < lines; ++line) {
        const std::wstring number = std::to_wstring(line);
        text += number;
        text.append(LINE_UNITS - number.size(), static_cast<wchar_t>(L'a' + line % 26));
        text += L'\n';
    }
    return text;
}

void check(std::size_t lines, std::size_t expected)
{
    if (lines != expected) {
        throw std::runtime_error("a reader lost lines");
    }
}

template <class Line>
void read_with_tam(const std::wstring& path, std::size_t expected,
                   void (Tam_istream::*readln)(unsigned int, Line&, Tam_status&))
{
    Tam_status status;
    Tam_file_buffer buffer(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN, TAM_FILE_SHARE_READ,
                           status);
    Tam_buffered_istream stream(buffer, false, status, TAM_EOL_LF);
    Line line;
    std::size_t lines = 0;
    for ((stream.*readln)(LONGEST_LINE, line, status); status.ok(); (stream.*readln)(LONGEST_LINE, line, status)) {
        ++lines;
    }
    check(lines, expected);
}

void read_narrow_with_std(const std::wstring& path)
{
    std::ifstream stream(std::filesystem::path(path), std::ios::binary);
    std::string line;
    std::size_t lines = 0;
    while (std::getline(stream, line)) {
        ++lines;
    }
    check(lines, NARROW_LINES);
}

void read_wide_with_std(const std::wstring& path)
{
    std::wifstream stream(std::filesystem::path(path), std::ios::binary);
    stream.imbue(std::locale(stream.getloc(), new std::codecvt_utf16<wchar_t, 0x10FFFF, std::little_endian>));
    std::wstring line;
    std::size_t lines = 0;
    while (std::getline(stream, line)) {
        ++lines;
    }
    check(lines, WIDE_LINES);
}

} // namespace

void run_stream_benchmarks()
{
    {
        const std::wstring text = text_of(NARROW_LINES);
        const Scratch_file file(L"lines.txt", std::string(text.begin(), text.end()));
        compare({"readln/lf/60_bytes/100_MB", "lines", static_cast<double>(NARROW_LINES),
                 [&] { read_with_tam<std::string>(file.path(), NARROW_LINES, &Tam_istream::readln); },
                 "std::getline, std::ifstream", [&] { read_narrow_with_std(file.path()); }, ">= 1, stretch 1.5"});
    }
    const Scratch_file file(L"wide_lines.txt", utf16_bytes(text_of(WIDE_LINES)));
    compare({"wreadln/lf/60_units/24_MB", "lines", static_cast<double>(WIDE_LINES),
             [&] { read_with_tam<std::wstring>(file.path(), WIDE_LINES, &Tam_istream::wreadln); },
             "std::getline, std::wifstream", [&] { read_wide_with_std(file.path()); }, ">= 4"});
}

} // namespace tam::benchmarks
