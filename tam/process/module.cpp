#include <tam/process/module.h>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/win32.h>
#include <tam/status/status.h>

namespace tam {

void* tam_load_library(const std::wstring& name, Tam_status& status)
{
    status.clear();
    const HMODULE module = detail::win32.load_library(name.c_str());
    if (module == nullptr) {
        detail::push_last_error(status, TAM_E_MODULE_LOAD, name);
    }
    return module;
}

void tam_unload_library(void* module, Tam_status& status)
{
    status.clear();
    if (module != nullptr && !detail::win32.free_library(static_cast<HMODULE>(module))) {
        detail::push_last_error(status, TAM_E_MODULE_UNLOAD);
    }
}

void* tam_lookup_function(void* module, const std::string& name, Tam_status& status)
{
    status.clear();
    const FARPROC function = ::GetProcAddress(static_cast<HMODULE>(module), name.c_str());
    if (function == nullptr) {
        detail::push_last_error(status, TAM_E_FUNCTION_LOOKUP, name);
    }
    return reinterpret_cast<void*>(function);
}

} // namespace tam
