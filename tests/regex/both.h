#pragma once

#include <string>

#include <gtest/gtest.h>

#include <tam/regex.h>

namespace tam::test {

/// The narrow class and the wide one, for tests of what both promise.
struct Narrow {
    using Expression = Tam_regular_expression;
    using String = std::string;
    static String text(const std::string& ascii) { return ascii; }
};

struct Wide {
    using Expression = Tam_wregular_expression;
    using String = std::wstring;
    static String text(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }
};

using Both = testing::Types<Narrow, Wide>;

/// The bytes of a text as streams have it.
template <class String>
std::string bytes(const String& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof text[0]};
}

} // namespace tam::test
