#include "spooler.h"

#include <algorithm>
#include <cwchar>
#include <exception>
#include <map>

#include <windows.h>

#include <tam/file.h>
#include <tam/text.h>

#include "access.h"
#include "spooler_messages.h"

using namespace tam;

namespace {

// The first numbers of the messages to a worker.
enum Message : unsigned int { FILES_WAIT, END };

Tam_wstring_status_arg text(const std::wstring& value)
{
    return {value};
}

std::set<std::wstring> files_in(const std::wstring& folder, Tam_status& status)
{
    std::set<std::wstring> names;
    Tam_directory_iterator entry(folder, L"*");
    for (; !entry.end(); ++entry) {
        if (!entry->is_directory) {
            names.insert(entry->name);
        }
    }
    status = entry.status();
    if (!status.ok()) {
        status.push(SPOOLER_E_LOOK, text(folder));
    }
    return names;
}

} // namespace

void Spooler::start(const Settings& settings, Tam_status& status)
{
    // In units of 100 ns, so that no other run has it.
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    wchar_t run[24];
    std::swprintf(run, std::size(run), L"%08lX%08lX-", now.dwHighDateTime, now.dwLowDateTime);
    m_run = run;
    m_is_stopping = false;
    m_look_failed = false;
    _make_folders(settings, status);
    if (status.ok()) {
        m_journal.open(journal_path(settings), status);
    }
    if (status.ok()) {
        _recover(status);
    }
    if (status.ok()) {
        _start_workers(settings.workers, status);
    }
    if (!status.ok()) {
        stop();
    }
}

void Spooler::_make_folders(const Settings& settings, Tam_status& status)
{
    make_folder(settings.folder, status);
    const std::wstring base = settings.folder + L'\\';
    m_incoming = base + L"incoming\\";
    m_work = base + L"work\\";
    m_done = base + L"done\\";
    m_failed = base + L"failed\\";
    for (const std::wstring* folder : {&m_incoming, &m_work, &m_done, &m_failed}) {
        if (status.ok()) {
            make_folder(*folder, status);
        }
    }
}

void Spooler::_recover(Tam_status& status)
{
    std::map<std::wstring, Claim> left; // by id
    for (const std::wstring& key : files_in(m_work, status)) {
        const std::wstring id = key.substr(0, key.find(L'_'));
        left[id] = {id, key.substr(std::min(id.size() + 1, key.size()))};
    }
    if (status.ok() && !left.empty()) {
        m_report(Tam_status(SPOOLER_I_RECOVERED, Tam_uint_status_arg(static_cast<unsigned int>(left.size()), false)));
        read_journal_ids(
            m_journal.path(),
            [&](const std::wstring& id, bool is_done) {
                if (const auto claim = left.find(id); claim != left.end()) {
                    _put(claim->second, is_done);
                    left.erase(claim);
                }
            },
            status);
    }
    const Tam_write_lock guard(m_lock);
    for (const auto& [id, claim] : left) {
        m_left.push_back(claim);
    }
}

void Spooler::_start_workers(unsigned int count, Tam_status& status)
{
    for (unsigned int i = 0; i < count && status.ok(); ++i) {
        Worker& worker = m_workers.emplace_back(*this);
        worker.thread = std::make_unique<Tam_thread>(
            [](void* self) { static_cast<Worker*>(self)->spooler._work(*static_cast<Worker*>(self)); }, &worker,
            status);
    }
}

void Spooler::stop()
{
    m_is_stopping = true;
    for (Worker& worker : m_workers) {
        Tam_status status;
        worker.thread->post_message(END, 0, 0, status);
        if (!status.ok()) {
            m_report(status); // a worker that cannot be sent a message does not wait for one either
        }
        worker.thread->wait(status);
        if (status.ok()) {
            worker.thread->get_failed_status(status);
        }
        if (!status.ok()) {
            m_report(status);
        }
    }
    m_workers.clear();
    m_journal.close();
    const Tam_write_lock guard(m_lock);
    m_waiting.clear();
    m_left.clear();
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
            worker.thread->post_message(FILES_WAIT, 0, 0, status);
            if (!status.ok()) {
                m_report(status);
            }
        }
    }
}

void Spooler::_find_files()
{
    Tam_status status;
    std::set<std::wstring> found = files_in(m_incoming, status);
    if (!status.ok() && !m_look_failed) {
        m_report(status);
    }
    m_look_failed = !status.ok();
    const Tam_write_lock guard(m_lock);
    std::erase_if(m_reported, [&](const std::wstring& name) { return !found.contains(name); });
    m_waiting.swap(found);
}

Figures Spooler::figures() const
{
    const Tam_read_lock guard(m_lock);
    Figures figures = m_figures;
    figures.waiting = static_cast<unsigned int>(m_waiting.size() + m_left.size());
    figures.working = m_working;
    return figures;
}

// The thread of a worker: sleeps until a message comes, and then takes files until there are none.
void Spooler::_work(Worker& self)
{
    Tam_status status;
    for (;;) {
        unsigned int message = END;
        unsigned int unused = 0;
        int unused_too = 0;
        tam_thread_get_message(message, unused, unused_too, status);
        if (!status.ok()) {
            m_report(status);
            return;
        }
        if (message == END) {
            return;
        }
        self.is_woken = false; // before it looks: files that are found from now on bring another message
        ++m_working;
        try {
            while (const std::optional<Claim> claim = _next_claim()) {
                _process(*claim);
            }
        } catch (const std::exception& error) { // such as no memory; the file stays in work
            m_report(Tam_status(SPOOLER_E_EXCEPTION, text(tam_stow(error.what()))));
        }
        --m_working;
    }
}

std::optional<Spooler::Claim> Spooler::_next_claim()
{
    while (!m_is_stopping) {
        std::wstring name;
        {
            const Tam_write_lock guard(m_lock);
            if (!m_left.empty()) {
                Claim claim = std::move(m_left.front());
                m_left.pop_front();
                return claim;
            }
            if (m_waiting.empty()) {
                return std::nullopt;
            }
            name = std::move(m_waiting.extract(m_waiting.begin()).value());
        }
        Claim claim;
        if (_claim(name, claim)) {
            return claim;
        }
    }
    return std::nullopt;
}

//! [claim]
bool Spooler::_claim(const std::wstring& name, Claim& claim)
{
    claim = {_new_id(), name};
    Tam_status status;
    Tam_file::move(m_incoming + name, m_work + claim.key(), status);
    if (status.ok()) {
        return true;
    }
    const bool is_gone = is_caused_by(status, TAM_E_FILE_NOT_FOUND) || is_caused_by(status, ERROR_FILE_NOT_FOUND);
    if (!is_gone) { // its producer may take it away again
        const bool is_in_use = is_caused_by(status, ERROR_SHARING_VIOLATION);
        status.push(is_in_use ? SPOOLER_W_IN_USE : SPOOLER_E_CLAIM, text(name));
        _report_once(name, status);
    }
    return false;
}
//! [claim]

void Spooler::_process(const Claim& claim)
{
    Journal_entry entry{claim.id, true, {}, claim.name};
    Tam_status status;
    digest_file(m_work + claim.key(), m_is_stopping, entry.digest, status);
    if (is_caused_by(status, ERROR_OPERATION_ABORTED)) { // the next start finds it in work
        return;
    }
    if (is_caused_by(status, ERROR_SHARING_VIOLATION)) { // it could be moved, since its producer shares it for deletion
        _put_back(claim, SPOOLER_W_IN_USE, status);
        return;
    }
    if (!status.ok()) {
        entry.is_done = false;
        status.push(SPOOLER_E_DIGEST, text(claim.name));
        m_report(status);
    }
    m_journal.append(entry, status);
    if (!status.ok()) {
        _put_back(claim, SPOOLER_E_CLAIM, status);
        return;
    }
    _put(claim, entry.is_done);
    const Tam_write_lock guard(m_lock);
    ++(entry.is_done ? m_figures.done : m_figures.failed);
    m_figures.bytes += entry.digest.bytes;
}

// So that it is tried again at the next look. Where even this fails, the next start finds it in work.
void Spooler::_put_back(const Claim& claim, unsigned int code, Tam_status& status)
{
    Tam_status moving;
    Tam_file::move(m_work + claim.key(), m_incoming + claim.name, moving);
    if (!moving.ok()) {
        status.push(moving);
    }
    status.push(code, text(claim.name));
    _report_once(claim.name, status);
}

void Spooler::_put(const Claim& claim, bool is_done)
{
    const std::wstring shelf = (is_done ? m_done : m_failed) + claim.shelf();
    Tam_status status;
    Tam_file::move(m_work + claim.key(), shelf + claim.key(), status);
    if (is_caused_by(status, ERROR_PATH_NOT_FOUND)) { // the first file there
        make_folder(shelf, status);
        if (status.ok()) {
            Tam_file::move(m_work + claim.key(), shelf + claim.key(), status);
        }
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_PUT, text(claim.key()), text(shelf));
        m_report(status);
    }
}

void Spooler::_report_once(const std::wstring& name, const Tam_status& status)
{
    bool is_new;
    {
        const Tam_write_lock guard(m_lock);
        is_new = m_reported.insert(name).second;
    }
    if (is_new) {
        m_report(status);
    }
}

std::wstring Spooler::_new_id()
{
    wchar_t number[16];
    std::swprintf(number, std::size(number), L"%06u", ++m_claims);
    return m_run + number;
}
