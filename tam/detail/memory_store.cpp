#include <tam/detail/memory_store.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include <tam/detail/failure.h>
#include <tam/status/codes.h>
#include <tam/text/convert.h>

namespace tam::detail {

namespace {

constexpr unsigned int TABLE_STEP = 1024; // slots that the table grows by

// A fault in the caller's memory becomes an exception where the thread has a translator. The compiler takes std::memcpy
// for a function that throws nothing and would end the program for it; what this one does it must not look at.
[[gnu::noipa]] void copy_bytes(unsigned char* to, const unsigned char* from, std::size_t count)
{
    std::memcpy(to, from, count);
}

// Called while an exception is handled.
void report_failed_write(Tam_status& status)
{
    try {
        try {
            throw;
        } catch (const std::bad_alloc&) {
            status = TAM_E_OUT_OF_MEMORY;
        } catch (const std::exception& exception) {
            assign_failure(status, TAM_E_EXCEPTION, tam_stow(exception.what()));
        } catch (...) {
            status = TAM_E_UNKNOWN_EXCEPTION;
        }
        push_failure(status, TAM_E_WRITE);
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
}

} // namespace

// What precedes the blocks of a run in its memory, which is calloc's.
struct alignas(std::max_align_t) Memory_store::Run {
    Run* older;

    unsigned char* blocks() { return reinterpret_cast<unsigned char*>(this + 1); }
};

Memory_store::Memory_store() : m_table(TABLE_STEP) {}

Memory_store::~Memory_store()
{
    while (m_newest != nullptr) {
        std::free(std::exchange(m_newest, m_newest->older));
    }
}

void Memory_store::copy_from(unsigned char* destination, unsigned int count, unsigned long long position) const
{
    _for_each_block(position, position + count, [&destination](const unsigned char* bytes, unsigned int piece) {
        copy_bytes(destination, bytes, piece);
        destination += piece;
    });
}

void Memory_store::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    status.clear();
    if (count == 0) {
        return;
    }
    try {
        const unsigned long long end = position + count;
        if (end < position) {
            throw std::bad_alloc();
        }
        create_position(end); // not end - 1: a write up to a block's end adds the next block too
        copy_to(position, end, static_cast<const unsigned char*>(source));
        m_length = std::max(m_length, end);
        position = end;
    } catch (...) {
        report_failed_write(status);
    }
}

// Makes sure that there is a block for position. A failure leaves the blocks as they were.
void Memory_store::create_position(unsigned long long position)
{
    const unsigned long long last = position >> BLOCK_SHIFT;
    if (last < m_blocks) {
        return;
    }
    const unsigned long long blocks = last + 1;
    const unsigned long long slots = (blocks / TABLE_STEP + 1) * TABLE_STEP;
    if (slots > Tam_ptrvec_impl::MAXIMUM_SIZE) {
        throw std::bad_alloc();
    }
    // The memory first: where the system refuses it, the table, a small part of it but still large, is not touched.
    const unsigned long long bytes = sizeof(Run) + (blocks - m_blocks) * BLOCK_SIZE;
    std::unique_ptr<Run, decltype(&std::free)> run(static_cast<Run*>(std::calloc(1, bytes)), &std::free);
    if (run == nullptr) {
        throw std::bad_alloc();
    }
    if (m_table.size() <= blocks) {
        m_table.resize(static_cast<unsigned int>(slots));
    }
    unsigned char* block = run->blocks();
    for (; m_blocks < blocks; ++m_blocks) {
        m_table.begin()[m_blocks] = block;
        block += BLOCK_SIZE;
    }
    run->older = m_newest;
    m_newest = run.release();
}

void Memory_store::copy_to(unsigned long long position, unsigned long long end, const unsigned char* source)
{
    try {
        _for_each_block(position, end, [&source](unsigned char* bytes, unsigned int piece) {
            copy_bytes(bytes, source, piece);
            source += piece;
        });
    } catch (...) {
        // What lies behind the data is zeros: it may become a gap.
        _for_each_block(std::max(position, m_length), end,
                        [](unsigned char* bytes, unsigned int piece) { std::memset(bytes, 0, piece); });
        throw;
    }
}

// Calls use(address, count) for the bytes of each block between two positions.
template <class Use>
void Memory_store::_for_each_block(unsigned long long position, unsigned long long end, const Use& use) const
{
    while (position < end) {
        const auto offset = static_cast<unsigned int>(position & BLOCK_MASK);
        const auto piece = static_cast<unsigned int>(std::min<unsigned long long>(end - position, BLOCK_SIZE - offset));
        use(static_cast<unsigned char*>(m_table.begin()[position >> BLOCK_SHIFT]) + offset, piece);
        position += piece;
    }
}

} // namespace tam::detail
