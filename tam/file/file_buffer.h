#pragma once

#include <optional>
#include <string>

#include <tam/detail/export.h>
#include <tam/file/file.h>
#include <tam/file/open_mode.h>
#include <tam/status/status.h>
#include <tam/stream/buffer.h>
#include <tam/stream/seek_mode.h>
#include <tam/thread/mutex.h>

namespace tam {

namespace detail {

// The file of a file buffer. Null: the buffer has none.
struct Held_file {
    Tam_file* file = nullptr;
    bool owns = false; // whether the buffer opened the file itself, and destroys it
    // The file's own position where it is known: nobody else moves that of a file that the buffer opened.
    mutable std::optional<unsigned long long> position;
};

} // namespace detail

/// Presents a file as a buffer, for streams to read and write.
///
/// The buffer either opens a file of its own or is attached to a file of the caller's, which must outlive it or be
/// given up by close(). Operations move the file's own position.
///
/// One thread at a time uses a file buffer; Tam_file_buffer_mt is the twin for several. Operations clear their status
/// first. Those that need a file report TAM_E_NO_FILE (0xC2000031) without one; failures of the file pass through as
/// Tam_file reports them.
class TAM_API Tam_file_buffer : public Tam_buffer {
public:
    /// A buffer without a file.
    Tam_file_buffer();

    /// Opens the file as open() does.
    Tam_file_buffer(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
                    Tam_file_sharing sharing, Tam_status& status);

    /// Attaches the file as attach() does.
    Tam_file_buffer(Tam_file& file, Tam_status& status);

    /// Closes and destroys a file of its own; leaves an attached one open.
    ~Tam_file_buffer() override;

    Tam_file_buffer(const Tam_file_buffer&) = delete;
    Tam_file_buffer& operator=(const Tam_file_buffer&) = delete;

    /// Opens a file of the buffer's own, with the arguments of Tam_file::open and no security.
    ///
    /// The buffer then holds the file even when opening it failed: reads report TAM_E_FILE_NOT_OPEN (0xC2000028), and
    /// close() comes before the next attempt.
    /// @param status  TAM_E_HAS_FILE (0xC2000032): there is a file already, which stays; TAM_E_OUT_OF_MEMORY
    ///                (0xC2000001); else what Tam_file::open reports
    void open(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
              Tam_file_sharing sharing, Tam_status& status);

    /// Uses the caller's file.
    /// @param status  TAM_E_HAS_FILE (0xC2000032): there is a file already, which stays
    void attach(Tam_file& file, Tam_status& status);

    /// Gives up the file: one of the buffer's own is closed and destroyed, an attached one stays open. Nothing happens
    /// without a file.
    void close();

    /// Moves position by offset bytes from where mode says; any mode but TAM_SEEK_START and TAM_SEEK_END counts as
    /// TAM_SEEK_CURRENT. Past the end of the file is allowed.
    ///
    /// TAM_SEEK_CURRENT counts from the low 32 bits of position, taken as unsigned. From 4 GiB on, a caller moves
    /// position itself.
    /// @param status  on failure, position is unchanged
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position and moves position past them.
    /// @param wait  ignored
    /// @param status  TAM_E_END_OF_DATA (0xC2000019): nothing was left to read
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// Writes count bytes at position and moves position past what was written.
    /// @param status  also TAM_E_WRITE (0xC200001A): the system wrote less, without an error of its own
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    detail::Held_file m_held;
};

/// Tam_file_buffer for several threads: one reads while another writes, and a reader can wait for the writer.
///
/// A mutex is held throughout seek, read, write and disconnect_ostream. open, attach and close take no lock: they come
/// before and after the threads.
class TAM_API Tam_file_buffer_mt : public Tam_buffer {
public:
    /// As the operations of Tam_file_buffer.
    Tam_file_buffer_mt();
    Tam_file_buffer_mt(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
                       Tam_file_sharing sharing, Tam_status& status);
    Tam_file_buffer_mt(Tam_file& file, Tam_status& status);
    ~Tam_file_buffer_mt() override;

    Tam_file_buffer_mt(const Tam_file_buffer_mt&) = delete;
    Tam_file_buffer_mt& operator=(const Tam_file_buffer_mt&) = delete;

    /// As the operations of Tam_file_buffer.
    void open(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
              Tam_file_sharing sharing, Tam_status& status);
    void attach(Tam_file& file, Tam_status& status);
    void close();

    /// Takes back a connect_ostream. A reader that waits at the end of the data sees all that was written before.
    void disconnect_ostream() override;

    /// As Tam_file_buffer::seek.
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override;

    /// Reads up to count bytes at position and moves position past them.
    /// @param wait    at the end of the data, yield the processor and try again for as long as an output stream is
    ///                connected
    /// @param status  TAM_E_END_OF_DATA (0xC2000019): nothing was left to read, and nothing to wait for
    /// @return the bytes delivered
    unsigned int read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override;

    /// As Tam_file_buffer::write.
    void write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status) override;

private:
    mutable Tam_mutex m_guard;
    detail::Held_file m_held;
};

} // namespace tam
