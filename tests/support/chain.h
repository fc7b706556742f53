#pragma once

#include <string>

#include <tam/status/status.h>

namespace tam::test {

/// A status with its whole chain as text, head first: "c2000026(C:\x) c200001e(C:\x) 2()". Each is value() in
/// hexadecimal with its arguments between commas.
std::wstring chain_of(const Tam_status& status);

} // namespace tam::test
