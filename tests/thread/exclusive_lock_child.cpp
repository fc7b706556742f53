#include <tam/tam.h>

// exclusive_lock_child NAME: tries to take the lock of that name and ends with 1 when it got it, else with 0; what it
// took it leaves locked.
int wmain(int argc, wchar_t** argv)
{
    if (argc != 2) {
        return 2;
    }
    return tam::Tam_exclusive_lock(argv[1]).try_lock() ? 1 : 0;
}
