#pragma once

#include <string>

#include <tam/status/status.h>

namespace tam::test {

/// A status with its arguments and chain as one text, newest first, system errors in decimal:
/// `C2000022(C:\a, C:\b) C200001E(C:\a)` or `C2000026(C:\a) 32`. A clear status gives the empty string.
std::wstring chain(const Tam_status& status);

} // namespace tam::test
