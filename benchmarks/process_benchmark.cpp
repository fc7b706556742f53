#include <stdexcept>

#include <windows.h>

#include <benchmarks/benchmarks.h>
#include <tam/detail/handle.h>
#include <tam/process/anonymous_pipe.h>
#include <tam/status/status.h>

namespace tam::benchmarks {

namespace {

// What a posted thread message takes.
constexpr unsigned int RECORD_BYTES = 12;
constexpr int RECORDS = 2000;

void check(bool transferred)
{
    if (!transferred) {
        throw std::runtime_error("a record did not come through the pipe");
    }
}

} // namespace

void run_process_benchmarks()
{
    Tam_status status;
    Tam_anonymous_pipe pipe(status);
    check(status.ok());

    HANDLE ends[2] = {};
    check(::CreatePipe(&ends[0], &ends[1], nullptr, 0) != FALSE);
    const detail::Kernel_handle read_end(ends[0]);
    const detail::Kernel_handle write_end(ends[1]);

    unsigned char record[RECORD_BYTES] = {};
    compare({
        .name = "anonymous_pipe/write_and_read/12_bytes",
        .unit = "records",
        .amount = RECORDS,
        .ours =
            [&] {
                for (int i = 0; i < RECORDS; ++i) {
                    check(pipe.write(record, RECORD_BYTES, status) == RECORD_BYTES);
                    check(pipe.read(record, RECORD_BYTES, status) == RECORD_BYTES);
                }
                consume(record);
            },
        .peer_name = "WriteFile, ReadFile",
        .peer =
            [&] {
                DWORD moved = 0;
                for (int i = 0; i < RECORDS; ++i) {
                    check(::WriteFile(write_end.get(), record, RECORD_BYTES, &moved, nullptr) && moved == RECORD_BYTES);
                    check(::ReadFile(read_end.get(), record, RECORD_BYTES, &moved, nullptr) && moved == RECORD_BYTES);
                }
                consume(record);
            },
        .goal = ">= 0.9",
    });
}

} // namespace tam::benchmarks
