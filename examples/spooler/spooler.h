#pragma once

#include <atomic>
#include <list>
#include <optional>
#include <set>
#include <string>

#include <tam/tam.h>

#include "journal.h"
#include "report.h"

// What the spooler has done since it was made, and what it has before it.
struct Figures {
    std::size_t waiting = 0; // files that the last look found and no worker has taken yet
    std::size_t working = 0; // files that workers have
    unsigned long long done = 0;
    unsigned long long failed = 0;
    unsigned long long bytes = 0; // that were digested
};

// Digests the files that appear in a folder. All of it lies on one volume, so that each move is one step of the system:
//
//     incoming    where files are put; best by moving them there, or by writing them without sharing them for deletion
//     work        files that were claimed, under ID_NAME
//     done        files that were digested, under ID_NAME
//     failed      files that could not be, under ID_NAME
//     journal.txt
//
// A worker claims a file by moving it from incoming to work, digests it, and has the journal enter it, which moves it on.
// Wherever this is cut short, the file lies in work, and what lies there without a worker waits as if it were in incoming.
// So no file is lost, and none is in the journal twice.
class Spooler {
public:
    explicit Spooler(const Report& report) : m_report(report) {}
    ~Spooler() { stop(); }

    // Makes what is missing in the folder, whose path ends with a backslash, and opens the journal. Called once.
    void open(const std::wstring& folder, tam::Tam_status& status);

    void start(unsigned int workers, tam::Tam_status& status);

    // Ends the workers; a file that is being digested stays in work.
    void stop();

    // Looks for files and wakes the workers. The thread that starts and stops the spooler calls it again and again.
    void look();

    Figures figures() const;
    Journal& journal() { return m_journal; }

private:
    struct Claim {
        std::wstring path; // where the file was found, below the folder
        std::wstring key;  // what it is called in work and from then on: ID_NAME
    };
    struct Worker {
        Worker(Spooler& owner, tam::Tam_status& status) : spooler(owner), thread(_work, this, status) {}
        Spooler& spooler;
        std::atomic<bool> is_woken = false; // whether it has a message that it has not read
        tam::Tam_thread thread;
    };

    static void _work(void* worker);
    void _find_files();
    std::optional<Claim> _next_claim();
    void _process(const Claim& claim);
    bool _claim(const Claim& claim);
    void _digest(const Claim& claim);
    void _report_once(const std::wstring& path, tam::Tam_status reasons);

    const Report& m_report;
    std::wstring m_folder;
    std::wstring m_run; // begins the ids: the time of the start
    Journal m_journal;
    std::list<Worker> m_workers;
    std::atomic<bool> m_is_stopping = false;

    // What workers, looks and clients of the pipe share. Paths are those of incoming and work, below the folder.
    mutable tam::Tam_read_write_semaphore m_lock;
    std::set<std::wstring> m_waiting;  // paths
    std::set<std::wstring> m_claimed;  // paths in work
    std::set<std::wstring> m_reported; // paths of files that have to wait, and were reported
    unsigned int m_claims = 0;
    Figures m_figures;
};
