#include <tam/stream/lines.h>

#include <string>

#include <tam/status/codes.h>

namespace tam {

namespace {

constexpr unsigned int PIECE = 2048;

bool skip_line(Tam_istream& stream, std::string& scratch, Tam_status& status)
{
    do {
        stream.readln(PIECE, scratch, status);
    } while (status.value() == TAM_E_NO_LINE_END);
    return status.ok();
}

} // namespace

void tam_skip_lines(Tam_istream& stream, unsigned int count, Tam_status& status)
{
    status.clear();
    std::string scratch;
    while (count != 0 && skip_line(stream, scratch, status)) {
        --count;
    }
}

unsigned int tam_count_lines(Tam_istream& stream, Tam_status& status)
{
    status.clear();
    stream.seek(0);
    std::string scratch;
    unsigned int count = 0;
    while (skip_line(stream, scratch, status)) {
        ++count;
    }
    if (status.value() == TAM_E_END_OF_DATA) {
        status.clear();
    }
    return count;
}

} // namespace tam
