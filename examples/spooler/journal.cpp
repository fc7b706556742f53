#include "journal.h"

#include <algorithm>
#include <ctime>
#include <cwchar>
#include <mutex>

#include <tam/datetime.h>
#include <tam/file.h>
#include <tam/stream.h>

#include "spooler_messages.h"

using namespace tam;

namespace {

constexpr unsigned int UNIT = sizeof(wchar_t);
constexpr unsigned int LINE_LIMIT = 1024; // units; the name of a file has 255
constexpr unsigned int ALL = 0xFFFFFFFF;
constexpr wchar_t DONE[] = L"done";
constexpr wchar_t FAILED[] = L"failed";

std::wstring universal_time()
{
    const std::time_t now = std::time(nullptr);
    std::wstring text;
    Tam_date_and_time(*std::gmtime(&now), Tam_time_zone::GMT).to_string(L"%Y-%m-%d %H:%M:%S", text);
    return text;
}

std::wstring line_of(const Journal_entry& entry)
{
    wchar_t figures[64];
    std::swprintf(figures, std::size(figures), L"\t%08X\t%llu\t%llu\t", entry.digest.crc, entry.digest.bytes,
                  entry.digest.lines);
    return entry.id + L'\t' + universal_time() + L'\t' + (entry.is_done ? DONE : FAILED) + figures + entry.name +
           L"\r\n";
}

// The text of a field of a line; empty when it has fewer.
std::wstring field_of(const std::wstring& line, unsigned int index)
{
    std::size_t start = 0;
    for (; index != 0 && start != std::wstring::npos; --index) {
        start = line.find(L'\t', start);
        start = start == std::wstring::npos ? start : start + 1;
    }
    return start == std::wstring::npos ? L"" : line.substr(start, line.find(L'\t', start) - start);
}

// Where the last count whole lines begin; with a count of 0, where the last one ends. Looks from the end, by blocks.
unsigned long long find_last_lines(const Tam_istream& stream, unsigned int count, Tam_status& status)
{
    wchar_t block[4096];
    unsigned long long position = stream.size(status) / UNIT * UNIT;
    while (status.ok() && position != 0) {
        const auto units = static_cast<unsigned int>(std::min<unsigned long long>(position / UNIT, std::size(block)));
        position -= units * UNIT;
        stream.read_at(position, units * UNIT, block, status);
        for (unsigned int i = units; i != 0; --i) {
            if (block[i - 1] == L'\n' && count-- == 0) {
                return position + i * UNIT;
            }
        }
    }
    return 0;
}

// Gives the last count lines to sink. A last line without a line end is being written, or never was to its end.
void read_lines(const std::wstring& path, unsigned int count, const Line_sink& sink, Tam_status& status)
{
    const Tam_file_buffer file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ_WRITE, status);
    Tam_buffered_istream stream;
    if (status.ok()) {
        stream.init(file, false, status, TAM_EOL_CR_LF);
    }
    if (status.ok() && count != ALL) {
        stream.seek(find_last_lines(stream, count, status));
    }
    std::wstring line;
    while (status.ok()) {
        stream.wreadln(LINE_LIMIT, line, status);
        if (status.ok()) {
            sink(line);
        }
    }
    if (status == TAM_E_END_OF_DATA || status == TAM_E_NO_LINE_END) {
        status.clear();
    } else {
        status.push(SPOOLER_E_JOURNAL_READ, Tam_wstring_status_arg(path));
    }
}

} // namespace

void Journal::open(const std::wstring& path, Tam_status& status)
{
    m_path = path;
    m_file.open(path, TAM_FILE_OPEN_ALWAYS, TAM_FILE_READ_WRITE, 0, TAM_FILE_SHARE_READ, status);
    if (status.ok()) {
        const Tam_file_buffer buffer(m_file, status);
        const Tam_buffered_istream stream(buffer, false, status);
        m_end = find_last_lines(stream, 0, status);
    }
    if (status.ok() && m_file.length() != m_end) {
        m_file.seek(m_end, status);
        m_file.truncate(status);
    }
    if (!status.ok()) {
        status.push(SPOOLER_E_JOURNAL_OPEN, Tam_wstring_status_arg(path));
    }
}

void Journal::close()
{
    m_file.close();
}

//! [journal]
void Journal::append(const Journal_entry& entry, Tam_status& status)
{
    const std::lock_guard guard(m_lock);
    const std::wstring line = line_of(entry);
    const auto bytes = static_cast<unsigned int>(line.size() * UNIT);
    status.clear();
    m_file.seek(m_end, status);
    m_file.write(line.data(), bytes, status);
    if (status.ok()) {
        m_file.flush(status);
    }
    if (status.ok()) {
        m_end += bytes;
        return;
    }
    // Part of the line may be there. Should cutting it off fail too, the next line is written over it.
    Tam_status ignored;
    m_file.seek(m_end, ignored);
    m_file.truncate(ignored);
    status.push(SPOOLER_E_JOURNAL_WRITE, Tam_wstring_status_arg(m_path));
}
//! [journal]

void read_journal_end(const std::wstring& path, unsigned int count, const Line_sink& sink, Tam_status& status)
{
    read_lines(path, count, sink, status);
}

void read_journal_ids(const std::wstring& path, const std::function<void(const std::wstring& id, bool is_done)>& found,
                      Tam_status& status)
{
    read_lines(
        path, ALL, [&](const std::wstring& line) { found(field_of(line, 0), field_of(line, 2) == DONE); }, status);
}
