#include <tam/regex/wregular_expression.h>

#include <tam/detail/regex_front.h>

namespace tam {

Tam_wregular_expression::Tam_wregular_expression() noexcept = default;

Tam_wregular_expression::Tam_wregular_expression(const std::wstring& pattern, Tam_status& status, bool line_borders)
{
    compile(pattern, status, line_borders);
}

Tam_wregular_expression::Tam_wregular_expression(const Tam_wregular_expression& other) noexcept = default;

Tam_wregular_expression::Tam_wregular_expression(Tam_wregular_expression&& other) noexcept = default;

Tam_wregular_expression& Tam_wregular_expression::operator=(const Tam_wregular_expression& other) noexcept = default;

Tam_wregular_expression& Tam_wregular_expression::operator=(Tam_wregular_expression&& other) noexcept = default;

Tam_wregular_expression::~Tam_wregular_expression() = default;

void Tam_wregular_expression::compile(const std::wstring& pattern, Tam_status& status, bool line_borders)
{
    detail::compile_regex(m_regex, pattern, line_borders, status);
}

const std::wstring& Tam_wregular_expression::pattern() const noexcept
{
    return detail::regex_pattern(m_regex.get());
}

bool Tam_wregular_expression::match(const std::wstring& text, Tam_status& status) const
{
    return detail::match_regex(m_regex.get(), text, status);
}

bool Tam_wregular_expression::search(const std::wstring& text, std::size_t from, std::size_t& start,
                                     std::size_t& length, Tam_status& status) const
{
    return detail::search_regex(m_regex.get(), detail::Regex_goal::SHORTEST, text, from, start, length, status);
}

bool Tam_wregular_expression::search_longest(const std::wstring& text, std::size_t from, std::size_t& start,
                                             std::size_t& length, Tam_status& status) const
{
    return detail::search_regex(m_regex.get(), detail::Regex_goal::LONGEST, text, from, start, length, status);
}

bool Tam_wregular_expression::match(Tam_istream& stream, Tam_status& status) const
{
    return detail::match_regex(m_regex.get(), stream, status);
}

bool Tam_wregular_expression::search(Tam_istream& stream, unsigned long long& start, unsigned long long& length,
                                     Tam_status& status) const
{
    return detail::search_regex(m_regex.get(), detail::Regex_goal::SHORTEST, stream, start, length, status);
}

bool Tam_wregular_expression::search_longest(Tam_istream& stream, unsigned long long& start, unsigned long long& length,
                                             Tam_status& status) const
{
    return detail::search_regex(m_regex.get(), detail::Regex_goal::LONGEST, stream, start, length, status);
}

unsigned int Tam_wregular_expression::grep(Tam_istream& stream, Tam_object_vector<std::wstring>& lines,
                                           unsigned int max, Tam_status& status) const
{
    return detail::grep_regex(m_regex.get(), stream, lines, max, status);
}

unsigned int Tam_wregular_expression::grep(Tam_istream& stream,
                                           bool (*callback)(const std::wstring& line, unsigned long long line_number,
                                                            void* argument),
                                           void* argument, Tam_status& status) const
{
    return detail::grep_regex(m_regex.get(), stream, callback, argument, status);
}

} // namespace tam
