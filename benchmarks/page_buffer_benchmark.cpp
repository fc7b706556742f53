#include <benchmarks/benchmarks.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include <windows.h>

#include <benchmarks/scratch_file.h>
#include <tam/stream.h>

namespace tam::benchmarks {

namespace {

constexpr unsigned int BLOCK = Tam_page_buffer::BLOCK_SIZE;
constexpr unsigned int PIECE = 64 * 1024; // of a transfer in memory
constexpr unsigned int MEMORY_BYTES = 16 * 1024 * 1024;
constexpr unsigned int ROUNDS = 8;
constexpr unsigned int SWAPPED_BYTES = 64 * 1024 * 1024;
constexpr unsigned int SWAPPED_LIMIT = 16;

void check(bool right)
{
    if (!right) {
        throw std::runtime_error("a page buffer lost bytes");
    }
}

void write_all(Tam_page_buffer& buffer, unsigned int bytes, const char* piece, unsigned int piece_bytes)
{
    Tam_status status;
    unsigned long long position = 0;
    while (position < bytes) {
        buffer.write(position, piece_bytes, piece, status);
        check(status.ok());
    }
}

void read_all(const Tam_page_buffer& buffer, unsigned int bytes, char* piece, unsigned int piece_bytes)
{
    Tam_status status;
    unsigned long long position = 0;
    while (position < bytes) {
        check(buffer.read(false, position, piece_bytes, piece, status) == piece_bytes);
        consume(piece);
    }
}

// Memory that is aligned as a page buffer's is: the speed of memcpy depends on that.
class Pages {
public:
    explicit Pages(unsigned int bytes)
        : m_bytes(static_cast<char*>(::VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        check(m_bytes != nullptr);
        std::memset(m_bytes, 'x', bytes);
    }
    ~Pages() { ::VirtualFree(m_bytes, 0, MEM_RELEASE); }
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    char* get() const { return m_bytes; }

private:
    char* m_bytes;
};

void compare_in_memory()
{
    Tam_page_buffer buffer(0, MEMORY_BYTES / BLOCK);
    const Pages memory(MEMORY_BYTES);
    const Pages piece(PIECE);
    write_all(buffer, MEMORY_BYTES, piece.get(), PIECE);
    constexpr double amount = 1.0 * ROUNDS * MEMORY_BYTES / 1e6;
    compare({"page_buffer/write/64_KB", "MB", amount,
             [&] {
                 for (unsigned int round = 0; round < ROUNDS; ++round) {
                     write_all(buffer, MEMORY_BYTES, piece.get(), PIECE);
                 }
             },
             "memcpy, same working set",
             [&] {
                 for (unsigned int round = 0; round < ROUNDS; ++round) {
                     for (unsigned int position = 0; position < MEMORY_BYTES; position += PIECE) {
                         std::memcpy(memory.get() + position, piece.get(), PIECE);
                         consume(memory.get());
                     }
                 }
             },
             ">= 0.8"});
    compare({"page_buffer/read/64_KB", "MB", amount,
             [&] {
                 for (unsigned int round = 0; round < ROUNDS; ++round) {
                     read_all(buffer, MEMORY_BYTES, piece.get(), PIECE);
                 }
             },
             "memcpy, same working set",
             [&] {
                 for (unsigned int round = 0; round < ROUNDS; ++round) {
                     for (unsigned int position = 0; position < MEMORY_BYTES; position += PIECE) {
                         std::memcpy(piece.get(), memory.get() + position, PIECE);
                         consume(piece.get());
                     }
                 }
             },
             ">= 0.8"});
}

void write_and_read_file(const std::wstring& path, char* block)
{
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_FLAG_RANDOM_ACCESS, nullptr);
    DWORD done = 0;
    for (unsigned int position = 0; position < SWAPPED_BYTES; position += BLOCK) {
        check(::WriteFile(file, block, BLOCK, &done, nullptr) && done == BLOCK);
    }
    ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    for (unsigned int position = 0; position < SWAPPED_BYTES; position += BLOCK) {
        check(::ReadFile(file, block, BLOCK, &done, nullptr) && done == BLOCK);
    }
    ::CloseHandle(file);
    ::DeleteFileW(path.c_str());
}

void compare_swapped()
{
    const Scratch_file scratch(L"blocks", "");
    const Pages block(BLOCK);
    compare({"page_buffer/swapped/64_MB/8_KB", "MB", 2.0 * SWAPPED_BYTES / 1e6,
             [&] {
                 Tam_page_buffer buffer(0, SWAPPED_LIMIT);
                 write_all(buffer, SWAPPED_BYTES, block.get(), BLOCK);
                 read_all(buffer, SWAPPED_BYTES, block.get(), BLOCK);
             },
             "WriteFile and ReadFile", [&] { write_and_read_file(scratch.path(), block.get()); }, ">= 0.77"});
}

} // namespace

void run_page_buffer_benchmarks()
{
    compare_in_memory();
    compare_swapped();
}

} // namespace tam::benchmarks
