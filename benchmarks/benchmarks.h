#pragma once

#include <cstddef>
#include <functional>

namespace tam::benchmarks {

/// One comparison: the library's way beside another way to the same result, in the same run.
struct Comparison {
    const char* name;           ///< what is moved or made: "readln/lf/60_bytes"
    const char* unit;           ///< what amount counts: "lines"
    double amount;              ///< how much one run moves
    std::function<void()> ours; ///< one run of the library
    const char* peer_name;      ///< "std::getline"
    std::function<void()> peer; ///< one run of the other way
    const char* goal;           ///< the ratio aimed at, as text: ">= 1.0, stretch 1.5"
    double peer_amount = 0;     ///< how much one run of the other way moves, when that is less than amount
};

/// Runs both ways in turn, several times after a warm-up, and prints a row: amount per second of both (medians) and the
/// ratio ours / peer of the speeds, above 1 when the library is faster.
void compare(const Comparison& comparison);

/// Prints a row with a figure that has no peer.
void report(const char* name, double value, const char* unit, const char* goal);

/// Keeps the optimiser from dropping what computed the value.
void consume(const void* value);

// One function a source file of this folder.
void run_text_benchmarks();
void run_datetime_benchmarks();
void run_status_benchmarks();
void run_stream_benchmarks();
void run_page_buffer_benchmarks();
void run_crc32_benchmarks();
void run_profile_benchmarks();
void run_registry_benchmarks();
void run_process_benchmarks();
void run_thread_benchmarks();
void run_security_benchmarks();
void run_regex_benchmarks();

} // namespace tam::benchmarks
