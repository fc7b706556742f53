#include <tests/support/test.h>

#include <tests/support/run_child.h>

#include <cstdlib>
#include <typeinfo>

#include <tam/detail/rpc_exception.h>

extern "C" __declspec(dllimport) int outer_fault(const volatile int* address, int* destroyed);

using namespace tam;

namespace {

using Translator = void (*)(unsigned, EXCEPTION_POINTERS*);

constexpr DWORD TIME_OUT = 20000;

// The faults are real ones also where a sanitizer would find them first.
#define NOT_INLINE __attribute__((noipa, no_sanitize("undefined")))

NOT_INLINE int read_at(const volatile int* address)
{
    return *address;
}

NOT_INLINE void write_at(volatile int* address)
{
    *address = 7;
}

NOT_INLINE int divide(int a, int b)
{
    return a / b;
}

NOT_INLINE int call(int (*function)())
{
    return function() + 1;
}

volatile int* const NOWHERE = nullptr;
volatile int* const NEAR_NULL = reinterpret_cast<volatile int*>(0x14);

// Each test has the translator, and leaves the thread as it was.
class Fault_translation : public testing::Test {
protected:
    void SetUp() override { m_before = tam_install_exception_translator(); }
    void TearDown() override { tam_set_exception_translator(m_before); }

private:
    void* m_before = nullptr;
};

struct Caught {
    unsigned int code = 0;
    std::string text;
    bool rpc = false;
};

template <class Function>
Caught caught_from(Function function)
{
    try {
        function();
    } catch (const Tam_system_exception& exception) {
        return {exception.code(), exception.what(), typeid(exception) == typeid(Tam_rpc_exception)};
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

// The text before the address of the fault; the address must lie in the function.
std::string without_address(const Caught& caught, const void* function)
{
    const std::string mark = "Error occured at address 0x";
    const std::size_t at = caught.text.find(mark);
    if (at == std::string::npos) {
        return "no address in: " + caught.text;
    }
    char* end = nullptr;
    const auto address = std::strtoull(caught.text.c_str() + at + mark.size(), &end, 16);
    EXPECT_STREQ(end, ".\r\n");
    EXPECT_LT(address - reinterpret_cast<ULONG_PTR>(function), 64U);
    return caught.text.substr(0, at);
}

struct Witness {
    std::string& order;
    char name;
    ~Witness() { order += name; }
};

NOT_INLINE int fault_among_locals(std::string& order, const volatile int* address)
{
    const Witness first{order, '1'};
    const Witness second{order, '2'};
    const int value = *address;
    const Witness third{order, '3'};
    return value;
}

NOT_INLINE int call_fault_among_locals(std::string& order, const volatile int* address)
{
    const Witness outer{order, 'o'};
    return fault_among_locals(order, address) + 1;
}

} // namespace

TEST_F(Fault_translation, null_read_and_write_are_described)
{
    const std::string access = "The thread attempted to read from or write to a virtual address for which it does not "
                               "have the appropriate access.\r\n";
    const Caught read = caught_from([] { read_at(NOWHERE); });
    EXPECT_EQ(read.code, 0xC0000005U);
    EXPECT_FALSE(read.rpc);
    EXPECT_EQ(without_address(read, reinterpret_cast<void*>(&read_at)),
              access + "The memory address accessed is 0x00000000.\r\nException code is 0xc0000005.\r\n");
    const Caught written = caught_from([] { write_at(NEAR_NULL); });
    EXPECT_EQ(without_address(written, reinterpret_cast<void*>(&write_at)),
              access + "The memory address accessed is 0x00000014.\r\nException code is 0xc0000005.\r\n");
}

TEST_F(Fault_translation, integer_division_by_zero_and_overflow_are_described)
{
    const Caught by_zero = caught_from([] { divide(7, 0); });
    EXPECT_EQ(by_zero.code, 0xC0000094U);
    EXPECT_EQ(without_address(by_zero, reinterpret_cast<void*>(&divide)),
              "The thread attempted to divide an integer value by an integer divisor of zero.\r\nException code is "
              "0xc0000094.\r\n");
    EXPECT_EQ(caught_from([] { divide(-2147483647 - 1, -1); }).code & 0xF0000000U, 0xC0000000U);
}

TEST_F(Fault_translation, raised_exceptions_keep_their_code_and_kind)
{
    const struct {
        DWORD code;
        DWORD flags;
        bool rpc;
    } rows[] = {{1727, 0, true},
                {1729, 0, false},
                {1738, 0, false},
                {1722, EXCEPTION_NONCONTINUABLE, true},
                {0xE0000001, 0, false},
                {0xC0000005, 0, false},
                {0xC0000094, EXCEPTION_NONCONTINUABLE, false}};
    for (const auto& row : rows) {
        const ULONG_PTR information[] = {1, 0x1234};
        const Caught caught = caught_from([&] { ::RaiseException(row.code, row.flags, 2, information); });
        EXPECT_EQ(caught.code, row.code);
        EXPECT_EQ(caught.rpc, row.rpc) << row.code;
    }
}

TEST_F(Fault_translation, a_call_through_a_null_pointer_is_caught)
{
    EXPECT_EQ(caught_from([] { call(nullptr); }).code, 0xC0000005U);
}

TEST_F(Fault_translation, destructors_run_from_the_faulting_frame_up)
{
    std::string order;
    EXPECT_EQ(caught_from([&] { call_fault_among_locals(order, NOWHERE); }).code, 0xC0000005U);
    EXPECT_EQ(order, "21o");
}

TEST_F(Fault_translation, a_fault_in_a_dll_passes_the_frames_of_another)
{
    for (int round = 0; round < 3; ++round) {
        int destroyed = 0;
        EXPECT_EQ(caught_from([&] { outer_fault(NOWHERE, &destroyed); }).code, 0xC0000005U);
        EXPECT_EQ(destroyed, 12);
    }
}

TEST_F(Fault_translation, what_the_catching_function_holds_in_registers_is_intact)
{
    // Enough live values that each callee-saved register has one.
    long long values[12];
    double real[6];
    for (int i = 0; i < 12; ++i) {
        values[i] = read_at(&i) * 1000003LL + 1;
    }
    for (int i = 0; i < 6; ++i) {
        real[i] = read_at(&i) * 0.37 + 1;
    }
    const long long a = values[0], b = values[1], c = values[2], d = values[3], e = values[4], f = values[5];
    const double x = real[1], y = real[2], z = real[3];
    ::SetLastError(4711);
    try {
        read_at(NOWHERE);
        FAIL();
    } catch (const Tam_system_exception&) {
        EXPECT_EQ(::GetLastError(), 4711U);
    }
    EXPECT_EQ(a + b * 2 + c * 3 + d * 4 + e * 5 + f * 6, 1000003LL * (2 + 6 + 12 + 20 + 30) + 21);
    EXPECT_DOUBLE_EQ(x + y + z, 0.37 * 6 + 3);
}

TEST_F(Fault_translation, faults_in_catch_clauses_and_repeated_faults_are_caught)
{
    int caught = 0;
    for (int i = 0; i < 2000; ++i) {
        try {
            read_at(NOWHERE);
        } catch (const Tam_system_exception& outer) {
            try {
                divide(i, 0);
            } catch (const Tam_system_exception& inner) {
                caught += outer.code() == 0xC0000005 && inner.code() == 0xC0000094 ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(caught, 2000);
}

TEST_F(Fault_translation, floating_point_faults_do_not_raise_again)
{
    const auto divide_real = [](long double a, long double b) NOT_INLINE {
        const unsigned short unmasked = 0x37B; // division by zero
        asm volatile("fldcw %0" ::"m"(unmasked));
        volatile long double result = a / b;
        asm volatile("fwait");
        return result;
    };
    const Caught caught = caught_from([&] { divide_real(1, 0); });
    EXPECT_EQ(caught.code, 0xC000008EU);
    EXPECT_EQ(caught.text.rfind("One of the operands in a floating-point operation is denormal.", 0), 0U);
    volatile long double half = 1;
    half = half / 2;
    asm volatile("fninit");
    EXPECT_EQ(half, 0.5L);
}

TEST_F(Fault_translation, cpp_exceptions_debugger_events_and_handled_faults_pass)
{
    static int translated;
    translated = 0;
    void* const library = tam_set_exception_translator(reinterpret_cast<void*>(+[](unsigned, EXCEPTION_POINTERS* p) {
        ++translated;
        tam_exception_translator(0, p);
    }));
    EXPECT_THROW(throw std::logic_error("x"), std::logic_error);
    EXPECT_THROW(throw 5, int);
    ::OutputDebugStringA("tam\n");
    ::OutputDebugStringW(L"tam\n");
    EXPECT_TRUE(::IsBadReadPtr(reinterpret_cast<const void*>(16), 4));
    EXPECT_EQ(::lstrlenW(reinterpret_cast<const wchar_t*>(16)), 0);
    EXPECT_EQ(translated, 0);
    EXPECT_EQ(caught_from([] { read_at(NOWHERE); }).code, 0xC0000005U);
    EXPECT_EQ(translated, 1);
    tam_set_exception_translator(library);
}

TEST(Exception_translator, is_installed_per_thread_and_can_be_put_back)
{
    static DWORD seen;
    const Translator own = [](unsigned code, EXCEPTION_POINTERS* pointers) {
        seen = code;
        const auto rip = pointers->ContextRecord->Rip;
        if (rip - reinterpret_cast<ULONG_PTR>(&divide) < 64 &&
            pointers->ExceptionRecord->ExceptionAddress == reinterpret_cast<void*>(rip)) {
            throw std::string("own");
        }
        throw 1;
    };
    std::thread([&] {
        EXPECT_EQ(tam_set_exception_translator(nullptr), nullptr);
        EXPECT_EQ(tam_install_exception_translator(), nullptr);
        void* const library = tam_install_exception_translator();
        EXPECT_EQ(reinterpret_cast<Translator>(library), &tam_exception_translator);
        EXPECT_EQ(tam_set_exception_translator(reinterpret_cast<void*>(own)), library);
        EXPECT_THROW(divide(1, 0), std::string);
        EXPECT_EQ(seen, 0xC0000094U);
        std::thread([] { EXPECT_EQ(tam_install_exception_translator(), nullptr); }).join();
        EXPECT_EQ(tam_install_exception_translator(), reinterpret_cast<void*>(own));
        EXPECT_THROW(divide(1, 0), Tam_system_exception);
        EXPECT_EQ(tam_set_exception_translator(nullptr), library);
        EXPECT_EQ(tam_set_exception_translator(nullptr), nullptr);
    }).join();
}

TEST(Exception_translator, threads_fault_at_the_same_time)
{
    constexpr int THREADS = 4;
    constexpr int FAULTS = 300;
    std::atomic<int> waiting = 0;
    std::atomic<int> caught = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([&, i] {
            tam_install_exception_translator();
            ++waiting;
            const ULONGLONG end = ::GetTickCount64() + TIME_OUT;
            while (waiting < THREADS && ::GetTickCount64() < end) {
            }
            for (int n = 0; n < FAULTS; ++n) {
                try {
                    read_at(reinterpret_cast<const volatile int*>(static_cast<ULONG_PTR>(0x10 * (i + 1))));
                } catch (const Tam_system_exception& exception) {
                    const std::string address = "accessed is 0x000000" + std::to_string(i + 1) + "0.\r\n";
                    caught += std::string(exception.what()).find(address) != std::string::npos ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(caught, THREADS * FAULTS);
}

TEST(Exception_translator, threads_that_end_leave_nothing_behind)
{
    const auto one_thread = [] {
        std::thread([] {
            tam_install_exception_translator();
            EXPECT_THROW(read_at(NOWHERE), Tam_system_exception);
        }).join();
    };
    one_thread();
    const unsigned int blocks = test::heap_blocks();
    const unsigned int handles = test::open_handles();
    for (int i = 0; i < 20; ++i) {
        one_thread();
    }
    EXPECT_LT(test::heap_blocks(), blocks + 10);
    EXPECT_LT(test::open_handles(), handles + 10);
}

namespace {

constexpr int ENDLESS = 1000000000;

int built;
int destroyed;

struct Counted {
    NOT_INLINE Counted() { ++built; }
    NOT_INLINE ~Counted() { ++destroyed; }
};

template <int BYTES>
NOT_INLINE int overflow(int depth)
{
    const Counted counted;
    volatile char local[BYTES];
    local[0] = static_cast<char>(depth);
    return depth < ENDLESS ? overflow<BYTES>(depth + 1) + local[0] : 0;
}

NOT_INLINE int overflow_without_locals(int depth)
{
    return depth < ENDLESS ? overflow_without_locals(depth + 1) + read_at(&depth) : 0;
}

} // namespace

TEST_F(Fault_translation, stack_overflow_is_caught_again_and_again)
{
    int (*const functions[])(int) = {overflow_without_locals, overflow<1>, overflow<200>, overflow<3000>,
                                     overflow<20000>};
    const auto rounds = [&] {
        for (int round = 0; round < 3; ++round) {
            for (const auto function : functions) {
                tam_install_exception_translator(); // for a new guard page
                built = destroyed = 0;
                const Caught caught = caught_from([&] { function(0); });
                EXPECT_EQ(caught.code, 0xC00000FDU);
                EXPECT_EQ(caught.text.rfind("An unknown Microsoft structured exception has occurred.\r\nException code "
                                            "is 0xc00000fd.\r\nError occured at address 0x",
                                            0),
                          0U);
                // The frame that overflowed may keep its object.
                EXPECT_TRUE(destroyed == built || destroyed == built - 1) << built << " " << destroyed;
            }
        }
    };
    rounds();
    tam_install_exception_translator();
    std::thread(rounds).join();
}

TEST(Exception_translator, other_threads_and_earlier_filters_keep_their_ways)
{
    const std::wstring child = L"status_fault_child";
    EXPECT_EQ(test::run_child(child, L"caught"), 80U);
    EXPECT_EQ(test::run_child(child, L"default"), 0xC0000005U);
    EXPECT_EQ(test::run_child(child, L"never_installed"), 70U);
    EXPECT_EQ(test::run_child(child, L"removed"), 70U);
    EXPECT_EQ(test::run_child(child, L"earlier"), 70U);
    EXPECT_EQ(test::run_child(child, L"filter_set_later"), 71U);
    EXPECT_EQ(test::run_child(child, L"returning"), 3U);
}

#ifdef TAM_STATIC
TEST(Exception_translator, installs_when_indexes_are_to_be_had_again)
{
    EXPECT_EQ(test::run_child(L"status_fault_child", L"no_indexes"), 80U);
}
#else
TEST(Exception_translator, unloading_puts_the_earlier_filter_back)
{
    EXPECT_EQ(test::run_child(L"status_unload_child", L""), 0U);
}
#endif
