#pragma once

#include <tam/status/exceptions.h>

namespace tam {

// A structured exception whose code is an RPC status value. Callers outside the library catch it as
// Tam_system_exception; it is exported so that its type is one and the same in every module.
class TAM_API Tam_rpc_exception : public Tam_system_exception {
public:
    Tam_rpc_exception(const EXCEPTION_POINTERS* pointers, bool);
    Tam_rpc_exception(const Tam_rpc_exception&) noexcept = default;
    Tam_rpc_exception& operator=(const Tam_rpc_exception&) noexcept = default;
    ~Tam_rpc_exception() override;
};

} // namespace tam
