#include "digest.h"

#include <string>

#include <windows.h>

#include <tam/file.h>
#include <tam/stream.h>

#include "spooler_messages.h"

using namespace tam;

namespace {

// A line as long as this, in bytes, is none of a text.
constexpr unsigned int LINE_LIMIT = 64 * 1024;

// A file that is read once from its start to its end, and its checksum made on the way. Others may read it meanwhile, but
// not write. Its reading ends when the spooler stops.
class Digested_file : public Tam_file_buffer {
public:
    Digested_file(const std::wstring& path, const std::atomic<bool>& is_stopping, Tam_status& status)
        : Tam_file_buffer(path, TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, TAM_FILE_SEQUENTIAL_SCAN, TAM_FILE_SHARE_READ,
                          status),
          m_is_stopping(is_stopping)
    {}

    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override
    {
        if (m_is_stopping) {
            status = ERROR_OPERATION_ABORTED;
            return 0;
        }
        const unsigned long long start = position;
        const unsigned int delivered = Tam_file_buffer::read(wait, position, count, destination, status);
        if (start == m_bytes) { // else it was read before
            m_crc.update(destination, delivered);
            m_bytes += delivered;
        }
        return delivered;
    }

    unsigned int crc() const { return m_crc.result(); }
    unsigned long long bytes() const { return m_bytes; }

private:
    const std::atomic<bool>& m_is_stopping;
    mutable Tam_crc32 m_crc;
    mutable unsigned long long m_bytes = 0; // in m_crc
};

} // namespace

//! [digest]
void digest_file(const std::wstring& path, const std::atomic<bool>& is_stopping, Digest& result, Tam_status& status)
{
    const Digested_file file(path, is_stopping, status);
    Tam_buffered_istream stream;
    if (status.ok()) {
        stream.init(file, false, status, TAM_EOL_LF);
    }
    std::string line;
    while (status.ok()) {
        stream.readln(LINE_LIMIT, line, status);
        if (line.size() == LINE_LIMIT) {
            status.push(SPOOLER_E_LONG_LINE, Tam_uint_status_arg(static_cast<unsigned int>(result.lines + 1), false),
                        Tam_uint_status_arg(LINE_LIMIT, false));
        } else if (status.ok()) {
            ++result.lines;
        } else if (status == TAM_E_NO_LINE_END) {
            status.clear(); // the end of the data comes next
        }
    }
    if (status == TAM_E_END_OF_DATA) {
        status.clear();
    }
    result.crc = file.crc();
    result.bytes = file.bytes();
}
//! [digest]
