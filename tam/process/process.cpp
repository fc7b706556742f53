#include <tam/process/process.h>

#include <cstdint>
#include <utility>

#include <windows.h>

#include <process.h>

#include <tam/detail/failure.h>
#include <tam/detail/win32.h>
#include <tam/status/status.h>

namespace tam {

namespace {

constexpr std::intptr_t SPAWN_FAILED = -1;

bool runs_to_completion(unsigned int mode)
{
    return mode == Tam_process_details::COMPLETE || mode == Tam_process_details::COMPLETE_ALSO;
}

// The run-time library joins the arguments of a child with blanks and quotes nothing.
std::wstring zeroth_argument(const std::wstring& program)
{
    return program.find(L' ') == std::wstring::npos ? program : L'"' + program + L'"';
}

} // namespace

// Delegates, so that the handle is closed when reporting a time-out runs out of memory.
Tam_process::Tam_process(const std::wstring& program, const std::wstring& arguments, const Tam_process_details& details,
                         Tam_status& status)
    : Tam_process()
{
    start_process(program, arguments, details, status);
}

Tam_process::Tam_process(Tam_process&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr)),
      m_program(std::move(other.m_program)),
      m_arguments(std::move(other.m_arguments)),
      m_exit_code(other.m_exit_code),
      m_mode(other.m_mode),
      m_background(std::exchange(other.m_background, false))
{}

Tam_process& Tam_process::operator=(Tam_process&& other) noexcept
{
    if (this != &other) {
        _close();
        m_handle = std::exchange(other.m_handle, nullptr);
        m_program = std::move(other.m_program);
        m_arguments = std::move(other.m_arguments);
        m_exit_code = other.m_exit_code;
        m_mode = other.m_mode;
        m_background = std::exchange(other.m_background, false);
    }
    return *this;
}

Tam_process::~Tam_process()
{
    _close();
}

void Tam_process::start_process(const std::wstring& program, const std::wstring& arguments,
                                const Tam_process_details& details, Tam_status& status)
{
    status.clear();
    m_mode = details.mode;
    m_program = program;
    m_arguments = arguments;
    if (m_background && is_running()) {
        detail::assign_failure(status, TAM_E_PROCESS_STILL_RUNNING);
        detail::push_failure(status, TAM_E_PROCESS_START, program);
        return;
    }
    const std::wstring zeroth = zeroth_argument(program);
    _close();
    if (runs_to_completion(details.mode)) {
        const std::intptr_t result = ::_wspawnl(_P_WAIT, program.c_str(), zeroth.c_str(), arguments.c_str(), nullptr);
        // Not examined. The exit code is the low half; some run-time libraries leave the high half clear.
        m_exit_code = static_cast<unsigned long long>(static_cast<std::int32_t>(result));
    } else if (details.mode == Tam_process_details::BACKGROUND) {
        const std::wstring command_line = zeroth + L' ' + arguments;
        const std::intptr_t result = ::_wspawnl(_P_NOWAIT, program.c_str(), command_line.c_str(), nullptr);
        // errno adds nothing: it is set by each failure, and by some run-time libraries after a success too.
        if (result == SPAWN_FAILED) {
            detail::assign_failure(status, TAM_E_PROCESS_START, program);
        } else {
            m_handle = reinterpret_cast<HANDLE>(result);
            m_background = true;
        }
    } else {
        detail::assign_failure(status, TAM_E_PROCESS_START, program);
    }
    if (details.wait && status.ok()) {
        wait(status, details.time_out);
    }
}

void Tam_process::wait(Tam_status& status, unsigned long long milliseconds) const
{
    status.clear();
    if (m_handle != nullptr &&
        detail::win32.wait_for_single_object(m_handle, static_cast<DWORD>(milliseconds)) == WAIT_TIMEOUT) {
        detail::assign_failure(status, TAM_E_PROCESS_TIME_OUT, m_program, m_arguments);
    }
}

bool Tam_process::is_running() const
{
    return m_handle != nullptr && detail::win32.wait_for_single_object(m_handle, 0) == WAIT_TIMEOUT;
}

void Tam_process::terminate(Tam_status& status) const
{
    if (m_handle != nullptr && !detail::win32.terminate_process(m_handle, 0)) {
        detail::push_last_error(status, TAM_E_PROCESS_TERMINATE, m_program);
    }
}

unsigned long long Tam_process::get_exit_code(Tam_status& status) const
{
    if (runs_to_completion(m_mode)) {
        return m_exit_code;
    }
    if (is_running()) {
        detail::assign_failure(status, TAM_E_PROCESS_RUNNING, m_program);
        return m_exit_code;
    }
    DWORD code = 0;
    if (!detail::win32.get_exit_code_process(m_handle, &code)) {
        detail::push_last_error(status, TAM_E_PROCESS_EXIT_CODE, m_program);
    }
    return code;
}

void Tam_process::_close() noexcept
{
    m_background = false;
    const HANDLE handle = std::exchange(m_handle, nullptr);
    if (handle != nullptr) {
        ::CloseHandle(handle);
    }
}

} // namespace tam
