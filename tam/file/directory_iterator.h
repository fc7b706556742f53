#pragma once

#include <memory>
#include <string>

#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

/// An entry of a directory.
struct Tam_file_info {
    std::wstring name;         ///< without the directory
    bool is_directory = false; ///< else a file or a device
};

/// Goes once through the entries of a directory, files and directories, whose names match a pattern.
///
///     for (Tam_directory_iterator entry(folder, L"*.log"); !entry.end(); ++entry) {
///         use((*entry).name);
///     }
///
/// The system decides the order and what matches; a pattern such as `*.htm` may match `a.html` too, by the short name
/// that a volume keeps for it. The entries "." and ".." are skipped where the search starts with them, as searches do;
/// met later, they are entries like any other.
///
/// Copies share one search: each keeps its own current entry, but a step of any of them moves the search on for all.
/// The last copy closes it. One thread at a time may use an iterator and its copies.
class TAM_API Tam_directory_iterator {
public:
    /// Starts the search.
    ///
    /// When it cannot start or nothing matches, end() is true and status() has the system's error (file not found where
    /// nothing matches) with TAM_E_SEARCH_START (0xC2000061; directory) on top. When only "." and ".." match, end() is
    /// true and the status is OK. A failure behind one of them is reported as operator++ does.
    /// @param directory  with or without a separator at its end; the empty string is the current directory
    /// @param pattern    a name with the wildcards * and ?
    Tam_directory_iterator(const std::wstring& directory, const std::wstring& pattern);

    Tam_directory_iterator(const Tam_directory_iterator& other) = default;
    Tam_directory_iterator& operator=(const Tam_directory_iterator& other) = default;
    ~Tam_directory_iterator() = default;

    /// Moves to the next entry. Behind the last one end() becomes true and the current name empty; so they do when the
    /// system fails, and then status() has its error with TAM_E_SEARCH_NEXT (0xC2000062; directory) on top. At the end
    /// it does nothing.
    Tam_directory_iterator& operator++();

    /// The current entry; with an empty name at the end.
    const Tam_file_info& operator*() const noexcept { return m_current; }
    const Tam_file_info* operator->() const noexcept { return &m_current; }

    /// Whether there is no current entry. (Not an iterator, so no range-for.)
    bool end() const noexcept { return m_end; }

    /// Whether no entry but "." and ".." has been left behind yet.
    bool begin() const noexcept { return m_begin; }

    /// Of this iterator: what ended the search, or OK.
    const Tam_status& status() const noexcept { return m_status; }

    /// Whether directories, as they were given, and current names are equal.
    bool operator==(const Tam_directory_iterator& other) const noexcept;

private:
    void goto_start();
    void goto_next();

    std::wstring m_directory;
    bool m_end = false;
    bool m_begin = true;
    Tam_file_info m_current;
    std::shared_ptr<void> m_search; // null before a successful start
    std::wstring m_pattern;
    Tam_status m_status;
};

} // namespace tam
