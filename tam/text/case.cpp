#include <tam/text/case.h>

#include <tam/detail/characters.h>

namespace tam {

namespace {

template <class Char>
void upper(std::basic_string<Char>& text)
{
    for (Char& c : text) {
        c = detail::to_upper(c);
    }
}

template <class Char>
void lower(std::basic_string<Char>& text)
{
    for (Char& c : text) {
        c = detail::to_lower(c);
    }
}

} // namespace

void tam_upper(std::string& text)
{
    upper(text);
}

void tam_upper(std::wstring& text)
{
    upper(text);
}

void tam_lower(std::string& text)
{
    lower(text);
}

void tam_lower(std::wstring& text)
{
    lower(text);
}

} // namespace tam
