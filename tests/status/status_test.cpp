#include <gtest/gtest.h>

#include <tam/status/status.h>

using namespace tam;

TEST(Status, boolean_arguments_render_from_the_string_table)
{
    std::wstring text;
    Tam_bool_status_arg(true).to_string(text);
    EXPECT_EQ(text, L"True");
    Tam_bool_status_arg(false).to_string(text);
    EXPECT_EQ(text, L"False");
}
