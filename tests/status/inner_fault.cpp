// The inner of two DLLs through which a fault travels.

#include <windows.h>

extern "C" __declspec(dllexport)
    __attribute__((no_sanitize("undefined"))) int inner_fault(const volatile int* address, int* destroyed)
{
    struct Witness {
        int* destroyed;
        ~Witness() { *destroyed = *destroyed * 10 + 1; }
    } witness{destroyed};
    return *address;
}
