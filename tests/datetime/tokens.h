#pragma once

#include <tests/support/test.h>

namespace tam::test {

/// The class knows exactly these characters as format tokens, and to_string() refuses others with its name in the text.
/// What comes before one is in the result: "a", then what %S or %d gives.
template <class Value>
void expect_format_tokens(const Value& value, const std::wstring& tokens, const std::wstring& refused,
                          const std::string& name, const std::wstring& good, const std::wstring& so_far)
{
    if constexpr (requires { Value::is_format_token(L'a'); }) {
        for (int unit = 0; unit <= 0xFFFF; ++unit) {
            const auto token = static_cast<wchar_t>(unit);
            ASSERT_EQ(Value::is_format_token(token), tokens.find(token) != std::wstring::npos) << unit;
        }
    }
    for (const wchar_t token : refused) {
        std::wstring text = L"old";
        EXPECT_EQ(thrown<std::invalid_argument>([&] { value.to_string(L"a" + good + L"%" + token + L"b", text); }),
                  name + "::to_string - invalid format token.");
        EXPECT_EQ(text, so_far);
    }
}

} // namespace tam::test
