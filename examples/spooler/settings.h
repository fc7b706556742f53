#pragma once

#include <string>

#include <tam/tam.h>

// What the service works with. A profile file gives it:
//
//     [Spooler]
//     Folder = D:\Spool      ; where the folders and the journal are, see spooler.h
//     Workers = 4            ; threads that digest files, 1 to 16
//     Period = 250           ; milliseconds from one look at the folder to the next, 20 to 5000
//     ClientLimit = 5000     ; milliseconds that a client of the pipe may take, 100 to 60000
//
// (A comment is a line of its own in a real file.) The registry parameters of the service, texts of the same names,
// override what the profile says.
struct Settings {
    std::wstring folder; // with a backslash at its end
    unsigned int workers = 4;
    unsigned int period = 250;
    unsigned int client_limit = 5000;
};

// status is cleared first. On failure SPOOLER_E_SETTINGS (profile) lies on top of what is wrong with them.
Settings read_settings(const std::wstring& profile, const std::wstring& service, tam::Tam_status& status);
