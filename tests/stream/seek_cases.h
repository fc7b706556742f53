#pragma once

#include <tests/support/test.h>

namespace tam::test {

struct Seek_case {
    unsigned int mode;
    int offset;
    unsigned long long from;
    unsigned long long expected;
    bool fails = false;
};

/// Tries each on the buffer, with a status of an earlier failure. One that fails gives that chain, and leaves its position
/// at expected.
template <class Buffer>
void expect_seeks(const Buffer& buffer, std::initializer_list<Seek_case> cases,
                  const std::wstring& failure = L"C2000018")
{
    for (const Seek_case& one : cases) {
        SCOPED_TRACE(testing::Message() << one.mode << ", " << one.offset << ", " << one.from);
        Tam_status status = 5U;
        unsigned long long position = one.from;
        buffer.seek(static_cast<Tam_seek_mode>(one.mode), one.offset, position, status);
        EXPECT_EQ(chain(status), one.fails ? failure : L"");
        EXPECT_EQ(position, one.expected);
    }
}

} // namespace tam::test
