#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

class Tam_status;

/// Loads a module (a DLL) into the process, or counts one more use of it when it is loaded already.
/// @param name    a path, or a name that the system searches for; the system reads it up to its first null character
/// @param status  cleared first; on failure the system's reason, on top of it TAM_E_MODULE_LOAD (0xC2000004) with name
/// @return the module, to be given back with tam_unload_library; null on failure
TAM_API void* tam_load_library(const std::wstring& name, Tam_status& status);

/// Gives a module back. After the last use of it, its code and data are gone.
/// @param module  from tam_load_library; null is ignored
/// @param status  cleared first; on failure the system's reason, on top of it TAM_E_MODULE_UNLOAD (0xC2000005)
TAM_API void tam_unload_library(void* module, Tam_status& status);

/// Looks up what a module exports.
/// @param module  from tam_load_library
/// @param name    the exported name to the letter, upper and lower case included
/// @param status  cleared first; on failure the system's reason, on top of it TAM_E_FUNCTION_LOOKUP (0xC2000006) with
///                name
/// @return the function, to be cast to its type, valid until the module is unloaded; null on failure
TAM_API void* tam_lookup_function(void* module, const std::string& name, Tam_status& status);

} // namespace tam
