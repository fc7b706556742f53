#include <tests/support/test.h>

#include <tam/detail/win32.h>
#include <tests/support/failing_new.h>

using namespace tam;
using tam::test::chain;
using tam::test::fail_each_allocation;
using tam::test::failing;
using tam::test::Failing_new;
using tam::test::live_blocks;
using tam::test::Swap;

namespace {

constexpr wchar_t MODULE[] = L"status_test_messages.dll";

struct Format_call {
    DWORD flags;
    const void* module;
    DWORD id;
    DWORD language;
    DWORD size;
};

Format_call calls[4];
unsigned int call_count = 0;

DWORD WINAPI fail_to_format(DWORD flags, LPCVOID module, DWORD id, DWORD language, LPWSTR, DWORD size, va_list*)
{
    calls[call_count++ % std::size(calls)] = {flags, module, id, language, size};
    ::SetLastError(ERROR_MR_MID_NOT_FOUND);
    return 0;
}

} // namespace

TEST(Messages_list, asks_each_module_with_the_system_and_then_the_system_alone)
{
    Tam_messages_list list;
    Tam_status status;
    list.add(MODULE, status);
    list.add(L"tam_messages.dll", status);
    ASSERT_TRUE(status.is_clear());
    const Swap guard(detail::win32.format_message, &fail_to_format);
    call_count = 0;
    std::wstring text = L"before";
    list.format_message(Tam_status(5, Tam_int_status_arg(1, false)), text);
    EXPECT_EQ(text, L"Error 0x5, 1\n");
    ASSERT_EQ(call_count, 3U);
    const void* const modules[] = {::GetModuleHandleW(MODULE), ::GetModuleHandleW(L"tam_messages.dll"), nullptr};
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(calls[i].flags, i < 2 ? 0x3900U : 0x3100U);
        EXPECT_EQ(calls[i].module, modules[i]);
        EXPECT_EQ(calls[i].id, 5U);
        EXPECT_EQ(calls[i].language, 0x0800U);
        EXPECT_EQ(calls[i].size, 1024U);
    }
    list.format_message(Tam_status(0xC2000019), text);
    EXPECT_EQ(text, L"Error 0xc2000019\n");
    EXPECT_EQ(calls[3].id, 0xC2000019);
}

TEST(Messages_list, reports_the_systems_reason_when_a_module_cannot_be_loaded)
{
    const auto guard = failing<ERROR_DLL_INIT_FAILED>(detail::win32.load_library);
    Tam_messages_list list;
    Tam_status status(7);
    list.add(L"x", status);
    EXPECT_EQ(chain(status), L"C2000002(x) 1114");
    EXPECT_EQ(list.begin(), list.end());
}

TEST(Messages_list, reports_and_survives_every_failing_allocation_of_add)
{
    const std::wstring name = MODULE;
    const long long blocks = live_blocks();
    {
        Tam_messages_list list;
        Tam_status status;
        const unsigned int failures =
            fail_each_allocation([] {}, [&] { list.add(name, status); },
                                 [&](unsigned int nth, bool) {
                                     EXPECT_EQ(chain(status), L"C2000002(" + name + L") C2000001") << nth;
                                     EXPECT_EQ(list.begin(), list.end());
                                     EXPECT_EQ(::GetModuleHandleW(MODULE), nullptr);
                                 });
        EXPECT_GE(failures, 3U); // the record, its name and its place in the list
        EXPECT_TRUE(status.is_clear());
        EXPECT_NE(list.begin(), list.end());
    }
    EXPECT_EQ(live_blocks(), blocks);
}

TEST(Messages_list, throws_when_there_is_no_memory_for_the_report)
{
    Tam_messages_list list;
    Tam_status status;
    const std::wstring name = MODULE;
    const long long before = live_blocks();
    bool thrown = false;
    {
        const Failing_new failing(1, Failing_new::ALL);
        try {
            list.add(name, status);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    EXPECT_FALSE(status.ok());
    EXPECT_EQ(list.begin(), list.end());
    EXPECT_EQ(live_blocks(), before);
}

TEST(Messages_list, loses_nothing_when_rendering_runs_out_of_memory)
{
    Tam_messages_list list;
    Tam_status status;
    list.add(MODULE, status);
    const Tam_status known(0xC2000F01, Tam_wstring_status_arg(std::wstring(100, L'x')));
    const Tam_status unknown(0xC2000FFF, Tam_wstring_status_arg(std::wstring(100, L'x')));
    for (const Tam_status* one : {&known, &unknown}) {
        std::optional<std::wstring> text;
        const long long before = live_blocks();
        const unsigned int failures =
            fail_each_allocation([&] { text.emplace(); }, [&] { list.format_message(*one, *text); },
                                 [&](unsigned int, bool) {
                                     text.reset();
                                     EXPECT_EQ(live_blocks(), before);
                                 });
        EXPECT_GE(failures, 2U);
    }
}
