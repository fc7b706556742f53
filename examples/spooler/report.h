#pragma once

#include <functional>
#include <string>

#include <tam/status/status.h>
#include <tam/thread/critical.h>

// Takes one line of text, without a line end.
using Line_sink = std::function<void(const std::wstring& line)>;

// Gives the whole chain of a status to sink as text, the newest status first and its reasons below it, indented.
void describe(const tam::Tam_status& status, const Line_sink& sink);

// Whether the status or one of its reasons has that code.
bool is_caused_by(const tam::Tam_status& status, unsigned int code);

// Prints what describe() gives to standard error.
void print(const tam::Tam_status& status);

// Loads the texts of this program's statuses and the library's. Without them statuses are shown by their numbers.
void load_messages();

// Where everything goes that the service has to say: to the event log and, when there is a console, to standard error.
// Any thread may report.
class Report {
public:
    Report(const std::wstring& event_source, bool console);
    ~Report();
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    void operator()(const tam::Tam_status& status) const;

private:
    void* m_log; // null when it could not be opened
    const bool m_console;
    mutable tam::Tam_critical m_print_lock; // keeps the lines of one status together
};
