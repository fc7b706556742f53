#include <tests/support/chain.h>

#include <sstream>

namespace tam::test {

std::wstring chain_of(const Tam_status& status)
{
    std::wostringstream out;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        out << (one == &status ? L"" : L" ") << std::hex << one->value() << L"(";
        for (const Tam_status_arg* argument : *one) {
            std::wstring text;
            argument->to_string(text);
            out << (argument == *one->begin() ? L"" : L",") << text;
        }
        out << L")";
    }
    return out.str();
}

} // namespace tam::test
