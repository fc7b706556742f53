#pragma once

#include <tests/support/test.h>

namespace tam::test {

/// Writes piece(0), piece(1) ... piece(count - 1), while a reader that waits reads in another thread. It must get every byte
/// once and in order, and the end only when the writer has gone.
template <class Buffer, class Piece>
void expect_that_a_reader_follows(Buffer& buffer, unsigned int count, unsigned int read_size, const Piece& piece)
{
    Tam_status status;
    buffer.connect_ostream(status);
    auto reader = std::async(std::launch::async, [&buffer, read_size] {
        std::string all;
        std::string part(read_size, '?');
        unsigned long long position = 0;
        Tam_status end;
        for (;;) {
            const unsigned int done = buffer.read(true, position, read_size, part.data(), end);
            if (!end.ok()) {
                return all + (done == 0 && end == TAM_E_END_OF_DATA ? "" : " and a failure");
            }
            all.append(part, 0, done);
        }
    });
    std::string expected;
    unsigned long long position = 0;
    for (unsigned int i = 0; i < count; ++i) {
        const std::string bytes = piece(i);
        buffer.write(position, static_cast<unsigned int>(bytes.size()), bytes.data(), status);
        EXPECT_EQ(chain(status), L"");
        expected += bytes;
    }
    EXPECT_EQ(reader.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    buffer.disconnect_ostream();
    ASSERT_EQ(reader.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_TRUE(reader.get() == expected);
}

/// Pieces of lengths that fit no block.
inline std::string odd_piece(unsigned int i)
{
    return std::string(1 + i * 7 % 150, static_cast<char>('a' + i % 26));
}

} // namespace tam::test
