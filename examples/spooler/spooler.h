#pragma once

#include <atomic>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <tam/status/status.h>
#include <tam/thread/read_write_semaphore.h>
#include <tam/thread/thread.h>

#include "journal.h"
#include "report.h"
#include "settings.h"

// What the spooler has done since it was made, and what it has before it.
struct Figures {
    unsigned int waiting = 0; // files that the last look found and no worker has taken yet
    unsigned int working = 0; // workers that are busy
    unsigned long long done = 0;
    unsigned long long failed = 0;
    unsigned long long bytes = 0; // that were digested
};

// Digests the files that appear in a folder. All of it lies on one volume, so that each move is one step of the system:
//
//     incoming    where files are put; best by moving them there, or by writing them without sharing them for deletion
//     work        files that a worker has claimed, under ID_NAME
//     done        files that were digested, under SHELF\ID_NAME
//     failed      files that could not be, under SHELF\ID_NAME
//     journal.txt
//
// A shelf is a folder for a thousand claims; its name is an ID without the last three digits.
//
// A worker claims a file by moving it from incoming to work, digests it, appends its line to the journal, and moves it to
// done or failed. Wherever this is cut short, the next start goes on: a file in work whose id the journal has is only
// moved, any other is digested again. So no file is lost, and none is in the journal twice.
class Spooler {
public:
    explicit Spooler(const Report& report) : m_report(report) {}
    ~Spooler() { stop(); }
    Spooler(const Spooler&) = delete;
    Spooler& operator=(const Spooler&) = delete;

    // Makes what is missing of the folders, takes up what an earlier run left, and starts the workers. After a failure
    // nothing runs.
    void start(const Settings& settings, tam::Tam_status& status);

    // Ends the workers; a file that is being digested stays in work.
    void stop();

    // Looks for files and wakes the workers. The thread that starts and stops the spooler calls it again and again.
    void look();

    Figures figures() const;

    static std::wstring journal_path(const Settings& settings) { return settings.folder + L"\\journal.txt"; }

private:
    struct Claim {
        std::wstring id;
        std::wstring name;
        std::wstring key() const { return id + L'_' + name; } // the file's name everywhere but in incoming
        std::wstring shelf() const { return id.substr(0, id.size() - 3) + L'\\'; }
    };
    struct Worker {
        Spooler& spooler;
        std::atomic<bool> is_woken = false; // whether it has a message that it has not read
        std::unique_ptr<tam::Tam_thread> thread;
    };

    void _make_folders(const Settings& settings, tam::Tam_status& status);
    void _recover(tam::Tam_status& status);
    void _start_workers(unsigned int count, tam::Tam_status& status);

    void _find_files();
    void _work(Worker& self);
    std::optional<Claim> _next_claim();
    bool _claim(const std::wstring& name, Claim& claim);
    void _process(const Claim& claim);
    void _put_back(const Claim& claim, unsigned int code, tam::Tam_status& status);
    void _put(const Claim& claim, bool is_done);
    void _report_once(const std::wstring& name, const tam::Tam_status& status);
    std::wstring _new_id();

    const Report& m_report;
    std::wstring m_incoming; // each folder ends with a backslash
    std::wstring m_work;
    std::wstring m_done;
    std::wstring m_failed;
    Journal m_journal;
    std::list<Worker> m_workers;
    std::atomic<bool> m_is_stopping = false;
    bool m_look_failed = false; // and was reported
    std::wstring m_run;         // begins the ids: the time of the start
    std::atomic<unsigned int> m_claims = 0;
    std::atomic<unsigned int> m_working = 0;

    // What workers, looks and clients of the pipe share.
    mutable tam::Tam_read_write_semaphore m_lock;
    std::set<std::wstring> m_waiting;  // names in incoming
    std::list<Claim> m_left;           // by an earlier run
    std::set<std::wstring> m_reported; // names in incoming that could not be claimed
    Figures m_figures;
};
