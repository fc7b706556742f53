#include <tam/file/file_buffer.h>

#include <mutex>
#include <new>

#include <tam/detail/failure.h>
#include <tam/thread/sleep.h>

namespace tam {

namespace {

using detail::Held_file;

void open_file(Held_file& held, const std::wstring& path, Tam_file_open mode, Tam_file_access access,
               unsigned int flags, Tam_file_sharing sharing, Tam_status& status)
{
    if (held.file != nullptr) {
        detail::assign_failure(status, TAM_E_HAS_FILE);
        return;
    }
    held.file = new (std::nothrow) Tam_file;
    if (held.file == nullptr) {
        detail::assign_failure(status, TAM_E_OUT_OF_MEMORY);
        return;
    }
    held.owns = true;
    held.file->open(path, mode, access, flags, sharing, status);
}

void attach_file(Held_file& held, Tam_file& file, Tam_status& status)
{
    status.clear();
    if (held.file != nullptr) {
        detail::assign_failure(status, TAM_E_HAS_FILE);
        return;
    }
    held = {&file, false, {}};
}

void close_file(Held_file& held)
{
    if (held.owns) {
        delete held.file;
    }
    held = {};
}

// Clears status; false and TAM_E_NO_FILE when there is no file.
bool check_file(const Held_file& held, Tam_status& status)
{
    status.clear();
    if (held.file == nullptr) {
        detail::assign_failure(status, TAM_E_NO_FILE);
        return false;
    }
    return true;
}

// Moves the file there, unless that is where it is.
bool move_to(const Held_file& held, unsigned long long position, Tam_status& status)
{
    if (held.position == position) {
        return true;
    }
    held.position.reset();
    held.file->seek(position, status);
    return status.ok();
}

// Notes where the file stands after an operation; nobody knows after one that failed.
void set_position(const Held_file& held, unsigned long long position, const Tam_status& status)
{
    held.position.reset();
    if (held.owns && status.ok()) {
        held.position = position;
    }
}

void seek_file(const Held_file& held, Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status)
{
    if (!check_file(held, status)) {
        return;
    }
    held.position.reset();
    if (mode == TAM_SEEK_START || mode == TAM_SEEK_END) {
        held.file->seek(mode, offset, status);
    } else {
        const long long base = static_cast<unsigned int>(position); // the low 32 bits alone
        held.file->seek(static_cast<unsigned long long>(base + offset), status);
    }
    if (status.ok()) {
        position = held.file->tell();
    }
}

unsigned int read_file(const Held_file& held, unsigned long long& position, unsigned int count, void* destination,
                       Tam_status& status)
{
    if (!check_file(held, status)) {
        return 0;
    }
    if (!move_to(held, position, status)) {
        return 0;
    }
    const unsigned int done = held.file->read(destination, count, status);
    position += done;
    set_position(held, position, status);
    return done;
}

void write_file(const Held_file& held, unsigned long long& position, unsigned int count, const void* source,
                Tam_status& status)
{
    if (!check_file(held, status) || count == 0) {
        return;
    }
    if (!move_to(held, position, status)) {
        return;
    }
    const unsigned int done = held.file->write(source, count, status);
    position += done;
    set_position(held, position, status);
    if (done < count && status.ok()) {
        detail::assign_failure(status, TAM_E_WRITE);
    }
}

} // namespace

Tam_file_buffer::Tam_file_buffer() = default;

Tam_file_buffer::Tam_file_buffer(const std::wstring& path, Tam_file_open mode, Tam_file_access access,
                                 unsigned int flags, Tam_file_sharing sharing, Tam_status& status)
    : Tam_file_buffer()
{
    open(path, mode, access, flags, sharing, status);
}

Tam_file_buffer::Tam_file_buffer(Tam_file& file, Tam_status& status) : Tam_file_buffer()
{
    attach(file, status);
}

Tam_file_buffer::~Tam_file_buffer()
{
    close();
}

void Tam_file_buffer::open(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
                           Tam_file_sharing sharing, Tam_status& status)
{
    open_file(m_held, path, mode, access, flags, sharing, status);
}

void Tam_file_buffer::attach(Tam_file& file, Tam_status& status)
{
    attach_file(m_held, file, status);
}

void Tam_file_buffer::close()
{
    close_file(m_held);
}

void Tam_file_buffer::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    seek_file(m_held, mode, offset, position, status);
}

unsigned int Tam_file_buffer::read(bool, unsigned long long& position, unsigned int count, void* destination,
                                   Tam_status& status) const
{
    return read_file(m_held, position, count, destination, status);
}

void Tam_file_buffer::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    write_file(m_held, position, count, source, status);
}

Tam_file_buffer_mt::Tam_file_buffer_mt() : m_guard(false, nullptr) {}

Tam_file_buffer_mt::Tam_file_buffer_mt(const std::wstring& path, Tam_file_open mode, Tam_file_access access,
                                       unsigned int flags, Tam_file_sharing sharing, Tam_status& status)
    : Tam_file_buffer_mt()
{
    open(path, mode, access, flags, sharing, status);
}

Tam_file_buffer_mt::Tam_file_buffer_mt(Tam_file& file, Tam_status& status) : Tam_file_buffer_mt()
{
    attach(file, status);
}

Tam_file_buffer_mt::~Tam_file_buffer_mt()
{
    close();
}

void Tam_file_buffer_mt::open(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
                              Tam_file_sharing sharing, Tam_status& status)
{
    open_file(m_held, path, mode, access, flags, sharing, status);
}

void Tam_file_buffer_mt::attach(Tam_file& file, Tam_status& status)
{
    attach_file(m_held, file, status);
}

void Tam_file_buffer_mt::close()
{
    close_file(m_held);
}

void Tam_file_buffer_mt::disconnect_ostream()
{
    const std::lock_guard guard(m_guard);
    Tam_buffer::disconnect_ostream();
}

void Tam_file_buffer_mt::seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const
{
    const std::lock_guard guard(m_guard);
    seek_file(m_held, mode, offset, position, status);
}

unsigned int Tam_file_buffer_mt::read(bool wait, unsigned long long& position, unsigned int count, void* destination,
                                      Tam_status& status) const
{
    std::unique_lock guard(m_guard);
    for (;;) {
        const unsigned int done = read_file(m_held, position, count, destination, status);
        // The file's end is where the writer has got to. It cannot write or leave between the read and this look at it.
        if (status != TAM_E_END_OF_DATA || !wait || num_ostream() == 0) {
            return done;
        }
        guard.unlock();
        tam_thread_yield();
        guard.lock();
    }
}

void Tam_file_buffer_mt::write(unsigned long long& position, unsigned int count, const void* source, Tam_status& status)
{
    const std::lock_guard guard(m_guard);
    write_file(m_held, position, count, source, status);
}

} // namespace tam
