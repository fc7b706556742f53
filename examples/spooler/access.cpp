#include "access.h"

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
