#include <tam/stream/copy.h>

#include <tam/status/codes.h>

namespace tam {

void tam_copy_stream(Tam_istream& in, Tam_ostream& out, Tam_status& status)
{
    constexpr unsigned int PIECE = 16384;
    unsigned char bytes[PIECE];
    status.clear();
    while (status.ok()) {
        const unsigned int count = in.read(PIECE, bytes, status);
        if (count != 0) {
            out.write(count, bytes, status);
        }
    }
    if (status.value() == TAM_E_END_OF_DATA) {
        status.clear();
    }
}

} // namespace tam
