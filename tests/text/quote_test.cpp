#include <tests/support/test.h>

using namespace tam;

namespace {

template <class String>
String quoted_form(const String& text)
{
    String out(3, 'x');
    tam_quote(text, out);
    return out;
}

template <class String>
String unquoted_form(const String& text)
{
    String out(3, 'x');
    tam_unquote(text, out);
    return out;
}

std::wstring widened(const std::string& text)
{
    return {text.begin(), text.end()};
}

} // namespace

TEST(Quote, writes_nine_characters_as_sequences_and_all_others_as_they_are)
{
    for (unsigned int c = 0; c < 0x10000; ++c) {
        const char* letter = nullptr;
        switch (c) {
        case '"':
            letter = "\"";
            break;
        case 13:
            letter = "r";
            break;
        case 10:
            letter = "n";
            break;
        case 9:
            letter = "t";
            break;
        case 11:
            letter = "v";
            break;
        case 8:
            letter = "b";
            break;
        case 12:
            letter = "f";
            break;
        case 7:
            letter = "a";
            break;
        case '\\':
            letter = "\\";
            break;
        default:
            break;
        }
        const std::wstring wide(1, static_cast<wchar_t>(c));
        const std::wstring inside = letter ? L"\\" + widened(letter) : wide;
        ASSERT_EQ(quoted_form(wide), L"\"" + inside + L"\"") << c;
        if (c < 0x100) {
            const std::string narrow(1, static_cast<char>(c));
            ASSERT_EQ(quoted_form(narrow), "\"" + (letter ? std::string("\\") + letter : narrow) + "\"") << c;
        }
    }
    EXPECT_EQ(quoted_form<std::string>(""), "\"\"");
    EXPECT_EQ(quoted_form<std::wstring>(L""), L"\"\"");
    EXPECT_EQ(quoted_form<std::wstring>(L"a\n\""), L"\"a\\n\\\"\"");
}

TEST(Unquote, decodes_sequences)
{
    struct Row {
        std::string in;
        std::string out;
    };
    const Row rows[] = {
        {"", ""},
        {"\"", "\""},
        {"\"\"", ""},
        {"\"\"\"", "\""},
        {"plain \"text\" inside", "plain \"text\" inside"},
        {"\"only the first", "\"only the first"},
        {"only the last\"", "only the last\""},
        {"\"a\\\"", "a\\"}, // the last quote goes, although a backslash stands before it
        {R"(\t\r\n\f\a\b\v\\)", "\t\r\n\f\a\b\v\\"},
        {R"(\"\8\9\q\X41)", "\"89qX41"},
        {R"(\x41\101\q)", "AAq"},
        {R"(\x)", std::string(1, '\0')},
        {R"(\xg\x)", std::string("\0g\0", 3)},
        {R"(\x7e~\x4Ag)", "~~Jg"},
        {R"(\x123456789abcdef0000000000041)", "A"}, // any number of digits
        {R"(\1\12\1234\18\0)", std::string("\1\12\123"
                                           "4"
                                           "\1"
                                           "8"
                                           "\0",
                                           7)},
        {R"(\\x41)", "\\x41"},
        {R"(abc\)", "abc\\"},
        {"\\", "\\"},
        {std::string("\\\0z", 3), std::string("\0z", 2)},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(unquoted_form(row.in), row.out) << row.in;
        EXPECT_EQ(unquoted_form(widened(row.in)), widened(row.out)) << row.in;
    }
}

TEST(Unquote, values_are_cut_to_the_width_of_a_character)
{
    EXPECT_EQ(unquoted_form<std::string>(R"(\x1e4\777)"), "\xe4\xff");
    EXPECT_EQ(unquoted_form<std::wstring>(LR"(\x1e4\777\x1d800)"), L"\u01e4\u01ff\xd800");
    // The run-time counts the full-width digits among the wide hexadecimal ones.
    EXPECT_EQ(unquoted_form<std::wstring>(L"\\x\uff14\uff11\\x\uff26\uff46"), L"A\u00ff");
}

TEST(Unquote, may_work_on_one_string)
{
    std::wstring text = L"\"a\"\n\\";
    tam_quote(text, text);
    EXPECT_EQ(text, L"\"\\\"a\\\"\\n\\\\\"");
    tam_unquote(text, text);
    EXPECT_EQ(text, L"\"a\"\n\\");
}

TEST(Unquote, gives_back_what_was_quoted)
{
    constexpr unsigned int SEED = 90125;
    SCOPED_TRACE(testing::Message() << "seed " << SEED);
    std::mt19937 random(SEED);
    for (int i = 0; i < 20000; ++i) {
        std::wstring wide;
        std::string narrow;
        for (auto length = random() % 24; length != 0; --length) {
            // Half of the characters from those that mean something, the rest any unit: NULs, lone surrogates ...
            const auto c = random() % 2 ? "\"\\x01789abnrt\n\t"[random() % 15] : random();
            wide += static_cast<wchar_t>(c);
            narrow += static_cast<char>(c);
        }
        ASSERT_EQ(unquoted_form(quoted_form(wide)), wide) << i;
        ASSERT_EQ(unquoted_form(quoted_form(narrow)), narrow) << i;
    }
}
