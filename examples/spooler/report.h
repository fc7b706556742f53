#pragma once

#include <exception>
#include <string>

#include <tam/tam.h>

#include "spooler_messages.h"

// The modules with the texts of this program's statuses and the library's; they lie beside the program.
constexpr const wchar_t* MESSAGE_MODULES[] = {L"spooler_messages.dll", L"tam_messages.dll"};

// Loads them for describe(). Without them statuses are shown by their numbers.
void load_messages();

// The whole chain of a status as text, a line each: the newest status first and its reasons below it, indented.
std::wstring describe(const tam::Tam_status& status);

// Prints that to standard error.
void print(const tam::Tam_status& status);

// Whether the status or one of its reasons has that code.
bool is_caused_by(const tam::Tam_status& status, unsigned int code);

// Where everything goes that the service has to say: to the event log and, when there is a console, to standard error.
// Any thread may report.
class Report {
public:
    Report(const std::wstring& event_source, bool console);
    ~Report();

    void operator()(const tam::Tam_status& status) const;

    // Takes a step of a thread. An exception ends the step and not the process; it is reported.
    template <class Step>
    void guard(const Step& step) const
    {
        try {
            step();
        } catch (const std::exception& error) { // such as no memory
            (*this)({SPOOLER_E_EXCEPTION, tam::Tam_wstring_status_arg(std::string(error.what()))});
        }
    }

private:
    void* m_log; // null when it could not be opened
    const bool m_console;
    mutable tam::Tam_critical m_print_lock; // keeps the lines of one status together
};
