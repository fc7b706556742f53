// The outer of two DLLs through which a fault travels.

#include <windows.h>

extern "C" __declspec(dllimport) int inner_fault(const volatile int* address, int* destroyed);

extern "C" __declspec(dllexport) int outer_fault(const volatile int* address, int* destroyed)
{
    struct Witness {
        int* destroyed;
        ~Witness() { *destroyed = *destroyed * 10 + 2; }
    } witness{destroyed};
    return inner_fault(address, destroyed) + 1;
}
