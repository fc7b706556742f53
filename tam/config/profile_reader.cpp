#include <tam/config/profile_reader.h>

#include <new>
#include <utility>

#include <tam/detail/failure.h>
#include <tam/detail/line_reader.h>
#include <tam/detail/line_source.h>
#include <tam/detail/profile_line.h>
#include <tam/detail/profile_section.h>
#include <tam/status/codes.h>
#include <tam/stream/buffered_istream.h>
#include <tam/text/compare.h>

namespace tam {

namespace {

using detail::run;

// Takes the text of a line if its first unit is one that headers begin with, else nothing.
class Header_text {
public:
    explicit Header_text(std::wstring& line) : m_line(line) {}

    void take(unsigned int length, unsigned int wanted, const detail::Line_piece& piece)
    {
        if (length == 0) {
            m_wanted = wanted != 0 && detail::may_be_profile_header(Units::load(piece.bytes, 0));
        }
        if (m_wanted) {
            detail::copy_piece<Units>(m_line, length, wanted, piece);
        } else {
            m_line.clear();
        }
    }

private:
    using Units = detail::Wide_units_le;

    std::wstring& m_line;
    bool m_wanted = false;
};

} // namespace

Tam_profile_reader::Tam_profile_reader() = default;

Tam_profile_reader::Tam_profile_reader(const std::wstring& file, Tam_status& status)
{
    Tam_profile_reader::open(file, status);
}

Tam_profile_reader::~Tam_profile_reader()
{
    Tam_status status;
    Tam_profile_reader::close(status);
}

void Tam_profile_reader::open(const std::wstring& file, Tam_status& status)
{
    if (m_open) {
        close(status);
    }
    detail::run(status, [&] {
        m_file = file;
        m_buffer.open(file, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ_WRITE, status);
        if (status.ok()) {
            m_open = true;
            get_section_list(m_sections, m_names, status);
            m_names.shrink_to_fit();
        }
    });
    if (!status.ok()) {
        m_open = false;
        _forget();
        try {
            detail::push_failure(status, TAM_E_PROFILE_OPEN, file);
        } catch (const std::bad_alloc&) {
            status = TAM_E_OUT_OF_MEMORY;
        }
    }
}

void Tam_profile_reader::close(Tam_status& status)
{
    if (m_open) {
        status.clear();
        m_open = false;
        _forget();
    }
}

void Tam_profile_reader::get_section_list(Tam_object_vector<std::wstring>& names, Tam_status& status) const
{
    names.clear();
    detail::run(status, [&] {
        if (_check_open(status)) {
            names.reserve(m_sections.size());
            for (const Section& section : m_sections) {
                names.push_back(std::wstring(_name_of(section)));
            }
        }
    });
}

void Tam_profile_reader::set_current_section(const std::wstring& name, Tam_status& status)
{
    detail::run(status, [&] {
        if (!_check_open(status)) {
            return;
        }
        std::wstring candidate;
        for (const Section& section : m_sections) {
            if (!detail::may_be_same_profile_name(_name_of(section), name)) {
                continue;
            }
            candidate = _name_of(section);
            if (tam_string_equal_nc(candidate, name)) {
                m_section.swap(candidate);
                m_section_start = section.start;
                get_key_value_pairs(status);
                return;
            }
        }
        detail::assign_failure(status, TAM_E_SECTION_NOT_FOUND, name);
    });
}

void Tam_profile_reader::reset_section_position(Tam_status& status)
{
    detail::run(status, [&] {
        if (_check_open(status)) {
            _current().reset(m_cursor, status);
        }
    });
}

void Tam_profile_reader::get_current_entry(std::pair<std::wstring, std::wstring>& entry, Tam_status& status) const
{
    detail::run(status, [&] {
        if (_check_open(status)) {
            _current().get_entry(m_cursor, entry, status);
        }
    });
}

void Tam_profile_reader::move_to_next_entry(Tam_status& status)
{
    detail::run(status, [&] {
        if (_check_open(status)) {
            _current().move_to_next(m_cursor, status);
        }
    });
}

void Tam_profile_reader::move_to_key(const std::wstring& key, Tam_status& status)
{
    detail::run(status, [&] {
        if (_check_open(status)) {
            _current().move_to_key(key, m_cursor, status);
        }
    });
}

bool Tam_profile_reader::end_of_entries() const
{
    return m_cursor == m_entries.size();
}

// Does what get_section_header does line by line, but leaves the lines that are no headers where they lie.
void Tam_profile_reader::get_section_list(Tam_object_vector<Section>& sections, std::wstring& names,
                                          Tam_status& status) const
{
    const Tam_buffered_istream stream(m_buffer, false, status);
    detail::Cache_source<detail::Wide_units_le> source(stream);
    std::wstring line;
    unsigned long long position = 0;
    while (status.ok()) {
        position += detail::read_line<detail::Wide_units_le>(source, TAM_EOL_ANY, position, detail::PROFILE_LINE_LIMIT,
                                                             Header_text(line), status);
        if (detail::was_profile_line_read(status) && detail::take_section_name(line)) {
            sections.push_back({names.size(), line.size(), position});
            names += line;
        }
    }
    if (status.value() == TAM_E_END_OF_DATA) {
        status.clear();
    }
}

bool Tam_profile_reader::get_section_header(Tam_istream& stream, std::wstring& name, Tam_status& status) const
{
    return detail::read_profile_line(stream, name, status) && detail::take_section_name(name);
}

void Tam_profile_reader::read_status_check(Tam_status& status, const std::wstring& section) const
{
    if (status.value() == TAM_E_END_OF_DATA || status.value() == TAM_E_NO_LINE_END) {
        status.clear();
    } else if (!status.ok()) {
        detail::push_failure(status, TAM_E_SECTION_READ, section, m_file);
    }
}

// Reads the entries of the current section, in one pass up to the next header.
void Tam_profile_reader::get_key_value_pairs(Tam_status& status)
{
    m_entries.clear();
    m_cursor = 0;
    if (!_check_open(status) || !_current().check(status)) {
        return;
    }
    try {
        Tam_buffered_istream stream(m_buffer, false, status);
        stream.seek(m_section_start);
        std::wstring line;
        while (status.ok() && !get_section_header(stream, line, status)) {
            if (status.ok()) {
                auto [key, value] = detail::split_profile_line(line);
                add_to_key_value_pairs(std::move(key), std::move(value));
            }
        }
        read_status_check(status, m_section);
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
    if (!status.ok()) {
        m_entries.clear();
    }
}

void Tam_profile_reader::add_to_key_value_pairs(std::wstring&& key, std::wstring&& value)
{
    m_entries.emplace_back(std::move(key), std::move(value));
}

// Gives up the file and what was read of it.
void Tam_profile_reader::_forget()
{
    m_buffer.close();
    m_sections.clear();
    m_names.clear();
    m_section.clear();
    m_entries.clear();
    m_cursor = 0;
}

std::wstring_view Tam_profile_reader::_name_of(const Section& section) const
{
    return std::wstring_view(m_names).substr(section.name, section.name_length);
}

bool Tam_profile_reader::_check_open(Tam_status& status) const
{
    if (!m_open) {
        detail::assign_failure(status, TAM_E_PROFILE_NOT_OPEN, m_file);
    }
    return m_open;
}

detail::Current_section Tam_profile_reader::_current() const
{
    return {m_section.empty() ? nullptr : &m_section, m_entries};
}

} // namespace tam
