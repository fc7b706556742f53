#include <tests/support/chain.h>

#include <cwchar>

namespace tam::test {

std::wstring chain(const Tam_status& status)
{
    std::wstring text;
    if (status.is_clear()) {
        return text;
    }
    for (const Tam_status* link = &status; link != nullptr; link = link->child()) {
        wchar_t code[16];
        std::swprintf(code, 16, link->facility() == 0 ? L"%u" : L"%08X", link->value());
        text += (text.empty() ? L"" : L" ") + std::wstring(code);
        const wchar_t* separator = L"(";
        for (const Tam_status_arg* argument : *link) {
            std::wstring value;
            argument->to_string(value);
            text += separator + value;
            separator = L", ";
        }
        text += link->begin() == link->end() ? L"" : L")";
    }
    return text;
}

} // namespace tam::test
