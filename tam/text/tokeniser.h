#pragma once

#include <string>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>

namespace tam {

/// Splits texts into tokens at separators, and keeps what stands between double quotes together.
///
/// Four sets of characters and two switches say how; each can be set at any time. Outside quotes a character acts by
/// the first of these sets that has it:
///   -# terminators: the text ends before it;
///   -# ignored characters: it is dropped;
///   -# separators: it ends the token, and is the last character of that token when separators are included;
///   -# terminals: it ends the token before it and is a token of its own.
///
/// A double quote never acts as a member of a set: it begins and ends a quoted stretch and stays in the token, so that
/// tam_unquote() can decode it. Inside quotes every character belongs to the token, and a backslash that stands
/// directly before a double quote keeps that quote from ending the stretch. A stretch that is not closed goes to the end
/// of the text.
///
/// Can be copied. Any number of threads may tokenise with one object as long as none sets anything.
class TAM_API Tam_tokeniser {
public:
    /// Separators blank and tab, terminator line feed, neither ignored characters nor terminals, both switches off.
    Tam_tokeniser();

    /// All of them given.
    Tam_tokeniser(const std::wstring& separators, const std::wstring& ignore, const std::wstring& terminators,
                  const std::wstring& terminals, bool include_separators, bool allow_empty_tokens);

    Tam_tokeniser(const Tam_tokeniser&) = default;
    Tam_tokeniser& operator=(const Tam_tokeniser&) = default;
    ~Tam_tokeniser() = default;

    /// The characters that end a token.
    void separators(const std::wstring& characters) { m_separators = characters; }
    const std::wstring& separators() const { return m_separators; }

    /// The characters that are dropped.
    void ignore(const std::wstring& characters) { m_ignore = characters; }
    const std::wstring& ignore() const { return m_ignore; }

    /// The characters at which the text ends.
    void terminators(const std::wstring& characters) { m_terminators = characters; }
    const std::wstring& terminators() const { return m_terminators; }

    /// The characters that are tokens of their own.
    void terminals(const std::wstring& characters) { m_terminals = characters; }
    const std::wstring& terminals() const { return m_terminals; }

    /// Whether a separator stays in the token that it ends.
    void include_separators(bool include) { m_include_separators = include; }
    bool include_separators() const { return m_include_separators; }

    /// Whether empty tokens are kept: between two separators, behind one at the end of the text, and between a
    /// separator and a terminal.
    void allow_empty_tokens(bool allow) { m_allow_empty_tokens = allow; }
    bool allow_empty_tokens() const { return m_allow_empty_tokens; }

    /// Replaces the contents of tokens by the tokens of text, in order. An empty text has none, whatever the switches.
    ///
    /// When an allocation fails (std::bad_alloc), tokens is as it was. text may be an element of tokens.
    void tokenise(const std::wstring& text, Tam_object_vector<std::wstring>& tokens) const;

private:
    void add_token(std::wstring& token, Tam_object_vector<std::wstring>& tokens) const;

    std::wstring m_separators;
    std::wstring m_ignore;
    std::wstring m_terminators;
    std::wstring m_terminals;
    bool m_include_separators;
    bool m_allow_empty_tokens;
};

} // namespace tam
