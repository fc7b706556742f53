#include <tam/detail/regex_parser.h>

#include <algorithm>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include <tam/detail/escape.h>
#include <tam/regex/regular_expression.h>

namespace tam::detail {

namespace {

constexpr unsigned int MAXIMUM_REPEAT = Tam_regular_expression::MAXIMUM_REPEAT;

constexpr const char* NOTHING_TO_REPEAT = "nothing to repeat";
constexpr const char* MISSING_PARENTHESIS = "missing )";
constexpr const char* UNMATCHED_PARENTHESIS = "unmatched )";
constexpr const char* MISSING_BRACKET = "missing ]";
constexpr const char* INVALID_REPEAT = "invalid repeat";
constexpr const char* INVALID_RANGE = "invalid range";
constexpr const char* UNKNOWN_CLASS = "unknown class";
constexpr const char* COLLATING_ELEMENT = "collating elements are not supported";

// Goes through the pattern once. Open groups lie on a stack of its own, so that their depth costs memory only.
template <class Unit>
class Parser {
public:
    Parser(const std::basic_string<Unit>& pattern, Regex_tree& tree)
        : m_begin(pattern.data()), m_next(m_begin), m_end(m_begin + pattern.size()), m_tree(tree), m_groups(1)
    {}

    Regex_fault parse()
    {
        while (m_next != m_end && m_fault.reason == nullptr) {
            _part(m_next++);
        }
        if (m_fault.reason == nullptr && m_groups.size() != 1) {
            _fail(m_groups.back().opened, MISSING_PARENTHESIS);
        }
        if (m_fault.reason == nullptr) {
            m_tree.finish(_close());
        }
        return m_fault;
    }

private:
    static constexpr unsigned int MAXIMUM = sizeof(Unit) == 1 ? Unit_set::MAXIMUM_NARROW : Unit_set::MAXIMUM_WIDE;

    // What has been read of a group. The last item may still be repeated.
    struct Group {
        const Unit* opened = nullptr;
        std::optional<unsigned int> alternatives;
        unsigned int sequence = Regex_tree::EMPTY;
        std::optional<unsigned int> item;
    };

    static unsigned int _number(Unit unit) { return static_cast<std::make_unsigned_t<Unit>>(unit); }

    bool _at(char wanted) const { return m_next != m_end && *m_next == wanted; }

    void _fail(const Unit* at, const char* reason) { m_fault = {static_cast<unsigned int>(at - m_begin), reason}; }

    void _part(const Unit* at)
    {
        switch (*at) {
        case '(':
            m_groups.push_back({at, {}, Regex_tree::EMPTY, {}});
            break;
        case ')':
            if (m_groups.size() == 1) {
                _fail(at, UNMATCHED_PARENTHESIS);
            } else {
                const unsigned int node = _close();
                m_groups.pop_back();
                _item(node);
            }
            break;
        case '|': {
            const unsigned int alternatives = _close();
            m_groups.back() = {m_groups.back().opened, alternatives, Regex_tree::EMPTY, {}};
            break;
        }
        case '*':
            _repeat(at, 0, Regex_tree::UNBOUNDED);
            break;
        case '+':
            _repeat(at, 1, Regex_tree::UNBOUNDED);
            break;
        case '?':
            _repeat(at, 0, 1);
            break;
        case '{':
            _counted_repeat(at);
            break;
        case '[':
            _set(at);
            break;
        case '.':
            _item(m_tree.units(Unit_set('\n').complement(MAXIMUM)));
            break;
        case '^':
            _item(m_tree.assertion(Regex_assertion::START));
            break;
        case '$':
            _item(m_tree.assertion(Regex_assertion::END));
            break;
        case '\\':
            _escape();
            break;
        default:
            _item(m_tree.units(Unit_set(_number(*at))));
        }
    }

    // Ends the item before: it is repeated no more.
    void _item(unsigned int node)
    {
        Group& group = m_groups.back();
        group.sequence = m_tree.sequence(group.sequence, group.item.value_or(Regex_tree::EMPTY));
        group.item = node;
    }

    // The node of all that the innermost group has.
    unsigned int _close()
    {
        _item(Regex_tree::EMPTY);
        const Group& group = m_groups.back();
        return group.alternatives ? m_tree.alternative(*group.alternatives, group.sequence) : group.sequence;
    }

    void _repeat(const Unit* at, unsigned int least, unsigned int most)
    {
        std::optional<unsigned int>& item = m_groups.back().item;
        if (item) {
            item = m_tree.repeat(*item, least, most);
        } else {
            _fail(at, NOTHING_TO_REPEAT);
        }
    }

    std::optional<unsigned int> _count()
    {
        unsigned int count = 0;
        const Unit* const first = m_next;
        while (m_next != m_end && *m_next >= '0' && *m_next <= '9') {
            count = std::min(count * 10 + static_cast<unsigned int>(*m_next++ - '0'), MAXIMUM_REPEAT + 1);
        }
        return m_next == first ? std::nullopt : std::optional(count);
    }

    void _counted_repeat(const Unit* at)
    {
        const std::optional<unsigned int> least = _count();
        unsigned int most = least.value_or(0);
        if (least && _at(',')) {
            ++m_next;
            const std::optional<unsigned int> count = _count();
            most = count.value_or(Regex_tree::UNBOUNDED);
            if (count > MAXIMUM_REPEAT) {
                _fail(at, INVALID_REPEAT);
                return;
            }
        }
        if (!least || *least > MAXIMUM_REPEAT || *least > most || !_at('}')) {
            _fail(at, INVALID_REPEAT);
            return;
        }
        ++m_next;
        _repeat(at, *least, most);
    }

    // The class of \d and so on.
    static std::optional<Unit_set> _class_of_letter(Unit letter)
    {
        static constexpr struct {
            char letter;
            char complement;
            const char* name;
        } LETTERS[] = {{'d', 'D', "digit"}, {'s', 'S', "space"}, {'w', 'W', "word"}};
        for (const auto& entry : LETTERS) {
            if (letter == entry.letter) {
                return *named_class(entry.name, MAXIMUM);
            }
            if (letter == entry.complement) {
                return named_class(entry.name, MAXIMUM)->complement(MAXIMUM);
            }
        }
        return std::nullopt;
    }

    void _escape()
    {
        if (_at('b')) {
            ++m_next;
            _item(m_tree.assertion(Regex_assertion::WORD_BORDER));
            return;
        }
        if (std::optional<Unit_set> set = m_next == m_end ? std::nullopt : _class_of_letter(*m_next)) {
            ++m_next;
            _item(m_tree.units(std::move(*set)));
            return;
        }
        _item(m_tree.units(Unit_set(_number(decode_escape(m_next, m_end)))));
    }

    void _set(const Unit* at)
    {
        const bool negated = _at('^');
        m_next += negated ? 1 : 0;
        Unit_set set;
        for (bool first = true; m_fault.reason == nullptr; first = false) {
            if (m_next == m_end) {
                _fail(at, MISSING_BRACKET);
            } else if (*m_next == ']' && !first) {
                break;
            } else {
                _set_part(set);
            }
        }
        if (m_fault.reason == nullptr) {
            ++m_next;
            set.normalise();
            _item(m_tree.units(negated ? set.complement(MAXIMUM) : std::move(set)));
        }
    }

    // A unit, a range or a class.
    void _set_part(Unit_set& set)
    {
        const Unit* const at = m_next;
        const std::optional<unsigned int> first = _set_element(set);
        if (!first || m_fault.reason != nullptr) {
            return;
        }
        unsigned int last = *first;
        if (_at('-') && m_next + 1 != m_end && m_next[1] != ']') {
            ++m_next;
            const std::optional<unsigned int> end = _set_element(set);
            if (m_fault.reason != nullptr) {
                return;
            }
            if (!end || *end < *first) {
                _fail(at, INVALID_RANGE);
                return;
            }
            last = *end;
        }
        set.add(*first, last);
    }

    // A unit, or nothing where it was a class, which is added to set.
    std::optional<unsigned int> _set_element(Unit_set& set)
    {
        const Unit* const at = m_next++;
        if (*at == '[' && m_next != m_end) {
            switch (*m_next) {
            case ':':
                _named_class(at, set);
                return std::nullopt;
            case '.':
            case '=':
                _fail(at, COLLATING_ELEMENT);
                return std::nullopt;
            default:
                break;
            }
        }
        if (*at != BACKSLASH) {
            return _number(*at);
        }
        if (const std::optional<Unit_set> of_letter = m_next == m_end ? std::nullopt : _class_of_letter(*m_next)) {
            ++m_next;
            set.add(*of_letter);
            return std::nullopt;
        }
        return _number(decode_escape(m_next, m_end));
    }

    void _named_class(const Unit* at, Unit_set& set)
    {
        std::string name;
        for (++m_next; m_next != m_end && *m_next >= 'a' && *m_next <= 'z'; ++m_next) {
            name += static_cast<char>(*m_next);
        }
        const Unit_set* const found = named_class(name, MAXIMUM);
        if (found == nullptr || m_end - m_next < 2 || m_next[0] != ':' || m_next[1] != ']') {
            _fail(at, UNKNOWN_CLASS);
            return;
        }
        m_next += 2;
        set.add(*found);
    }

    const Unit* const m_begin;
    const Unit* m_next;
    const Unit* const m_end;
    Regex_tree& m_tree;
    std::vector<Group> m_groups; // the innermost one last; the first is the pattern
    Regex_fault m_fault;
};

} // namespace

template <class Unit>
Regex_fault parse_regex(const std::basic_string<Unit>& pattern, Regex_tree& tree)
{
    return Parser<Unit>(pattern, tree).parse();
}

template Regex_fault parse_regex(const std::string&, Regex_tree&);
template Regex_fault parse_regex(const std::wstring&, Regex_tree&);

} // namespace tam::detail
