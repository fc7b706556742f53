#include "digest.h"

#include <windows.h>

#include "spooler_messages.h"

using namespace tam;

namespace {

// A line as long as this, in bytes, is none of a text.
constexpr unsigned int LINE_LIMIT = 64 * 1024;

} // namespace

//! [digest]
Digest digest_file(const std::wstring& path, const std::atomic<bool>& is_stopping, Tam_status& status)
{
    Digest digest;
    const Tam_file_buffer file(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN,
                               TAM_FILE_SHARE_READ, status);
    if (!status.ok()) {
        return digest;
    }
    Tam_buffered_istream stream(file, false, status, TAM_EOL_LF);
    Tam_crc32 crc;
    std::string line;
    while (status.ok()) {
        stream.readln(LINE_LIMIT, line, status);
        if (line.size() == LINE_LIMIT) {
            status.push(SPOOLER_E_LONG_LINE, Tam_uint_status_arg(static_cast<unsigned int>(digest.lines + 1), false),
                        Tam_uint_status_arg(LINE_LIMIT, false));
        } else if (status.ok()) {
            line += '\n';
            ++digest.lines;
        } else if (status == TAM_E_NO_LINE_END) {
            status.clear(); // the end of the data comes next
        }
        crc.update(line.data(), static_cast<unsigned int>(line.size()));
        digest.bytes += line.size();
        if (is_stopping) {
            status = ERROR_OPERATION_ABORTED;
        }
    }
    if (status == TAM_E_END_OF_DATA) {
        status.clear();
    }
    digest.crc = crc.result();
    return digest;
}
//! [digest]
