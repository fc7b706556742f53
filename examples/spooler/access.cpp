#include "access.h"

#include <windows.h>

#include <tam/security/security.h>

#include "spooler_messages.h"

using namespace tam;

void grant_to_operators(Tam_acl& acl, unsigned int rights, Tam_status& status)
{
    status.clear();
    for (const Tam_standard_trustees trustee :
         {TAM_TRUSTEE_ADMINISTRATORS, TAM_TRUSTEE_LOCAL_SYSTEM, TAM_TRUSTEE_PROCESS_USER}) {
        if (status.ok()) {
            acl.set_rights(trustee, TAM_ACCESS_GRANT, rights, status);
        }
    }
}

void make_folder(const std::wstring& folder, Tam_status& status)
{
    Tam_acl acl;
    grant_to_operators(acl, FILE_ALL_ACCESS, status);
    if (status.ok()) {
        Tam_security security(acl, status);
        SECURITY_ATTRIBUTES* const attributes = security.security_attributes(false);
        // Otherwise what the folder above hands down would be granted too.
        ::SetSecurityDescriptorControl(attributes->lpSecurityDescriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED);
        if (status.ok() && !::CreateDirectoryW(folder.c_str(), attributes)) {
            status = Tam_status::get_last_error();
        }
    }
    if (status == ERROR_ALREADY_EXISTS) {
        status.clear();
    } else if (!status.ok()) {
        status.push(SPOOLER_E_FOLDER, Tam_wstring_status_arg(folder));
    }
}
