#include <tests/support/test.h>

#include <typeinfo>

#include <tam/detail/rpc_exception.h>

using namespace tam;

namespace {

EXCEPTION_RECORD record_of(DWORD code, ULONG_PTR address, EXCEPTION_RECORD* nested = nullptr)
{
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code;
    record.ExceptionAddress = reinterpret_cast<void*>(address);
    record.ExceptionRecord = nested;
    return record;
}

std::string description(EXCEPTION_RECORD record)
{
    const EXCEPTION_POINTERS pointers = {&record, nullptr};
    const Tam_system_exception exception(&pointers, false);
    EXPECT_EQ(exception.code(), record.ExceptionCode);
    return exception.what();
}

const char DENORMAL[] =
    "One of the operands in a floating-point operation is denormal. A denormal value is one that is "
    "too small to represent as a standard floating-point value.\r\n";
const char UNKNOWN[] = "An unknown Microsoft structured exception has occurred.\r\n";

} // namespace

TEST(System_exception, is_empty_without_a_record)
{
    EXPECT_EQ(Tam_system_exception().code(), 0U);
    EXPECT_STREQ(Tam_system_exception().what(), "");
    const EXCEPTION_POINTERS none{};
    for (const EXCEPTION_POINTERS* const pointers : {&none, static_cast<const EXCEPTION_POINTERS*>(nullptr)}) {
        EXPECT_EQ(Tam_system_exception(pointers, true).code(), 0U);
        EXPECT_STREQ(Tam_system_exception(pointers, true).what(), "");
    }
}

TEST(System_exception, describes_each_code_by_its_text)
{
    const struct {
        DWORD code;
        const char* text;
        const char* code_line;
    } rows[] = {
        {0x80000002,
         "The thread attempted to read or write data that is misaligned on hardware that does not provide alignment. "
         "For example, 16-bit values must be aligned on 2-byte boundaries, 32-bit values on 4-byte boundaries, and so "
         "on.\r\n",
         "0x80000002"},
        {0x80000003, "A breakpoint was encountered.\r\n", "0x80000003"},
        {0x80000004,
         "A trace trap or other single-instruction mechanism signaled that one instruction has been executed.\r\n",
         "0x80000004"},
        {0xC0000025, "The thread attempted to continue execution after a noncontinuable exception occurred.\r\n",
         "0xc0000025"},
        {0xC000008C,
         "The thread attempted to access an array element that is out of bounds, and the underlying hardware supports "
         "bounds checking.\r\n",
         "0xc000008c"},
        {0xC000008D, DENORMAL, "0xc000008d"},
        {0xC000008E, DENORMAL, "0xc000008e"},
        {0xC000008F,
         "The result of a floating-point operation cannot be represented exactly as a decimal fraction.\r\n",
         "0xc000008f"},
        {0xC0000090, "This exception represents any floating-point exception not included in this list.\r\n",
         "0xc0000090"},
        {0xC0000091,
         "The exponent of a floating-point operation is greater than the magnitude allowed by the corresponding "
         "type.\r\n",
         "0xc0000091"},
        {0xC0000092, "The stack overflowed or underflowed as the result of a floating-point operation.\r\n",
         "0xc0000092"},
        {0xC0000093,
         "The exponent of a floating-point operation is less than the magnitude allowed by the corresponding type.\r\n",
         "0xc0000093"},
        {0xC0000094, "The thread attempted to divide an integer value by an integer divisor of zero.\r\n",
         "0xc0000094"},
        {0xC0000095,
         "The result of an integer operation caused a carry out of the most significant bit of the result.\r\n",
         "0xc0000095"},
        {0xC0000096,
         "The thread attempted to execute an instruction whose operation is not allowed in the current machine "
         "mode.\r\n",
         "0xc0000096"},
        {0xC00000FD, UNKNOWN, "0xc00000fd"},
        {0xC000001D, UNKNOWN, "0xc000001d"},
        {0xC0000006, UNKNOWN, "0xc0000006"},
        {0x80000001, UNKNOWN, "0x80000001"},
        {0xC0000097, UNKNOWN, "0xc0000097"},
        {0xE0001234, UNKNOWN, "0xe0001234"},
        {0x40000005, UNKNOWN, "0x40000005"},
        {1, UNKNOWN, "0x00000001"},
        {0, UNKNOWN, "0x00000000"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(description(record_of(row.code, 0x401000)), std::string(row.text) + "Exception code is " +
                                                                  row.code_line +
                                                                  ".\r\nError occured at address 0x00401000.\r\n");
    }
}

TEST(System_exception, tells_the_address_that_was_accessed)
{
    EXCEPTION_RECORD record = record_of(0xC0000005, 0x401000);
    record.NumberParameters = 2;
    const std::string text =
        "The thread attempted to read from or write to a virtual address for which it does not have "
        "the appropriate access.\r\n";
    EXPECT_EQ(description(record), text + "The memory address accessed is 0x00000000.\r\n"
                                          "Exception code is 0xc0000005.\r\n"
                                          "Error occured at address 0x00401000.\r\n");
    record.ExceptionInformation[0] = 1;
    record.ExceptionInformation[1] = 0xFFFFFFFFFFFFFFFF;
    record.ExceptionAddress = reinterpret_cast<void*>(0x7FF612345678);
    EXPECT_EQ(description(record), text + "The memory address accessed is 0xffffffffffffffff.\r\n"
                                          "Exception code is 0xc0000005.\r\n"
                                          "Error occured at address 0x7ff612345678.\r\n");
}

TEST(System_exception, describes_nested_records_to_any_depth)
{
    EXCEPTION_RECORD innermost = record_of(0xC0000005, 0x300000);
    innermost.ExceptionInformation[1] = 0xABC;
    EXCEPTION_RECORD inner = record_of(0xC0000094, 0x200000, &innermost);
    EXPECT_EQ(description(record_of(0x80000003, 0x100000, &inner)),
              "A breakpoint was encountered.\r\n"
              "Exception code is 0x80000003.\r\n"
              "Error occured at address 0x00100000.\r\n"
              "\r\nPrevious exception...\r\n"
              "The thread attempted to divide an integer value by an integer divisor of zero.\r\n"
              "Exception code is 0xc0000094.\r\n"
              "Error occured at address 0x00200000.\r\n"
              "\r\nPrevious exception...\r\n"
              "The thread attempted to read from or write to a virtual address for which it does not have the "
              "appropriate access.\r\n"
              "The memory address accessed is 0x00000abc.\r\n"
              "Exception code is 0xc0000005.\r\n"
              "Error occured at address 0x00300000.\r\n");
    std::vector<EXCEPTION_RECORD> chain(100000, record_of(1, 0));
    for (std::size_t i = 1; i < chain.size(); ++i) {
        chain[i].ExceptionRecord = &chain[i - 1];
    }
    const std::string one = description(record_of(1, 0));
    EXPECT_EQ(description(chain.back()).size(),
              chain.size() * one.size() + (chain.size() - 1) * std::string("\r\nPrevious exception...\r\n").size());
}

TEST(Exception_translator, throws_rpc_exceptions_for_rpc_status_values_alone)
{
    std::set<DWORD> rpc = {0,    5,    14,   87,   122,  164,  1130, 1730, 1732, 1733, 1734, 1735, 1736, 1737,
                           1739, 1740, 1741, 1742, 1743, 1744, 1745, 1746, 1747, 1748, 1749, 1754, 1755, 1756,
                           1757, 1758, 1759, 1760, 1761, 1762, 1764, 1765, 1766, 1767, 1768, 1769, 1770, 1771,
                           1791, 1806, 1817, 1818, 1819, 1820, 1822, 1823, 1824, 1826, 1898, 1900};
    for (DWORD code = 1700; code <= 1728; ++code) {
        rpc.insert(code);
    }
    ASSERT_EQ(rpc.size(), 83U);
    std::set<DWORD> codes = {0xC0000005, 0xC00006BF, 0x800006BF, 1727 + 0x10000};
    for (DWORD code = 0; code <= 2000; ++code) {
        codes.insert(code);
    }
    for (const DWORD code : codes) {
        EXCEPTION_RECORD record = record_of(code, 0x1000);
        EXCEPTION_POINTERS pointers = {&record, nullptr};
        try {
            // The record decides, not the parameter.
            tam_exception_translator(rpc.count(code) != 0 ? 1729 : 1727, &pointers);
            FAIL() << "returned for " << code;
        } catch (const Tam_system_exception& exception) {
            EXPECT_EQ(exception.code(), code);
            EXPECT_STREQ(exception.what(), Tam_system_exception(&pointers, true).what());
            const auto& expected = rpc.count(code) != 0 ? typeid(Tam_rpc_exception) : typeid(Tam_system_exception);
            EXPECT_TRUE(typeid(exception) == expected) << code;
        }
    }
}

TEST(Exception_translator, throws_an_empty_exception_without_a_record)
{
    EXCEPTION_POINTERS none{};
    for (EXCEPTION_POINTERS* const pointers : {&none, static_cast<EXCEPTION_POINTERS*>(nullptr)}) {
        try {
            tam_exception_translator(0, pointers);
            FAIL();
        } catch (const Tam_system_exception& exception) {
            EXPECT_TRUE(typeid(exception) == typeid(Tam_system_exception));
            EXPECT_STREQ(exception.what(), "");
        }
    }
}
