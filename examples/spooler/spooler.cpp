#include "spooler.h"

#include <chrono>

#include <windows.h>

#include "access.h"

using namespace tam;

namespace {

const std::wstring INCOMING = L"incoming\\";
const std::wstring WORK = L"work\\";

// The first numbers of the messages to a worker.
enum Message : unsigned int { FILES_WAIT, END };

} // namespace

void Spooler::open(const std::wstring& folder, Tam_status& status)
{
    m_folder = folder;
    m_run = std::to_wstring(std::chrono::system_clock::now().time_since_epoch() / std::chrono::microseconds(1));
    for (const wchar_t* const part : {L"", L"incoming", L"work", L"done", L"failed"}) {
        make_folder(folder + part, status);
        if (!status.ok()) {
            return;
        }
    }
    m_journal.open(folder, status);
}

void Spooler::start(unsigned int workers, Tam_status& status)
{
    m_is_stopping = false;
    status.clear();
    while (status.ok() && m_workers.size() < workers) {
        m_workers.emplace_back(*this, status);
    }
}

void Spooler::stop()
{
    m_is_stopping = true;
    for (Worker& worker : m_workers) {
        Tam_status status; // a worker that cannot be sent a message does not wait for one either
        worker.thread.post_message(END, 0, 0, status);
        worker.thread.wait(status);
        if (!status.ok()) {
            m_report(status);
        }
    }
    m_workers.clear();
}

void Spooler::look()
{
    if (figures().waiting == 0) {
        _find_files();
    }
    if (figures().waiting == 0) {
        return;
    }
    for (Worker& worker : m_workers) {
        if (!worker.is_woken.exchange(true)) {
            Tam_status status;
            worker.thread.post_message(FILES_WAIT, 0, 0, status);
            if (!status.ok()) {
                m_report(status);
            }
        }
    }
}

void Spooler::_find_files()
{
    std::set<std::wstring> claimed; // workers may finish these while it looks, but claim no others: none are waiting
    {
        const Tam_read_lock guard(m_lock);
        claimed = m_claimed;
    }
    std::set<std::wstring> found;
    for (const std::wstring& part : {INCOMING, WORK}) {
        Tam_directory_iterator entry(m_folder + part, L"*");
        for (; !entry.end(); ++entry) {
            if (!entry->is_directory) {
                found.insert(part + entry->name);
            }
        }
        if (!entry.status().ok()) {
            _report_once(part, entry.status());
            return;
        }
    }
    const Tam_write_lock guard(m_lock);
    std::erase_if(m_reported, [&](const std::wstring& path) { return !found.contains(path); });
    for (const std::wstring& path : claimed) {
        found.erase(path);
    }
    m_waiting.swap(found);
}

Figures Spooler::figures() const
{
    const Tam_read_lock guard(m_lock);
    Figures figures = m_figures;
    figures.waiting = m_waiting.size();
    figures.working = m_claimed.size();
    return figures;
}

// The thread of a worker: sleeps until a message comes, and then takes files until there are none.
void Spooler::_work(void* worker)
{
    Worker& self = *static_cast<Worker*>(worker);
    unsigned int message = END;
    unsigned int unused = 0;
    int unused_too = 0;
    Tam_status status;
    for (;;) {
        tam_thread_get_message(message, unused, unused_too, status);
        if (!status.ok() || message == END) {
            break;
        }
        self.is_woken = false; // before it looks: files that are found from now on bring another message
        while (const std::optional<Claim> claim = self.spooler._next_claim()) {
            self.spooler._process(*claim);
        }
    }
    if (!status.ok()) {
        self.spooler.m_report(status);
    }
}

std::optional<Spooler::Claim> Spooler::_next_claim()
{
    const Tam_write_lock guard(m_lock);
    if (m_is_stopping || m_waiting.empty()) {
        return std::nullopt;
    }
    const std::wstring path = *m_waiting.begin();
    const std::wstring key = path.starts_with(WORK)
                                 ? path.substr(WORK.size())
                                 : m_run + L'-' + std::to_wstring(++m_claims) + L'_' + path.substr(INCOMING.size());
    m_claimed.insert(WORK + key); // before the file is there, so that no look finds it without its worker
    m_waiting.erase(path);
    return Claim{path, key};
}

void Spooler::_process(const Claim& claim)
{
    m_report.guard([&] {
        if (claim.path.starts_with(WORK) || _claim(claim)) {
            _digest(claim);
        }
    });
    const Tam_write_lock guard(m_lock);
    m_claimed.erase(WORK + claim.key);
}

//! [claim]
// Takes the file out of incoming. False when that cannot be.
bool Spooler::_claim(const Claim& claim)
{
    Tam_status status;
    Tam_file::move(m_folder + claim.path, m_folder + WORK + claim.key, status);
    const bool is_gone = is_caused_by(status, TAM_E_FILE_NOT_FOUND) || is_caused_by(status, ERROR_FILE_NOT_FOUND);
    if (!status.ok() && !is_gone) { // its producer may take it away again
        _report_once(claim.path, status);
    }
    return status.ok();
}
//! [claim]

// The file stays in work, and waits for the next look, when the spooler stops, when somebody still writes it, who shares
// it for deletion so that it could be moved, and when the journal cannot enter it.
void Spooler::_digest(const Claim& claim)
{
    const std::wstring path = WORK + claim.key;
    Tam_status status;
    const Digest digest = digest_file(m_folder + path, m_is_stopping, status);
    if (is_caused_by(status, ERROR_OPERATION_ABORTED)) {
        return;
    }
    if (is_caused_by(status, ERROR_SHARING_VIOLATION)) {
        _report_once(path, status);
        return;
    }
    const bool is_done = status.ok();
    Tam_status entering;
    m_journal.enter(claim.key, is_done, digest, entering);
    if (!entering.ok()) {
        _report_once(path, entering);
        return;
    }
    if (!is_done) {
        status.push(SPOOLER_E_DIGEST, Tam_wstring_status_arg(claim.path));
        m_report(status);
    }
    const Tam_write_lock guard(m_lock);
    ++(is_done ? m_figures.done : m_figures.failed);
    m_figures.bytes += digest.bytes;
}

void Spooler::_report_once(const std::wstring& path, Tam_status reasons)
{
    reasons.push(SPOOLER_W_WAITS, Tam_wstring_status_arg(path));
    const Tam_write_lock guard(m_lock);
    if (m_reported.insert(path).second) {
        m_report(reasons);
    }
}
