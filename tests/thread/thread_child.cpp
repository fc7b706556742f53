#include <stdexcept>
#include <string>

#include <tam/tam.h>

// thread_child write_lock NAME: signals the event NAME + "asked", takes the write lock of the semaphore of that name,
// gives it back and ends with 0.
//
// thread_child logic_error: lets an exception that is not caught leave a thread's function. Ends with 0 if that did not
// end it.
int wmain(int argc, wchar_t** argv)
{
    using namespace tam;
    const std::wstring action = argc > 1 ? argv[1] : L"";
    if (action == L"write_lock" && argc == 3) {
        Tam_read_write_semaphore semaphore(argv[2]);
        Tam_event(std::wstring(argv[2]) + L"asked").signal();
        const Tam_write_lock lock(semaphore);
        return 0;
    }
    if (action == L"logic_error") {
        Tam_status status;
        const Tam_thread thread([](void*) { throw std::logic_error("not caught"); }, nullptr, status);
        thread.wait(status);
        return 0;
    }
    return 2;
}
