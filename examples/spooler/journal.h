#pragma once

#include <string>

#include <tam/tam.h>

#include "digest.h"

// The record of all files that were dealt with: UTF-16 text without a byte-order mark, a line per file that ends with
// CR LF, and these fields with tabs between them:
//
//     1764345234567890-7  2026-11-21 17:35:02  done    CBF43926     9      0      letter.txt
//     id of the claim     universal time       or      CRC-32,      bytes  lines  name
//                                              failed  hexadecimal
//
// A file lies in work while it has no line, and in done or failed when it has one. No two steps of the system can be one,
// so a process that is killed may leave the last line incomplete, or its file in work: such a line does not count, and
// open() cuts it off.
class Journal {
public:
    // Opens the journal.txt of that folder, or makes it. Nobody else can open it for writing then.
    void open(const std::wstring& folder, tam::Tam_status& status);

    // Writes the line of the file work\key, and moves it to done or failed. After a failure neither has happened. key is
    // the id of the claim, '_' and the name of the file. Any thread may call it.
    void enter(const std::wstring& key, bool is_done, const Digest& digest, tam::Tam_status& status);

    // The last count lines, oldest first, each with LF at its end. Any thread may call it.
    std::wstring last_lines(unsigned int count, tam::Tam_status& status);

private:
    unsigned long long _find_last_lines(unsigned int count, tam::Tam_status& status);
    void _cut_off(tam::Tam_status& status);

    std::wstring m_folder;
    tam::Tam_critical m_lock; // of the rest
    tam::Tam_file m_file;
    tam::Tam_file_buffer m_buffer; // of the file
    unsigned long long m_end = 0;  // of the last line
};
