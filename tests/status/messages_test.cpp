#include <tests/support/test.h>

using namespace tam;
using tam::test::chain;

namespace {

using Int = Tam_int_status_arg;
using Text = Tam_wstring_status_arg;

constexpr wchar_t LIBRARY[] = L"tam_messages.dll";
constexpr wchar_t OTHER[] = L"status_test_messages.dll";

constexpr unsigned int ONE_AND_THREE = 0xC2000F01;
constexpr unsigned int EIGHT = 0xC2000F02;
constexpr unsigned int BEYOND_EIGHT = 0xC2000F03;
constexpr unsigned int NO_LINE_END = 0x82000F04;

std::wstring rendered(const Tam_messages_list& list, const Tam_status& status)
{
    std::wstring text = L"before";
    list.format_message(status, text);
    return text;
}

void add(Tam_messages_list& list, const wchar_t* name)
{
    Tam_status status(7, Int(1, false));
    list.add(name, status);
    ASSERT_TRUE(status.is_clear()) << "chain " << testing::PrintToString(chain(status));
}

std::vector<std::wstring> names(const Tam_messages_list& list)
{
    std::vector<std::wstring> all;
    for (const Tam_messages* module : list) {
        all.push_back(module->name());
    }
    return all;
}

std::wstring system_text(DWORD error)
{
    wchar_t text[1024];
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                          0x0800, text, static_cast<DWORD>(std::size(text)), nullptr);
    return std::wstring(text, length);
}

bool is_loaded(const wchar_t* name)
{
    return ::GetModuleHandleW(name) != nullptr;
}

class Failing_text_arg : public Text {
public:
    Failing_text_arg() : Text(std::wstring(L"x")) {}
    void to_string(std::wstring&) const override { throw std::runtime_error("to_string"); }
    Tam_status_arg* clone(const void*) const override { return new Failing_text_arg(*this); }
};

} // namespace

static_assert(!std::is_copy_constructible_v<Tam_messages> && !std::is_copy_assignable_v<Tam_messages>);
static_assert(!std::is_copy_constructible_v<Tam_messages_list> && !std::is_copy_assignable_v<Tam_messages_list>);

TEST(Messages, loads_its_module_and_unloads_it)
{
    ASSERT_FALSE(is_loaded(OTHER));
    {
        Tam_status status(7, Int(1, false));
        const Tam_messages messages(L"Status_Test_Messages.DLL", status);
        EXPECT_TRUE(status.is_clear());
        EXPECT_EQ(messages.name(), L"Status_Test_Messages.DLL");
        EXPECT_TRUE(is_loaded(OTHER));
        std::wstring text = L"before";
        EXPECT_TRUE(messages.format_message(Tam_status(TAM_E_MODULE_UNLOAD), text));
        EXPECT_EQ(text, L"A text that replaces the library's.\r\n");
        EXPECT_FALSE(messages.format_message(Tam_status(TAM_E_MODULE_LOAD, Text(L"a")), text));
        EXPECT_EQ(text, L"");
    }
    EXPECT_FALSE(is_loaded(OTHER));
}

TEST(Messages, reports_a_module_that_cannot_be_loaded_and_still_asks_the_system)
{
    const test::Temporary_folder folder;
    const std::wstring no_module = folder.file(L"no_module.dll", "This is no module.");
    const std::wstring missing = folder / L"missing.dll";
    const struct {
        std::wstring name;
        DWORD error;
    } cases[] = {{no_module, ERROR_BAD_EXE_FORMAT}, {missing, ERROR_MOD_NOT_FOUND}, {L"", ERROR_MOD_NOT_FOUND}};
    for (const auto& one : cases) {
        Tam_status status(7, Int(1, false));
        const Tam_messages messages(one.name, status);
        Tam_status expected(one.error);
        expected.push(0xC2000002, Text(one.name));
        EXPECT_EQ(chain(status), chain(expected));
        EXPECT_EQ(messages.name(), one.name);
        std::wstring text;
        EXPECT_TRUE(messages.format_message(Tam_status(ERROR_ACCESS_DENIED), text));
        EXPECT_EQ(text, system_text(ERROR_ACCESS_DENIED));
    }
}

TEST(Messages_list, adds_a_module_once_whatever_the_letter_case)
{
    Tam_messages_list list;
    add(list, LIBRARY);
    Tam_status status(7, Int(1, false));
    list.add(L"TAM_Messages.dll", status);
    EXPECT_EQ(chain(status), L"C2000003(TAM_Messages.dll)");
    EXPECT_EQ(names(list), std::vector<std::wstring>{LIBRARY});
}

TEST(Messages_list, removes_a_module_whatever_the_letter_case_and_ignores_unknown_ones)
{
    Tam_messages_list list;
    list.remove(OTHER);
    add(list, OTHER);
    add(list, LIBRARY);
    list.remove(L"unknown.dll");
    list.remove(L"");
    EXPECT_EQ(names(list), (std::vector<std::wstring>{OTHER, LIBRARY}));
    list.remove(L"STATUS_test_MESSAGES.dll");
    EXPECT_EQ(names(list), std::vector<std::wstring>{LIBRARY});
    EXPECT_FALSE(is_loaded(OTHER));
    list.remove((*list.begin())->name());
    EXPECT_EQ(list.begin(), list.end());
    EXPECT_FALSE(is_loaded(LIBRARY));
    add(list, LIBRARY);
}

TEST(Messages_list, asks_its_modules_in_the_order_in_which_they_were_added)
{
    const Tam_status status(TAM_E_MODULE_UNLOAD);
    {
        Tam_messages_list list;
        add(list, LIBRARY);
        add(list, OTHER);
        EXPECT_EQ(rendered(list, status), L"A module could not be unloaded.\r\n");
        list.remove(LIBRARY);
        add(list, LIBRARY);
        EXPECT_EQ(names(list), (std::vector<std::wstring>{OTHER, LIBRARY}));
        EXPECT_EQ(rendered(list, status), L"A text that replaces the library's.\r\n");
        EXPECT_EQ(rendered(list, Tam_status(TAM_E_FILE_COPY, Text(L"C:\\a"), Text(L"C:\\b"))),
                  L"The file \"C:\\a\" could not be copied to \"C:\\b\".\r\n");
    }
    EXPECT_FALSE(is_loaded(LIBRARY));
    EXPECT_FALSE(is_loaded(OTHER));
}

TEST(Messages_list, inserts_the_arguments_of_the_head_alone)
{
    Tam_messages_list list;
    add(list, OTHER);
    Tam_status status(5, Text(L"c"), Text(L"d"), Text(L"e"));
    status.push(ONE_AND_THREE, Text(L"a"));
    EXPECT_EQ(rendered(list, status), L"One is <a> and three is <>.\r\n");
    status.add_arg(Int(2, false));
    status.add_arg(Tam_bool_status_arg(true));
    EXPECT_EQ(rendered(list, status), L"One is <a> and three is <True>.\r\n");
    status.assign(ONE_AND_THREE, Text(L"%2 100% %%\r\n"), Text(L"b"), Text(L"%1"));
    EXPECT_EQ(rendered(list, status), L"One is <%2 100% %%\r\n> and three is <%1>.\r\n");
    EXPECT_EQ(rendered(list, Tam_status(EIGHT, Int(1, false), Int(2, false), Int(3, false), Int(4, false),
                                        Int(5, false), Int(6, false), Int(7, false), Int(8, false))),
              L"8,7,6,5,4,3,2,1\r\n");
    EXPECT_EQ(rendered(list, Tam_status(NO_LINE_END, Text(L"x"))), L"A warning without a line end and 100% of x");
}

TEST(Messages_list, shows_nothing_for_inserts_that_no_argument_fills)
{
    Tam_messages_list list;
    add(list, OTHER);
    EXPECT_EQ(rendered(list, Tam_status(EIGHT)), L",,,,,,,\r\n");
    EXPECT_EQ(rendered(list, Tam_status(BEYOND_EIGHT, Int(1, false), Int(2, false), Int(3, false), Int(4, false),
                                        Int(5, false), Int(6, false), Int(7, false), Int(8, false))),
              L"<8><><><><><>\r\n");
}

TEST(Messages_list, renders_long_arguments_whole)
{
    Tam_messages_list list;
    add(list, OTHER);
    const std::wstring one(9000, L'1');
    const std::wstring three(20000, L'3');
    EXPECT_EQ(rendered(list, Tam_status(ONE_AND_THREE, Text(one), Text(L""), Text(three))),
              L"One is <" + one + L"> and three is <" + three + L">.\r\n");
}

TEST(Messages_list, uses_the_systems_text_with_and_without_modules)
{
    Tam_messages_list list;
    const std::wstring success = system_text(0);
    const auto check = [&] {
        EXPECT_EQ(rendered(list, Tam_status(2)), system_text(2));
        EXPECT_EQ(rendered(list, Tam_status(0xC0000002)), system_text(2));
        EXPECT_EQ(rendered(list, Tam_status(0x80000002)), system_text(2));
        EXPECT_EQ(rendered(list, Tam_status()), success.empty() ? L"Success 0\n" : success);
    };
    check();
    add(list, LIBRARY);
    check();
}

struct Fallback_case {
    Tam_status status;
    const wchar_t* expected;
};

TEST(Messages_list, falls_back_to_severity_code_and_arguments)
{
    Tam_messages_list list;
    const Tam_bool_status_arg yes(true);
    Tam_status pushed(ERROR_ACCESS_DENIED);
    pushed.push(0xC2000FFF, Int(-1, false));
    const Fallback_case cases[] = {
        {Tam_status(0xC2000017, Text(L"a"), Int(5, false)), L"Error 0xc2000017, a, 5\n"},
        {Tam_status(0x02ABCDEF), L"Success 0x2abcdef\n"},
        {Tam_status(0x42ABCDEF, yes), L"Information 0x42abcdef, True\n"},
        {Tam_status(0x82ABCDEF, Text(L""), yes), L"Warning 0x82abcdef, , True\n"},
        {Tam_status(0xC2ABCDEF), L"Error 0xc2abcdef\n"},
        {Tam_status(0x22ABCDEF), L"Error 0x22abcdef\n"},
        {Tam_status(0xF2ABCDEF), L"Error 0xf2abcdef\n"},
        {Tam_status(0xFFFE), L"Error 0xfffe\n"},
        {Tam_status(0x8000FFFE), L"Warning 0xfffe\n"},
        {pushed, L"Error 0xc2000fff, -1\n"},
        {Tam_status(0xC2000FFF, yes, yes, yes, yes, yes, yes, yes, Text(L"%1\n")),
         L"Error 0xc2000fff, True, True, True, True, True, True, True, %1\n\n"},
    };
    for (const bool with_module : {false, true}) {
        for (const Fallback_case& one : cases) {
            if (!with_module || one.status != 0xC2000017) {
                EXPECT_EQ(rendered(list, one.status), one.expected);
            }
        }
        if (!with_module) {
            add(list, LIBRARY);
        }
    }
}

TEST(Messages_list, gives_back_the_memory_of_the_systems_texts)
{
    Tam_messages_list list;
    add(list, OTHER);
    const Tam_status by_module(TAM_E_MODULE_UNLOAD);
    const Tam_status by_system(2);
    std::wstring text(2000, L' ');
    const auto render = [&] {
        list.format_message(by_module, text);
        list.format_message(by_system, text);
    };
    render();
    const unsigned int before = test::system_blocks();
    for (int i = 0; i < 10; ++i) {
        render();
    }
    EXPECT_EQ(test::system_blocks(), before);
}

TEST(Messages_list, passes_on_what_an_argument_throws_and_loses_nothing)
{
    Tam_messages_list list;
    add(list, OTHER);
    const Tam_status status(ONE_AND_THREE, Text(std::wstring(1000, L'x')), Failing_text_arg());
    std::wstring text(2000, L' ');
    const unsigned int before = test::heap_blocks();
    for (int i = 0; i < 3; ++i) {
        try {
            list.format_message(status, text);
            FAIL() << "nothing was thrown";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "to_string");
        }
    }
    EXPECT_EQ(test::heap_blocks(), before);
}

TEST(Messages_list, has_a_global_list_that_starts_empty)
{
    Tam_messages_list& list = Tam_messages_list::m_global_messages;
    EXPECT_EQ(list.begin(), list.end());
    add(list, LIBRARY);
    EXPECT_EQ(rendered(list, Tam_status(TAM_E_END_OF_DATA)), L"The end of the data was reached.\r\n");
    list.remove(LIBRARY);
    EXPECT_FALSE(is_loaded(LIBRARY));
}
