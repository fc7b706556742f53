#pragma once

#include <string>

#include <tam/tam.h>

// Grants all rights to those who run the service, and to nobody else: administrators, the system, and the user of this
// process. status is cleared first.
void grant_to_operators(tam::Tam_security& security, tam::Tam_status& status);

// Makes a folder for them alone. One that exists keeps its access list, which an administrator may have changed.
// status is cleared first; on failure SPOOLER_E_FOLDER (folder) is on top.
void make_folder(const std::wstring& folder, tam::Tam_status& status);
