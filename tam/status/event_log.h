#pragma once

/// @file
/// Statuses as records of the system's application event log.
///
/// A service registers its message module once, when it is installed, and reports through a source that it opens:
///
///     tam_register_resources(L"Mail gateway", L"C:\\Gateway\\tam_messages.dll", status);
///
///     void* const log = tam_open_syslog(L"Mail gateway", status);
///     tam_report_to_syslog(log, 0, failure, true, status);
///     tam_close_syslog(log, status);
///
/// A record holds the status's value as its event identifier and the texts of the status's arguments. The event viewer
/// makes text of them with the message module that is registered for the source, so that module must have the same
/// message identifiers as the ones in the program's message catalogue.
///
/// Any number of threads may use a source at once.

#include <string>

#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

/// Opens an event source of this machine's log.
/// @return what the other operations take, to be closed with tam_close_syslog(); null on failure
/// @param status  cleared first; on failure the system's error with TAM_E_EVENT_SOURCE_OPEN (0xC2000007; source) on top
[[nodiscard]] TAM_API void* tam_open_syslog(const std::wstring& source, Tam_status& status);

/// Closes an event source. Null is ignored.
/// @param status  unchanged on success; else the system's error with TAM_E_EVENT_SOURCE_CLOSE (0xC2000008) on top
TAM_API void tam_close_syslog(void* handle, Tam_status& status);

/// Writes a status, or with whole_chain every status of its chain, as records: the oldest first, so that the most
/// specific one is the last in the log.
///
/// A record's type follows from the severity: information for success and information, warning for a warning, error for
/// everything else. A failure does not keep the records after it from being written.
/// @param category  of the source's own choosing; only the low 16 bits count
/// @param report    may be the same object as status
/// @param status    unchanged on success. For the last record that could not be written, the system's error with
///                  TAM_E_EVENT_REPORT (0xC2000009) on top; but a status that is not ok before the call changes only for
///                  the very last record, that of report itself.
TAM_API void tam_report_to_syslog(void* handle, unsigned int category, const Tam_status& report, bool whole_chain,
                                  Tam_status& status);

/// Adds a message module to those of an event source, which is registered when it is not yet.
///
/// The list is the path value EventMessageFile of the source's key below
/// `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\EventLog\Application`, with ";" between the entries. An entry
/// that is the path in other letter case counts as the path; then nothing is written. An empty list becomes ";" and the
/// path. A value that cannot be read, such as one of another type than REG_EXPAND_SZ or of more than 1024 bytes, is
/// replaced: it becomes the path alone.
/// @param path    of the module; one with a ";" in it is never found in the list
/// @param status  cleared first; what tam_set_reg_path_value() reports
/// @throws std::invalid_argument  "Event source name is empty.", "Event resource path is empty."; nothing is touched
TAM_API void tam_register_resources(const std::wstring& source, const std::wstring& path, Tam_status& status);

/// Removes a message module from those of an event source: the first entry that is the path but for letter case. Without
/// one nothing is written. Otherwise the list is written anew, without empty entries, and also when it is empty now. The
/// source stays registered.
/// @param status  cleared first; what tam_get_reg_path_value() and tam_set_reg_path_value() report
/// @throws std::invalid_argument  "Event source name is empty.", "Event resource path is empty."; nothing is touched
TAM_API void tam_deregister_resources(const std::wstring& source, const std::wstring& path, Tam_status& status);

} // namespace tam
