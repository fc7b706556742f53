#include <tam/status/exception_translator.h>

#include <algorithm>
#include <iterator>

#include <tam/detail/fault_translation.h>
#include <tam/detail/rpc_exception.h>

namespace tam {

namespace {

struct Code_range {
    DWORD first;
    DWORD last;
};

// 83 codes. The gaps are meant.
constexpr Code_range RPC_STATUS_VALUES[] = {
    {0, 0},       {5, 5},       {14, 14},     {87, 87},     {122, 122},   {164, 164},   {1130, 1130},
    {1700, 1728}, {1730, 1730}, {1732, 1737}, {1739, 1749}, {1754, 1762}, {1764, 1771}, {1791, 1791},
    {1806, 1806}, {1817, 1820}, {1822, 1824}, {1826, 1826}, {1898, 1898}, {1900, 1900},
};

bool is_rpc_status(DWORD code)
{
    return std::any_of(std::begin(RPC_STATUS_VALUES), std::end(RPC_STATUS_VALUES),
                       [code](const auto& range) { return code >= range.first && code <= range.last; });
}

} // namespace

void* tam_install_exception_translator()
{
    return tam_set_exception_translator(reinterpret_cast<void*>(&tam_exception_translator));
}

void* tam_set_exception_translator(void* translator)
{
    return reinterpret_cast<void*>(
        detail::exchange_fault_translator(reinterpret_cast<detail::Fault_translator>(translator)));
}

void tam_exception_translator(unsigned int, EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD* const record = pointers == nullptr ? nullptr : pointers->ExceptionRecord;
    if (record != nullptr && is_rpc_status(record->ExceptionCode)) {
        throw Tam_rpc_exception(pointers, true);
    }
    throw Tam_system_exception(pointers, true);
}

} // namespace tam
