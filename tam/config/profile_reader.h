#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/file/file_buffer.h>
#include <tam/status/status.h>
#include <tam/stream/istream.h>

namespace tam {

namespace detail {
struct Current_section;
}

/// Reads a profile file: a text file of sections, each with lines of key and value.
///
/// The file is little-endian UTF-16. A line ends with CR LF, LF or CR; of one with more than 1024 units every piece that
/// Tam_istream::wreadln returns is a line of its own. U+FEFF in front of a "[" that begins a line is skipped.
/// - A header is a line that begins with "[" and ends with "]"; all between is the section's name, blanks included. A
///   blank in front or behind makes the line an entry.
/// - Every other line up to the next header is one entry of the section, an empty line too. Lines before the first
///   header belong to no section.
/// - A line that begins with ";" is a comment: its key is the whole line, its value empty.
/// - Other lines are split at the first "=" that has no backslash right in front of it. Key and value lose the white
///   space at their ends (tam_trim); then `\=` stands for "=", `\0A` for a line feed, `\0D` for a carriage return and
///   `\5C` for a backslash. Any other backslash stays, with the two characters behind it as they are.
/// - A line without such a "=" is a key, without the white space at its ends but with its backslashes; its value is
///   empty.
///
/// Names of sections and keys are compared without regard to case, as tam_string_equal_nc does. Of two sections with
/// the same name the first is found.
///
/// The file stays open between open() and close(), and others may read and write it meanwhile; its sections are those
/// that open() found, while entries are read when their section is chosen. Whatever is in a file, no operation throws
/// for it; where memory runs out, the status is TAM_E_OUT_OF_MEMORY (0xC2000001). Every operation clears its status
/// first, but for a close() that has nothing to do.
///
/// One thread at a time uses a reader. Its virtual operations stand in the order in which callers override them.
class TAM_API Tam_profile_reader {
public:
    /// A closed reader.
    Tam_profile_reader();

    /// Opens the file as open() does.
    Tam_profile_reader(const std::wstring& file, Tam_status& status);

    /// Closes the file.
    virtual ~Tam_profile_reader();

    Tam_profile_reader(const Tam_profile_reader&) = delete;
    Tam_profile_reader& operator=(const Tam_profile_reader&) = delete;

    /// Closes the earlier file, opens this one and finds its sections. None is current then.
    /// @param status  the file's failure, with TAM_E_PROFILE_OPEN (0xC2000059; file) on top; the reader is then closed
    virtual void open(const std::wstring& file, Tam_status& status);

    /// Closes the file and forgets its sections and entries. Does nothing, not even to status, when the reader is not
    /// open.
    virtual void close(Tam_status& status);

    /// Replaces names by those of the sections, in the order of the file.
    /// @param status  TAM_E_PROFILE_NOT_OPEN (0xC200004F; file); names is then empty
    void get_section_list(Tam_object_vector<std::wstring>& names, Tam_status& status) const;

    /// Makes a section the current one, reads its entries and puts the cursor on the first.
    ///
    /// A failed search changes nothing. After a failed reading the section is current and without entries.
    /// @param status
    ///   - TAM_E_PROFILE_NOT_OPEN (0xC200004F; file)
    ///   - TAM_E_SECTION_NOT_FOUND (0xC2000051; name)
    ///   - TAM_E_NO_CURRENT_SECTION (0xC2000052): the section was found, but its name is empty, which means "none"
    ///   - the file's failure, with TAM_E_SECTION_READ (0xC2000058; section, file) on top
    virtual void set_current_section(const std::wstring& name, Tam_status& status);

    /// Puts the cursor on the first entry.
    /// @param status  TAM_E_PROFILE_NOT_OPEN (0xC200004F; file), TAM_E_NO_CURRENT_SECTION (0xC2000052)
    void reset_section_position(Tam_status& status);

    /// Copies key and value of the entry under the cursor.
    /// @param status  TAM_E_PROFILE_NOT_OPEN (0xC200004F; file), TAM_E_NO_CURRENT_SECTION (0xC2000052) or
    ///                TAM_E_END_OF_ENTRIES (0xC2000054; section); entry is then unchanged
    void get_current_entry(std::pair<std::wstring, std::wstring>& entry, Tam_status& status) const;

    /// Moves the cursor on by one; behind the last entry it stands at the end of the entries.
    /// @param status  as get_current_entry: the cursor was at the end already
    void move_to_next_entry(Tam_status& status);

    /// Puts the cursor on the first entry of the section with this key; without one it stands at the end.
    /// @param status  TAM_E_PROFILE_NOT_OPEN (0xC200004F; file), TAM_E_NO_CURRENT_SECTION (0xC2000052) or
    ///                TAM_E_END_OF_ENTRIES (0xC2000054; section)
    void move_to_key(const std::wstring& key, Tam_status& status);

    /// Whether there is no entry under the cursor.
    bool end_of_entries() const;

protected:
    /// A section of the file. Its name stands among all names, in one text: a file has thousands of sections.
    struct Section {
        std::size_t name;         ///< where the name begins in the text of all names
        std::size_t name_length;  ///< in units
        unsigned long long start; ///< position of the line behind the header, in bytes
    };

    /// Appends the file's sections to sections and their names to names. The end of the data is no failure.
    void get_section_list(Tam_object_vector<Section>& sections, std::wstring& names, Tam_status& status) const;

    /// Reads a line of the stream.
    /// @param name    becomes the section's name if the line is a header, else the line
    /// @param status  what wreadln reports, but for TAM_E_NO_LINE_END, which is cleared
    /// @return whether the line is a header
    bool get_section_header(Tam_istream& stream, std::wstring& name, Tam_status& status) const;

    /// Clears a status that tells the end of the data or of its last line, and puts TAM_E_SECTION_READ (0xC2000058;
    /// section, file) on any other failure.
    void read_status_check(Tam_status& status, const std::wstring& section) const;

private:
    void get_key_value_pairs(Tam_status& status);
    void add_to_key_value_pairs(std::wstring&& key, std::wstring&& value);
    void _forget();
    std::wstring_view _name_of(const Section& section) const;
    bool _check_open(Tam_status& status) const;
    detail::Current_section _current() const;

    std::wstring m_file;
    bool m_open = false;
    Tam_file_buffer m_buffer;
    Tam_object_vector<Section> m_sections;
    std::wstring m_names;                   // of the sections
    std::wstring m_section;                 // the current one; empty: none
    unsigned long long m_section_start = 0; // of the current one
    std::vector<std::pair<std::wstring, std::wstring>> m_entries;
    std::size_t m_cursor = 0; // index of the current entry, or their number
};

} // namespace tam
