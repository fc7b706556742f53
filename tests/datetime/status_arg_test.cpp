#include <memory>

#include <windows.h>

#include <gtest/gtest.h>

#include <tam/datetime/status_arg.h>
#include <tam/status/status.h>

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

TEST(Date_time_status_arg, is_kept_by_value)
{
    Tam_date date(5, 3, 1999);
    Tam_time time(1, 2, 3, 4);
    Tam_date_and_time both(date, time, Tam_time_zone::GMT);
    const Tam_status status(0xC2000001, Tam_date_status_arg(date), Tam_time_status_arg(time),
                            Tam_date_and_time_status_arg(both));
    const Tam_status copy = status;
    date = Tam_date(6, 4, 2000);
    time = Tam_time();
    both = Tam_date_and_time();
    ASSERT_EQ(copy.end() - copy.begin(), 3);
    EXPECT_EQ(dynamic_cast<const Tam_date_status_arg&>(*copy.begin()[0]).value(), Tam_date(5, 3, 1999));
    EXPECT_EQ(dynamic_cast<const Tam_time_status_arg&>(*copy.begin()[1]).value(), Tam_time(1, 2, 3, 4));
    EXPECT_TRUE(dynamic_cast<const Tam_date_and_time_status_arg&>(*copy.begin()[2])
                    .value()
                    .is_same_as(Tam_date_and_time(Tam_date(5, 3, 1999), Tam_time(1, 2, 3, 4), Tam_time_zone::GMT)));
}
