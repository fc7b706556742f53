// Ends as a fault makes it end; the argument says how the fault comes about.

#include <cstring>
#include <stdexcept>
#include <thread>

#include <windows.h>

#include <tam/status/exception_translator.h>
#include <tam/status/exceptions.h>

#ifdef TAM_STATIC
#include <tam/detail/win32.h>

#include <tests/support/swap.h>
#endif

using namespace tam;

namespace {

constexpr int EARLIER_ENDED = 70; // plus how often the later filter was asked before
constexpr int CAUGHT = 80;
constexpr int NOT_CAUGHT = 90;

int later_asked = 0;
LPTOP_LEVEL_EXCEPTION_FILTER before_later = nullptr;

__attribute__((noipa, no_sanitize("undefined"))) int read_at(const volatile int* address)
{
    return *address;
}

LONG WINAPI earlier(EXCEPTION_POINTERS*)
{
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(EARLIER_ENDED + later_asked));
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI later(EXCEPTION_POINTERS* pointers)
{
    ++later_asked;
    return before_later(pointers);
}

void fault_on_bare_thread()
{
    std::thread([] {
        try {
            read_at(nullptr);
        } catch (...) {
            ::TerminateProcess(::GetCurrentProcess(), NOT_CAUGHT);
        }
    }).join();
}

bool fault_is_caught()
{
    try {
        read_at(nullptr);
    } catch (const Tam_system_exception&) {
        return true;
    }
    return false;
}

#ifdef TAM_STATIC
bool install_fails_with(const char* call)
{
    try {
        tam_install_exception_translator();
    } catch (const Tam_sys_call_fail& failure) {
        return std::strcmp(failure.what(), call) == 0;
    }
    return false;
}

// The first install fails without indexes, and a later one finds nothing broken.
bool without_indexes()
{
    {
        const test::Swap guard(
            detail::win32.fls_alloc, +[](PFLS_CALLBACK_FUNCTION) WINAPI { return FLS_OUT_OF_INDEXES; });
        if (!install_fails_with("::FlsAlloc")) {
            return false;
        }
    }
    {
        const test::Swap guard(
            detail::win32.tls_alloc, +[]() WINAPI { return TLS_OUT_OF_INDEXES; });
        // More often than there are indexes: none is lost.
        for (int i = 0; i < 5000; ++i) {
            if (!install_fails_with("::TlsAlloc")) {
                return false;
            }
        }
    }
    return tam_install_exception_translator() == nullptr;
}
#endif

} // namespace

int main(int, char** argv)
{
    const char* const mode = argv[1];
    const auto is = [mode](const char* name) { return std::strcmp(mode, name) == 0; };
    if (!is("default")) {
        ::SetUnhandledExceptionFilter(&earlier);
    }
    if (is("never_installed")) {
        read_at(nullptr);
    }
#ifdef TAM_STATIC
    if (is("no_indexes")) {
        return without_indexes() && fault_is_caught() ? CAUGHT : NOT_CAUGHT;
    }
#endif
    tam_install_exception_translator();
    if (is("removed")) {
        tam_set_exception_translator(nullptr);
        read_at(nullptr);
    }
    if (is("cpp_exception")) {
        throw std::runtime_error("nobody catches this");
    }
    if (is("returning")) {
        tam_set_exception_translator(reinterpret_cast<void*>(+[](unsigned int, EXCEPTION_POINTERS*) {}));
        read_at(nullptr);
    }
    if (is("filter_set_later")) {
        // It asks the library's filter, and after the next install the library's filter asks it.
        before_later = ::SetUnhandledExceptionFilter(&later);
        if (!fault_is_caught()) {
            return NOT_CAUGHT;
        }
        later_asked = 0;
        std::thread([] {
            tam_install_exception_translator();
            fault_is_caught();
        }).join();
    }
    if (is("caught")) {
        return fault_is_caught() ? CAUGHT : NOT_CAUGHT;
    }
    fault_on_bare_thread();
    return NOT_CAUGHT;
}
