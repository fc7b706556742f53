#pragma once

#include <string>

#include <windows.h>

#include <tam/container/object_vector.h>
#include <tam/detail/sid.h>
#include <tam/security/acl.h>
#include <tam/status/status.h>

// Accounts, their security identifiers and their groups. None of these functions clears its status; memory that runs out
// in naming an account or collecting its groups is std::bad_alloc.

namespace tam::detail {

// The identifier of a trustee. Null: status has TAM_E_SID on top, beneath it TAM_E_TOKEN_OPEN or TAM_E_TOKEN_USER
// (needed length) where the current user is concerned, then the reason.
// Throws std::invalid_argument for a value that is none of the trustees.
Owned_sid create_sid(Tam_standard_trustees trustee, Tam_status& status);

// The identifier of the account of that name, by the local machine's knowledge. Null: status has TAM_E_SID on top of the
// reason.
Owned_sid create_sid(const std::wstring& name, Tam_status& status);

// Replaces name by the account's, "DOMAIN\name" or "name". Where the identifier belongs to no account, that is the text
// for such accounts and use becomes SidTypeUnknown. A failure sets status and leaves name as it was.
void sid_to_name(void* sid, std::wstring& name, Tam_status& status, SID_NAME_USE* use = nullptr);

// Appends the names of the groups of a user account, as this machine and the domain controller of the account's domain
// know them. A failure sets status; groups then has what was read until there.
void add_group_names(const std::wstring& name, Tam_object_vector<std::wstring>& groups, Tam_status& status);

} // namespace tam::detail
