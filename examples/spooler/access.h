#pragma once

#include <tam/security/acl.h>
#include <tam/status/status.h>

// Grants the rights to those who run the service: administrators, the system, and the user of this process.
void grant_to_operators(tam::Tam_acl& acl, unsigned int rights, tam::Tam_status& status);
