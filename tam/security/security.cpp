#include <tam/security/security.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include <windows.h>

#include <accctrl.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/security/acl.h>
#include <tam/status/exceptions.h>
#include <tam/status/status.h>

namespace tam {

namespace {

// In the order of Tam_sec_obj_type.
constexpr SE_OBJECT_TYPE OBJECT_TYPES[] = {SE_FILE_OBJECT, SE_KERNEL_OBJECT, SE_REGISTRY_KEY, SE_SERVICE};

// Spares most services the second query.
constexpr DWORD FIRST_SERVICE_QUERY_BYTES = 512;

void initialise_descriptor(void* memory)
{
    // The platform's call would write through a null pointer.
    if (memory == nullptr || !detail::win32.initialize_security_descriptor(memory, SECURITY_DESCRIPTOR_REVISION)) {
        throw Tam_sys_call_fail("::InitializeSecurityDescriptor");
    }
}

// A descriptor's discretionary list: none at all is another thing than a null one, but either has no entries.
struct Disc_list {
    bool present = false;
    ACL* list = nullptr;
};

// False: status has the reason.
bool read_list(void* descriptor, Disc_list& result, Tam_status& status)
{
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* list = nullptr;
    if (!detail::win32.get_security_descriptor_dacl(descriptor, &present, &list, &defaulted)) {
        detail::push_last_error(status, TAM_E_DACL_READ);
        return false;
    }
    result = {present != FALSE, present ? list : nullptr};
    return true;
}

} // namespace

Tam_security::Tam_security()
{
    initialise_security_descriptor();
}

Tam_security::Tam_security(bool open, Tam_status& status) : Tam_security()
{
    detail::run(status, [&] {
        if (!open) {
            _set_list(std::make_unique<Tam_acl>(), false, status);
        }
    });
}

Tam_security::Tam_security(const Tam_acl& acl, Tam_status& status) : Tam_security()
{
    set_disc_acl(acl, status, false);
}

Tam_security::~Tam_security()
{
    delete m_acl;
    free_sd();
}

SECURITY_ATTRIBUTES* Tam_security::security_attributes(bool inherit)
{
    const BOOL flag = inherit ? TRUE : FALSE;
    // No write without need: objects that several threads share stay unchanged.
    if (m_attributes.bInheritHandle != flag) {
        m_attributes.bInheritHandle = flag;
    }
    return &m_attributes;
}

void Tam_security::associate_with_object(Tam_sec_obj_type type, const std::wstring& name, Tam_status& status)
{
    if (m_association != Association::NONE) {
        detail::assign_failure(status, TAM_E_ALREADY_ASSOCIATED);
        return;
    }
    const unsigned int object_type = map_object_type(type);
    m_object_name = name;
    m_object_type = object_type;
    m_association = Association::NAME;
}

void Tam_security::associate_with_object(Tam_sec_obj_type type, void* handle, Tam_status& status)
{
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        detail::assign_failure(status, TAM_E_SECURITY_HANDLE);
        return;
    }
    if (m_association != Association::NONE) {
        detail::assign_failure(status, TAM_E_ALREADY_ASSOCIATED);
        return;
    }
    m_object_type = map_object_type(type);
    m_object_handle = handle;
    m_association = Association::HANDLE;
}

void Tam_security::set_disc_acl(const Tam_acl& acl, Tam_status& status, bool merge)
{
    detail::run(status, [&] {
        auto copy = std::make_unique<Tam_acl>(acl, status);
        if (status.ok()) {
            _set_list(std::move(copy), merge, status);
        }
    });
}

Tam_acl* Tam_security::get_disc_acl(Tam_status& status)
{
    std::unique_ptr<Tam_acl> copy;
    detail::run(status, [&] {
        get_security_descriptor(status);
        Disc_list found;
        if (status.ok() && read_list(m_descriptor, found, status) && found.list != nullptr) {
            copy.reset(new Tam_acl(found.list, status)); // of a private constructor
        }
    });
    return status.ok() ? copy.release() : nullptr;
}

void Tam_security::set_sec_acl(const Tam_acl&, Tam_status&, bool)
{
    throw std::runtime_error("Tam_security::set_sec_acl not implemented");
}

Tam_acl* Tam_security::get_sec_acl(Tam_status&)
{
    throw std::runtime_error("Tam_security::get_sec_acl not implemented");
}

void Tam_security::free_sd() noexcept
{
    ::LocalFree(m_descriptor);
    m_descriptor = nullptr;
    m_attributes.lpSecurityDescriptor = nullptr;
}

// The members stand as the class declares them: no association, no list, attributes without a descriptor.
void Tam_security::initialise_security_descriptor()
{
    m_attributes.nLength = sizeof m_attributes;
    detail::Local_memory descriptor(detail::win32.local_alloc(LMEM_FIXED, SECURITY_DESCRIPTOR_MIN_LENGTH));
    initialise_descriptor(descriptor.get());
    if (!detail::win32.set_security_descriptor_dacl(descriptor.get(), TRUE, nullptr, FALSE)) {
        throw Tam_sys_call_fail("::SetSecurityDescriptorDacl");
    }
    _adopt_descriptor(descriptor.release());
}

// Fetches the associated object's descriptor and makes it this object's own. The earlier one stays when that fails.
void Tam_security::get_security_descriptor(Tam_status& status)
{
    void* const descriptor = _fetch_descriptor(status);
    if (descriptor != nullptr) {
        _adopt_descriptor(descriptor);
        delete std::exchange(m_acl, nullptr);
    }
}

void Tam_security::set_security_descriptor(Tam_status& status) const
{
    _write_descriptor(m_descriptor, status);
}

// Writes the descriptor's list, if it has one, to the associated object.
void Tam_security::_write_descriptor(void* descriptor, Tam_status& status) const
{
    Disc_list found;
    if (m_association == Association::NONE || !read_list(descriptor, found, status) || !found.present) {
        return;
    }
    const auto type = static_cast<SE_OBJECT_TYPE>(m_object_type);
    DWORD error = ERROR_SUCCESS;
    if (m_association == Association::NAME) {
        // The call takes a name that it does not change.
        error = detail::win32.set_named_security_info(const_cast<wchar_t*>(m_object_name.c_str()), type,
                                                      DACL_SECURITY_INFORMATION, nullptr, nullptr, found.list, nullptr);
    } else if (type == SE_SERVICE) {
        if (!detail::win32.set_service_object_security(static_cast<SC_HANDLE>(m_object_handle),
                                                       DACL_SECURITY_INFORMATION, descriptor)) {
            error = ::GetLastError();
        }
    } else {
        error = detail::win32.set_security_info(m_object_handle, type, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                                found.list, nullptr);
    }
    if (error != ERROR_SUCCESS) {
        detail::push_system_error(status, error, TAM_E_OBJECT_SECURITY_WRITE);
    }
}

unsigned int Tam_security::map_object_type(Tam_sec_obj_type type)
{
    if (type >= std::size(OBJECT_TYPES)) {
        throw std::invalid_argument("Invalid argument to Tam_security::map_object_type()");
    }
    return OBJECT_TYPES[type];
}

// A copy of a self-relative descriptor in absolute form: one block of local memory, which the caller owns, with the
// discretionary list, the system list, the owner and the group behind the descriptor. Null: status has the reason.
void* Tam_security::sr_to_absolute(void* const descriptor, Tam_status& status)
{
    DWORD sizes[5] = {};
    // Can only fail, as there is no room yet; what counts is whether it tells the sizes.
    if (!detail::win32.make_absolute_sd(descriptor, nullptr, &sizes[0], nullptr, &sizes[1], nullptr, &sizes[2], nullptr,
                                        &sizes[3], nullptr, &sizes[4]) &&
        ::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        status = Tam_status::get_last_error();
        return nullptr;
    }
    std::size_t total = 0;
    for (const DWORD size : sizes) {
        total += size;
    }
    detail::Local_memory block(detail::win32.local_alloc(LMEM_FIXED, total));
    if (!block) {
        detail::assign_failure(status, TAM_E_OUT_OF_MEMORY);
        return nullptr;
    }
    initialise_descriptor(block.get());
    auto* const start = static_cast<std::byte*>(block.get());
    std::byte* const discretionary = start + sizes[0];
    std::byte* const system = discretionary + sizes[1];
    std::byte* const owner = system + sizes[2];
    std::byte* const group = owner + sizes[3];
    if (!detail::win32.make_absolute_sd(descriptor, start, &sizes[0], reinterpret_cast<ACL*>(discretionary), &sizes[1],
                                        reinterpret_cast<ACL*>(system), &sizes[2], owner, &sizes[3], group,
                                        &sizes[4])) {
        status = Tam_status::get_last_error();
        return nullptr;
    }
    return block.release();
}

// The associated object's descriptor in absolute form, in local memory that the caller owns. Null when there is no
// association, and when status reports a failure.
void* Tam_security::_fetch_descriptor(Tam_status& status) const
{
    if (m_association == Association::NONE) {
        return nullptr;
    }
    const bool service = m_association == Association::HANDLE && m_object_type == SE_SERVICE;
    void* const descriptor = service ? _query_service(status) : _query_object(status);
    if (descriptor == nullptr) {
        detail::push_failure(status, TAM_E_OBJECT_SECURITY_READ);
    }
    return descriptor;
}

void* Tam_security::_query_service(Tam_status& status) const
{
    DWORD size = FIRST_SERVICE_QUERY_BYTES;
    for (;;) {
        const detail::Local_memory answer(detail::win32.local_alloc(LMEM_FIXED, SIZE_T{size}));
        if (!answer) {
            detail::assign_failure(status, TAM_E_OUT_OF_MEMORY);
            return nullptr;
        }
        DWORD needed = 0;
        if (detail::win32.query_service_object_security(static_cast<SC_HANDLE>(m_object_handle),
                                                        DACL_SECURITY_INFORMATION, answer.get(), size, &needed)) {
            return sr_to_absolute(answer.get(), status);
        }
        const DWORD error = ::GetLastError();
        // The descriptor can grow between two queries, so each may name another size.
        if (error != ERROR_INSUFFICIENT_BUFFER || needed <= size) {
            status = error;
            return nullptr;
        }
        size = needed;
    }
}

void* Tam_security::_query_object(Tam_status& status) const
{
    const auto type = static_cast<SE_OBJECT_TYPE>(m_object_type);
    ACL* list = nullptr;
    void* fetched = nullptr;
    const DWORD error =
        m_association == Association::NAME
            ? detail::win32.get_named_security_info(m_object_name.c_str(), type, DACL_SECURITY_INFORMATION, nullptr,
                                                    nullptr, &list, nullptr, &fetched)
            : detail::win32.get_security_info(m_object_handle, type, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                                              nullptr, &fetched);
    const detail::Local_memory descriptor(fetched);
    if (error != ERROR_SUCCESS) {
        status = error;
        return nullptr;
    }
    if (!descriptor) {
        // Seen with names of kernel objects. Nothing is known about the object's access then: not even that all may.
        status = static_cast<unsigned int>(ERROR_INVALID_SECURITY_DESCR);
        return nullptr;
    }
    return sr_to_absolute(descriptor.get(), status);
}

// Makes acl, and with merge what the descriptor has already, the list of the associated object and of this one. All or
// nothing: until the object has taken the list, it lies in a fetched descriptor and not in this object's own.
void Tam_security::_set_list(std::unique_ptr<Tam_acl> acl, bool merge, Tam_status& status)
{
    detail::Local_memory fetched(_fetch_descriptor(status));
    if (!status.ok()) {
        return;
    }
    void* const descriptor = fetched ? fetched.get() : m_descriptor;
    if (merge) {
        Disc_list earlier;
        if (!read_list(descriptor, earlier, status)) {
            return;
        }
        const Tam_acl entries(earlier.list, status);
        if (status.ok()) {
            acl->merge(entries, status);
        }
        if (!status.ok()) {
            return;
        }
    }
    if (!detail::win32.set_security_descriptor_dacl(descriptor, TRUE, acl->get_list(), FALSE)) {
        detail::push_last_error(status, TAM_E_DACL_SET);
        return;
    }
    if (fetched) {
        _write_descriptor(descriptor, status);
        if (!status.ok()) {
            return;
        }
        _adopt_descriptor(fetched.release());
    }
    delete std::exchange(m_acl, acl.release());
}

void Tam_security::_adopt_descriptor(void* descriptor) noexcept
{
    free_sd();
    m_descriptor = descriptor;
    m_attributes.lpSecurityDescriptor = descriptor;
}

} // namespace tam
