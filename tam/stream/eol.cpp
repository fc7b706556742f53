#include <tam/stream/eol.h>

namespace tam {

unsigned int tam_eol_has_cr(Tam_eol eol)
{
    return eol == TAM_EOL_LF ? 0 : 1;
}

unsigned int tam_eol_has_lf(Tam_eol eol)
{
    return eol == TAM_EOL_CR ? 0 : 1;
}

} // namespace tam
