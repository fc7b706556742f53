#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <tam/container/object_vector.h>
#include <tam/detail/export.h>
#include <tam/file/file.h>
#include <tam/file/file_buffer.h>
#include <tam/file/open_mode.h>
#include <tam/status/status.h>

namespace tam {

class Tam_security;

namespace detail {
struct Current_section;
}

/// Changes a profile file, the file of sections with keys and values that Tam_profile_reader reads.
///
/// open() reads the whole file; edits change what was read, and commit_changes() writes all of it. The file is little-
/// endian UTF-16. It is read as Tam_profile_reader reads it, except that every line first loses the white space at its
/// ends, and lines that are empty then are dropped; a blank around "[Name]" does not make the line an entry here.
///
/// **What is written.** For each section the line "[name]", a line for each entry, and an empty line; each ends with
/// CR LF. U+FEFF at the beginning of a file is kept. A comment, that is an entry whose key begins with ";", is written
/// as its key alone; any other as key, "=" and value, where "=" becomes `\=`, a line feed `\0A`, a carriage return `\0D` and
/// a backslash `\5C`. So every key and value comes back as it was, but for these:
/// - white space at the ends of a key or a value is lost, so that a key of a blank and ";" comes back as a comment here;
/// - a comment's value is lost, and a line end inside a comment begins a new line;
/// - U+FEFF in front of a "[" at the beginning of a key is lost;
/// - an entry that begins with "[" then and ends with "]" is read as a section;
/// - a line of more than 1024 units is read as several, and one of exactly 1025 without its last unit;
/// - a section's name with a line end, or with more than 1022 units, is no name when it is read.
/// Nothing of that is refused. Lines before the first section are not written back at all.
///
/// **Commit and rollback.** A commit first copies the file to its backup, the file's path with the extension "bak", and
/// has the disk take it; only then is the file touched, and the disk has the new contents when the commit returns. So
/// whenever the process or the machine stops, the old or the new contents are whole, in the file or in the backup. An
/// earlier backup is moved aside to a temporary name in the same directory and is deleted when the new one is complete;
/// one that cannot be deleted stays there. The backup is not kept open, has the access that its directory gives, and
/// stays after close(), which forgets it. Profiles in one directory whose names differ in the extension alone share
/// it, and a profile whose own extension is "bak" cannot be committed: it is its own backup and cannot be moved.
///
/// The file is open between open() and close(); others may read it meanwhile, but neither write it nor insist on having
/// it alone. A relative path is made absolute when the file is opened.
///
/// Names of sections and keys are compared without regard to case, as tam_string_equal_nc does; of two sections with
/// the same name the first is found. A section whose name is empty can be current here. No operation throws for what is
/// in a file; where memory runs out, the status is TAM_E_OUT_OF_MEMORY (0xC2000001) and nothing has changed, unless it
/// says otherwise. Every operation clears its status first, but for a close() that has nothing to do; every operation
/// but open() and close() reports TAM_E_PROFILE_ACCESS_NOT_OPEN (0xC200005B) before anything else when no file is open.
///
/// One thread at a time uses an object.
class TAM_API Tam_profile_access {
public:
    /// Has no file open.
    Tam_profile_access();

    /// Opens the file as open() does.
    Tam_profile_access(const std::wstring& file, Tam_file_open how, Tam_file_access access, Tam_status& status);

    /// Closes the file as close() does: what was not committed is lost.
    ~Tam_profile_access();

    Tam_profile_access(const Tam_profile_access&) = delete;
    Tam_profile_access& operator=(const Tam_profile_access&) = delete;

    /// Closes the earlier file, opens this one and reads it. No section is current then, and there is no backup to roll
    /// back to.
    /// @param how     whether the file has to exist, or is created or emptied, as for Tam_file::open
    /// @param access  TAM_FILE_READ for an object that changes nothing; else TAM_FILE_READ_WRITE or TAM_FILE_ALL, since
    ///                an access without reading fails
    /// @param status  what Tam_file::open reports; or the failure of the reading, with TAM_E_SECTION_READ (0xC2000058;
    ///                the section that was being read, file) on top. No file is open then
    void open(const std::wstring& file, Tam_file_open how, Tam_file_access access, Tam_status& status);

    /// Closes the file and drops what was read of it, and every edit since the last commit. Does nothing, not even to
    /// status, when no file is open.
    void close(Tam_status& status);

    /// Makes the backup and writes the file, if anything was changed since the file was read or written. Nothing happens
    /// otherwise.
    ///
    /// A failed commit keeps the edits and can be repeated. When the backup failed (first item), the file has not been
    /// touched, and the earlier backup, if there was one, is put back. When the writing failed (second item), the file
    /// gets its contents back from the backup at once; should that fail as well, the backup is what is whole, and the
    /// next commit_changes(), abort_changes() or rollback() leaves it in place until the file is whole again.
    /// @param status
    ///   - what Tam_file reports: TAM_E_FILE_MOVE (0xC2000023; the backup, the name that it gets) for an earlier backup,
    ///     TAM_E_FILE_OPEN (0xC2000026; the backup), TAM_E_READ (0xC200001B), TAM_E_WRITE (0xC200001A), TAM_E_SEEK
    ///     (0xC2000027) or TAM_E_FILE_TRUNCATE (0xC2000063), each on top of its reason
    ///   - TAM_E_WRITE, TAM_E_SEEK or TAM_E_FILE_TRUNCATE, likewise
    void commit_changes(Tam_status& status);

    /// Reads the file again, if anything was changed since it was read or written. No section is current then. Nothing
    /// happens otherwise. After a commit that left the file incomplete this is rollback().
    /// @param status  the failure of the reading, as open() reports it; all is as it was then
    void abort_changes(Tam_status& status);

    /// Goes back to before the last commit: gives the file exactly the bytes of the backup, reads it, as
    /// abort_changes() does, and deletes the backup. Without a backup of a commit of this object this is
    /// abort_changes().
    ///
    /// A rollback that failed can be repeated.
    /// @param status
    ///   - the backup cannot be opened: what Tam_file::open reports. The file is as it was
    ///   - TAM_E_READ, TAM_E_WRITE, TAM_E_SEEK or TAM_E_FILE_TRUNCATE, each on top of its reason. The file may be
    ///     incomplete, the backup is not
    ///   - the failure of the reading, as open() reports it
    ///   - TAM_E_FILE_DELETE (0xC2000024; the backup) on its reason. All else is done
    void rollback(Tam_status& status);

    /// Associates security with the open file, as Tam_file::add_security does, also when the file was opened for
    /// reading only. The file's own security does not change before Tam_security::set_disc_acl.
    /// @param status  what Tam_security::associate_with_object reports
    void add_security(Tam_security& security, Tam_status& status);

    /// @name Looking
    /// As the operations of Tam_profile_reader, but for the code when no file is open.
    /// @{

    /// Replaces names by those of the sections, in the order of the file.
    void get_section_list(Tam_object_vector<std::wstring>& names, Tam_status& status) const;

    /// Makes a section the current one and puts the cursor on its first entry.
    /// @param status  TAM_E_SECTION_NOT_FOUND (0xC2000051; name); nothing has changed then
    void set_current_section(const std::wstring& name, Tam_status& status);

    /// Puts the cursor on the first entry.
    /// @param status  TAM_E_NO_CURRENT_SECTION (0xC2000052)
    void reset_section_position(Tam_status& status);

    /// Copies key and value of the entry under the cursor.
    /// @param status  TAM_E_NO_CURRENT_SECTION (0xC2000052) or TAM_E_END_OF_ENTRIES (0xC2000054; section); entry is
    ///                then unchanged
    void get_current_entry(std::pair<std::wstring, std::wstring>& entry, Tam_status& status) const;

    /// Moves the cursor on by one; behind the last entry it stands at the end of the entries.
    /// @param status  as get_current_entry: the cursor was at the end already
    void move_to_next_entry(Tam_status& status);

    /// Puts the cursor on the first entry of the section with this key; without one it stands at the end.
    /// @param status  TAM_E_NO_CURRENT_SECTION (0xC2000052) or TAM_E_END_OF_ENTRIES (0xC2000054; section)
    void move_to_key(const std::wstring& key, Tam_status& status);

    /// Whether there is no entry under the cursor; true when no file is open or no section is current.
    bool end_of_entries() const;

    /// @}
    /// @name Editing
    /// Each reports TAM_E_PROFILE_READ_ONLY (0xC200005C) first when the file was opened with TAM_FILE_READ, then
    /// TAM_E_NO_CURRENT_SECTION (0xC2000052) where it needs a current section, then what is said below; nothing has
    /// changed then. To change an entry, delete it and insert another.
    /// @{

    /// Puts an entry before the one under the cursor, or at the end of the section when the cursor is there. The cursor
    /// stands on the new entry then, so that inserts in a row come out in reverse order; move_to_next_entry() in between
    /// keeps it.
    /// @param status  TAM_E_NO_CURRENT_SECTION
    void insert_entry(const std::pair<std::wstring, std::wstring>& entry, Tam_status& status);

    /// Deletes the entry under the cursor, which stands on the next one then.
    /// @param status  TAM_E_NO_CURRENT_SECTION, TAM_E_END_OF_ENTRIES (0xC2000054; section)
    void delete_entry(Tam_status& status);

    /// Appends an empty section. The current section stays.
    /// @param status  TAM_E_SECTION_EXISTS (0xC2000056; name)
    void create_new_section(const std::wstring& name, Tam_status& status);

    /// Deletes the current section with its entries. No section is current then.
    /// @param status  TAM_E_NO_CURRENT_SECTION
    void delete_section(Tam_status& status);

    /// Gives the current section another name. It stays the current one, and the cursor where it is.
    /// @param status  TAM_E_NO_CURRENT_SECTION, TAM_E_SECTION_EXISTS (0xC2000056; name), also when the section that has
    ///                the name, but for case, is the current one itself
    void rename_section(const std::wstring& name, Tam_status& status);

    /// Appends a copy of the current section under another name. The current section stays.
    /// @param status  TAM_E_NO_CURRENT_SECTION, TAM_E_SECTION_EXISTS (0xC2000056; name)
    void copy_section(const std::wstring& name, Tam_status& status);

    /// @}

private:
    struct Section {
        std::wstring name;
        std::vector<std::pair<std::wstring, std::wstring>> entries;
    };

    void load_cache(Tam_status& status);
    void write_cache(const std::wstring& text, Tam_status& status);
    void create_backup_file(Tam_status& status);
    void restore_backup_file(Tam_status& status);
    void delete_backup_file(Tam_status& status);
    void _abort(Tam_status& status);
    void _copy_to_backup(const std::wstring& backup, Tam_status& status);
    void _copy_from_backup(Tam_status& status);
    std::wstring _text() const;
    void _forget();
    std::size_t _find(const std::wstring& name) const;
    detail::Current_section _current() const;
    bool _check_open(Tam_status& status) const;
    bool _check_writable(Tam_status& status) const;
    bool _check_new_name(const std::wstring& name, Tam_status& status) const;

    std::wstring m_path; // absolute
    Tam_file m_file;
    Tam_file_buffer m_buffer;        // of m_file
    Tam_file m_backup_file;          // open while it is copied only
    Tam_file_buffer m_backup_buffer; // of m_backup_file
    std::wstring m_backup;           // path of the backup; empty: none was made
    bool m_open = false;
    bool m_read_only = false;
    bool m_modified = false;
    bool m_torn = false; // the file has neither the old nor the new contents; the backup has the old
    bool m_has_byte_order_mark = false;
    std::vector<Section> m_sections;
    std::size_t m_current;    // index of the current section, or NO_SECTION
    std::size_t m_cursor = 0; // index of the current entry, or their number
};

} // namespace tam
