#include <tam/text/trim.h>

#include <algorithm>

#include <tam/detail/characters.h>

namespace tam {

namespace {

constexpr auto is_not_space = [](auto c) { return !detail::is_space(c); };

template <class Char>
void trim(std::basic_string<Char>& text)
{
    const auto last = std::find_if(text.rbegin(), text.rend(), is_not_space);
    text.erase(last.base(), text.end());
    text.erase(text.begin(), std::find_if(text.begin(), text.end(), is_not_space));
}

template <class Char>
bool is_blank(const std::basic_string<Char>& text)
{
    return std::none_of(text.begin(), text.end(), is_not_space);
}

} // namespace

void tam_trim(std::string& text)
{
    trim(text);
}

void tam_trim(std::wstring& text)
{
    trim(text);
}

bool tam_is_blank(const std::string& text)
{
    return is_blank(text);
}

bool tam_is_blank(const std::wstring& text)
{
    return is_blank(text);
}

} // namespace tam
