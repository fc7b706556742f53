#include "journal.h"

#include <algorithm>
#include <ctime>
#include <cwchar>
#include <mutex>

#include "spooler_messages.h"

using namespace tam;

namespace {

constexpr unsigned int UNIT = sizeof(wchar_t);

std::wstring line_of(const std::wstring& key, bool is_done, const Digest& digest)
{
    const std::time_t now = std::time(nullptr);
    std::wstring time;
    Tam_date_and_time(*std::gmtime(&now), Tam_time_zone::GMT).to_string(L"\t%Y-%m-%d %H:%M:%S\t", time);
    wchar_t figures[64];
    std::swprintf(figures, std::size(figures), L"\t%08X\t%llu\t%llu\t", digest.crc, digest.bytes, digest.lines);
    const std::size_t id_end = key.find(L'_');
    return key.substr(0, id_end) + time + (is_done ? L"done" : L"failed") + figures + key.substr(id_end + 1) + L"\r\n";
}

std::wstring key_of(const std::wstring& line)
{
    const std::size_t name = line.rfind(L'\t') + 1;
    return line.substr(0, line.find(L'\t')) + L'_' + line.substr(name, line.find(L'\n') - name);
}

} // namespace

void Journal::open(const std::wstring& folder, Tam_status& status)
{
    m_folder = folder;
    m_file.open(folder + L"journal.txt", TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ, status);
    if (status.ok()) {
        m_buffer.attach(m_file, status);
        m_end = _find_last_lines(0, status);
    }
    const std::wstring line = status.ok() ? last_lines(1, status) : L"";
    if (!line.empty() && Tam_directory::exist(m_folder + L"work\\" + key_of(line))) {
        m_end = _find_last_lines(1, status);
    }
    if (status.ok()) {
        _cut_off(status);
    }
    if (!status.ok() && status != SPOOLER_E_JOURNAL) {
        status.push(SPOOLER_E_JOURNAL, Tam_wstring_status_arg(folder + L"journal.txt"));
    }
}

//! [journal]
void Journal::enter(const std::wstring& key, bool is_done, const Digest& digest, Tam_status& status)
{
    const std::wstring line = line_of(key, is_done, digest);
    const std::lock_guard guard(m_lock);
    unsigned long long end = m_end;
    status.clear();
    m_buffer.write(end, static_cast<unsigned int>(line.size() * UNIT), line.data(), status);
    if (status.ok()) { // on the disk before the file is moved
        m_file.flush(status);
    }
    if (status.ok()) {
        Tam_file::move(m_folder + L"work\\" + key, m_folder + (is_done ? L"done\\" : L"failed\\") + key, status);
    }
    if (status.ok()) {
        m_end = end;
        return;
    }
    Tam_status ignored; // the next line is written over what could not be cut off
    _cut_off(ignored);
}

void Journal::_cut_off(Tam_status& status)
{
    m_file.seek(m_end, status);
    if (status.ok()) {
        m_file.truncate(status);
    }
}
//! [journal]

std::wstring Journal::last_lines(unsigned int count, Tam_status& status)
{
    const std::lock_guard guard(m_lock);
    unsigned long long start = _find_last_lines(count, status);
    std::wstring lines;
    if (status.ok()) {
        lines.resize((m_end - start) / UNIT);
        m_buffer.read(false, start, static_cast<unsigned int>(m_end - start), lines.data(), status);
        std::erase(lines, L'\r');
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_JOURNAL, Tam_wstring_status_arg(m_folder + L"journal.txt"));
    }
    return lines;
}

// Where the last count whole lines begin; with a count of 0, where the last one ends. Looks from the end, by blocks.
unsigned long long Journal::_find_last_lines(unsigned int count, Tam_status& status)
{
    wchar_t block[4096];
    status.clear();
    unsigned long long position = m_file.length() / UNIT * UNIT;
    while (status.ok() && position != 0) {
        const auto units = static_cast<unsigned int>(std::min<unsigned long long>(position / UNIT, std::size(block)));
        position -= units * UNIT;
        unsigned long long start = position;
        m_buffer.read(false, start, units * UNIT, block, status);
        for (unsigned int i = units; status.ok() && i != 0; --i) {
            if (block[i - 1] == L'\n' && count-- == 0) {
                return position + i * UNIT;
            }
        }
    }
    return 0;
}
