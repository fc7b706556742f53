// Gives work to a thread by messages, and finds out how the thread ended.
//
// Prints:
//     sum 6, state 2
//     state 3: the queue is broken

#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>

#include <tam/status.h>
#include <tam/thread.h>

using namespace tam;

namespace {

struct Work {
    Tam_critical lock;
    int sum = 0; // guarded by lock
};

// Runs in the thread: adds what arrives until a message says that this was all.
void add_up(void* argument)
{
    auto& work = *static_cast<Work*>(argument);
    unsigned int last = 0;
    unsigned int unused = 0;
    int value = 0;
    Tam_status status;
    for (tam_thread_get_message(last, unused, value, status); status.ok() && last == 0;
         tam_thread_get_message(last, unused, value, status)) {
        const std::lock_guard inside(work.lock);
        work.sum += value;
    }
}

void fail(void*)
{
    throw std::runtime_error("the queue is broken"); // ends the thread, not the process
}

} // namespace

int main()
{
    Tam_status status;
    Work work;
    Tam_thread adder(&add_up, &work, status);
    for (int value = 1; value <= 3 && status.ok(); ++value) {
        adder.post_message(0, 0, value, status);
    }
    adder.post_message(1, 0, 0, status);
    adder.wait(status); // before the object goes: the destructor throws while the thread runs
    std::wcout << L"sum " << work.sum << L", state " << adder.state() << L'\n';

    Tam_thread failing(&fail, nullptr, status);
    failing.wait(status);
    failing.get_failed_status(status);
    std::wstring text;
    for (const Tam_status_arg* argument : status) {
        argument->to_string(text);
    }
    std::wcout << L"state " << failing.state() << L": " << text << L'\n';
}
