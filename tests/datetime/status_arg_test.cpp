#include <tests/support/test.h>

using namespace tam;

namespace {

std::wstring text_of(const Tam_status_arg& argument)
{
    std::wstring text = L"old";
    argument.to_string(text);
    return text;
}

struct Destroy {
    void operator()(Tam_status_arg* argument) const { argument->destroy(); }
};

// Through a clone as well, which must stay what it is.
void expect_renders(const Tam_status_arg& argument, const GUID& identity, const std::wstring& text)
{
    const std::unique_ptr<Tam_status_arg, Destroy> clone(argument.clone(nullptr));
    EXPECT_NE(clone.get(), &argument);
    for (const Tam_status_arg* one : {&argument, static_cast<const Tam_status_arg*>(clone.get())}) {
        EXPECT_EQ(text_of(*one), text);
        EXPECT_TRUE(one->identity() == identity);
    }
}

} // namespace

TEST(Date_time_status_arg, renders_in_the_form_of_the_locale)
{
    const Tam_date date(5, 3, 1999);
    const Tam_time time(15, 4, 9, 123456);
    const Tam_date_and_time both(date, time, Tam_time_zone::EST);
    const LCID saved = ::GetThreadLocale();
    ::SetThreadLocale(0x407);
    expect_renders(Tam_date_status_arg(date), Tam_date_status_arg::ID, L"05.03.1999");
    expect_renders(Tam_time_status_arg(time), Tam_time_status_arg::ID, L"15:04:09");
    expect_renders(Tam_date_and_time_status_arg(both), Tam_date_and_time_status_arg::ID, L"15:04:09 05.03.1999");
    ::SetThreadLocale(saved);
    EXPECT_EQ(Tam_date_status_arg(date).value(), date);
    EXPECT_EQ(Tam_time_status_arg(time).value(), time);
    EXPECT_TRUE(Tam_date_and_time_status_arg(both).value().is_same_as(both));
}

TEST(Date_time_status_arg, has_an_identifier_of_its_own)
{
    const GUID* const all[] = {&Tam_null_status_arg::ID, &Tam_int_status_arg::ID,          &Tam_uint_status_arg::ID,
                               &Tam_bool_status_arg::ID, &Tam_wstring_status_arg::ID,      &Tam_time_status_arg::ID,
                               &Tam_date_status_arg::ID, &Tam_date_and_time_status_arg::ID};
    for (const GUID* a : all) {
        for (const GUID* b : all) {
            EXPECT_EQ(*a == *b, a == b);
        }
    }
}
