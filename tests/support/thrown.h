#pragma once

#include <exception>
#include <string>
#include <typeinfo>

namespace tam::test {

// The text of the exception that action throws, whose type must be exactly Exception; else what happened instead.
//
//     EXPECT_EQ(thrown<std::logic_error>([&] { vector.front(); }), "Tam_ptrvec_impl::front - vector is empty");
template <class Exception, class Action>
std::string thrown(Action action)
{
    try {
        action();
    } catch (const std::exception& e) {
        return typeid(e) == typeid(Exception) ? e.what() : std::string("threw a ") + typeid(e).name() + ": " + e.what();
    }
    return "threw nothing";
}

} // namespace tam::test
