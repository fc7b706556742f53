#include <tam/file/file.h>

#include <mutex>
#include <optional>
#include <utility>

#include <windows.h>

#include <sys/stat.h>

#include <tam/datetime/time.h>
#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/file/directory.h>
#include <tam/file/directory_iterator.h>
#include <tam/file/path.h>
#include <tam/file/type.h>
#include <tam/security/security.h>
#include <tam/status/exceptions.h>
#include <tam/text/number.h>
#include <tam/thread/sleep.h>

namespace tam {

namespace {

constexpr const wchar_t* TEMP_NAME_MUTEX = L"Tam_file::temp_name";

DWORD rights_of(Tam_file_access access)
{
    switch (access) {
    case TAM_FILE_READ:
        return GENERIC_READ;
    case TAM_FILE_WRITE:
        return GENERIC_WRITE;
    case TAM_FILE_READ_WRITE:
        return GENERIC_READ | GENERIC_WRITE;
    case TAM_FILE_ALL:
        return GENERIC_ALL;
    }
    return 0;
}

DWORD system_flags_of(unsigned int flags)
{
    constexpr unsigned int ALL_FLAGS = TAM_FILE_WRITE_THROUGH | TAM_FILE_NO_BUFFERING | TAM_FILE_RANDOM_ACCESS |
                                       TAM_FILE_SEQUENTIAL_SCAN | TAM_FILE_DELETE_ON_CLOSE;
    const unsigned int known = flags & ALL_FLAGS;
    const unsigned int lowest = known & (~known + 1);
    switch (lowest) {
    case TAM_FILE_WRITE_THROUGH:
        return FILE_FLAG_WRITE_THROUGH;
    case TAM_FILE_NO_BUFFERING:
        return FILE_FLAG_NO_BUFFERING;
    case TAM_FILE_RANDOM_ACCESS:
        return FILE_FLAG_RANDOM_ACCESS;
    case TAM_FILE_SEQUENTIAL_SCAN:
        return FILE_FLAG_SEQUENTIAL_SCAN;
    case TAM_FILE_DELETE_ON_CLOSE:
        return FILE_FLAG_DELETE_ON_CLOSE;
    default:
        return 0;
    }
}

DWORD system_sharing_of(Tam_file_sharing sharing)
{
    switch (sharing) {
    case TAM_FILE_SHARE_NONE:
        return 0;
    case TAM_FILE_SHARE_READ:
        return FILE_SHARE_READ;
    case TAM_FILE_SHARE_WRITE:
        return FILE_SHARE_WRITE;
    case TAM_FILE_SHARE_READ_WRITE:
        return FILE_SHARE_READ | FILE_SHARE_WRITE;
    }
    return 0;
}

DWORD seek_method_of(Tam_seek_mode mode)
{
    switch (mode) {
    case TAM_SEEK_START:
        return FILE_BEGIN;
    case TAM_SEEK_END:
        return FILE_END;
    default:
        return FILE_CURRENT;
    }
}

// How to open path, or an empty value with the reason against it in status.
std::optional<DWORD> disposition_of(const std::wstring& path, Tam_file_open mode, Tam_file_access access,
                                    Tam_status& status)
{
    if (path.empty()) {
        detail::assign_failure(status, TAM_E_PATH_EMPTY, path);
        return std::nullopt;
    }
    const Tam_type type = tam_type(path);
    if (type != TAM_TYPE_NONE && type != TAM_TYPE_FILE) {
        detail::assign_failure(status, TAM_E_NOT_A_FILE, path);
        return std::nullopt;
    }
    if (mode == TAM_FILE_OPEN_ALWAYS) {
        return OPEN_ALWAYS;
    }
    if (mode == TAM_FILE_OPEN_EMPTY) {
        if (access != TAM_FILE_WRITE && access != TAM_FILE_READ_WRITE && access != TAM_FILE_ALL) {
            detail::assign_failure(status, TAM_E_CREATE_NEEDS_WRITE_ACCESS);
            return std::nullopt;
        }
        return type == TAM_TYPE_FILE ? TRUNCATE_EXISTING : CREATE_NEW;
    }
    if (type == TAM_TYPE_NONE) {
        detail::assign_failure(status, TAM_E_FILE_NOT_FOUND, path);
        return std::nullopt;
    }
    return OPEN_EXISTING;
}

// Reports a failed operation on a file that may be closed. Nothing may come between the call and this.
void push_operation_failure(Tam_status& status, bool open, unsigned int code)
{
    if (open) {
        detail::push_last_error(status, code);
    } else {
        detail::assign_failure(status, TAM_E_FILE_NOT_OPEN);
        detail::push_failure(status, code);
    }
}

void seek_handle(HANDLE file, long long distance, DWORD method, Tam_status& status)
{
    LARGE_INTEGER target;
    target.QuadPart = distance;
    const bool open = file != INVALID_HANDLE_VALUE;
    if (!open || !detail::win32.set_file_pointer_ex(file, target, nullptr, method)) {
        push_operation_failure(status, open, TAM_E_SEEK);
    }
}

// What copy and move demand of their source; false with the reason in status.
bool check_source(const std::wstring& from, const std::wstring& to, Tam_status& status)
{
    if (from.empty() || to.empty()) {
        detail::assign_failure(status, TAM_E_PATH_EMPTY, from.empty() ? from : to);
        return false;
    }
    const Tam_type type = tam_type(from);
    if (type != TAM_TYPE_FILE) {
        detail::assign_failure(status, type == TAM_TYPE_NONE ? TAM_E_FILE_NOT_FOUND : TAM_E_NOT_A_FILE, from);
        return false;
    }
    return true;
}

bool clear_read_only(const std::wstring& path)
{
    const DWORD attributes = detail::win32.get_file_attributes(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    return (attributes & FILE_ATTRIBUTE_READONLY) == 0 ||
           detail::win32.set_file_attributes(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
}

// True when a search found nothing because there is nothing to find.
bool nothing_matches(const Tam_status& search)
{
    const Tam_status* const reason = search.child();
    return search == TAM_E_SEARCH_START && reason != nullptr &&
           (*reason == ERROR_FILE_NOT_FOUND || *reason == ERROR_PATH_NOT_FOUND);
}

} // namespace

Tam_file::Tam_file() : m_mutex(false, nullptr), m_handle(INVALID_HANDLE_VALUE) {}

Tam_file::Tam_file(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
                   Tam_file_sharing sharing, Tam_status& status, Tam_security* security)
    : Tam_file()
{
    open(path, mode, access, flags, sharing, status, security);
}

Tam_file::~Tam_file()
{
    close();
}

void Tam_file::open(const std::wstring& path, Tam_file_open mode, Tam_file_access access, unsigned int flags,
                    Tam_file_sharing sharing, Tam_status& status, Tam_security* security)
{
    status.clear();
    if (is_open()) {
        detail::assign_failure(status, TAM_E_FILE_ALREADY_OPEN);
    } else if (const auto disposition = disposition_of(path, mode, access, status)) {
        DWORD rights = rights_of(access);
        if (*disposition == TRUNCATE_EXISTING) {
            rights |= GENERIC_WRITE; // the system wants to see it by this name, even beside GENERIC_ALL
        }
        SECURITY_ATTRIBUTES* const attributes = security != nullptr ? security->security_attributes(false) : nullptr;
        m_handle = detail::win32.create_file(path.c_str(), rights, system_sharing_of(sharing), attributes, *disposition,
                                             system_flags_of(flags), nullptr);
        if (m_handle == INVALID_HANDLE_VALUE) {
            status = Tam_status::get_last_error();
        }
    }
    if (!status.ok()) {
        detail::push_failure(status, TAM_E_FILE_OPEN, path);
    }
}

void Tam_file::close()
{
    const detail::Kernel_handle closed(std::exchange(m_handle, INVALID_HANDLE_VALUE));
}

bool Tam_file::is_open() const
{
    return m_handle != INVALID_HANDLE_VALUE;
}

void Tam_file::seek(Tam_seek_mode mode, int offset, Tam_status& status)
{
    seek_handle(m_handle, offset, seek_method_of(mode), status);
}

void Tam_file::seek(unsigned long long position, Tam_status& status)
{
    seek_handle(m_handle, static_cast<long long>(position), FILE_BEGIN, status);
}

unsigned long long Tam_file::tell() const
{
    LARGE_INTEGER position{};
    if (!is_open() || !detail::win32.set_file_pointer_ex(m_handle, LARGE_INTEGER{}, &position, DWORD{FILE_CURRENT})) {
        return 0;
    }
    return static_cast<unsigned long long>(position.QuadPart);
}

unsigned long long Tam_file::length() const
{
    LARGE_INTEGER size{};
    if (!is_open() || !detail::win32.get_file_size_ex(m_handle, &size)) {
        return 0;
    }
    return static_cast<unsigned long long>(size.QuadPart);
}

unsigned int Tam_file::read(void* destination, unsigned int count, Tam_status& status)
{
    status.clear();
    DWORD done = 0;
    const bool open = is_open();
    const bool success = open && detail::win32.read_file(m_handle, destination, count, &done, nullptr);
    const bool end = success ? count != 0 : open && ::GetLastError() == ERROR_HANDLE_EOF;
    if (done == 0 && end) {
        detail::assign_failure(status, TAM_E_END_OF_DATA);
    } else if (!success) {
        push_operation_failure(status, open, TAM_E_READ);
    }
    return done;
}

unsigned int Tam_file::write(const void* source, unsigned int count, Tam_status& status)
{
    DWORD done = 0;
    const bool open = is_open();
    if (!open || !detail::win32.write_file(m_handle, source, count, &done, nullptr)) {
        push_operation_failure(status, open, TAM_E_WRITE);
    }
    return done;
}

void Tam_file::flush(Tam_status& status)
{
    const bool open = is_open();
    if (!open || !detail::win32.flush_file_buffers(m_handle)) {
        push_operation_failure(status, open, TAM_E_WRITE);
    }
}

void Tam_file::truncate(Tam_status& status)
{
    if (!detail::win32.set_end_of_file(m_handle)) {
        detail::push_last_error(status, TAM_E_FILE_TRUNCATE);
    }
}

void Tam_file::add_security(Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_FILE, m_handle, status);
}

void Tam_file::create_empty_file(const std::wstring& path, Tam_status& status, bool write_through)
{
    Tam_file().open(path, TAM_FILE_OPEN_EMPTY, TAM_FILE_WRITE, write_through ? TAM_FILE_WRITE_THROUGH : 0U,
                    TAM_FILE_SHARE_NONE, status);
}

void Tam_file::copy(const std::wstring& from, const std::wstring& to, bool overwrite, Tam_status& status)
{
    status.clear();
    if (check_source(from, to, status)) {
        const Tam_type target = tam_type(to);
        if (target == TAM_TYPE_FILE && !overwrite) {
            detail::assign_failure(status, TAM_E_TARGET_EXISTS, to);
        } else if (target != TAM_TYPE_NONE && target != TAM_TYPE_FILE) {
            // The argument is the source although the target is at fault.
            detail::assign_failure(status, TAM_E_NOT_A_FILE, from);
        } else if (!detail::win32.copy_file(from.c_str(), to.c_str(), BOOL{!overwrite})) {
            status = Tam_status::get_last_error();
        }
    }
    if (!status.ok()) {
        detail::push_failure(status, TAM_E_FILE_COPY, from, to);
    }
}

void Tam_file::move(const std::wstring& from, const std::wstring& to, Tam_status& status)
{
    status.clear();
    if (check_source(from, to, status)) {
        if (tam_type(to) != TAM_TYPE_NONE) {
            detail::assign_failure(status, TAM_E_TARGET_EXISTS, to);
        } else if (!detail::win32.move_file(from.c_str(), to.c_str())) {
            status = Tam_status::get_last_error();
        }
    }
    if (!status.ok()) {
        detail::push_failure(status, TAM_E_FILE_MOVE, from, to);
    }
}

void Tam_file::remove(const std::wstring& path, Tam_status& status, bool force)
{
    status.clear();
    if (path.empty()) {
        detail::assign_failure(status, TAM_E_PATH_EMPTY, path);
        return;
    }
    const Tam_path split(path);
    const std::wstring directory = split.root_and_directory();
    Tam_directory_iterator entry(directory, split.filename());
    for (; !entry.end(); ++entry) {
        const std::wstring file = directory + entry->name;
        if ((force && !clear_read_only(file)) || !detail::win32.delete_file(file.c_str())) {
            detail::push_last_error(status, TAM_E_FILE_DELETE, file);
            return;
        }
    }
    if (!entry.status().ok() && !nothing_matches(entry.status())) {
        status = entry.status();
        detail::push_failure(status, TAM_E_FILE_DELETE, path);
    }
}

std::wstring Tam_file::temp_name(const std::wstring& directory, const std::wstring& extension)
{
    Tam_path path(directory, L"*");
    path.extension(extension);
    std::optional<Tam_mutex> turn;
    try {
        Tam_security everyone; // processes of other users take turns as well
        turn.emplace(TEMP_NAME_MUTEX, false, &everyone);
    } catch (const Tam_sys_call_fail&) {
        return {};
    }
    const std::lock_guard guard(*turn);
    std::wstring digits;
    do {
        tam_thread_sleep(1);
        const Tam_time_period now = Tam_time::now();
        tam_itow(now.seconds() % 100'000 * 1'000 + now.microseconds() / 10, digits, 10, false);
        path.base(digits);
    } while (tam_type(path) != TAM_TYPE_NONE);
    return path.text();
}

std::wstring Tam_file::temp_name(const std::wstring& extension)
{
    return temp_name(Tam_directory::temp_directory(), extension);
}

unsigned long long Tam_file::length(const std::wstring& path)
{
    struct _stat64 found;
    return ::_wstat64(path.c_str(), &found) == 0 ? static_cast<unsigned long long>(found.st_size) : 0;
}

} // namespace tam
