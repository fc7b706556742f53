// Runs the jobs of a profile file, each in a thread of its own, and reports what happens as statuses.
//
//     run_jobs FILE
//
// A section is a job:
//
//     [Nightly report]
//     Program = C:\Services\report.exe    ; the path of the program; the search path is not searched
//     Arguments = --all "D:\My Data"      ; quoted as the program wants to see them; none when missing
//     Timeout = 60000                     ; milliseconds, after which a run is terminated; 60000 when missing
//     Repeat = 3                          ; how many runs; 1 when missing
//     Period = 1000                       ; milliseconds between the starts of two runs; 0 when missing: at once
//
// (A comment is a line of its own in a real file.) The texts of the reports are in the message module
// run_jobs_messages.dll, made from run_jobs.mc. Exit code 0; 1 when a job failed; 2 when called wrongly.

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <io.h>

#include <tam/tam.h>

using namespace tam;

namespace {

enum Exit_code { DONE = 0, FAILED = 1, WRONG_USAGE = 2 };

// The codes of run_jobs.mc. Facility 0x300 is this program's.
constexpr unsigned int JOB_STARTED = 0x43000001;         // job, program, arguments
constexpr unsigned int JOB_ENDED = 0x43000002;           // job
constexpr unsigned int JOB_EXIT_CODE = 0x83000003;       // job, exit code
constexpr unsigned int JOB_TERMINATED = 0xC3000004;      // job, time-out in milliseconds
constexpr unsigned int JOB_NOT_RUN = 0xC3000005;         // job
constexpr unsigned int JOB_SETTING = 0xC3000006;         // job, key, value
constexpr unsigned int JOB_WITHOUT_PROGRAM = 0xC3000007; // job

struct Job {
    std::wstring name;
    std::wstring program;
    std::wstring arguments;
    unsigned int time_out = 60'000;
    unsigned int repeat = 1;
    unsigned int period = 0;
    bool failed = false;
};

Tam_wstring_status_arg text(const std::wstring& value)
{
    return {value};
}

Tam_uint_status_arg number(unsigned int value)
{
    return {value, false};
}

// Any thread reports; the lines of one report stay together. Newest first, with the reasons indented below.
void report(const Tam_status& status)
{
    static Tam_critical one_at_a_time;
    const std::lock_guard guard(one_at_a_time);
    std::wstring line;
    std::wstring indent;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, line);
        tam_trim(line);
        std::fputws((indent + line + L"\n").c_str(), status.ok() ? stdout : stderr);
        indent = L"    ";
    }
    std::fflush(stdout);
}

// One run of a job, on the job's thread. Returns whether to go on.
bool run_once(void* argument)
{
    Job& job = *static_cast<Job*>(argument);
    report(Tam_status(JOB_STARTED, text(job.name), text(job.program), text(job.arguments)));
    Tam_status status;
    Tam_process process(job.program, job.arguments, {Tam_process_details::BACKGROUND, true, job.time_out}, status);
    if (status == TAM_E_PROCESS_TIME_OUT) {
        Tam_status end;
        process.terminate(end);
        if (!end.ok()) {
            status.push(end);
        }
        status.push(JOB_TERMINATED, text(job.name), number(job.time_out));
    } else if (status.ok()) {
        const auto exit_code = static_cast<unsigned int>(process.get_exit_code(status));
        if (status.ok() && exit_code == 0) {
            status.push(JOB_ENDED, text(job.name));
        } else if (status.ok()) {
            job.failed = true;
            status.push(JOB_EXIT_CODE, text(job.name), number(exit_code));
        }
    }
    if (!status.ok()) {
        job.failed = true;
        if (status != JOB_TERMINATED) {
            status.push(JOB_NOT_RUN, text(job.name));
        }
    }
    report(status);
    return true;
}

// All runs of a job: the function of its thread.
void run_job(void* argument)
{
    Job& job = *static_cast<Job*>(argument);
    if (job.period == 0) {
        for (unsigned int run = 0; run < job.repeat; ++run) {
            run_once(&job);
        }
        return;
    }
    Tam_timer timer;
    Tam_status status;
    timer.init(run_once, job.period, status, job.repeat, &job);
    if (!status.ok()) {
        job.failed = true;
        report(status);
    }
}

void take_number(const Job& job, const std::pair<std::wstring, std::wstring>& entry, unsigned int lowest,
                 unsigned int& number, Tam_status& status)
{
    const bool valid = tam_is_int32(entry.second) && tam_wtoi32(entry.second) >= static_cast<int>(lowest);
    if (valid) {
        number = static_cast<unsigned int>(tam_wtoi32(entry.second));
    } else {
        status.assign(JOB_SETTING, text(job.name), text(entry.first), text(entry.second));
    }
}

Job read_job(Tam_profile_reader& reader, const std::wstring& name, Tam_status& status)
{
    Job job;
    job.name = name;
    reader.set_current_section(name, status);
    std::pair<std::wstring, std::wstring> entry;
    while (status.ok() && !reader.end_of_entries()) {
        reader.get_current_entry(entry, status);
        if (tam_string_equal_nc(entry.first, L"Program")) {
            job.program = entry.second;
        } else if (tam_string_equal_nc(entry.first, L"Arguments")) {
            job.arguments = entry.second;
        } else if (tam_string_equal_nc(entry.first, L"Timeout")) {
            take_number(job, entry, 0, job.time_out, status);
        } else if (tam_string_equal_nc(entry.first, L"Repeat")) {
            take_number(job, entry, 1, job.repeat, status);
        } else if (tam_string_equal_nc(entry.first, L"Period")) {
            take_number(job, entry, 0, job.period, status);
        }
        if (status.ok()) {
            reader.move_to_next_entry(status);
        }
    }
    if (status.ok() && job.program.empty()) {
        status.assign(JOB_WITHOUT_PROGRAM, text(name));
    }
    return job;
}

std::vector<Job> read_jobs(const std::wstring& file, Tam_status& status)
{
    std::vector<Job> jobs;
    Tam_profile_reader reader(file, status);
    Tam_object_vector<std::wstring> names;
    if (status.ok()) {
        reader.get_section_list(names, status);
    }
    for (const std::wstring& name : names) {
        if (status.ok()) {
            jobs.push_back(read_job(reader, name, status));
        }
    }
    return jobs;
}

// Runs all jobs side by side; false when one failed.
bool run_all(std::vector<Job>& jobs)
{
    bool done = true;
    std::vector<std::unique_ptr<Tam_thread>> threads;
    for (Job& job : jobs) {
        Tam_status status;
        threads.push_back(std::make_unique<Tam_thread>(run_job, &job, status, false, 0U, nullptr));
        if (!status.ok()) {
            status.push(JOB_NOT_RUN, text(job.name));
            report(status);
            threads.pop_back();
            done = false;
        }
    }
    for (const std::unique_ptr<Tam_thread>& thread : threads) {
        Tam_status status;
        thread->wait(status);
        if (thread->state() == TAM_THREAD_FAILED) {
            thread->get_failed_status(status);
        }
        if (!status.ok()) {
            report(status);
            done = false;
        }
    }
    for (const Job& job : jobs) {
        done = done && !job.failed;
    }
    return done;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    _setmode(_fileno(stderr), _O_U8TEXT);
    if (argc != 2) {
        std::fputws(L"usage: run_jobs FILE\n", stderr);
        return WRONG_USAGE;
    }
    for (const wchar_t* module : {L"run_jobs_messages.dll", L"tam_messages.dll"}) {
        Tam_status status;
        Tam_messages_list::m_global_messages.add(module, status);
        if (!status.ok()) {
            report(status);
        }
    }
    Tam_status status;
    std::vector<Job> jobs = read_jobs(argv[1], status);
    if (!status.ok()) {
        report(status);
        return FAILED;
    }
    return run_all(jobs) ? DONE : FAILED;
}
