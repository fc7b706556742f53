#include <tests/support/test.h>

#include <tests/stream/follow.h>
#include <tests/stream/seek_cases.h>

namespace tam {
namespace {

using test::chain;

constexpr unsigned int BLOCK = 8192;

// The algorithm of a page buffer step by step, with every block described and nothing but strings for memory and file.
class Page_model {
public:
    explicit Page_model(unsigned int limit) : m_limit(limit), m_table(limit) {}

    unsigned long long length() const { return m_length; }
    unsigned int changes_lost() const { return m_changes_lost; }

    std::wstring write(unsigned long long& position, const std::string& bytes)
    {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const std::size_t index = position / BLOCK;
            if (index >= m_table.size()) {
                m_table.resize(index + 1024);
            }
            Block& block = m_table[index];
            const std::size_t last = m_length / BLOCK;
            if (!block.memory && m_committed >= m_limit) {
                if (!evict(last)) {
                    return L"C200001A";
                }
                block.memory = block.swapped_out ? block.copy : std::string(BLOCK, '\0');
                block.dirty = block.dirty && !block.swapped_out;
                block.swapped_out = false;
                advance(last);
            } else if (!block.memory) {
                if (index >= m_limit) {
                    return L"C2000001";
                }
                block.memory = std::string(BLOCK, '\0');
                ++m_committed;
            }
            const std::size_t offset = position % BLOCK;
            const std::size_t n = std::min(bytes.size() - done, BLOCK - offset);
            block.memory->replace(offset, n, bytes, done, n);
            done += n;
            position += n;
            m_length = std::max(m_length, position);
        }
        return L"";
    }

    std::wstring read(unsigned long long& position, std::size_t count, std::string& bytes)
    {
        bytes.clear();
        if (position >= m_length) {
            return L"C2000019";
        }
        count = static_cast<std::size_t>(std::min<unsigned long long>(count, m_length - position));
        const std::size_t last = (m_length - 1) / BLOCK;
        while (bytes.size() < count) {
            Block& block = m_table[position / BLOCK];
            if (block.swapped_out) {
                evict(last);
                block.memory = block.copy;
                block.swapped_out = false;
                advance(last);
            }
            const std::size_t offset = position % BLOCK;
            const std::size_t n = std::min(count - bytes.size(), BLOCK - offset);
            bytes += block.memory ? block.memory->substr(offset, n) : std::string(n, '\0');
            position += n;
        }
        return L"";
    }

private:
    struct Block {
        std::optional<std::string> memory;
        std::string copy;
        bool swapped_out = false;
        bool dirty = true;
    };

    bool evict(std::size_t last)
    {
        for (std::size_t step = 0; !m_table[m_hand].memory; ++step) {
            if (step > last) {
                return false;
            }
            move_hand(last);
        }
        Block& block = m_table[m_hand];
        if (block.dirty) {
            block.copy = *block.memory;
            block.dirty = false;
        }
        m_changes_lost += block.copy != *block.memory ? 1U : 0U;
        block.memory.reset();
        block.swapped_out = true;
        return true;
    }

    void advance(std::size_t last)
    {
        for (std::size_t step = 0; step <= last && m_table[m_hand].swapped_out; ++step) {
            move_hand(last);
        }
    }

    void move_hand(std::size_t last)
    {
        ++m_hand;
        if (m_hand > last) {
            m_hand = 0;
        }
    }

    unsigned int m_limit;
    std::vector<Block> m_table;
    std::size_t m_hand = 0;
    unsigned int m_committed = 0;
    unsigned long long m_length = 0;
    unsigned int m_changes_lost = 0;
};

// A block's worth of bytes that tell their place.
std::string block_of(unsigned int index)
{
    std::string bytes(BLOCK, '\0');
    for (unsigned int i = 0; i < BLOCK; ++i) {
        bytes[i] = static_cast<char>((i + 1) * (2 * index + 1) >> 5);
    }
    return bytes;
}

// Both buffers promise the same to one thread.
template <class Buffer>
class Page_buffer : public testing::Test {
protected:
    static std::wstring write(Buffer& buffer, unsigned long long& position, const std::string& bytes)
    {
        Tam_status status = 5U;
        buffer.write(position, static_cast<unsigned int>(bytes.size()), bytes.data(), status);
        return chain(status);
    }

    static std::wstring read(const Buffer& buffer, unsigned long long& position, unsigned int count, std::string& bytes)
    {
        Tam_status status = 5U;
        bytes.assign(count, '?');
        bytes.resize(buffer.read(false, position, count, bytes.data(), status));
        return chain(status);
    }

    static void write_block(Buffer& buffer, unsigned int index, const std::string& bytes)
    {
        unsigned long long position = 1ULL * index * BLOCK;
        EXPECT_EQ(write(buffer, position, bytes), L"") << index;
    }

    static std::string read_block(const Buffer& buffer, unsigned int index)
    {
        unsigned long long position = 1ULL * index * BLOCK;
        std::string bytes;
        EXPECT_EQ(read(buffer, position, BLOCK, bytes), L"") << index;
        return bytes;
    }

    static unsigned long long length_of(const Buffer& buffer)
    {
        unsigned long long position = 0;
        Tam_status status;
        buffer.seek(TAM_SEEK_END, 0, position, status);
        return position;
    }
};

using Buffers = testing::Types<Tam_page_buffer, Tam_page_buffer_mt>;
TYPED_TEST_SUITE(Page_buffer, Buffers);

TYPED_TEST(Page_buffer, seeks_from_start_position_or_end)
{
    TypeParam buffer;
    unsigned long long position = 0;
    EXPECT_EQ(this->write(buffer, position, "abc"), L"");
    test::expect_seeks(buffer, {{0, 10, 1, 10},
                                {0, -1, 1, 1, true},
                                {1, 5, 2, 7},
                                {1, -2, 2, 0},
                                {1, -3, 2, 2, true},
                                {1, 1, TAM_MAXIMUM_POSITION, TAM_MAXIMUM_POSITION, true},
                                {2, 0, 1, 3},
                                {2, -5, 1, 1, true},
                                {2, 5, 1, 8},
                                {7, -1, 2, 1}});
}

TYPED_TEST(Page_buffer, the_limit_follows_from_hint_and_memory_blocks)
{
    const struct {
        unsigned int size_hint;
        unsigned int memory_blocks;
        unsigned long long limit;
    } cases[] = {
        {0, 128, 128},
        {2'000'000, 128, 16},
        {128 * BLOCK, 128, 128},
        {128 * BLOCK + 1, 128, 16},
        {0, 1, 1},
        {BLOCK + 1, 1, 16},
        {1, 0, 16},
        {0, 3, 3},
        {20 * BLOCK, 3, 16},
        {0xFFFFFFFF, 0x80000, 0x80000},
        {0xFFFFFFFF, 0x7FFFF, 16},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.size_hint << ", " << c.memory_blocks);
        TypeParam buffer(c.size_hint, c.memory_blocks);
        unsigned long long position = c.limit * BLOCK;
        EXPECT_EQ(this->write(buffer, position, "x"), L"C2000001");
        EXPECT_EQ(position, c.limit * BLOCK);
        EXPECT_EQ(this->length_of(buffer), 0U);
        --position;
        EXPECT_EQ(this->write(buffer, position, "x"), L"");
        EXPECT_EQ(this->length_of(buffer), c.limit * BLOCK);
    }
    TypeParam none(0, 0);
    unsigned long long position = 0;
    EXPECT_EQ(this->write(none, position, ""), L"");
    EXPECT_EQ(this->write(none, position, "x"), L"C200001A");
    const TypeParam usual;
    EXPECT_EQ(this->length_of(usual), 0U);
}

TYPED_TEST(Page_buffer, a_far_position_is_a_status_and_never_an_exception)
{
    TypeParam buffer(0, 2);
    for (const unsigned int blocks_written : {0U, 2U}) {
        for (unsigned int i = 0; i < blocks_written; ++i) {
            this->write_block(buffer, i, block_of(i));
        }
        for (const unsigned long long distant : {1ULL << 44, 1ULL << 45, 1ULL << 62, TAM_MAXIMUM_POSITION, ~0ULL}) {
            SCOPED_TRACE(testing::Message() << distant << " after " << blocks_written);
            unsigned long long position = distant;
            std::string bytes;
            EXPECT_EQ(this->write(buffer, position, "x"), L"C2000001");
            EXPECT_EQ(this->read(buffer, position, 1, bytes), L"C2000019");
            EXPECT_EQ(position, distant);
        }
        EXPECT_EQ(this->length_of(buffer), 1ULL * blocks_written * BLOCK);
    }
    // The last block that there can be.
    unsigned long long position = (1ULL << 44) - 1;
    EXPECT_EQ(this->write(buffer, position, "xy"), L"C2000001");
    EXPECT_EQ(this->length_of(buffer), 1ULL << 44);
    EXPECT_EQ(this->read_block(buffer, 0x7FFFFFFF), std::string(BLOCK - 1, '\0') + "x");
    EXPECT_EQ(this->read_block(buffer, 0x12345678), std::string(BLOCK, '\0'));
    EXPECT_EQ(this->read_block(buffer, 0), block_of(0));
    EXPECT_EQ(this->read_block(buffer, 1), block_of(1));
}

TYPED_TEST(Page_buffer, a_change_of_a_block_that_was_swapped_in_is_lost_when_it_leaves_again)
{
    TypeParam buffer(0, 2);
    for (unsigned int i = 0; i < 3; ++i) {
        this->write_block(buffer, i, block_of(i)); // the third takes the memory of the first
    }
    EXPECT_EQ(this->read_block(buffer, 0), block_of(0)); // from the second
    this->write_block(buffer, 0, "changed");
    EXPECT_EQ(this->read_block(buffer, 0), "changed" + block_of(0).substr(7));
    EXPECT_EQ(this->read_block(buffer, 1), block_of(1)); // from the third
    EXPECT_EQ(this->read_block(buffer, 0), "changed" + block_of(0).substr(7));
    EXPECT_EQ(this->read_block(buffer, 2), block_of(2)); // from the first
    EXPECT_EQ(this->read_block(buffer, 0), block_of(0));
}

TYPED_TEST(Page_buffer, does_what_its_algorithm_says_at_every_step)
{
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    const auto below = [&random](unsigned long long n) { return random() % n; };
    for (const unsigned int limit : {1U, 2U, 3U, 16U}) {
        TypeParam buffer(0, limit);
        Page_model model(limit);
        unsigned long long position = 0;
        for (unsigned int step = 0; step < 700 && !this->HasFailure(); ++step) {
            SCOPED_TRACE(testing::Message() << "limit " << limit << ", step " << step << ", position " << position);
            if (below(3) != 0) { // near a border of a block, now and then behind the end
                const unsigned long long block = below(model.length() / BLOCK + (below(20) == 0 ? 6 : 2));
                position = block * BLOCK + below(7);
                position -= std::min(position, below(7));
            }
            unsigned long long expected_position = position;
            const std::size_t count = below(2) == 0 ? below(9) : below(3 * BLOCK);
            if (below(model.length() < 3ULL * limit * BLOCK + 20 * BLOCK ? 2 : 8) == 0) {
                const std::string bytes(count, static_cast<char>('!' + below(90)));
                EXPECT_EQ(this->write(buffer, position, bytes), model.write(expected_position, bytes));
            } else {
                std::string bytes;
                std::string expected;
                EXPECT_EQ(this->read(buffer, position, static_cast<unsigned int>(count), bytes),
                          model.read(expected_position, count, expected));
                EXPECT_TRUE(bytes == expected);
            }
            EXPECT_EQ(position, expected_position);
            EXPECT_EQ(this->length_of(buffer), model.length());
        }
        EXPECT_GT(model.changes_lost(), 0U) << "the walk is too tame";
    }
}

// 1 TiB is reserved however much more is asked for, since the system may look for the addresses for ever.
TEST(Page_buffer_limit, a_huge_one_is_cut)
{
    Tam_page_buffer buffer(0, 0xFFFFFFFF);
    Tam_status status;
    unsigned long long position = 1ULL << 40;
    buffer.write(position, 1, "x", status);
    EXPECT_EQ(chain(status), L"C2000001");
    --position;
    buffer.write(position, 1, "x", status);
    EXPECT_EQ(chain(status), L"");
}

TEST(Page_buffer_mt, a_reader_that_waits_at_the_end_yields_once)
{
    Tam_page_buffer_mt buffer;
    Tam_status status;
    buffer.connect_ostream(status);
    for (const unsigned long long end : {0ULL, 5ULL}) { // also past the end
        unsigned long long position = end;
        char byte;
        status = 5U;
        EXPECT_EQ(buffer.read(true, position, 1, &byte, status), 0U);
        EXPECT_EQ(chain(status), L"");
        EXPECT_EQ(buffer.read(false, position, 1, &byte, status), 0U);
        EXPECT_EQ(chain(status), L"C2000019");
        EXPECT_EQ(position, end);
    }
    buffer.disconnect_ostream();
    unsigned long long position = 0;
    char byte;
    EXPECT_EQ(buffer.read(true, position, 1, &byte, status), 0U);
    EXPECT_EQ(chain(status), L"C2000019");
}

// Whole blocks, since changes of a block that went through the swap file can get lost.
TEST(Page_buffer_mt, a_reader_follows_a_writer_through_the_swap_file)
{
    Tam_page_buffer_mt buffer(0, 4);
    test::expect_that_a_reader_follows(buffer, 60, 5000, &block_of);
}

TEST(Page_buffer_mt, readers_do_not_take_each_others_blocks)
{
    constexpr unsigned int BLOCKS = 48;
    constexpr unsigned int LONG_READ = 40 * BLOCK; // so that readers are at it at the same time
    Tam_page_buffer_mt buffer(0, 2);
    Tam_status status;
    unsigned long long position = 0;
    std::string data;
    for (unsigned int i = 0; i < BLOCKS; ++i) {
        data += block_of(i);
    }
    buffer.write(position, BLOCKS * BLOCK, data.data(), status);
    ASSERT_EQ(chain(status), L"");
    std::vector<std::future<bool>> readers;
    for (unsigned int reader = 0; reader < 4; ++reader) {
        readers.push_back(std::async(std::launch::async, [&buffer, &data, reader] {
            std::mt19937 random(reader);
            bool right = true;
            for (unsigned int round = 0; round < 40; ++round) {
                const unsigned int start = static_cast<unsigned int>(random() % data.size());
                unsigned long long from = start;
                std::string bytes(LONG_READ, '?');
                Tam_status result;
                bytes.resize(buffer.read(false, from, LONG_READ, bytes.data(), result));
                right = right && result.ok() && bytes == data.substr(start, LONG_READ);
            }
            return right;
        }));
    }
    for (auto& reader : readers) {
        ASSERT_EQ(reader.wait_for(std::chrono::seconds(60)), std::future_status::ready);
        EXPECT_TRUE(reader.get());
    }
}

} // namespace
} // namespace tam
