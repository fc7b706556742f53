#include <tam/detail/regex_alphabet.h>

#include <algorithm>

namespace tam::detail {

namespace {

// Divides the units into classes: each set divides those that have units inside and outside of it.
class Partition {
public:
    explicit Partition(unsigned int maximum) : m_maximum(maximum), m_class_of(maximum + 1), m_sizes{maximum + 1} {}

    void divide(const Unit_set& set)
    {
        // The complement divides in the same way, and may be smaller.
        if (set.size() > (m_maximum + 1) / 2) {
            _divide(set.complement(m_maximum));
        } else {
            _divide(set);
        }
    }

    const std::vector<unsigned short>& class_of() const { return m_class_of; }
    std::size_t classes() const { return m_sizes.size(); }

private:
    template <class Visit>
    void _each_class(const Unit_set& set, const Visit& visit)
    {
        for (const Unit_range range : set) {
            for (unsigned int unit = range.first; unit <= range.last; ++unit) {
                visit(m_class_of[unit]);
            }
        }
    }

    void _divide(const Unit_set& set)
    {
        m_inside.assign(m_sizes.size(), 0);
        m_moved_to.resize(m_sizes.size());
        _each_class(set, [this](unsigned short unit_class) { ++m_inside[unit_class]; });
        _each_class(set, [this](unsigned short& unit_class) {
            unsigned int& inside = m_inside[unit_class];
            if (inside != 0) {
                // The first of them: all that are inside become a new class, unless there are no others.
                m_moved_to[unit_class] = unit_class;
                if (inside != m_sizes[unit_class]) {
                    m_moved_to[unit_class] = static_cast<unsigned short>(m_sizes.size());
                    m_sizes[unit_class] -= inside;
                    m_sizes.push_back(inside);
                }
                inside = 0;
            }
            unit_class = m_moved_to[unit_class];
        });
    }

    const unsigned int m_maximum;
    std::vector<unsigned short> m_class_of;
    std::vector<unsigned int> m_sizes; // by class
    std::vector<unsigned int> m_inside;
    std::vector<unsigned short> m_moved_to;
};

} // namespace

Regex_alphabet::Regex_alphabet(const std::vector<Unit_set>& sets, unsigned int maximum, bool line_feed_matters,
                               bool word_matters)
{
    const Unit_set line_feed('\n');
    const Unit_set& word = *named_class("word", maximum);
    Partition partition(maximum);
    for (const Unit_set& set : sets) {
        partition.divide(set);
    }
    partition.divide(line_feed);
    partition.divide(Unit_set('\r'));
    if (word_matters) {
        partition.divide(word);
    }

    m_examples.resize(partition.classes());
    for (unsigned int unit = 0; unit <= maximum; ++unit) {
        m_examples[partition.class_of()[unit]] = unit;
    }
    for (const unsigned int unit : m_examples) {
        const bool is_line_feed = line_feed_matters && line_feed.contains(unit);
        const bool is_word = word_matters && word.contains(unit);
        m_sides.push_back(is_line_feed ? Regex_side::LINE_FEED : is_word ? Regex_side::WORD : Regex_side::OTHER);
    }
    m_sides.push_back(Regex_side::EDGE);
    _make_pages(partition.class_of());
}

void Regex_alphabet::_make_pages(const std::vector<unsigned short>& class_of)
{
    for (auto page = class_of.begin(); page != class_of.end(); page += PAGE) {
        unsigned int start = 0;
        while (start != m_classes.size() && !std::equal(page, page + PAGE, m_classes.begin() + start)) {
            start += PAGE;
        }
        if (start == m_classes.size()) {
            m_classes.insert(m_classes.end(), page, page + PAGE);
        }
        m_page_starts.push_back(start);
    }
}

} // namespace tam::detail
