#include <tam/config/profile_access.h>

#include <algorithm>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/profile_line.h>
#include <tam/detail/profile_section.h>
#include <tam/detail/win32.h>
#include <tam/file/path.h>
#include <tam/file/type.h>
#include <tam/security/security.h>
#include <tam/stream/buffered_istream.h>
#include <tam/stream/copy.h>
#include <tam/stream/ostream.h>
#include <tam/stream/unbuffered_istream.h>
#include <tam/text/trim.h>

namespace tam {

namespace {

using detail::run;

constexpr std::size_t NO_SECTION = static_cast<std::size_t>(-1);
constexpr const wchar_t* BACKUP_EXTENSION = L"bak";

std::wstring absolute_path(const std::wstring& path, Tam_status& status)
{
    std::wstring absolute;
    DWORD needed = MAX_PATH; // with the terminating zero, as long as it is too small
    do {
        absolute.resize(needed);
        needed = detail::win32.get_full_path_name(path.c_str(), needed, absolute.data(), nullptr);
    } while (needed > absolute.size());
    if (needed == 0) {
        detail::push_last_error(status, TAM_E_FILE_OPEN, path);
    }
    absolute.resize(needed);
    return absolute;
}

// Cuts the file behind what was written and has the disk take it.
void finish_file(Tam_file& file, const Tam_ostream& written, Tam_status& status)
{
    if (status.ok()) {
        file.seek(written.tell(), status);
    }
    if (status.ok()) {
        file.truncate(status);
    }
    if (status.ok()) {
        file.flush(status);
    }
}

// Gives the file the contents of another one.
void copy_contents(const Tam_buffer& from, Tam_file& file, Tam_buffer& to, Tam_status& status)
{
    Tam_unbuffered_istream in(from, false, status);
    Tam_ostream out(to, status, TAM_EOL_CR_LF);
    tam_copy_stream(in, out, status);
    finish_file(file, out, status);
}

} // namespace

Tam_profile_access::Tam_profile_access() : m_current(NO_SECTION)
{
    Tam_status status;
    m_buffer.attach(m_file, status);
    m_backup_buffer.attach(m_backup_file, status);
}

Tam_profile_access::Tam_profile_access(const std::wstring& file, Tam_file_open how, Tam_file_access access,
                                       Tam_status& status)
    : Tam_profile_access()
{
    open(file, how, access, status);
}

Tam_profile_access::~Tam_profile_access() = default;

void Tam_profile_access::open(const std::wstring& file, Tam_file_open how, Tam_file_access access, Tam_status& status)
{
    _forget();
    run(status, [&] {
        m_file.open(file, how, access, TAM_FILE_SEQUENTIAL_SCAN, TAM_FILE_SHARE_READ, status);
        if (status.ok()) {
            m_path = absolute_path(file, status);
        }
        if (status.ok()) {
            m_open = true;
            m_read_only = access == TAM_FILE_READ;
            load_cache(status);
        }
    });
    if (!status.ok()) {
        _forget();
    }
}

void Tam_profile_access::close(Tam_status& status)
{
    if (m_open) {
        status.clear();
        _forget();
    }
}

void Tam_profile_access::commit_changes(Tam_status& status)
{
    run(status, [&] {
        if (!_check_open(status) || !m_modified) {
            return;
        }
        const std::wstring text = _text(); // no memory is needed any more when files are touched
        if (!m_torn) {
            create_backup_file(status);
        }
        if (status.ok()) {
            write_cache(text, status);
        }
        if (status.ok()) {
            m_modified = false;
        }
    });
}

void Tam_profile_access::abort_changes(Tam_status& status)
{
    run(status, [&] {
        if (_check_open(status)) {
            _abort(status);
        }
    });
}

void Tam_profile_access::rollback(Tam_status& status)
{
    run(status, [&] {
        if (!_check_open(status)) {
            return;
        }
        if (m_backup.empty()) {
            _abort(status);
        } else {
            restore_backup_file(status);
        }
    });
}

void Tam_profile_access::add_security(Tam_security& security, Tam_status& status)
{
    run(status, [&] {
        if (_check_open(status)) {
            m_file.add_security(security, status);
        }
    });
}

void Tam_profile_access::get_section_list(Tam_object_vector<std::wstring>& names, Tam_status& status) const
{
    names.clear();
    run(status, [&] {
        if (_check_open(status)) {
            names.reserve(static_cast<unsigned int>(m_sections.size()));
            for (const Section& section : m_sections) {
                names.push_back(section.name);
            }
        }
    });
}

void Tam_profile_access::set_current_section(const std::wstring& name, Tam_status& status)
{
    run(status, [&] {
        if (!_check_open(status)) {
            return;
        }
        const std::size_t found = _find(name);
        if (found == NO_SECTION) {
            detail::assign_failure(status, TAM_E_SECTION_NOT_FOUND, name);
            return;
        }
        m_current = found;
        m_cursor = 0;
    });
}

void Tam_profile_access::reset_section_position(Tam_status& status)
{
    run(status, [&] {
        if (_check_open(status)) {
            _current().reset(m_cursor, status);
        }
    });
}

void Tam_profile_access::get_current_entry(std::pair<std::wstring, std::wstring>& entry, Tam_status& status) const
{
    run(status, [&] {
        if (_check_open(status)) {
            _current().get_entry(m_cursor, entry, status);
        }
    });
}

void Tam_profile_access::move_to_next_entry(Tam_status& status)
{
    run(status, [&] {
        if (_check_open(status)) {
            _current().move_to_next(m_cursor, status);
        }
    });
}

void Tam_profile_access::move_to_key(const std::wstring& key, Tam_status& status)
{
    run(status, [&] {
        if (_check_open(status)) {
            _current().move_to_key(key, m_cursor, status);
        }
    });
}

bool Tam_profile_access::end_of_entries() const
{
    return m_cursor == _current().entries.size();
}

void Tam_profile_access::insert_entry(const std::pair<std::wstring, std::wstring>& entry, Tam_status& status)
{
    run(status, [&] {
        if (_check_writable(status) && _current().check(status)) {
            auto& entries = m_sections[m_current].entries;
            entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(m_cursor), entry);
            m_modified = true;
        }
    });
}

void Tam_profile_access::delete_entry(Tam_status& status)
{
    run(status, [&] {
        if (_check_writable(status) && _current().check_entry(m_cursor, status)) {
            auto& entries = m_sections[m_current].entries;
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(m_cursor));
            m_modified = true;
        }
    });
}

void Tam_profile_access::create_new_section(const std::wstring& name, Tam_status& status)
{
    run(status, [&] {
        if (_check_writable(status) && _check_new_name(name, status)) {
            m_sections.push_back({name, {}});
            m_modified = true;
        }
    });
}

void Tam_profile_access::delete_section(Tam_status& status)
{
    run(status, [&] {
        if (_check_writable(status) && _current().check(status)) {
            m_sections.erase(m_sections.begin() + static_cast<std::ptrdiff_t>(m_current));
            m_current = NO_SECTION;
            m_cursor = 0;
            m_modified = true;
        }
    });
}

void Tam_profile_access::rename_section(const std::wstring& name, Tam_status& status)
{
    run(status, [&] {
        if (_check_writable(status) && _current().check(status) && _check_new_name(name, status)) {
            m_sections[m_current].name = name;
            m_modified = true;
        }
    });
}

void Tam_profile_access::copy_section(const std::wstring& name, Tam_status& status)
{
    run(status, [&] {
        if (_check_writable(status) && _current().check(status) && _check_new_name(name, status)) {
            m_sections.push_back({name, m_sections[m_current].entries});
            m_modified = true;
        }
    });
}

void Tam_profile_access::load_cache(Tam_status& status)
{
    std::vector<Section> sections;
    std::wstring line;
    Tam_buffered_istream stream(m_buffer, false, status);
    bool is_first = true;
    bool has_mark = false;
    while (detail::read_profile_line(stream, line, status)) {
        if (is_first) {
            has_mark = detail::has_byte_order_mark(line);
            is_first = false;
        }
        tam_trim(line);
        if (detail::take_section_name(line)) {
            sections.push_back({line, {}});
        } else if (!line.empty() && !sections.empty()) {
            sections.back().entries.push_back(detail::split_profile_line(line));
        }
    }
    if (status.value() != TAM_E_END_OF_DATA) {
        detail::push_failure(status, TAM_E_SECTION_READ, sections.empty() ? std::wstring() : sections.back().name,
                             m_path);
        return;
    }
    status.clear();
    m_sections.swap(sections);
    m_has_byte_order_mark = has_mark;
    m_current = NO_SECTION;
    m_cursor = 0;
    m_modified = false;
}

// Writes the text over the file. Where that fails, puts back what the backup has.
void Tam_profile_access::write_cache(const std::wstring& text, Tam_status& status)
{
    m_torn = true;
    run(status, [&] {
        constexpr std::size_t PIECE = 65536;
        const auto* rest = reinterpret_cast<const unsigned char*>(text.data());
        std::size_t bytes = text.size() * sizeof(wchar_t);
        Tam_ostream stream(m_buffer, status, TAM_EOL_CR_LF);
        while (bytes != 0 && status.ok()) {
            const std::size_t count = std::min(bytes, PIECE);
            stream.write(static_cast<unsigned int>(count), rest, status);
            rest += count;
            bytes -= count;
        }
        finish_file(m_file, stream, status);
    });
    if (status.ok()) {
        m_torn = false;
    } else {
        Tam_status undone;
        run(undone, [&] { _copy_from_backup(undone); });
    }
}

void Tam_profile_access::create_backup_file(Tam_status& status)
{
    Tam_path path(m_path);
    path.extension(BACKUP_EXTENSION);
    std::wstring backup = path.text();
    std::wstring aside;
    if (tam_type(backup) == TAM_TYPE_FILE) {
        aside = Tam_file::temp_name(path.root_and_directory(), BACKUP_EXTENSION);
        Tam_file::move(backup, aside, status);
        if (!status.ok()) {
            return;
        }
    }
    run(status, [&] { _copy_to_backup(backup, status); });
    Tam_status tidied;
    run(tidied, [&] {
        if (status.ok()) {
            if (!aside.empty()) {
                Tam_file::remove(aside, tidied, true);
            }
        } else if (!aside.empty()) {
            Tam_file::move(aside, backup, tidied);
        }
    });
    if (status.ok()) {
        m_backup.swap(backup);
    }
}

// Makes the backup anew; leaves none when that fails.
void Tam_profile_access::_copy_to_backup(const std::wstring& backup, Tam_status& status)
{
    m_backup_file.open(backup, TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, 0, TAM_FILE_SHARE_NONE, status);
    if (!status.ok()) {
        return;
    }
    run(status, [&] { copy_contents(m_buffer, m_backup_file, m_backup_buffer, status); });
    m_backup_file.close();
    if (!status.ok()) {
        Tam_status removed;
        run(removed, [&] { Tam_file::remove(backup, removed, false); });
    }
}

// Gives the file the contents of the backup.
void Tam_profile_access::_copy_from_backup(Tam_status& status)
{
    m_backup_file.open(m_backup, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN, TAM_FILE_SHARE_READ,
                       status);
    if (!status.ok()) {
        return;
    }
    m_torn = true;
    run(status, [&] { copy_contents(m_backup_buffer, m_file, m_buffer, status); });
    m_backup_file.close();
    m_torn = !status.ok();
}

void Tam_profile_access::restore_backup_file(Tam_status& status)
{
    _copy_from_backup(status);
    if (status.ok()) {
        m_modified = true; // as long as the file has not been read
        load_cache(status);
    }
    if (status.ok()) {
        delete_backup_file(status);
    }
}

void Tam_profile_access::delete_backup_file(Tam_status& status)
{
    Tam_file::remove(m_backup, status, true);
    if (status.ok()) {
        m_backup.clear();
    }
}

void Tam_profile_access::_abort(Tam_status& status)
{
    if (m_torn) {
        restore_backup_file(status);
    } else if (m_modified) {
        load_cache(status);
    }
}

// What the file says when everything is written.
std::wstring Tam_profile_access::_text() const
{
    constexpr std::size_t FRAME = 6; // units that a header with its empty line, or an entry, has around its texts
    std::size_t units = 1;
    for (const Section& section : m_sections) {
        units += section.name.size() + FRAME;
        for (const auto& [key, value] : section.entries) {
            units += key.size() + value.size() + FRAME;
        }
    }
    std::wstring text;
    text.reserve(units);
    if (m_has_byte_order_mark) {
        detail::append_byte_order_mark(text);
    }
    for (const Section& section : m_sections) {
        detail::append_profile_header(text, section.name);
        for (const auto& entry : section.entries) {
            detail::append_profile_entry(text, entry);
        }
        detail::append_profile_blank_line(text);
    }
    return text;
}

// Gives up the file and all that belongs to it.
void Tam_profile_access::_forget()
{
    m_file.close();
    m_path.clear();
    m_backup.clear();
    m_open = false;
    m_read_only = false;
    m_modified = false;
    m_torn = false;
    m_has_byte_order_mark = false;
    std::vector<Section>().swap(m_sections);
    m_current = NO_SECTION;
    m_cursor = 0;
}

std::size_t Tam_profile_access::_find(const std::wstring& name) const
{
    const auto has_name = [&name](const Section& section) { return detail::is_same_profile_name(section.name, name); };
    const auto found = std::find_if(m_sections.begin(), m_sections.end(), has_name);
    return found == m_sections.end() ? NO_SECTION : static_cast<std::size_t>(found - m_sections.begin());
}

detail::Current_section Tam_profile_access::_current() const
{
    static const std::vector<detail::Profile_entry> NONE;
    if (m_current == NO_SECTION) {
        return {nullptr, NONE};
    }
    const Section& section = m_sections[m_current];
    return {&section.name, section.entries};
}

bool Tam_profile_access::_check_open(Tam_status& status) const
{
    if (!m_open) {
        detail::assign_failure(status, TAM_E_PROFILE_ACCESS_NOT_OPEN);
    }
    return m_open;
}

bool Tam_profile_access::_check_writable(Tam_status& status) const
{
    if (!_check_open(status)) {
        return false;
    }
    if (m_read_only) {
        detail::assign_failure(status, TAM_E_PROFILE_READ_ONLY);
    }
    return !m_read_only;
}

bool Tam_profile_access::_check_new_name(const std::wstring& name, Tam_status& status) const
{
    if (_find(name) != NO_SECTION) {
        detail::assign_failure(status, TAM_E_SECTION_EXISTS, name);
        return false;
    }
    return true;
}

} // namespace tam
