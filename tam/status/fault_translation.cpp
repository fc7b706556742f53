#include <tam/detail/fault_translation.h>

#ifdef _MSC_VER

#include <eh.h>

namespace tam::detail {

Fault_translator exchange_fault_translator(Fault_translator translator)
{
    return ::_set_se_translator(translator);
}

} // namespace tam::detail

#else

// How a fault becomes a C++ exception where the compiler's frames know nothing of structured exceptions.
//
// The process's last-chance filter is asked when every structured handler on the stack has declined, with the stack
// still as it was when the fault happened. (A vectored handler would be asked first: it would steal the faults that
// system code provokes and handles itself.) The filter saves what the translator needs and changes the context, so that
// the thread goes on in fault_entry, which looks to the unwinder like a routine called by the faulting instruction. From
// there the translator throws as any called function could:
//
//     fault ... last_chance          saves record and context, then continues the thread at
//               fault_entry          pushes the "return address", so that the unwinder finds the faulting frame
//               throw_fault          calls the translator
//               translator           throws; landing pads of the faulting function and its callers run
//
// A landing pad relies on the callee-saved registers and the stack pointer alone, because to the compiler each trapping
// instruction is a call. Both are as the fault left them.

#if !defined(__x86_64__)
#error "Fault translation is written for x86_64"
#endif

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>

#include <malloc.h>

#include <tam/detail/win32.h>
#include <tam/status/exceptions.h>

namespace {

using tam::detail::Fault_translator;

// What one thread has installed, and its latest translated fault.
struct Slot {
    Fault_translator translator = nullptr;
    bool overflowed = false; // the stack's guard page is used up
    EXCEPTION_RECORD record;
    CONTEXT context;
};

constexpr ULONG PAGE = 4096;
constexpr ULONG SPARE_STACK = 16 * PAGE; // to throw from a stack overflow
constexpr DWORD TRAP_AND_DIRECTION_FLAGS = 0x500;
constexpr WORD X87_PENDING = 0x80FF; // the exception flags, their summary and "busy"

// C++ exceptions: those of GCC, in all three kinds, and those of the platform's own compiler.
constexpr DWORD GCC_EXCEPTION = 0x20474343;
constexpr DWORD GCC_EXCEPTION_MASK = 0x20FFFFFF;
constexpr DWORD MSVC_EXCEPTION = 0xE06D7363;

} // namespace

extern "C" {

// Runs as if the faulting instruction had called it.
[[noreturn]] __attribute__((used)) void tam_throw_fault(Slot* slot)
{
    EXCEPTION_POINTERS pointers = {&slot->record, &slot->context};
    slot->translator(slot->record.ExceptionCode, &pointers);
    std::terminate();
}

// Reached through a changed context, never called: rcx holds the slot, r10 the return address. rsp may have any
// alignment, as it has in leaf functions; the unwinder finds the old one through rbp.
void tam_fault_entry();
asm(R"(
    .text
    .globl tam_fault_entry
    .def tam_fault_entry; .scl 2; .type 32; .endef
tam_fault_entry:
    pushq %r10
    .seh_proc tam_fault_body
tam_fault_body:
    pushq %rbp
    .seh_pushreg %rbp
    movq %rsp, %rbp
    .seh_setframe %rbp, 0
    .seh_endprologue
    andq $-16, %rsp
    subq $32, %rsp
    call tam_throw_fault
    nop
    .seh_endproc
)");

} // extern "C"

namespace {

void CALLBACK delete_slot(void* slot)
{
    delete static_cast<Slot*>(slot);
}

bool is_cpp_exception(DWORD code)
{
    return (code & GCC_EXCEPTION_MASK) == GCC_EXCEPTION || code == MSVC_EXCEPTION;
}

RUNTIME_FUNCTION* function_at(DWORD64 address, DWORD64& base)
{
    base = 0;
    return ::RtlLookupFunctionEntry(address, &base, nullptr);
}

// The function's unwind information starts with its version and flags; the size of the prologue follows.
bool is_in_prologue(const RUNTIME_FUNCTION& function, DWORD64 base, DWORD64 address)
{
    return address - base - function.BeginAddress < reinterpret_cast<const BYTE*>(base + function.UnwindData)[1];
}

void leave_frame(CONTEXT& context, RUNTIME_FUNCTION* function, DWORD64 base)
{
    if (function == nullptr) { // a leaf: nothing but the return address
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
        return;
    }
    void* handler_data = nullptr;
    DWORD64 frame = 0;
    ::RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handler_data, &frame, nullptr);
}

// Finds the innermost frame in which the compiler can expect an exception, and the address to throw at: handlers are
// looked up for the address before a return address. Afterwards context is that frame's.
DWORD64 return_address(const EXCEPTION_RECORD& record, CONTEXT& context)
{
    DWORD64 base = 0;
    RUNTIME_FUNCTION* function = function_at(context.Rip, base);
    const bool wild_call = function == nullptr && record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION &&
                           record.ExceptionInformation[1] == context.Rip;
    const bool overflow = record.ExceptionCode == EXCEPTION_STACK_OVERFLOW;
    // Neither a prologue nor, on overflow, the use of a local variable is an instruction that can throw.
    if (!wild_call && !overflow && !(function != nullptr && is_in_prologue(*function, base, context.Rip))) {
        return context.Rip + 1;
    }
    // The call of a stack probe lies in its caller's prologue.
    do {
        leave_frame(context, function, base);
        function = function_at(context.Rip - 1, base);
    } while (function != nullptr && is_in_prologue(*function, base, context.Rip - 1));
    return context.Rip;
}

// Leaves the thread room to throw from a stack overflow.
void reserve_stack(bool overflowed)
{
    if (overflowed) {
        ::_resetstkoflw();
    }
    ULONG size = SPARE_STACK;
    ::SetThreadStackGuarantee(&size);
    // Wine commits the whole stack, with its only guard page at the very end, and gives a thread that has reached it too
    // little room. So another guard is set; where the page is only reserved, as on Windows, the call fails.
    MEMORY_BASIC_INFORMATION memory{};
    if (::VirtualQuery(&memory, &memory, sizeof memory) == 0) {
        return;
    }
    char* const guard = static_cast<char*>(memory.AllocationBase) + SPARE_STACK;
    if (reinterpret_cast<char*>(&memory) > guard + SPARE_STACK) {
        DWORD old = 0;
        ::VirtualProtect(guard, PAGE, PAGE_READWRITE | PAGE_GUARD, &old);
    }
}

LONG WINAPI last_chance(EXCEPTION_POINTERS* pointers);

// The filter's place in the process.
class Last_chance_filter {
public:
    Last_chance_filter()
        : m_slots(tam::detail::win32.fls_alloc(&delete_slot)), m_forwarded(tam::detail::win32.tls_alloc())
    {
        const char* const failed = m_slots == FLS_OUT_OF_INDEXES       ? "::FlsAlloc"
                                   : m_forwarded == TLS_OUT_OF_INDEXES ? "::TlsAlloc"
                                                                       : nullptr;
        if (failed != nullptr) {
            _free_indexes();
            throw tam::Tam_sys_call_fail(failed);
        }
    }

    ~Last_chance_filter()
    {
        s_active.store(nullptr);
        const LPTOP_LEVEL_EXCEPTION_FILTER current = ::SetUnhandledExceptionFilter(m_previous);
        if (current != &last_chance) {
            ::SetUnhandledExceptionFilter(current);
        }
        _free_indexes();
    }

    Last_chance_filter(const Last_chance_filter&) = delete;
    Last_chance_filter& operator=(const Last_chance_filter&) = delete;

    // Made by the first install; null before, and again while the library is unloaded.
    static Last_chance_filter* active() { return s_active.load(); }

    static Last_chance_filter& instance()
    {
        static Last_chance_filter filter;
        return filter;
    }

    Slot* slot() const { return static_cast<Slot*>(::FlsGetValue(m_slots)); }

    Slot& own_slot()
    {
        if (Slot* const present = slot()) {
            return *present;
        }
        auto made = std::make_unique<Slot>();
        if (!tam::detail::win32.fls_set_value(m_slots, made.get())) {
            throw tam::Tam_sys_call_fail("::FlsSetValue");
        }
        return *made.release();
    }

    // Becomes the process's filter, be it that another one has been set since.
    void take_place()
    {
        const std::lock_guard guard(m_guard);
        s_active.store(this);
        const LPTOP_LEVEL_EXCEPTION_FILTER current = ::SetUnhandledExceptionFilter(&last_chance);
        if (current != &last_chance) {
            m_previous = current;
            if (!m_placed) {
                m_first = current;
            }
        }
        m_placed = true;
    }

    // Asks the filter that had the place before. When that one was set after the first install and itself asks the
    // filter before it, which is this one, the very first is next.
    LONG forward(EXCEPTION_POINTERS* pointers)
    {
        void* const outer = ::TlsGetValue(m_forwarded);
        const LPTOP_LEVEL_EXCEPTION_FILTER next = outer == pointers ? m_first : m_previous;
        if (next == nullptr) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        ::TlsSetValue(m_forwarded, pointers);
        const LONG answer = next(pointers);
        ::TlsSetValue(m_forwarded, outer);
        return answer;
    }

private:
    void _free_indexes()
    {
        if (m_slots != FLS_OUT_OF_INDEXES) {
            ::FlsFree(m_slots);
        }
        if (m_forwarded != TLS_OUT_OF_INDEXES) {
            ::TlsFree(m_forwarded);
        }
    }

    static inline std::atomic<Last_chance_filter*> s_active = nullptr;

    const DWORD m_slots;     // one Slot a thread; not thread_local, which may allocate on first use
    const DWORD m_forwarded; // the fault that the thread is passing on
    std::mutex m_guard;      // of taking the place
    bool m_placed = false;
    std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> m_previous = nullptr;
    std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> m_first = nullptr;
};

// Lets the thread go on in tam_fault_entry.
void redirect(Slot& slot, EXCEPTION_RECORD& record, CONTEXT& context)
{
    // The originals lie on stack that is about to be used again.
    slot.record = record;
    slot.context = context;
    slot.overflowed = slot.overflowed || record.ExceptionCode == EXCEPTION_STACK_OVERFLOW;
    context.R10 = return_address(record, context);
    context.Rcx = reinterpret_cast<DWORD64>(&slot);
    context.Rip = reinterpret_cast<DWORD64>(&tam_fault_entry);
    context.EFlags &= ~TRAP_AND_DIRECTION_FLAGS;
    // Otherwise the next x87 instruction would raise the exception once more.
    context.FltSave.StatusWord = static_cast<WORD>(context.FltSave.StatusWord & ~X87_PENDING);
    record.ExceptionFlags &= ~static_cast<DWORD>(EXCEPTION_NONCONTINUABLE);
}

LONG WINAPI last_chance(EXCEPTION_POINTERS* pointers)
{
    Last_chance_filter* const filter = Last_chance_filter::active();
    if (filter == nullptr) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    const DWORD error = ::GetLastError();
    Slot* const slot = filter->slot();
    LONG answer = EXCEPTION_CONTINUE_EXECUTION;
    if (slot == nullptr || slot->translator == nullptr || is_cpp_exception(pointers->ExceptionRecord->ExceptionCode)) {
        answer = filter->forward(pointers);
    } else {
        redirect(*slot, *pointers->ExceptionRecord, *pointers->ContextRecord);
    }
    ::SetLastError(error);
    return answer;
}

} // namespace

namespace tam::detail {

Fault_translator exchange_fault_translator(Fault_translator translator)
{
    if (translator == nullptr) {
        Last_chance_filter* const filter = Last_chance_filter::active();
        Slot* const slot = filter == nullptr ? nullptr : filter->slot();
        return slot == nullptr ? nullptr : std::exchange(slot->translator, nullptr);
    }
    Last_chance_filter& filter = Last_chance_filter::instance();
    Slot& slot = filter.own_slot();
    reserve_stack(std::exchange(slot.overflowed, false));
    const Fault_translator before = std::exchange(slot.translator, translator);
    filter.take_place();
    return before;
}

} // namespace tam::detail

#endif
