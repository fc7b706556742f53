#include <benchmarks/benchmarks.h>

#include <tam/status/status.h>

namespace tam::benchmarks {

namespace {

constexpr int ROUNDS = 20'000'000;

// What a clear status may cost: a word that is set, tested and thrown away.
struct Bare_code {
    unsigned int code = 0;
    bool ok() const { return (code & Tam_status::SEVERITY_MASK) != Tam_status::ERROR_SEVERITY; }
};

template <class Status>
void create_test_destroy()
{
    unsigned int good = 0;
    for (int i = 0; i < ROUNDS; ++i) {
        const Status status;
        asm volatile("" : : "r"(&status) : "memory");
        good += status.ok() ? 1U : 0U;
    }
    consume(&good);
}

} // namespace

void run_status_benchmarks()
{
    compare({"status/clear/create_test_destroy", "statuses", ROUNDS, create_test_destroy<Tam_status>, "a bare code",
             create_test_destroy<Bare_code>, "no allocation, lock or call"});
}

} // namespace tam::benchmarks
