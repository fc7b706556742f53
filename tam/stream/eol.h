#pragma once

#include <tam/detail/export.h>

namespace tam {

/// The line-end convention of a stream. A reader with any other value finds no line end.
///
/// Reading with TAM_EOL_ANY, CR CR is a CR that belongs to the line, followed by what the second one begins.
enum Tam_eol : unsigned int {
    TAM_EOL_ANY = 0,   ///< reading: CR LF, a lone LF or a lone CR; writing: nothing
    TAM_EOL_CR = 1,    ///< CR
    TAM_EOL_LF = 2,    ///< LF
    TAM_EOL_CR_LF = 3, ///< the pair CR LF only; reading, a lone CR or LF is data
};

/// 0 for TAM_EOL_LF, else 1.
TAM_API unsigned int tam_eol_has_cr(Tam_eol eol);

/// 0 for TAM_EOL_CR, else 1.
TAM_API unsigned int tam_eol_has_lf(Tam_eol eol);

} // namespace tam
