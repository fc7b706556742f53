#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include <benchmarks/benchmarks.h>

namespace tam::benchmarks {

namespace {

constexpr int RUNS = 7;

double seconds_of(const std::function<void()>& run)
{
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + RUNS / 2, values.end());
    return values[RUNS / 2];
}

} // namespace

void compare(const Comparison& comparison)
{
    comparison.ours();
    comparison.peer();
    std::vector<double> ours;
    std::vector<double> peer;
    for (int run = 0; run < RUNS; ++run) {
        ours.push_back(seconds_of(comparison.ours));
        peer.push_back(seconds_of(comparison.peer));
    }
    const double our_rate = comparison.amount / median(ours);
    const double peer_rate = (comparison.peer_amount != 0 ? comparison.peer_amount : comparison.amount) / median(peer);
    std::printf("%-34s %12.4g %12.4g %-10s %6.2f   %-28s %s\n", comparison.name, our_rate, peer_rate, comparison.unit,
                our_rate / peer_rate, comparison.peer_name, comparison.goal);
    std::fflush(stdout);
}

void report(const char* name, double value, const char* unit, const char* goal)
{
    std::printf("%-34s %12.4g %12s %-10s %6s   %-28s %s\n", name, value, "", unit, "", "", goal);
    std::fflush(stdout);
}

void consume(const void* value)
{
    asm volatile("" : : "r"(value) : "memory");
}

} // namespace tam::benchmarks

int main(int argc, char** argv)
{
    using namespace tam::benchmarks;
    const std::pair<const char*, void (*)()> groups[] = {
        {"status", run_status_benchmarks},           {"text", run_text_benchmarks},
        {"datetime", run_datetime_benchmarks},       {"thread", run_thread_benchmarks},
        {"process", run_process_benchmarks},         {"security", run_security_benchmarks},
        {"registry", run_registry_benchmarks},       {"stream", run_stream_benchmarks},
        {"page_buffer", run_page_buffer_benchmarks}, {"crc32", run_crc32_benchmarks},
        {"profile", run_profile_benchmarks},         {"regex", run_regex_benchmarks},
    };
    std::printf("%-34s %12s %12s %-10s %6s   %-28s %s\n", "what", "tam /s", "peer /s", "unit", "ratio", "peer", "goal");
    for (const auto& [name, run] : groups) {
        if (argc < 2 || std::any_of(argv + 1, argv + argc,
                                    [name = name](const char* wanted) { return std::strcmp(wanted, name) == 0; })) {
            run();
        }
    }
}
