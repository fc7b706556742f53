#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <stdexcept>
#include <string>

#include <tam/detail/export.h>

namespace tam {

/// A path of the file system as one text, with operations to take it apart, to change a part in place, to normalise it
/// and to move about in it. Nothing here asks the file system.
///
/// Everything is read off the text as it stands, with three separators that belong to the object: S between levels
/// (`\`), D after a drive letter (`:`) and E before an extension (`.`). In the words used below:
///
/// - The path has a drive when the first D is its second character, and a UNC when it begins with two S.
/// - The file name is what follows the last S, or the whole text; a path with a file name is a file path, any other a
///   directory path. So `C:` alone and `\\server\share` are file paths.
/// - The extension follows the last E, if that lies behind the first character of the file name: `.profile` has none.
/// - A segment is a run of characters up to the next S or the end, counted from 0 behind one leading S, or behind two
///   when there are two or more. Segment 0 of `C:\a\` is `C:`, segment 2 is empty. Looking up a segment that the text
///   does not have throws std::range_error "level index out of range.".
/// - Levels are the segments behind the drive (segment 0) or the UNC (segments 0 and 1).
///
/// Setters change the text as described and no more: unless it says so, none of them simplifies. Their arguments may be
/// this very path. A path is a value: threads that share one bring their own lock.
class TAM_API Tam_path {
public:
    /// Thrown where a path without a UNC is asked to change its server or share: "Path does not have a UNC.".
    class TAM_API No_unc : public std::logic_error {
    public:
        No_unc();
    };

    /// @name Construction
    /// Each sets the three separators to their defaults and, but for the first and the copies, ends with simplify(). A
    /// directory is put into directory form (see directory_form()), with a leading separator behind a drive or a UNC.
    /// An empty extension adds no E.
    /// @throws std::invalid_argument  "Invalid drive letter." (the forms with a drive);
    ///                                "Server or share name is empty." (the forms with a server)
    /// @{

    /// A path of the parts that are given, in their order; without any, the empty path.
    Tam_path();
    Tam_path(const std::wstring& path);
    Tam_path(const std::wstring& directory, const std::wstring& filename);
    Tam_path(const std::wstring& directory, const std::wstring& base, const std::wstring& extension);
    Tam_path(wchar_t drive, const std::wstring& directory, const std::wstring& filename);
    Tam_path(wchar_t drive, const std::wstring& directory, const std::wstring& base, const std::wstring& extension);
    Tam_path(const std::wstring& server, const std::wstring& share, const std::wstring& directory,
             const std::wstring& filename);
    Tam_path(const std::wstring& server, const std::wstring& share, const std::wstring& directory,
             const std::wstring& base, const std::wstring& extension);

    /// Copies the text alone: the copy has the default separators, whatever those of the original are.
    Tam_path(const Tam_path& other);
    /// As the copy constructor; the original's text is unspecified afterwards.
    Tam_path(Tam_path&& other) noexcept;
    /// @}

    /// Copies the text alone; this path keeps its own separators.
    Tam_path& operator=(const Tam_path& other);
    /// As copying; the original's text is unspecified afterwards.
    Tam_path& operator=(Tam_path&& other) noexcept;
    /// Takes the text as it is, without simplifying it.
    Tam_path& operator=(const std::wstring& text);

    ~Tam_path() = default;

    /// @name The text
    /// Where an overload set takes both a string and a pointer, as std::wstring's assignment does, text() says which.
    /// Reference and pointer hold until the path changes.
    /// @{

    /// The text as it stands.
    const std::wstring& text() const noexcept { return m_text; }
    operator const std::wstring&() const noexcept { return m_text; }
    operator const wchar_t*() const noexcept { return m_text.c_str(); }
    /// Whether the text is empty.
    bool empty() const noexcept { return m_text.empty(); }
    /// @}

    /// @name Comparison
    /// Code unit by code unit: case counts, and so do separators.
    /// @{

    /// Compares the texts.
    friend bool operator==(const Tam_path& a, const Tam_path& b) noexcept { return a.m_text == b.m_text; }
    friend bool operator==(const Tam_path& a, const std::wstring& b) noexcept { return a.m_text == b; }
    friend bool operator==(const Tam_path& a, const wchar_t* b) { return a.m_text == b; }
    friend std::strong_ordering operator<=>(const Tam_path& a, const Tam_path& b) noexcept
    {
        return a.m_text <=> b.m_text;
    }
    friend std::strong_ordering operator<=>(const Tam_path& a, const std::wstring& b) noexcept
    {
        return a.m_text <=> b;
    }
    friend std::strong_ordering operator<=>(const Tam_path& a, const wchar_t* b) { return a.m_text <=> b; }
    /// @}

    /// @name Separators
    /// @{

    /// The backslash.
    static wchar_t default_path_separator() noexcept;

    /// S, D and E.
    wchar_t path_separator() const noexcept { return m_path_separator; }
    wchar_t drive_separator() const noexcept { return m_drive_separator; }
    wchar_t extension_separator() const noexcept { return m_extension_separator; }

    /// Replaces every S in the text by c, which is S from now on. Earlier occurrences of c become separators too.
    Tam_path& path_separator(wchar_t c);
    /// Replaces the D behind the drive letter, if there is a drive, by c, which is D from now on.
    Tam_path& drive_separator(wchar_t c);
    /// Replaces the E before the extension, if there is one, by c, which is E from now on.
    Tam_path& extension_separator(wchar_t c);
    /// @}

    /// @name What kind of path
    /// @{

    /// A drive, a UNC or a leading S makes a path absolute, so `C:file` is absolute as well.
    bool is_absolute() const noexcept;
    /// The opposite of is_absolute().
    bool is_relative() const noexcept { return !is_absolute(); }
    /// Whether there is a file name.
    bool is_file_path() const noexcept;
    /// The opposite of is_file_path().
    bool is_directory_path() const noexcept { return !is_file_path(); }
    /// Whether there is a level besides the file name. The root alone is not one.
    bool has_directory() const noexcept;
    /// Whether there is an E in the place of one; what follows it may be empty.
    bool has_extension() const noexcept;
    /// Whether the second character is D.
    bool has_drive() const noexcept;
    /// Whether the text begins with two S.
    bool has_unc() const noexcept;
    /// Whether s is "." or "..".
    static bool is_dot_directory(const std::wstring& s) noexcept;
    /// @}

    /// @name Levels
    /// @{

    /// Number of levels, the file name included; 0 where the text has not even the segments of its drive or UNC.
    std::size_t levels() const noexcept;

    /// i < levels().
    bool legal(std::size_t i) const noexcept { return i < levels(); }

    /// The text of level i. The last level of a file path comes without its extension, as base() has it.
    /// @throws std::range_error  "level index out of range.": the text has no such segment. A directory path's text has
    ///                           one more than it has levels: the empty one behind its last S.
    std::wstring operator[](std::size_t i) const;

    /// Replaces level i by s; of the last level of a file path the base alone, so that the extension stays.
    /// @throws std::range_error  as operator[]; the path is as it was
    Tam_path& level(std::size_t i, const std::wstring& s);
    /// @}

    /// @name Drive, server and share
    /// @{

    /// The drive letter, or a blank (0x20) without a drive.
    wchar_t drive() const noexcept;

    /// Segment 0 or 1 of a path with a UNC, else empty.
    /// @throws std::range_error  "level index out of range.": share() of `\\server`
    std::wstring server() const;
    std::wstring share() const;

    /// `\\server\share` of a path with a UNC, else empty.
    /// @throws std::range_error       as share()
    /// @throws std::invalid_argument  "Server or share name is empty.": `\\server\`
    std::wstring unc() const;

    /// `C:\` or `\\server\share\` of a path that has them, else empty. It is written with this path's S but the default D.
    /// @throws std::invalid_argument  "Invalid drive letter."; "UNC server or share name is empty.": `\\server\`
    /// @throws std::range_error       as share()
    std::wstring file_system_root() const;

    /// Makes c the drive letter. A path without a drive loses its UNC and gets the drive in front; if it is relative
    /// then, S is appended to its END, not put behind the drive: `a\b` becomes `C:a\b\`, and the empty path `C:\`.
    /// @throws std::invalid_argument  "Invalid drive letter."
    /// @throws std::range_error       as remove_unc(); either way the path is as it was
    Tam_path& drive(wchar_t c);

    /// Sets server and share. A path without a UNC loses its drive and gets the UNC in front, and S between them if it
    /// is relative.
    /// @throws std::invalid_argument  "UNC server or share name is empty."
    /// @throws std::range_error       "level index out of range.": the path is `\\server` and has no share to replace;
    ///                                either way the path is as it was
    Tam_path& unc(const std::wstring& server, const std::wstring& share);

    /// Replaces the server or the share.
    /// @throws No_unc                 "Path does not have a UNC.", tested first
    /// @throws std::invalid_argument  "Server name cannot be empty." or "Share name cannot be empty."
    /// @throws std::range_error       as share()
    Tam_path& server(const std::wstring& s);
    Tam_path& share(const std::wstring& s);

    /// Erases the first two characters of a path with a drive.
    Tam_path& remove_drive();

    /// Erases a UNC; the separator behind the share stays.
    /// @throws std::range_error  "level index out of range.": the path is `\\server`; it stays so
    Tam_path& remove_unc();
    /// @}

    /// @name Directory
    /// @{

    /// The levels before the file name with the separators on both sides: `\a\b\` of `C:\a\b\f.txt`, `a\` of `a\f`.
    /// Without a level of that kind it is empty (`C:\f`), but one S when the text begins with S (`\f`).
    std::wstring directory() const;

    /// file_system_root() followed by directory(). Of a backslash (always that character, whatever S is) at the end of
    /// the first and one at the beginning of the second, one is dropped.
    /// @throws what file_system_root() throws
    std::wstring root_and_directory() const;

    /// Puts d in directory form, rooted if there is a drive or a UNC, in the place of directory(). Where that is empty
    /// behind a root (`C:\f`) the separators double (`C:\\d\f`); cd() does not leave it so.
    Tam_path& directory(const std::wstring& d);

    /// Goes to directory d and simplifies: a d that begins with S replaces the directory, any other is put before the
    /// file name. An empty d moves nowhere. The const form returns a changed copy, which reads the text with the
    /// default separators.
    Tam_path& cd(const std::wstring& d);
    Tam_path cd(const std::wstring& d) const;

    /// Puts s in directory form: with S at its end unless it is empty, and with S at its beginning if rooted. One S
    /// alone is in directory form.
    void directory_form(std::wstring& s, bool rooted) const;
    /// @}

    /// @name File name
    /// The base is the file name without its extension.
    /// @{

    /// What follows the last S.
    std::wstring filename() const;
    /// The file name without its extension.
    std::wstring base() const;
    /// Without the E; empty also when there is none.
    std::wstring extension() const;

    /// Replaces the file name, or appends one.
    Tam_path& filename(const std::wstring& s);
    /// Replaces the base; the extension stays.
    Tam_path& base(const std::wstring& s);
    /// Replaces the extension, or appends E and e; an empty e removes E too. Behind a directory path E becomes the
    /// first character of a file name, and so e no extension.
    Tam_path& extension(const std::wstring& e);
    /// Removes the extension and E.
    Tam_path& remove_extension();
    /// @}

    /// @name Normal form
    /// @{

    /// Removes empty segments, "." segments, and each ".." with the segment before it, from the left; the file name is
    /// never touched. Takes time linear in the text, throws nothing, and does nothing the second time.
    ///
    /// The segment before a ".." goes whatever it is: a drive (`C:\..\a` becomes `a`), a server or share, and another
    /// ".." too, so that `..\..\a` becomes `a`; only a ".." in front of everything stays. A separator that a removal
    /// brings to the front of the text counts as a leading one: `\.\\a` becomes `\\a`, which has a UNC.
    Tam_path& simplify() noexcept;
    /// A simplified copy, which reads the text with the default separators.
    Tam_path simplified() const;

    /// Makes this path relative to the directory other: of `C:\a\b\f.txt` and `C:\a\c` it becomes `..\b\f.txt`.
    ///
    /// Paths with different drives or UNCs (case counts) leave this path as it is. The way is walked with cd(), one
    /// level at a time and with the default separators in the result; as ".." takes back a ".." before it, a way up of
    /// two levels leaves nothing and one of three a single "..". The const form returns a changed copy, which reads the
    /// text with the default separators.
    /// @throws std::invalid_argument  "Both paths should be absolute."; what unc() of either path throws. The path is
    ///                                as it was.
    /// @throws std::range_error       what unc() of either path throws
    Tam_path& relative_to(const std::wstring& other);
    Tam_path relative_to(const std::wstring& other) const;
    /// @}

protected:
    /// Throws unless c can be a drive letter.
    /// @throws std::invalid_argument  "Invalid drive letter.": c is no alphabetic character in the C library's eyes
    static void validate_drive_letter(wchar_t c);

    /// S S server S share.
    /// @throws std::invalid_argument  "Server or share name is empty."
    std::wstring make_unc(const std::wstring& server, const std::wstring& share) const;

    /// Where the file name starts; the length of the text for a directory path.
    std::size_t find_filename() const noexcept;

    /// Where the E before the extension is, or std::wstring::npos.
    std::size_t find_extension_separator() const noexcept;

    /// Number of S behind all leading ones.
    std::size_t absolute_levels() const noexcept;

    /// Where segment n starts, and its length.
    /// @throws std::range_error  "level index out of range."
    std::size_t find_level(std::size_t n, std::size_t& length) const;

    /// Where the range of directory() starts, and its length.
    std::size_t find_directory(std::size_t& length) const noexcept;

    /// Not raw: operator[]. Raw: segment i as it stands, drive or UNC included. (Takes exactly bool, so that level()
    /// with a literal stays the setter.)
    template <std::same_as<bool> Raw>
    std::wstring level(std::size_t i, Raw raw) const
    {
        return raw ? _segment(i) : (*this)[i];
    }

    /// Sets the three separators to their defaults.
    void init_separators() noexcept;

private:
    bool _begins_with_separator() const noexcept;
    std::size_t _level_offset() const noexcept;
    std::size_t _segment_of_level(std::size_t i) const noexcept;
    std::size_t _next_level(std::size_t start, std::size_t& length) const noexcept;
    bool _is_base(std::size_t segment) const noexcept;
    std::wstring _segment(std::size_t n) const;
    void _append_directory(const std::wstring& directory, bool rooted);
    void _append_filename(const std::wstring& base, const std::wstring& extension);

    std::wstring m_text;
    wchar_t m_path_separator;
    wchar_t m_drive_separator;
    wchar_t m_extension_separator;
};

} // namespace tam
