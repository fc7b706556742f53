#include <tests/support/test.h>

#include <tam/detail/win32.h>

using namespace tam;
using tam::test::Swap;

namespace {

// What GetLocaleInfoW answers; null: it fails.
const wchar_t* g_separator;
const wchar_t* g_order;

int WINAPI answer(LCID, LCTYPE type, wchar_t* buffer, int size)
{
    const wchar_t* const text = type == LOCALE_SDATE ? g_separator : type == LOCALE_IDATE ? g_order : nullptr;
    if (text == nullptr || static_cast<int>(std::wcslen(text)) >= size) {
        return 0;
    }
    std::wcscpy(buffer, text);
    return static_cast<int>(std::wcslen(text)) + 1;
}

std::wstring short_date(const wchar_t* separator, const wchar_t* order)
{
    g_separator = separator;
    g_order = order;
    const Swap guard(detail::win32.get_locale_info, &answer);
    std::wstring text;
    Tam_date(5, 3, 1999).to_string(L"%x", text);
    return text;
}

} // namespace

TEST(Short_date, has_the_order_and_separator_of_the_locale)
{
    EXPECT_EQ(short_date(L"-", L"0"), L"03-05-1999");
    EXPECT_EQ(short_date(L". ", L"1"), L"05. 03. 1999");
    EXPECT_EQ(short_date(L"", L"2"), L"19990305");
    EXPECT_EQ(short_date(L"%x", L"2"), L"1999%x03%x05");
}

TEST(Short_date, is_fixed_where_the_locale_cannot_be_read)
{
    EXPECT_EQ(short_date(nullptr, L"0"), L"05/03/1999");
    EXPECT_EQ(short_date(L"-", nullptr), L"05/03/1999");
    EXPECT_EQ(short_date(L"-", L"3"), L"05/03/1999");
    EXPECT_EQ(short_date(L"-", L""), L"05/03/1999");
    EXPECT_EQ(short_date(L"0123456789", L"0"), L"05/03/1999");
    EXPECT_EQ(short_date(L"-", L"00"), L"05/03/1999");
}
