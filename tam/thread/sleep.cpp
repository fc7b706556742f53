#include <tam/thread/sleep.h>

#include <windows.h>

namespace tam {

void tam_thread_sleep(unsigned int milliseconds)
{
    ::Sleep(milliseconds);
}

void tam_thread_yield()
{
    ::Sleep(0);
}

} // namespace tam
