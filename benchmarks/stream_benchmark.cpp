#include <benchmarks/benchmarks.h>

#include <codecvt>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <locale>
#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>

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

// The bytes that the memory benchmarks move in a run: more than the caches next to the core hold.
constexpr unsigned int WORKING_SET = 16 << 20;
constexpr unsigned int PIECE = 64 << 10;
constexpr int PASSES = 8; // over it in a run, so that a run lasts a while

void check(const Tam_status& status)
{
    if (!status.ok()) {
        throw std::runtime_error("a stream failed");
    }
}

// Calls move(position) for each piece of the working set, PASSES times.
template <class Move>
void pass_over_pieces(const Move& move)
{
    for (int pass = 0; pass < PASSES; ++pass) {
        for (unsigned int position = 0; position < WORKING_SET; position += PIECE) {
            move(position);
        }
    }
}

void compare_memory_buffer()
{
    constexpr double AMOUNT = static_cast<double>(PASSES) * WORKING_SET;
    const std::string source(PIECE, 'x');
    std::string destination(PIECE, '\0');
    Tam_memory_buffer buffer;
    std::vector<char> plain(WORKING_SET);
    Tam_status status;
    compare({"memory_buffer/write/64_KB/16_MB", "bytes", AMOUNT,
             [&] {
                 pass_over_pieces([&](unsigned long long position) {
                     buffer.write(position, PIECE, source.data(), status);
                     check(status);
                 });
             },
             "memcpy",
             [&] {
                 pass_over_pieces([&](unsigned int position) {
                     std::memcpy(plain.data() + position, source.data(), PIECE);
                     consume(plain.data());
                 });
             },
             ">= 0.8"});
    compare({"memory_buffer/read/64_KB/16_MB", "bytes", AMOUNT,
             [&] {
                 pass_over_pieces([&](unsigned long long position) {
                     buffer.read(false, position, PIECE, destination.data(), status);
                     check(status);
                 });
             },
             "memcpy",
             [&] {
                 pass_over_pieces([&](unsigned int position) {
                     std::memcpy(destination.data(), plain.data() + position, PIECE);
                     consume(destination.data());
                 });
             },
             ">= 0.8"});
}

void compare_appends()
{
    constexpr unsigned int RECORD = 100;
    constexpr unsigned int RECORDS = 200'000;
    const std::string record(RECORD, 'r');
    compare({"append/100_bytes/20_MB", "records", RECORDS,
             [&] {
                 Tam_status status;
                 Tam_memory_buffer buffer;
                 Tam_ostream stream(buffer, status, TAM_EOL_LF);
                 for (unsigned int i = 0; i < RECORDS; ++i) {
                     stream.write(RECORD, record.data(), status);
                 }
                 check(status);
             },
             "std::vector<char>::insert",
             [&] {
                 std::vector<char> bytes;
                 for (unsigned int i = 0; i < RECORDS; ++i) {
                     bytes.insert(bytes.end(), record.begin(), record.end());
                 }
                 consume(bytes.data());
             },
             ">= 1"});
}

// The files are open before the runs start: what is compared is the copying.
void compare_copies()
{
    constexpr unsigned int SIZE = 32 << 20;
    constexpr DWORD BLOCK = 16 << 10;
    const Scratch_file from(L"copy_from.bin", std::string(SIZE, 'c'));
    const Scratch_file to(L"copy_to.bin", "");
    const Scratch_file peer_to(L"peer_copy_to.bin", "");
    Tam_status status;
    Tam_file_buffer source(from.path(), TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);
    Tam_file_buffer target(to.path(), TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_NONE, status);
    Tam_unbuffered_istream in(source, false, status);
    Tam_ostream out(target, status, TAM_EOL_LF);
    check(status);
    const HANDLE peer_source = ::CreateFileW(from.path().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                             FILE_ATTRIBUTE_NORMAL, nullptr);
    const HANDLE peer_target =
        ::CreateFileW(peer_to.path().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    compare({"tam_copy_stream/file/32_MB", "bytes", SIZE,
             [&] {
                 in.seek(0);
                 out.seek(0);
                 tam_copy_stream(in, out, status);
                 check(status);
             },
             "ReadFile and WriteFile, 16 KB",
             [&] {
                 ::SetFilePointer(peer_source, 0, nullptr, FILE_BEGIN);
                 ::SetFilePointer(peer_target, 0, nullptr, FILE_BEGIN);
                 char block[BLOCK];
                 DWORD count = 0;
                 DWORD written = 0;
                 while (::ReadFile(peer_source, block, BLOCK, &count, nullptr) && count != 0 &&
                        ::WriteFile(peer_target, block, count, &written, nullptr)) {
                 }
             },
             ">= 0.77"});
    ::CloseHandle(peer_source);
    ::CloseHandle(peer_target);
}

} // namespace

void run_stream_benchmarks()
{
    compare_memory_buffer();
    compare_appends();
    compare_copies();
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
