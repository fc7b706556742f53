#pragma once

#include <functional>
#include <string>

#include <tam/file/file.h>
#include <tam/status/status.h>
#include <tam/thread/critical.h>

#include "digest.h"
#include "report.h"

struct Journal_entry {
    std::wstring id;     // of the claim; no other entry has it
    bool is_done = true; // false: the file failed, and the digest covers what could be read
    Digest digest;
    std::wstring name; // of the file, as it was spooled
};

// The record of all files that were dealt with: UTF-16 text without a byte-order mark, a line per file that ends with
// CR LF, and these fields with tabs between them:
//
//     01DC5B0F3A2E4C10-000007  2026-11-21 17:35:02  done    CBF43926     9      0      letter.txt
//     id of the claim          universal time       or      CRC-32,      bytes  lines  name
//                                                   failed  hexadecimal
//
// A line is written by one call, and flushed. So a process that is killed leaves at most the last line incomplete.
class Journal {
public:
    // Opens the journal of that path, or makes it, and cuts off a last line that is incomplete. Nobody else can open it
    // for writing then.
    void open(const std::wstring& path, tam::Tam_status& status);
    void close();

    const std::wstring& path() const { return m_path; }

    // Any thread may append. After a failure the journal is as it was.
    void append(const Journal_entry& entry, tam::Tam_status& status);

private:
    tam::Tam_critical m_lock;
    tam::Tam_file m_file;
    std::wstring m_path;
    unsigned long long m_end = 0; // of the last whole line
};

// Gives the last count lines of a journal to sink, oldest first, also while it is being written.
void read_journal_end(const std::wstring& path, unsigned int count, const Line_sink& sink, tam::Tam_status& status);

// Calls found with the id and the outcome of every entry of a journal.
void read_journal_ids(const std::wstring& path, const std::function<void(const std::wstring& id, bool is_done)>& found,
                      tam::Tam_status& status);
