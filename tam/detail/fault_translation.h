#pragma once

#include <windows.h>

namespace tam::detail {

using Fault_translator = void (*)(unsigned int, EXCEPTION_POINTERS*);

// Makes translator (null: none) the function that throws for faults of the calling thread; the result is the one before.
// The only thing that the library knows of how faults become exceptions.
Fault_translator exchange_fault_translator(Fault_translator translator);

} // namespace tam::detail
