#pragma once

#include <string>

#include <tam/detail/export.h>

namespace tam {

class Tam_security;
class Tam_status;

/// What a Tam_named_pipe_server is made with. Brace initialisation in this order of fields is part of the interface:
/// `{Tam_pipe_server_options::BOTH_WAYS, false, false, 4096, 4096, 1000, 1}`.
struct Tam_pipe_server_options {
    // Values of access_mode.
    static constexpr unsigned int OUTBOUND = 0;  ///< the server writes, the client reads
    static constexpr unsigned int INBOUND = 1;   ///< the server reads, the client writes
    static constexpr unsigned int BOTH_WAYS = 2; ///< both write and read

    /// The value of maximum_instances for as many as the system can hold.
    static constexpr unsigned int UNLIMITED_INSTANCES = 255;

    /// Who writes and who reads: one of the three above.
    unsigned int access_mode = OUTBOUND;

    /// Writing to a client on another machine waits until the data has arrived there.
    bool write_through = false;

    /// A thread can write while another one reads; otherwise the system makes one wait for the other. Each transfer
    /// still waits until it is done.
    bool overlapped = false;

    /// Bytes that clients have room to write before the server reads; a hint to the system. 0: the system may make
    /// each write wait for its reader.
    unsigned int input_buffer_size = 0;

    /// Bytes that the server has room to write before the client reads; likewise.
    unsigned int output_buffer_size = 0;

    /// In milliseconds: how long the system's call that waits for a free instance waits when its caller leaves that to
    /// the pipe. Tam_named_pipe_client does not wait for one. 0 stands for the system's 50.
    unsigned int default_time_out = 0;

    /// How many servers there can be of this name at the same time, 1 to 254, or UNLIMITED_INSTANCES. The first of the
    /// name decides.
    unsigned int maximum_instances = 1;
};

/// What a Tam_named_pipe_client is made with: `{Tam_pipe_client_options::BOTH}`.
struct Tam_pipe_client_options {
    // Values of access_mode.
    static constexpr unsigned int READ = 0;  ///< the client reads
    static constexpr unsigned int WRITE = 1; ///< the client writes
    static constexpr unsigned int BOTH = 2;  ///< both

    /// No more than the server's access mode gives the client, or it is refused.
    unsigned int access_mode = READ;
};

/// What the two ends of a named pipe have in common: they write to and read from each other.
///
/// A pipe carries bytes without any limits of messages. In both operations the count stands before the buffer, the
/// reverse of Tam_anonymous_pipe.
///
/// An end has no lock. One thread may write while another one reads; with an end that was not made for overlapped
/// operation the system makes one of them wait for the other. The object can be neither copied nor moved.
class TAM_API Tam_named_pipe {
public:
    Tam_named_pipe(const Tam_named_pipe&) = delete;
    Tam_named_pipe& operator=(const Tam_named_pipe&) = delete;

    /// Writes count bytes, waiting for room as long as it takes.
    ///
    /// A transfer that fails is not reported in the status: the returned count is short of what was asked for.
    /// @param status  not cleared; becomes TAM_E_NAMED_PIPE_NONE (0xC200004D) when the pipe could not be made or opened
    /// @return bytes written; 0 when the other end is gone, when there is none yet, and when this end may not write
    unsigned int write(unsigned int count, const unsigned char* data, Tam_status& status) const;

    /// Reads what has arrived, at most count bytes, waiting as long as it takes for the first one.
    ///
    /// A transfer that fails is not reported in the status: the returned count is 0.
    /// @param status  not cleared; becomes TAM_E_NAMED_PIPE_NONE (0xC200004D) when the pipe could not be made or opened
    /// @return bytes read; 0 when the other end is gone and all that it wrote has been read, when there is none yet,
    ///         and when this end may not read
    unsigned int read(unsigned int count, unsigned char* data, Tam_status& status) const;

protected:
    Tam_named_pipe() noexcept = default;

    /// Closes the handle.
    ~Tam_named_pipe();

    /// Runs one operation of the platform on the pipe and waits for its end. start gets where to store the count of
    /// bytes and what the platform's calls take for overlapped operation. The result is the count.
    template <class Start>
    unsigned int _run(Start start) const;

    void* m_handle = nullptr;  ///< owned; null when the pipe could not be made or opened
    bool m_overlapped = false; ///< of the handle
};

/// The server's end of a named pipe, for one client after the other's end of it is opened.
///
/// An object is one instance of the pipe and serves one client in its life; another client needs another object of the
/// same name, and the options' maximum of instances must allow for both while both live.
class TAM_API Tam_named_pipe_server : public Tam_named_pipe {
public:
    /// Makes an instance of the pipe. Clients can open it at once, before wait_for_client.
    /// @param name      any characters but a backslash, without regard to case; the system's name is `\\.\pipe\name`
    /// @param options   see there; an access mode that is none of those fails with the system's invalid parameter (87)
    /// @param status    not cleared; on failure the system's reason, on top of it TAM_E_NAMED_PIPE_CREATE (0xC200004C),
    ///                  and the object has no pipe
    /// @param security  gives the pipe's security and is not kept; null means the process's default
    Tam_named_pipe_server(const std::wstring& name, const Tam_pipe_server_options& options, Tam_status& status,
                          Tam_security* security = nullptr);

    /// Waits, without a limit, until the client has read everything or is gone, disconnects it and closes the pipe.
    ~Tam_named_pipe_server();

    /// Waits, as long as it takes, until a client has opened the pipe; returns at once when one has done so already.
    ///
    /// The result of the wait is not examined: a return with a good status does not prove that there is a client. None
    /// is there after the client came and went, and the next transfer tells so by its count.
    /// @param status  cleared first; TAM_E_NAMED_PIPE_NONE (0xC200004D) when the pipe could not be made
    void wait_for_client(Tam_status& status) const;

    /// Associates security with this end, as a kernel object. Its list can be read through that. Setting one is refused
    /// by the system (5), since the handle of a pipe does not include the right to change its access: give the
    /// constructor the security instead.
    /// @param status  cleared first
    ///   - TAM_E_SECURITY_HANDLE (0xC2000075)     the pipe could not be made
    ///   - TAM_E_ALREADY_ASSOCIATED (0xC2000078)  security has an association already
    void add_security(Tam_security& security, Tam_status& status);
};

/// The client's end of a named pipe.
class TAM_API Tam_named_pipe_client : public Tam_named_pipe {
public:
    /// Opens the pipe `\\server\pipe\name`, which must exist and have an instance without a client. It does not
    /// wait for one: the system's reason is "file not found" (2) when there is no pipe of the name and "pipe busy"
    /// (231) when all its instances have clients.
    /// @param server   name of the machine; a single dot is this one
    /// @param name     without regard to case
    /// @param options  see there; an access mode that is none of those fails with the system's invalid parameter (87)
    /// @param status   cleared first; on failure the system's reason, on top of it TAM_E_NAMED_PIPE_OPEN (0xC200004E),
    ///                 and the object has no pipe
    Tam_named_pipe_client(const std::wstring& server, const std::wstring& name, const Tam_pipe_client_options& options,
                          Tam_status& status);

    /// Closes this end. What it wrote can still be read.
    ~Tam_named_pipe_client();
};

} // namespace tam
