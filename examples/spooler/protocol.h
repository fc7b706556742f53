#pragma once

// What the service and its client say to each other through the pipe. All of it is UTF-16, and a line ends with LF. The
// client sends one line, its request. The service answers with lines of text, each behind a blank, and a last line DONE or
// FAILED without one. Then the client closes its end.
namespace protocol {

constexpr wchar_t DONE[] = L"done";
constexpr wchar_t FAILED[] = L"failed";
constexpr unsigned int REQUEST_LIMIT = 256; // units, the line end included

} // namespace protocol
