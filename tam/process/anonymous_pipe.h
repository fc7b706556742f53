#pragma once

#include <atomic>

#include <tam/detail/export.h>

namespace tam {

class Tam_security;
class Tam_status;

/// An unnamed one-way pipe inside a process: what is written at its one end is read at the other, in that order.
///
/// The ends are meant for different threads: a reader waits until a writer has written, a writer of a full pipe until
/// the reader has read. Several threads may write at the same time: what one call writes stays together, so that
/// records of one size arrive whole at a reader who asks for that size. Which thread comes first is not promised.
///
/// Both ends belong to the object and close together, in the destructor; so a reader that waits is not woken by the end
/// of its writers, and no thread may be inside a call when the object is destroyed. Child processes do not inherit the
/// ends. The object can be neither copied nor moved.
class TAM_API Tam_anonymous_pipe {
public:
    /// Makes the pipe.
    /// @param status    cleared first; TAM_E_PIPE_CREATE (0xC200003F) when the pipe could not be made. It stands alone,
    ///                  without the system's reason. The object then has no ends.
    /// @param size      bytes that the pipe is to hold before writing waits, a hint to the system; 0 lets it choose
    /// @param security  gives the pipe's security and is not kept; null means the process's default
    explicit Tam_anonymous_pipe(Tam_status& status, unsigned int size = 0, Tam_security* security = nullptr);

    Tam_anonymous_pipe(const Tam_anonymous_pipe&) = delete;
    Tam_anonymous_pipe& operator=(const Tam_anonymous_pipe&) = delete;

    /// Closes the write end, then the read end.
    ~Tam_anonymous_pipe();

    /// Writes size bytes, waiting for room as long as it takes.
    /// @param status  cleared first; the code stands alone, without the system's reason
    ///   - TAM_E_PIPE_NO_WRITE_END (0xC2000042)  the pipe could not be made
    ///   - TAM_E_PIPE_WRITE (0xC2000041)         writing failed
    /// @return bytes written
    unsigned int write(const unsigned char* data, unsigned int size, Tam_status& status);

    /// Reads what is in the pipe, at most size bytes, waiting as long as it takes for the first one.
    /// @param status  cleared first; the code stands alone, without the system's reason
    ///   - TAM_E_PIPE_NO_WRITE_END_TO_READ (0xC2000044)  the write end is not open. The write end is what is tested,
    ///     although the other one is read: without a writer the wait would have no end.
    ///   - TAM_E_PIPE_READ (0xC2000043)                  reading failed, also when there is no read end
    /// @return bytes read
    unsigned int read(unsigned char* data, unsigned int size, Tam_status& status);

    /// Associates security with the read end, as a kernel object, and when that went well with the write end. One
    /// Tam_security has one association, so the second step always reports: after a success with the read end, and
    /// with that association kept, status is TAM_E_ALREADY_ASSOCIATED.
    /// @param status  cleared first; then what associating reports
    ///   - TAM_E_SECURITY_HANDLE (0xC2000075)     the pipe could not be made
    ///   - TAM_E_ALREADY_ASSOCIATED (0xC2000078)  otherwise
    void add_security(Tam_security& security, Tam_status& status);

private:
    friend class Tam_thread;

    // Lets go a reader that waits, with a failure.
    void _close_write_end() noexcept;

    void* m_read = nullptr;              // owned; null when there is no pipe
    std::atomic<void*> m_write{nullptr}; // owned; null when there is no pipe or the end was closed
};

} // namespace tam
