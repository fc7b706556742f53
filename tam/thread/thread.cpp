#include <tam/thread/thread.h>

#include <cerrno>
#include <cstdint>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/process/anonymous_pipe.h>
#include <tam/security/security.h>
#include <tam/status/exception_translator.h>
#include <tam/thread/event.h>

namespace tam {

namespace {

using Threads = std::map<unsigned int, Tam_thread*>;

// Locks are taken in the order: lifetime, registry, a thread's state.
struct Registry {
    Tam_critical lifetime_lock; // held across a thread's exit, terminate() and the destructor
    Tam_critical lock;          // guards threads
    Threads threads;            // by id; those that have an object and still run
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

// Built when the library is loaded. Threads of the static build may be earlier still.
[[maybe_unused]] const Registry& built_at_load = registry();

// Made beforehand, so that entering a thread that runs already cannot fail.
Threads::node_type new_entry(Tam_thread* thread)
{
    Threads entry;
    entry.emplace(0, thread);
    return entry.extract(entry.begin());
}

struct Message {
    unsigned int a;
    unsigned int b;
    int c;
};

constexpr unsigned int MESSAGE_BYTES = 12;
static_assert(sizeof(Message) == MESSAGE_BYTES);

// In the order of Tam_thread_priority.
constexpr int PRIORITIES[] = {THREAD_PRIORITY_HIGHEST, THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_NORMAL,
                              THREAD_PRIORITY_BELOW_NORMAL, THREAD_PRIORITY_LOWEST};

constexpr DWORD NO_SUSPEND_COUNT = 0xFFFFFFFF;

// Each code replaces the one before, so that the last one is what callers see, whatever the reason.
void report_creation_failure(int error, Tam_status& status)
{
    switch (error) {
    case EAGAIN:
        detail::assign_failure(status, TAM_E_THREAD_RESOURCES);
        [[fallthrough]];
    case EINVAL:
        detail::assign_failure(status, TAM_E_THREAD_ARGUMENTS);
        [[fallthrough]];
    default:
        detail::assign_failure(status, TAM_E_THREAD_CREATE);
    }
}

Tam_status failure_status(const std::runtime_error& exception)
{
    Tam_status status;
    try {
        detail::assign_failure(status, TAM_E_THREAD_FAILED, std::string(exception.what()));
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
    return status;
}

// A thread that cannot translate faults does not run its function, and fails as if that had thrown.
bool install_translator(Tam_status& failed_status) noexcept
{
    try {
        tam_install_exception_translator();
        return true;
    } catch (const std::runtime_error& exception) {
        failed_status = failure_status(exception);
    } catch (const std::bad_alloc&) {
        failed_status = TAM_E_OUT_OF_MEMORY;
    }
    return false;
}

// A suspended thread stands for sure when its context is to be had; the suspending call may return before.
void wait_until_suspended(HANDLE thread)
{
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    ::GetThreadContext(thread, &context);
}

} // namespace

// What the thread needs, also when its object is gone.
struct Tam_thread::Shared {
    Shared(void (*thread_function)(void*), void* thread_argument, Tam_status& status)
        : function(thread_function), argument(thread_argument), pipe(status)
    {}

    void (*const function)(void*);
    void* const argument;
    Tam_anonymous_pipe pipe;
    Tam_event started;         // the thread is there
    Tam_event registered;      // the object is in the registry
    bool is_abandoned = false; // the constructor failed after the thread was made; set before registered is signalled
    // The thread's own share. It is here and not on the thread's stack so that terminate() can drop it; guarded by the
    // registry's lifetime lock once the thread is registered.
    std::shared_ptr<Shared> share_of_thread;
};

Tam_thread::Tam_thread(void (*function)(void*), void* argument, Tam_status& status, bool detach_on_destroy,
                       unsigned int, Tam_security* security)
    : m_detach_on_destroy(detach_on_destroy)
{
    status.clear();
    try {
        m_shared = std::make_shared<Shared>(function, argument, status);
        _start(security, status);
    } catch (const std::bad_alloc&) {
        detail::assign_failure(status, TAM_E_OUT_OF_MEMORY);
    }
}

Tam_thread::~Tam_thread() noexcept(false)
{
    bool is_running = false;
    {
        const std::lock_guard lifetime(registry().lifetime_lock);
        is_running = _leave_registry();
        if (is_running) {
            m_shared->pipe._close_write_end(); // the thread may be waiting for a message
        }
        detail::Kernel_handle(m_handle).reset();
        m_shared.reset();
    }
    if (is_running && !m_detach_on_destroy) {
        throw std::runtime_error("The Tam_thread was destory whilst the thread was running");
    }
}

void Tam_thread::_start(Tam_security* security, Tam_status& status)
{
    Threads::node_type entry = new_entry(this);
    SECURITY_ATTRIBUTES* const attributes = security != nullptr ? security->security_attributes(false) : nullptr;
    unsigned int id = 0;
    m_shared->share_of_thread = m_shared;
    const std::uintptr_t result =
        detail::win32.begin_thread(attributes, 0U, &thread_entry_function, m_shared.get(), 0U, &id);
    if (result == 0) {
        report_creation_failure(errno, status);
        m_shared->share_of_thread.reset();
        return;
    }
    m_handle = reinterpret_cast<HANDLE>(result);
    try {
        m_shared->started.wait();
        m_id = id;
        m_state = TAM_THREAD_RUNNING;
        entry.key() = id;
        {
            const std::lock_guard lock(registry().lock);
            registry().threads.insert(std::move(entry));
        }
        m_shared->registered.signal();
    } catch (...) {
        _leave_registry();
        detail::Kernel_handle(m_handle).reset();
        m_shared->is_abandoned = true;
        ::SetEvent(m_shared->registered.handle());
        throw;
    }
}

// Returns whether the thread was in the registry.
bool Tam_thread::_leave_registry()
{
    const std::lock_guard lock(registry().lock);
    Threads& threads = registry().threads;
    const auto entry = threads.find(m_id);
    if (entry == threads.end() || entry->second != this) {
        return false;
    }
    threads.erase(entry);
    return true;
}

// Touches nothing but shared: the object may be gone as soon as the thread is registered.
unsigned int Tam_thread::thread_entry_function(void* shared_pointer) noexcept
{
    Shared& shared = *static_cast<Shared*>(shared_pointer);
    Tam_status failed_status;
    bool has_failed = !install_translator(failed_status);
    shared.started.signal();
    shared.registered.wait();
    if (shared.is_abandoned) {
        const std::shared_ptr<Shared> last = std::move(shared.share_of_thread);
        return 0;
    }
    if (!has_failed) {
        try {
            shared.function(shared.argument);
        } catch (const std::runtime_error& exception) {
            has_failed = true;
            failed_status = failure_status(exception);
        }
    }
    _record_end(shared, has_failed ? TAM_THREAD_FAILED : TAM_THREAD_FINISHED, std::move(failed_status));
    return 0;
}

void Tam_thread::_record_end(Shared& shared, Tam_thread_state state, Tam_status&& failed_status)
{
    const std::lock_guard lifetime(registry().lifetime_lock);
    const std::shared_ptr<Shared> last = std::move(shared.share_of_thread);
    const std::lock_guard lock(registry().lock);
    if (Tam_thread* const thread = tam_thread_this_thread()) {
        thread->_leave_registry();
        const std::lock_guard state_lock(thread->m_state_lock);
        thread->m_state = state;
        thread->m_failed_status = std::move(failed_status);
    }
}

void Tam_thread::terminate(Tam_status& status)
{
    status.clear();
    if (_is_current()) {
        throw std::logic_error("Tam_thread::terminate - cannot terminate current thread");
    }
    // With all locks held the thread is in none of them.
    const std::lock_guard lifetime(registry().lifetime_lock);
    const std::lock_guard lock(registry().lock);
    const std::lock_guard state_lock(m_state_lock);
    const bool is_terminated = detail::win32.terminate_thread(m_handle, 0) != FALSE;
    _leave_registry();
    if (!is_terminated) {
        detail::assign_failure(status, TAM_E_THREAD_TERMINATE);
        return;
    }
    m_state = TAM_THREAD_TERMINATED;
    m_shared->share_of_thread.reset();
}

void Tam_thread::suspend(Tam_status& status)
{
    status.clear();
    if (_is_current()) {
        detail::assign_failure(status, TAM_E_THREAD_SUSPEND);
        return;
    }
    // With all locks held the thread is in none of them, and does not stop others while it is suspended.
    const std::lock_guard lifetime(registry().lifetime_lock);
    const std::lock_guard lock(registry().lock);
    const std::lock_guard state_lock(m_state_lock);
    if (detail::win32.suspend_thread(m_handle) == NO_SUSPEND_COUNT) {
        detail::assign_failure(status, TAM_E_THREAD_SUSPEND);
        return;
    }
    wait_until_suspended(m_handle);
    m_state = TAM_THREAD_SUSPENDED;
}

void Tam_thread::resume(Tam_status& status)
{
    status.clear();
    if (_is_current() || detail::win32.resume_thread(m_handle) == NO_SUSPEND_COUNT) {
        detail::assign_failure(status, TAM_E_THREAD_RESUME);
        return;
    }
    const std::lock_guard state_lock(m_state_lock);
    m_state = TAM_THREAD_RUNNING;
}

Tam_thread_state Tam_thread::state() const
{
    const std::lock_guard state_lock(m_state_lock);
    return m_state;
}

void Tam_thread::wait(Tam_status& status) const
{
    status.clear();
    if (_is_current() || detail::win32.wait_for_single_object(m_handle, INFINITE) == WAIT_FAILED) {
        detail::assign_failure(status, TAM_E_THREAD_WAIT);
    }
}

bool Tam_thread::wait(unsigned int milliseconds, Tam_status& status) const
{
    status.clear();
    if (_is_current()) {
        detail::assign_failure(status, TAM_E_THREAD_WAIT);
        return true;
    }
    const DWORD result = detail::win32.wait_for_single_object(m_handle, milliseconds);
    if (result == WAIT_FAILED) {
        detail::push_last_error(status, TAM_E_THREAD_WAIT);
    }
    return result == WAIT_OBJECT_0;
}

void Tam_thread::set_priority(Tam_thread_priority priority, Tam_status& status) const
{
    status.clear();
    if (priority >= std::size(PRIORITIES)) {
        detail::assign_failure(status, TAM_E_THREAD_PRIORITY_UNKNOWN);
    } else if (!detail::win32.set_thread_priority(m_handle, PRIORITIES[priority])) {
        detail::assign_failure(status, TAM_E_THREAD_PRIORITY);
    }
}

void Tam_thread::post_message(const unsigned int& a, const unsigned int& b, const int& c, Tam_status& status) const
{
    status.clear();
    if (m_shared == nullptr) {
        detail::assign_failure(status, TAM_E_MESSAGE_POST);
        return;
    }
    const Message message{a, b, c};
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&message);
    const unsigned int written = m_shared->pipe.write(bytes, MESSAGE_BYTES, status);
    if (!status.ok()) {
        detail::push_failure(status, TAM_E_MESSAGE_POST);
    } else if (written != MESSAGE_BYTES) {
        detail::assign_failure(status, TAM_E_MESSAGE_POST);
    }
}

// Touches nothing but shared: the object may be gone while the thread waits.
void Tam_thread::get_message(Shared& shared, unsigned int& a, unsigned int& b, int& c, Tam_status& status)
{
    status.clear();
    Message message;
    auto* const bytes = reinterpret_cast<unsigned char*>(&message);
    const unsigned int read = shared.pipe.read(bytes, MESSAGE_BYTES, status);
    if (!status.ok()) {
        detail::push_failure(status, TAM_E_MESSAGE_READ);
    } else if (read != MESSAGE_BYTES) {
        detail::assign_failure(status, TAM_E_MESSAGE_READ);
    } else {
        a = message.a;
        b = message.b;
        c = message.c;
    }
}

void Tam_thread::get_failed_status(Tam_status& status) const
{
    const std::lock_guard state_lock(m_state_lock);
    status = m_failed_status;
}

void Tam_thread::add_security(Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_KERNEL, reinterpret_cast<void*>(std::uintptr_t{m_id}), status);
}

bool Tam_thread::_is_current() const
{
    return ::GetCurrentThreadId() == m_id;
}

Tam_thread* tam_thread_this_thread()
{
    const std::lock_guard lock(registry().lock);
    const Threads& threads = registry().threads;
    const auto entry = threads.find(::GetCurrentThreadId());
    return entry != threads.end() ? entry->second : nullptr;
}

void tam_thread_get_message(unsigned int& a, unsigned int& b, int& c, Tam_status& status)
{
    status.clear();
    Tam_thread::Shared* shared = nullptr;
    {
        const std::lock_guard lock(registry().lock);
        const Tam_thread* const thread = tam_thread_this_thread();
        if (thread != nullptr) {
            shared = thread->m_shared.get(); // the thread's own share keeps it
        }
    }
    if (shared == nullptr) {
        detail::assign_failure(status, TAM_E_NOT_A_TAM_THREAD);
        return;
    }
    Tam_thread::get_message(*shared, a, b, c, status);
}

void tam_thread_wait_any() {}

} // namespace tam
