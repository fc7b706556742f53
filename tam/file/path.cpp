#include <tam/file/path.h>

#include <algorithm>
#include <cwctype>
#include <string_view>
#include <utility>

namespace tam {

namespace {

constexpr wchar_t DEFAULT_PATH_SEPARATOR = L'\\';
constexpr wchar_t DEFAULT_DRIVE_SEPARATOR = L':';
constexpr wchar_t DEFAULT_EXTENSION_SEPARATOR = L'.';
constexpr wchar_t NO_DRIVE = L' ';

constexpr std::size_t DRIVE_LENGTH = 2;    // letter and separator
constexpr std::size_t UNC_ROOT_LENGTH = 2; // the separators before the server
constexpr std::size_t DRIVE_SEGMENTS = 1;
constexpr std::size_t UNC_SEGMENTS = 2;

constexpr std::wstring_view THIS_DIRECTORY = L".";
constexpr std::wstring_view PARENT_DIRECTORY = L"..";

} // namespace

Tam_path::No_unc::No_unc() : std::logic_error("Path does not have a UNC.") {}

Tam_path::Tam_path()
{
    init_separators();
}

Tam_path::Tam_path(const std::wstring& path) : m_text(path)
{
    init_separators();
    simplify();
}

Tam_path::Tam_path(const std::wstring& directory, const std::wstring& filename)
{
    init_separators();
    _append_directory(directory, false);
    m_text += filename;
    simplify();
}

Tam_path::Tam_path(const std::wstring& directory, const std::wstring& base, const std::wstring& extension)
{
    init_separators();
    _append_directory(directory, false);
    _append_filename(base, extension);
    simplify();
}

Tam_path::Tam_path(wchar_t drive, const std::wstring& directory, const std::wstring& filename)
{
    validate_drive_letter(drive);
    init_separators();
    m_text = {drive, m_drive_separator};
    _append_directory(directory, true);
    m_text += filename;
    simplify();
}

Tam_path::Tam_path(wchar_t drive, const std::wstring& directory, const std::wstring& base,
                   const std::wstring& extension)
{
    validate_drive_letter(drive);
    init_separators();
    m_text = {drive, m_drive_separator};
    _append_directory(directory, true);
    _append_filename(base, extension);
    simplify();
}

Tam_path::Tam_path(const std::wstring& server, const std::wstring& share, const std::wstring& directory,
                   const std::wstring& filename)
{
    init_separators();
    m_text = make_unc(server, share);
    _append_directory(directory, true);
    m_text += filename;
    simplify();
}

Tam_path::Tam_path(const std::wstring& server, const std::wstring& share, const std::wstring& directory,
                   const std::wstring& base, const std::wstring& extension)
{
    init_separators();
    m_text = make_unc(server, share);
    _append_directory(directory, true);
    _append_filename(base, extension);
    simplify();
}

Tam_path::Tam_path(const Tam_path& other) : m_text(other.m_text)
{
    init_separators();
}

Tam_path::Tam_path(Tam_path&& other) noexcept : m_text(std::move(other.m_text))
{
    init_separators();
}

Tam_path& Tam_path::operator=(const Tam_path& other)
{
    m_text = other.m_text;
    return *this;
}

Tam_path& Tam_path::operator=(Tam_path&& other) noexcept
{
    m_text = std::move(other.m_text);
    return *this;
}

Tam_path& Tam_path::operator=(const std::wstring& text)
{
    m_text = text;
    return *this;
}

wchar_t Tam_path::default_path_separator() noexcept
{
    return DEFAULT_PATH_SEPARATOR;
}

Tam_path& Tam_path::path_separator(wchar_t c)
{
    std::replace(m_text.begin(), m_text.end(), m_path_separator, c);
    m_path_separator = c;
    return *this;
}

Tam_path& Tam_path::drive_separator(wchar_t c)
{
    if (has_drive()) {
        m_text[1] = c;
    }
    m_drive_separator = c;
    return *this;
}

Tam_path& Tam_path::extension_separator(wchar_t c)
{
    const std::size_t position = find_extension_separator();
    if (position != std::wstring::npos) {
        m_text[position] = c;
    }
    m_extension_separator = c;
    return *this;
}

bool Tam_path::is_absolute() const noexcept
{
    return has_drive() || _begins_with_separator();
}

bool Tam_path::is_file_path() const noexcept
{
    return !m_text.empty() && m_text.back() != m_path_separator;
}

bool Tam_path::has_directory() const noexcept
{
    return levels() > (is_file_path() ? 1U : 0U);
}

bool Tam_path::has_extension() const noexcept
{
    return find_extension_separator() != std::wstring::npos;
}

bool Tam_path::has_drive() const noexcept
{
    return m_text.size() >= DRIVE_LENGTH && m_text[1] == m_drive_separator && m_text[0] != m_drive_separator;
}

bool Tam_path::has_unc() const noexcept
{
    return m_text.size() >= UNC_ROOT_LENGTH && m_text[0] == m_path_separator && m_text[1] == m_path_separator;
}

bool Tam_path::is_dot_directory(const std::wstring& s) noexcept
{
    return s == THIS_DIRECTORY || s == PARENT_DIRECTORY;
}

std::size_t Tam_path::levels() const noexcept
{
    const std::size_t segments = absolute_levels() + (is_file_path() ? 1 : 0);
    const std::size_t offset = _level_offset();
    return segments > offset ? segments - offset : 0;
}

std::wstring Tam_path::operator[](std::size_t i) const
{
    const std::size_t n = _segment_of_level(i);
    return _is_base(n) ? base() : _segment(n);
}

Tam_path& Tam_path::level(std::size_t i, const std::wstring& s)
{
    const std::size_t n = _segment_of_level(i);
    if (_is_base(n)) {
        return base(s);
    }
    std::size_t length;
    const std::size_t start = find_level(n, length);
    m_text.replace(start, length, s);
    return *this;
}

wchar_t Tam_path::drive() const noexcept
{
    return has_drive() ? m_text[0] : NO_DRIVE;
}

std::wstring Tam_path::server() const
{
    return has_unc() ? _segment(0) : std::wstring();
}

std::wstring Tam_path::share() const
{
    return has_unc() ? _segment(1) : std::wstring();
}

std::wstring Tam_path::unc() const
{
    return has_unc() ? make_unc(server(), share()) : std::wstring();
}

std::wstring Tam_path::file_system_root() const
{
    Tam_path root;
    root.m_path_separator = m_path_separator;
    if (has_drive()) {
        root.drive(drive());
    } else if (has_unc()) {
        root.unc(server(), share());
    }
    return std::move(root.m_text);
}

Tam_path& Tam_path::drive(wchar_t c)
{
    validate_drive_letter(c);
    if (has_drive()) {
        m_text[0] = c;
        return *this;
    }
    m_text.reserve(m_text.size() + DRIVE_LENGTH + 1); // nothing is half done when memory runs out
    remove_unc();
    if (is_relative()) {
        m_text += m_path_separator;
    }
    m_text.insert(m_text.begin(), {c, m_drive_separator});
    return *this;
}

Tam_path& Tam_path::unc(const std::wstring& server, const std::wstring& share)
{
    if (server.empty() || share.empty()) {
        throw std::invalid_argument("UNC server or share name is empty.");
    }
    if (has_unc()) {
        std::size_t length;
        find_level(1, length); // throws before anything is changed
        const std::wstring new_share = share;
        m_text.reserve(m_text.size() + server.size() + new_share.size());
        this->server(server);
        return this->share(new_share);
    }
    std::wstring root = make_unc(server, share);
    root.reserve(root.size() + 1 + m_text.size());
    remove_drive();
    if (is_relative()) {
        root += m_path_separator;
    }
    m_text = std::move(root.append(m_text));
    return *this;
}

Tam_path& Tam_path::server(const std::wstring& s)
{
    if (!has_unc()) {
        throw No_unc();
    }
    if (s.empty()) {
        throw std::invalid_argument("Server name cannot be empty.");
    }
    std::size_t length;
    const std::size_t start = find_level(0, length);
    m_text.replace(start, length, s);
    return *this;
}

Tam_path& Tam_path::share(const std::wstring& s)
{
    if (!has_unc()) {
        throw No_unc();
    }
    if (s.empty()) {
        throw std::invalid_argument("Share name cannot be empty.");
    }
    std::size_t length;
    const std::size_t start = find_level(1, length);
    m_text.replace(start, length, s);
    return *this;
}

Tam_path& Tam_path::remove_drive()
{
    if (has_drive()) {
        m_text.erase(0, DRIVE_LENGTH);
    }
    return *this;
}

Tam_path& Tam_path::remove_unc()
{
    if (has_unc()) {
        std::size_t length;
        const std::size_t start = find_level(1, length);
        m_text.erase(0, start + length);
    }
    return *this;
}

std::wstring Tam_path::directory() const
{
    std::size_t length;
    const std::size_t start = find_directory(length);
    return m_text.substr(start, length);
}

std::wstring Tam_path::root_and_directory() const
{
    std::wstring result = file_system_root();
    std::size_t length;
    std::size_t start = find_directory(length);
    // The character itself, also where another separates the levels.
    if (result.ends_with(L'\\') && length > 0 && m_text[start] == L'\\') {
        ++start;
        --length;
    }
    return result.append(m_text, start, length);
}

Tam_path& Tam_path::directory(const std::wstring& d)
{
    std::wstring replacement = d;
    directory_form(replacement, has_drive() || has_unc());
    std::size_t length;
    const std::size_t start = find_directory(length);
    m_text.replace(start, length, replacement);
    return *this;
}

Tam_path& Tam_path::cd(const std::wstring& d)
{
    if (d.starts_with(m_path_separator)) {
        directory(d);
    } else {
        std::wstring inserted = d;
        directory_form(inserted, false);
        m_text.insert(find_filename(), inserted);
    }
    return simplify();
}

Tam_path Tam_path::cd(const std::wstring& d) const
{
    Tam_path copy(*this);
    copy.cd(d);
    return copy;
}

void Tam_path::directory_form(std::wstring& s, bool rooted) const
{
    if (!s.empty() && s.back() != m_path_separator) {
        s += m_path_separator;
    }
    if (rooted && !s.starts_with(m_path_separator)) {
        s.insert(s.begin(), m_path_separator);
    }
}

std::wstring Tam_path::filename() const
{
    return m_text.substr(find_filename());
}

std::wstring Tam_path::base() const
{
    const std::size_t start = find_filename();
    return m_text.substr(start, std::min(find_extension_separator(), m_text.size()) - start);
}

std::wstring Tam_path::extension() const
{
    const std::size_t position = find_extension_separator();
    return position == std::wstring::npos ? std::wstring() : m_text.substr(position + 1);
}

Tam_path& Tam_path::filename(const std::wstring& s)
{
    m_text.replace(find_filename(), std::wstring::npos, s);
    return *this;
}

Tam_path& Tam_path::base(const std::wstring& s)
{
    const std::size_t start = find_filename();
    m_text.replace(start, std::min(find_extension_separator(), m_text.size()) - start, s);
    return *this;
}

Tam_path& Tam_path::extension(const std::wstring& e)
{
    if (e.empty()) {
        return remove_extension();
    }
    const std::size_t position = find_extension_separator();
    if (position != std::wstring::npos) {
        m_text.replace(position + 1, std::wstring::npos, e);
    } else {
        m_text += m_extension_separator + e;
    }
    return *this;
}

Tam_path& Tam_path::remove_extension()
{
    m_text.resize(std::min(find_extension_separator(), m_text.size()));
    return *this;
}

// One pass over the text, in place: what is kept moves down over what is removed. The text that a segment-by-segment
// removal would have at any time is [0, written) followed by [read, size).
Tam_path& Tam_path::simplify() noexcept
{
    const std::size_t last_separator = m_text.rfind(m_path_separator);
    if (last_separator == std::wstring::npos) {
        return *this;
    }
    std::size_t read = 0;
    std::size_t written = 0;
    std::size_t kept = 0; // segments between the leading separators and written
    for (;;) {
        if (kept == 0) {
            // Separators that a removal has brought to the front become leading ones, two at most; further ones are
            // empty segments, but count only if a segment with a separator behind it follows.
            while (written < UNC_ROOT_LENGTH && read < m_text.size() && m_text[read] == m_path_separator) {
                m_text[written++] = m_path_separator;
                ++read;
            }
            const std::size_t first = m_text.find_first_not_of(m_path_separator, read);
            if (first == std::wstring::npos || first > last_separator) {
                break;
            }
            read = first;
        } else if (read > last_separator) {
            break;
        }
        const std::size_t end = m_text.find(m_path_separator, read);
        const std::wstring_view segment(m_text.data() + read, end - read);
        if (segment == PARENT_DIRECTORY && kept > 0) {
            // Up to the separator before the last kept segment, which may be a leading one or none at all.
            written = m_text.rfind(m_path_separator, written - 2) + 1;
            --kept;
        } else if (!segment.empty() && segment != THIS_DIRECTORY) {
            const std::size_t count = segment.size() + 1;
            if (written != read) {
                std::char_traits<wchar_t>::move(m_text.data() + written, m_text.data() + read, count);
            }
            written += count;
            ++kept;
        }
        read = end + 1;
    }
    m_text.erase(written, read - written);
    return *this;
}

Tam_path Tam_path::simplified() const
{
    Tam_path copy(*this);
    copy.simplify();
    return copy;
}

Tam_path& Tam_path::relative_to(const std::wstring& other)
{
    const Tam_path base(other, std::wstring());
    if (base.is_relative() || is_relative()) {
        throw std::invalid_argument("Both paths should be absolute.");
    }
    if (base.drive() != drive() || base.unc() != unc()) {
        return *this;
    }
    simplify();
    const std::size_t up_to = base.levels();
    std::size_t down_to = levels();
    if (is_file_path() && down_to > 0) {
        --down_to;
    }

    std::size_t length = 0;
    std::size_t base_length = 0;
    std::size_t start = down_to > 0 ? find_level(_level_offset(), length) : 0;
    std::size_t base_start = up_to > 0 ? base.find_level(base._level_offset(), base_length) : 0;
    std::size_t common = 0;
    while (common < down_to && common < up_to &&
           m_text.compare(start, length, base.m_text, base_start, base_length) == 0) {
        start = _next_level(start, length);
        base_start = base._next_level(base_start, base_length);
        ++common;
    }

    // To simplify once what several cd() have put together gives the same as to simplify after each.
    Tam_path result;
    for (std::size_t i = common; i < up_to; ++i) {
        result._append_directory(std::wstring(PARENT_DIRECTORY), false);
    }
    for (std::size_t i = common; i < down_to; ++i, start = _next_level(start, length)) {
        const std::wstring name = m_text.substr(start, length);
        if (name.starts_with(result.m_path_separator)) {
            result.simplify();
            result.cd(name);
        } else {
            result._append_directory(name, false);
        }
    }
    result.simplify();
    result.filename(filename());
    m_text = std::move(result.m_text);
    return *this;
}

Tam_path Tam_path::relative_to(const std::wstring& other) const
{
    Tam_path copy(*this);
    copy.relative_to(other);
    return copy;
}

void Tam_path::validate_drive_letter(wchar_t c)
{
    if (!std::iswalpha(c)) {
        throw std::invalid_argument("Invalid drive letter.");
    }
}

std::wstring Tam_path::make_unc(const std::wstring& server, const std::wstring& share) const
{
    if (server.empty() || share.empty()) {
        throw std::invalid_argument("Server or share name is empty.");
    }
    std::wstring result;
    result.reserve(UNC_ROOT_LENGTH + server.size() + 1 + share.size());
    result.assign(UNC_ROOT_LENGTH, m_path_separator);
    result.append(server).append(1, m_path_separator).append(share);
    return result;
}

std::size_t Tam_path::find_filename() const noexcept
{
    return m_text.rfind(m_path_separator) + 1; // npos + 1 is 0
}

std::size_t Tam_path::find_extension_separator() const noexcept
{
    const std::size_t position = m_text.rfind(m_extension_separator);
    return position != std::wstring::npos && position > find_filename() ? position : std::wstring::npos;
}

std::size_t Tam_path::absolute_levels() const noexcept
{
    const std::size_t first = std::min(m_text.find_first_not_of(m_path_separator), m_text.size());
    return static_cast<std::size_t>(
        std::count(m_text.begin() + static_cast<std::ptrdiff_t>(first), m_text.end(), m_path_separator));
}

std::size_t Tam_path::find_level(std::size_t n, std::size_t& length) const
{
    std::size_t start = has_unc() ? UNC_ROOT_LENGTH : _begins_with_separator() ? 1 : 0;
    std::size_t end = m_text.find(m_path_separator, start);
    for (; n > 0; --n) {
        if (end == std::wstring::npos) {
            throw std::range_error("level index out of range.");
        }
        start = end + 1;
        end = m_text.find(m_path_separator, start);
    }
    length = std::min(end, m_text.size()) - start;
    return start;
}

std::size_t Tam_path::find_directory(std::size_t& length) const noexcept
{
    const std::size_t filename_start = find_filename();
    if (has_directory()) {
        const std::size_t segments_before = _level_offset();
        std::size_t start = find_level(segments_before, length);
        if (segments_before > 0 || is_absolute()) {
            --start; // the separator before it
        }
        length = filename_start - start;
        return start;
    }
    length = _begins_with_separator() ? 1 : 0;
    return filename_start - length;
}

void Tam_path::init_separators() noexcept
{
    m_path_separator = DEFAULT_PATH_SEPARATOR;
    m_drive_separator = DEFAULT_DRIVE_SEPARATOR;
    m_extension_separator = DEFAULT_EXTENSION_SEPARATOR;
}

bool Tam_path::_begins_with_separator() const noexcept
{
    return !m_text.empty() && m_text.front() == m_path_separator;
}

// Segments that come before level 0.
std::size_t Tam_path::_level_offset() const noexcept
{
    return has_drive() ? DRIVE_SEGMENTS : has_unc() ? UNC_SEGMENTS : 0;
}

// An index too large to have a segment gives one that no text has.
std::size_t Tam_path::_segment_of_level(std::size_t i) const noexcept
{
    const std::size_t offset = _level_offset();
    return i <= std::wstring::npos - offset ? i + offset : std::wstring::npos;
}

// The level behind the one at start, which a separator must follow.
std::size_t Tam_path::_next_level(std::size_t start, std::size_t& length) const noexcept
{
    const std::size_t next = start + length + 1;
    length = std::min(m_text.find(m_path_separator, next), m_text.size()) - next;
    return next;
}

bool Tam_path::_is_base(std::size_t segment) const noexcept
{
    return segment == absolute_levels() && is_file_path();
}

std::wstring Tam_path::_segment(std::size_t n) const
{
    std::size_t length;
    const std::size_t start = find_level(n, length);
    return m_text.substr(start, length);
}

void Tam_path::_append_directory(const std::wstring& directory, bool rooted)
{
    std::wstring form = directory;
    directory_form(form, rooted);
    m_text += form;
}

void Tam_path::_append_filename(const std::wstring& base, const std::wstring& extension)
{
    m_text += base;
    if (!extension.empty()) {
        m_text += m_extension_separator;
        m_text += extension;
    }
}

} // namespace tam
