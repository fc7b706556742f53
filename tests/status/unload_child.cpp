// Exit code 0: unloading tam.dll puts back the last-chance filter that was there before, lets go of what threads had
// installed, and a filter that the program has set meanwhile stays.

#include <thread>

#include <windows.h>

namespace {

constexpr char INSTALL[] = "_ZN3tam32tam_install_exception_translatorEv";

LONG WINAPI earlier(EXCEPTION_POINTERS*)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

LONG WINAPI later(EXCEPTION_POINTERS*)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

bool install(HMODULE library)
{
    const auto function = reinterpret_cast<void* (*)()>(reinterpret_cast<void*>(::GetProcAddress(library, INSTALL)));
    if (function == nullptr) {
        return false;
    }
    function();
    return true;
}

} // namespace

int main()
{
    ::SetUnhandledExceptionFilter(&earlier);
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = ::LoadLibraryW(L"tam.dll");
        if (library == nullptr || !install(library)) {
            return 1;
        }
        // This thread ends after the library.
        const HANDLE gone = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
        const HANDLE installed = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
        std::thread other([=] {
            install(library);
            ::SetEvent(installed);
            ::WaitForSingleObject(gone, 10000);
        });
        ::WaitForSingleObject(installed, 10000);
        const bool replaced = round == 2;
        if (replaced) {
            ::SetUnhandledExceptionFilter(&later);
        }
        ::FreeLibrary(library);
        const bool unloaded = ::GetModuleHandleW(L"tam.dll") == nullptr;
        ::SetEvent(gone);
        other.join();
        if (!unloaded) {
            return 2;
        }
        if (::SetUnhandledExceptionFilter(&earlier) != (replaced ? &later : &earlier)) {
            return 3;
        }
    }
    return 0;
}
