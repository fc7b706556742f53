#pragma once

// What the service and its client say to each other through the pipe, in UTF-16: the client sends its request, one line
// that ends with LF. The service answers with one of the two words below, each a line too, any number of lines of text,
// and a zero at the end. Then the client closes its end.
namespace protocol {

constexpr wchar_t DONE[] = L"done\n";
constexpr wchar_t FAILED[] = L"failed\n";
constexpr wchar_t END = L'\0';                    // of an answer
constexpr unsigned int REQUEST_LIMIT = 256;       // units, the line end included
constexpr unsigned int ANSWER_LIMIT = 256 * 1024; // bytes
constexpr int JOURNAL_LIMIT = 100;                // lines; each takes less than a kilobyte

} // namespace protocol
