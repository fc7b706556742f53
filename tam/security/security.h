#pragma once

#include <concepts>
#include <memory>
#include <string>

#include <windows.h>

#include <tam/detail/export.h>

namespace tam {

class Tam_acl;
class Tam_status;

namespace detail {
struct Security_access;
}

/// Kinds of objects whose access a Tam_security can edit.
enum Tam_sec_obj_type : unsigned int {
    TAM_SEC_OBJ_FILE = 0,         ///< file or directory
    TAM_SEC_OBJ_KERNEL = 1,       ///< event, mutex, pipe, thread, process ...
    TAM_SEC_OBJ_REGISTRY_KEY = 2, ///< registry key; the name of a root is "MACHINE", "CURRENT_USER", "USERS" ...
    TAM_SEC_OBJ_SERVICE = 3,      ///< service
};

/// A security descriptor whose discretionary access list decides who may use an object.
///
/// It serves two purposes. Every class of the library that creates a kernel object for its caller takes an optional
/// Tam_security* and creates the object with its security_attributes(). And once associated with an existing object,
/// by handle or by name, it is the editor of that object's access.
///
/// **Copies are shallow.** The copy constructor and the assignment take over the pointers to the descriptor and to its
/// list; source and copy then share both, and each releases both when it is destroyed. So of a copied pair one must
/// never be destroyed, and none may fetch another descriptor while the other is in use. An assignment does not release
/// what its target held before. Pass a Tam_security by reference or pointer.
///
/// An object has no lock. Several threads may create objects with one Tam_security at the same time, as long as all of
/// them ask for the same inherit flag and nothing else is done with it.
class TAM_API Tam_security {
public:
    /// A descriptor with a null list, which grants every user full access, and no association.
    /// @throws Tam_sys_call_fail  "::InitializeSecurityDescriptor", also when there was no memory for it, or
    ///                            "::SetSecurityDescriptorDacl"
    Tam_security();

    /// The same where open is true; else a descriptor with an empty list, which grants nobody anything: an object that is
    /// created with it can be used by its owner alone, and only to change its access.
    /// @param status  cleared first; TAM_E_OUT_OF_MEMORY (0xC2000001) or TAM_E_DACL_SET (0xC2000077) over the system's
    ///                reason when the list could not be set: **then the descriptor still grants every user full access**
    /// @throws Tam_sys_call_fail  as the default constructor; also "::InitializeAcl"
    Tam_security(bool open, Tam_status& status);

    /// A descriptor with a copy of the list, and no association. A list that holds none (see Tam_acl) grants every user
    /// full access.
    /// @param status  what set_disc_acl() reports: then the descriptor grants every user full access
    /// @throws Tam_sys_call_fail  as the default constructor
    Tam_security(const Tam_acl& acl, Tam_status& status);

    /// Shares everything but the association's name with other: see the class.
    Tam_security(const Tam_security& other) = default;

    /// Shares everything but the association's name with other, and drops what this object held: see the class.
    Tam_security& operator=(const Tam_security& other) = default;

    /// Releases the descriptor and its list, shared or not.
    ~Tam_security();

    /// What the platform's creating calls take. It stays this object's own and points at the descriptor of the moment.
    /// @param inherit  whether child processes inherit the handle that the call creates; kept until the next call
    SECURITY_ATTRIBUTES* security_attributes(bool inherit);

    /// Makes this object the editor of the access of the object of that name. The object is not touched yet.
    /// @param type    what kind of object has the name
    /// @param status  not cleared; becomes TAM_E_ALREADY_ASSOCIATED (0xC2000078) when there is an association already,
    ///                which is kept
    /// @throws std::invalid_argument  "Invalid argument to Tam_security::map_object_type()": type is none of
    ///                                Tam_sec_obj_type; nothing is associated
    void associate_with_object(Tam_sec_obj_type type, const std::wstring& name, Tam_status& status);

    /// The same for a name in an array of characters, which would become a handle otherwise.
    template <std::same_as<wchar_t> Character>
    void associate_with_object(Tam_sec_obj_type type, const Character* name, Tam_status& status)
    {
        associate_with_object(type, std::wstring(name), status);
    }

    /// Makes this object the editor of the access of the object with this handle. The object is not touched yet; the
    /// handle stays the caller's and must be open when the access is read or set.
    /// @param type    what kind of object the handle belongs to
    /// @param status  not cleared; becomes TAM_E_SECURITY_HANDLE (0xC2000075) when handle is null or the invalid
    ///                handle value (all bits set), else TAM_E_ALREADY_ASSOCIATED (0xC2000078) when there is an
    ///                association already; the association stays as it was
    /// @throws std::invalid_argument  "Invalid argument to Tam_security::map_object_type()": type is none of
    ///                                Tam_sec_obj_type; nothing is associated
    void associate_with_object(Tam_sec_obj_type type, void* handle, Tam_status& status);

    /// Makes a copy of acl the list of the descriptor, and of the associated object if there is one.
    ///
    /// With an association the object's descriptor of the moment is fetched first and takes the place of this object's
    /// own. After a failure the descriptor and its list are those from before the call.
    ///
    /// An acl that holds no list grants every user full access; an empty one grants nobody anything.
    /// @param merge   true: the entries that the descriptor has already are added to those of acl, as Tam_acl::merge()
    ///                does: they lose what they say about inheritance, and where both have an entry of one mode for one
    ///                trustee it becomes one. A descriptor that grants every user full access, having no list, has no
    ///                entries: only those of acl grant anything afterwards
    /// @param status  cleared first; in this order
    ///   - TAM_E_OUT_OF_MEMORY (0xC2000001)
    ///   - TAM_E_OBJECT_SECURITY_READ (0xC2000079) over the system's reason: the object's descriptor could not be fetched
    ///   - TAM_E_DACL_READ (0xC2000076) over the system's reason, or what Tam_acl::merge() reports, with merge only
    ///   - TAM_E_DACL_SET (0xC2000077) over the system's reason: the descriptor did not take the list
    ///   - TAM_E_OBJECT_SECURITY_WRITE (0xC200007A) over the system's reason: the object did not take it
    /// @throws Tam_sys_call_fail  "::InitializeSecurityDescriptor": the fetched descriptor could not be converted
    void set_disc_acl(const Tam_acl& acl, Tam_status& status, bool merge);

    /// A copy of the descriptor's list, which the caller deletes with `delete`. With an association the object's
    /// descriptor of the moment is fetched first and takes the place of this object's own.
    ///
    /// Null and a good status: there is no list, and everybody has full access. Null and a bad one: a failure.
    /// @param status  cleared first; in this order
    ///   - TAM_E_OBJECT_SECURITY_READ (0xC2000079) over the system's reason: the object's descriptor could not be
    ///     fetched; the earlier one stays
    ///   - TAM_E_DACL_READ (0xC2000076) over the system's reason
    ///   - TAM_E_OUT_OF_MEMORY (0xC2000001)
    /// @throws Tam_sys_call_fail  "::InitializeSecurityDescriptor": the fetched descriptor could not be converted; the
    ///                            earlier one stays
    Tam_acl* get_disc_acl(Tam_status& status);

    /// The system list, which says what is audited, is not supported, on purpose.
    /// @throws std::runtime_error  always: "Tam_security::set_sec_acl not implemented"
    void set_sec_acl(const Tam_acl& acl, Tam_status& status, bool merge);

    /// The same.
    /// @throws std::runtime_error  always: "Tam_security::get_sec_acl not implemented"
    Tam_acl* get_sec_acl(Tam_status& status);

private:
    friend struct detail::Security_access;

    enum class Association : unsigned int { NONE = 0, HANDLE = 1, NAME = 2 };

    void free_sd() noexcept;
    void initialise_security_descriptor();
    void get_security_descriptor(Tam_status& status);
    void set_security_descriptor(Tam_status& status) const;
    static unsigned int map_object_type(Tam_sec_obj_type type);
    static void* sr_to_absolute(void* const descriptor, Tam_status& status);

    void* _fetch_descriptor(Tam_status& status) const;
    void* _query_service(Tam_status& status) const;
    void* _query_object(Tam_status& status) const;
    void _set_list(std::unique_ptr<Tam_acl> acl, bool merge, Tam_status& status);
    void _write_descriptor(void* descriptor, Tam_status& status) const;
    void _adopt_descriptor(void* descriptor) noexcept;

    // Every member is copied as it is: see the class.
    void* m_descriptor = nullptr;       // owned, in local memory, in absolute form
    SECURITY_ATTRIBUTES m_attributes{}; // points at m_descriptor
    Association m_association = Association::NONE;
    unsigned int m_object_type = 0; // an SE_OBJECT_TYPE
    void* m_object_handle = nullptr;
    std::wstring m_object_name;
    Tam_acl* m_acl = nullptr; // owned; the list that the descriptor points at, or null
};

} // namespace tam
