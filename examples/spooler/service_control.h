#pragma once

#include <string>

#include <tam/tam.h>

// The side of the service that faces the service control manager. status is cleared first in all of these; profile is a
// full path, and without a meaning where the installed service has it.

// Enters the program into the list of services, to be started with the system, and its texts into the event log.
void install_service(const std::wstring& name, const std::wstring& profile, tam::Tam_status& status);

// Takes back install_service(). A service that has not stopped goes on until it does.
void remove_service(const std::wstring& name, const std::wstring& profile, tam::Tam_status& status);

// Starts or stops the installed service, and waits until it has come so far.
void start_service(const std::wstring& name, const std::wstring& profile, tam::Tam_status& status);
void stop_service(const std::wstring& name, const std::wstring& profile, tam::Tam_status& status);

// Runs as the service of that name, when the service control manager has started this process.
void run_as_service(const std::wstring& name, const std::wstring& profile, tam::Tam_status& status);
