#include "access.h"

#include <windows.h>

#include "spooler_messages.h"

using namespace tam;

//! [access]
void grant_to_operators(Tam_security& security, Tam_status& status)
{
    Tam_acl acl;
    status.clear();
    for (const Tam_standard_trustees trustee :
         {TAM_TRUSTEE_ADMINISTRATORS, TAM_TRUSTEE_LOCAL_SYSTEM, TAM_TRUSTEE_PROCESS_USER}) {
        if (status.ok()) {
            acl.set_rights(trustee, TAM_ACCESS_GRANT, FILE_ALL_ACCESS, status);
        }
    }
    if (status.ok()) {
        security.set_disc_acl(acl, status, false);
    }
}
//! [access]

void make_folder(const std::wstring& folder, Tam_status& status)
{
    Tam_security security;
    grant_to_operators(security, status);
    SECURITY_ATTRIBUTES* const attributes = security.security_attributes(false);
    // Otherwise what the folder above hands down would be granted too.
    ::SetSecurityDescriptorControl(attributes->lpSecurityDescriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED);
    if (status.ok() && !::CreateDirectoryW(folder.c_str(), attributes)) {
        status = Tam_status::get_last_error();
    }
    if (status == ERROR_ALREADY_EXISTS) {
        status.clear();
    } else if (!status.ok()) {
        status.push(SPOOLER_E_FOLDER, Tam_wstring_status_arg(folder));
    }
}
