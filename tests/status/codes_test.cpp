#include <tests/support/test.h>

#include <iterator>

using namespace tam;

namespace {

// What the operations that report the codes promise; not made from the message table. Codes are numbered from 1.
constexpr unsigned int LAST_NUMBER = 0x82;
const std::set<unsigned int> UNUSED_NUMBERS = {0x16, 0x20, 0x2B, 0x34, 0x50, 0x53, 0x55, 0x57, 0x5A, 0x7B, 0x7D};
const std::map<std::size_t, std::set<unsigned int>> NUMBERS_BY_ARGUMENTS = {
    {1, {0x02, 0x03, 0x04, 0x06, 0x07, 0x0A, 0x0B, 0x0E, 0x12, 0x15, 0x1D, 0x1E, 0x1F, 0x21,
         0x24, 0x26, 0x29, 0x2C, 0x2D, 0x2E, 0x2F, 0x38, 0x48, 0x49, 0x4A, 0x4B, 0x4F, 0x51,
         0x54, 0x56, 0x59, 0x5F, 0x61, 0x62, 0x6B, 0x6C, 0x6D, 0x73, 0x7F, 0x80}},
    {2, {0x0C, 0x0D, 0x0F, 0x10, 0x11, 0x13, 0x22, 0x23, 0x30, 0x47, 0x58, 0x7E}},
    {3, {0x5E}}};

std::size_t arguments_of(unsigned int number)
{
    for (const auto& [count, numbers] : NUMBERS_BY_ARGUMENTS) {
        if (numbers.count(number) != 0) {
            return count;
        }
    }
    return 0;
}

constexpr unsigned int FIRST = 0xC2000000;
constexpr unsigned int LAST = 0xC200FFFF;
constexpr unsigned int INSERTS = 101;

// The message table as data, and each insert %n as "<n>".
class Codes : public testing::Test {
protected:
    Codes() : m_module(::LoadLibraryExW(L"tam_messages.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE))
    {
        for (unsigned int i = 1; i <= INSERTS; ++i) {
            m_texts.push_back(insert(i));
        }
        for (const std::wstring& text : m_texts) {
            m_inserts.push_back(reinterpret_cast<DWORD_PTR>(text.c_str()));
        }
    }
    ~Codes() override { ::FreeLibrary(m_module); }

    void SetUp() override { ASSERT_NE(m_module, nullptr); }

    static std::wstring insert(unsigned int number) { return L"<" + std::to_wstring(number) + L">"; }

    // Empty when the module does not know the code.
    std::wstring text(unsigned int code)
    {
        wchar_t buffer[2048];
        const DWORD length =
            ::FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, m_module, code, 0, buffer,
                             static_cast<DWORD>(std::size(buffer)), reinterpret_cast<va_list*>(m_inserts.data()));
        return std::wstring(buffer, length);
    }

private:
    HMODULE m_module;
    std::vector<std::wstring> m_texts;
    std::vector<DWORD_PTR> m_inserts;
};

} // namespace

TEST_F(Codes, have_a_text_that_shows_every_argument_and_no_other_insert)
{
    for (unsigned int code = FIRST; code <= LAST; ++code) {
        SCOPED_TRACE(testing::Message() << std::hex << "code " << code);
        const unsigned int number = code - FIRST;
        const std::wstring shown = text(code);
        ASSERT_EQ(shown.empty(), number == 0 || number > LAST_NUMBER || UNUSED_NUMBERS.count(number) != 0);
        if (shown.empty()) {
            continue;
        }
        for (unsigned int position = 1; position <= INSERTS; ++position) {
            EXPECT_EQ(shown.find(insert(position)) != std::wstring::npos, position <= arguments_of(number))
                << "insert " << position;
        }
        EXPECT_TRUE(shown[0] >= L'A' && shown[0] <= L'Z');
        EXPECT_TRUE(shown.ends_with(L".\r\n"));
        EXPECT_EQ(std::count(shown.begin(), shown.end(), L'\n'), 1) << "more than one line";
        EXPECT_EQ(shown.find(L'%'), std::wstring::npos);
    }
}
