#include <tests/support/test.h>

#include <iterator>

using namespace tam;

namespace {

struct Code {
    unsigned int constant;
    unsigned int number;
    unsigned int arguments;
};

// What the operations that report the codes promise; not made from the message table.
const Code CODES[] = {
    {TAM_E_OUT_OF_MEMORY, 0x01, 0},
    {TAM_E_MESSAGES_LOAD, 0x02, 1},
    {TAM_E_MESSAGES_ALREADY_LISTED, 0x03, 1},
    {TAM_E_MODULE_LOAD, 0x04, 1},
    {TAM_E_MODULE_UNLOAD, 0x05, 0},
    {TAM_E_FUNCTION_LOOKUP, 0x06, 1},
    {TAM_E_EVENT_SOURCE_OPEN, 0x07, 1},
    {TAM_E_EVENT_SOURCE_CLOSE, 0x08, 0},
    {TAM_E_EVENT_REPORT, 0x09, 0},
    {TAM_E_REG_KEY_OPEN_WRITE, 0x0A, 1},
    {TAM_E_REG_KEY_OPEN_READ, 0x0B, 1},
    {TAM_E_REG_VALUE_READ, 0x0C, 2},
    {TAM_E_REG_VALUE_WRITE, 0x0D, 2},
    {TAM_E_REG_ENUMERATE, 0x0E, 1},
    {TAM_E_REG_NOT_STRING, 0x0F, 2},
    {TAM_E_REG_NOT_UINT, 0x10, 2},
    {TAM_E_REG_NOT_PATH, 0x11, 2},
    {TAM_E_REG_KEY_DELETE, 0x12, 1},
    {TAM_E_REG_VALUE_DELETE, 0x13, 2},
    {TAM_E_REG_ROOT_NOT_REMOTE, 0x14, 0},
    {TAM_E_REG_CONNECT, 0x15, 1},
    {TAM_E_STREAM_DETACHED, 0x17, 0},
    {TAM_E_POSITION_OUT_OF_RANGE, 0x18, 0},
    {TAM_E_END_OF_DATA, 0x19, 0},
    {TAM_E_WRITE, 0x1A, 0},
    {TAM_E_READ, 0x1B, 0},
    {TAM_E_NO_LINE_END, 0x1C, 0},
    {TAM_E_PATH_EMPTY, 0x1D, 1},
    {TAM_E_FILE_NOT_FOUND, 0x1E, 1},
    {TAM_E_NOT_A_FILE, 0x1F, 1},
    {TAM_E_TARGET_EXISTS, 0x21, 1},
    {TAM_E_FILE_COPY, 0x22, 2},
    {TAM_E_FILE_MOVE, 0x23, 2},
    {TAM_E_FILE_DELETE, 0x24, 1},
    {TAM_E_CREATE_NEEDS_WRITE_ACCESS, 0x25, 0},
    {TAM_E_FILE_OPEN, 0x26, 1},
    {TAM_E_SEEK, 0x27, 0},
    {TAM_E_FILE_NOT_OPEN, 0x28, 0},
    {TAM_E_VOLUME_STATISTICS, 0x29, 1},
    {TAM_E_SHORT_INTEGER, 0x2A, 0},
    {TAM_E_NOT_A_DIRECTORY, 0x2C, 1},
    {TAM_E_DIRECTORY_CREATE, 0x2D, 1},
    {TAM_E_DIRECTORY_REMOVE, 0x2E, 1},
    {TAM_E_DIRECTORY_EXISTS, 0x2F, 1},
    {TAM_E_DIRECTORY_RENAME, 0x30, 2},
    {TAM_E_NO_FILE, 0x31, 0},
    {TAM_E_HAS_FILE, 0x32, 0},
    {TAM_E_WRITER_CONNECTED, 0x33, 0},
    {TAM_E_THREAD_RESOURCES, 0x35, 0},
    {TAM_E_THREAD_ARGUMENTS, 0x36, 0},
    {TAM_E_THREAD_CREATE, 0x37, 0},
    {TAM_E_THREAD_FAILED, 0x38, 1},
    {TAM_E_THREAD_TERMINATE, 0x39, 0},
    {TAM_E_THREAD_SUSPEND, 0x3A, 0},
    {TAM_E_THREAD_RESUME, 0x3B, 0},
    {TAM_E_THREAD_WAIT, 0x3C, 0},
    {TAM_E_THREAD_PRIORITY_UNKNOWN, 0x3D, 0},
    {TAM_E_THREAD_PRIORITY, 0x3E, 0},
    {TAM_E_PIPE_CREATE, 0x3F, 0},
    {TAM_E_MESSAGE_POST, 0x40, 0},
    {TAM_E_PIPE_WRITE, 0x41, 0},
    {TAM_E_PIPE_NO_WRITE_END, 0x42, 0},
    {TAM_E_PIPE_READ, 0x43, 0},
    {TAM_E_PIPE_NO_WRITE_END_TO_READ, 0x44, 0},
    {TAM_E_MESSAGE_READ, 0x45, 0},
    {TAM_E_NOT_A_TAM_THREAD, 0x46, 0},
    {TAM_E_PROCESS_TIME_OUT, 0x47, 2},
    {TAM_E_PROCESS_START, 0x48, 1},
    {TAM_E_PROCESS_TERMINATE, 0x49, 1},
    {TAM_E_PROCESS_EXIT_CODE, 0x4A, 1},
    {TAM_E_PROCESS_RUNNING, 0x4B, 1},
    {TAM_E_NAMED_PIPE_CREATE, 0x4C, 0},
    {TAM_E_NAMED_PIPE_NONE, 0x4D, 0},
    {TAM_E_NAMED_PIPE_OPEN, 0x4E, 0},
    {TAM_E_PROFILE_NOT_OPEN, 0x4F, 1},
    {TAM_E_SECTION_NOT_FOUND, 0x51, 1},
    {TAM_E_NO_CURRENT_SECTION, 0x52, 0},
    {TAM_E_END_OF_ENTRIES, 0x54, 1},
    {TAM_E_SECTION_EXISTS, 0x56, 1},
    {TAM_E_SECTION_READ, 0x58, 2},
    {TAM_E_PROFILE_OPEN, 0x59, 1},
    {TAM_E_PROFILE_ACCESS_NOT_OPEN, 0x5B, 0},
    {TAM_E_PROFILE_READ_ONLY, 0x5C, 0},
    {TAM_E_FILE_ALREADY_OPEN, 0x5D, 0},
    {TAM_E_PATTERN_SYNTAX, 0x5E, 3},
    {TAM_E_PATTERN_TOO_LARGE, 0x5F, 1},
    {TAM_E_PROCESS_STILL_RUNNING, 0x60, 0},
    {TAM_E_SEARCH_START, 0x61, 1},
    {TAM_E_SEARCH_NEXT, 0x62, 1},
    {TAM_E_FILE_TRUNCATE, 0x63, 0},
    {TAM_E_TIMER_SET, 0x64, 0},
    {TAM_E_TIMER_CREATE, 0x65, 0},
    {TAM_E_PATTERN_NOT_COMPILED, 0x66, 0},
    {TAM_E_TIMER_NONE, 0x67, 0},
    {TAM_E_TIMER_CANCEL, 0x68, 0},
    {TAM_E_FIXED_MEMORY_END, 0x69, 0},
    {TAM_E_UNKNOWN_EXCEPTION, 0x6A, 0},
    {TAM_E_EXCEPTION, 0x6B, 1},
    {TAM_E_REG_KEY_CREATE, 0x6C, 1},
    {TAM_E_REG_KEY_OPEN, 0x6D, 1},
    {TAM_E_REG_KEY_CLOSE, 0x6E, 0},
    {TAM_E_ACL_ENTRY_READ, 0x6F, 0},
    {TAM_E_ACL_INITIALIZE, 0x70, 0},
    {TAM_E_ACL_ENTRY_ADD, 0x71, 0},
    {TAM_E_TOKEN_OPEN, 0x72, 0},
    {TAM_E_TOKEN_USER, 0x73, 1},
    {TAM_E_SID, 0x74, 0},
    {TAM_E_SECURITY_HANDLE, 0x75, 0},
    {TAM_E_DACL_READ, 0x76, 0},
    {TAM_E_DACL_SET, 0x77, 0},
    {TAM_E_ALREADY_ASSOCIATED, 0x78, 0},
    {TAM_E_OBJECT_SECURITY_READ, 0x79, 0},
    {TAM_E_OBJECT_SECURITY_WRITE, 0x7A, 0},
    {TAM_E_ACL_ENTRY_INDEX, 0x7C, 0},
    {TAM_E_REG_NOT_MULTI_STRING, 0x7E, 2},
    {TAM_E_LOCAL_GROUPS_TRUNCATED, 0x7F, 1},
    {TAM_E_GLOBAL_GROUPS_TRUNCATED, 0x80, 1},
    {TAM_E_LOCAL_GROUPS, 0x81, 0},
    {TAM_E_GLOBAL_GROUPS, 0x82, 0},
};

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

TEST_F(Codes, have_constants_with_their_numbers)
{
    for (const Code& code : CODES) {
        EXPECT_EQ(code.constant, FIRST + code.number) << std::hex << code.number;
    }
}

TEST_F(Codes, have_a_text_that_shows_every_argument_and_no_other_insert)
{
    for (const Code& code : CODES) {
        SCOPED_TRACE(testing::Message() << std::hex << "code " << code.number);
        const std::wstring shown = text(code.constant);
        ASSERT_FALSE(shown.empty());
        for (unsigned int number = 1; number <= INSERTS; ++number) {
            EXPECT_EQ(shown.find(insert(number)) != std::wstring::npos, number <= code.arguments)
                << "insert " << number;
        }
        EXPECT_TRUE(shown[0] >= L'A' && shown[0] <= L'Z');
        EXPECT_TRUE(shown.ends_with(L".\r\n"));
        EXPECT_EQ(std::count(shown.begin(), shown.end(), L'\n'), 1) << "more than one line";
        EXPECT_EQ(shown.find(L'%'), std::wstring::npos);
    }
}

TEST_F(Codes, are_all_that_the_module_knows)
{
    std::vector<unsigned int> known;
    for (unsigned int code = FIRST; code <= LAST; ++code) {
        if (!text(code).empty()) {
            known.push_back(code - FIRST);
        }
    }
    std::vector<unsigned int> expected;
    std::transform(std::begin(CODES), std::end(CODES), std::back_inserter(expected),
                   [](const Code& code) { return code.number; });
    EXPECT_EQ(known, expected);
}
