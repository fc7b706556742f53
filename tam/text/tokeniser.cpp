#include <tam/text/tokeniser.h>

#include <array>

namespace tam {

namespace {

constexpr std::size_t TOKEN_ROOM = 1024;

constexpr wchar_t QUOTE = L'"';
constexpr wchar_t BACKSLASH = L'\\';

enum Role : unsigned char { ORDINARY, TERMINATOR, IGNORED, SEPARATOR, TERMINAL, QUOTE_MARK };

// What a character does outside quotes, without a search for nearly all of them.
class Roles {
public:
    explicit Roles(const Tam_tokeniser& tokeniser) : m_tokeniser(tokeniser)
    {
        // The first set in the order of precedence comes last and overwrites the others.
        _mark(tokeniser.terminals(), TERMINAL);
        _mark(tokeniser.separators(), SEPARATOR);
        _mark(tokeniser.ignore(), IGNORED);
        _mark(tokeniser.terminators(), TERMINATOR);
        m_low[QUOTE] = QUOTE_MARK;
    }

    Role operator()(wchar_t c) const
    {
        if (c < m_low.size()) {
            return m_low[c];
        }
        return m_any_high ? _search(c) : ORDINARY;
    }

private:
    void _mark(const std::wstring& set, Role role)
    {
        for (const wchar_t c : set) {
            if (c < m_low.size()) {
                m_low[c] = role;
            } else {
                m_any_high = true;
            }
        }
    }

    Role _search(wchar_t c) const
    {
        const auto is_in = [c](const std::wstring& set) { return set.find(c) != set.npos; };
        return is_in(m_tokeniser.terminators())  ? TERMINATOR
               : is_in(m_tokeniser.ignore())     ? IGNORED
               : is_in(m_tokeniser.separators()) ? SEPARATOR
               : is_in(m_tokeniser.terminals())  ? TERMINAL
                                                 : ORDINARY;
    }

    const Tam_tokeniser& m_tokeniser;
    std::array<Role, 128> m_low{};
    bool m_any_high = false; // a set has a character that m_low has no room for
};

// The place behind the quote that closes the stretch opened at from, or end.
const wchar_t* behind_quoted(const wchar_t* from, const wchar_t* end)
{
    for (++from; from != end; ++from) {
        if (*from == QUOTE) {
            return from + 1;
        }
        if (*from == BACKSLASH && from + 1 != end && from[1] == QUOTE) {
            ++from;
        }
    }
    return end;
}

} // namespace

Tam_tokeniser::Tam_tokeniser() : Tam_tokeniser(L" \t", L"", L"\n", L"", false, false) {}

Tam_tokeniser::Tam_tokeniser(const std::wstring& separators, const std::wstring& ignore,
                             const std::wstring& terminators, const std::wstring& terminals, bool include_separators,
                             bool allow_empty_tokens)
    : m_separators(separators),
      m_ignore(ignore),
      m_terminators(terminators),
      m_terminals(terminals),
      m_include_separators(include_separators),
      m_allow_empty_tokens(allow_empty_tokens)
{}

void Tam_tokeniser::tokenise(const std::wstring& text, Tam_object_vector<std::wstring>& tokens) const
{
    if (text.empty()) {
        tokens.clear();
        return;
    }
    Tam_object_vector<std::wstring> found;
    std::wstring token;
    token.reserve(TOKEN_ROOM);
    const Roles role_of(*this);
    const wchar_t* const end = text.data() + text.size();
    bool at_end = false;
    for (const wchar_t* from = text.data(); from != end && !at_end;) {
        const wchar_t* next = from + 1;
        switch (role_of(*from)) {
        case ORDINARY:
            while (next != end && role_of(*next) == ORDINARY) {
                ++next;
            }
            token.append(from, next);
            break;
        case QUOTE_MARK:
            next = behind_quoted(from, end);
            token.append(from, next);
            break;
        case TERMINATOR:
            at_end = true;
            break;
        case IGNORED:
            break;
        case SEPARATOR:
            if (m_include_separators) {
                token += *from;
            }
            add_token(token, found);
            break;
        case TERMINAL:
            add_token(token, found);
            token = *from;
            add_token(token, found);
            break;
        }
        from = next;
    }
    add_token(token, found);
    tokens.swap(found);
}

// Stores a copy, so that token keeps its room for the next one.
void Tam_tokeniser::add_token(std::wstring& token, Tam_object_vector<std::wstring>& tokens) const
{
    if (!token.empty() || m_allow_empty_tokens) {
        tokens.push_back(token);
    }
    token.clear();
}

} // namespace tam
