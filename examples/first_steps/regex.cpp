// Searches a log: for names in a text, for lines in a stream, and with a pattern that is wrong.
//
// Prints:
//     user=alice user=bob user=carol
//     09:13 user=bob failed
//     09:15 user=carol failed
//     The pattern "user=(\w+" is wrong at position 5: missing ).

#include <iostream>
#include <string>

#include <tam/regex.h>
#include <tam/status.h>
#include <tam/stream.h>
#include <tam/text.h>

using namespace tam;

int main()
{
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
    std::string log = "09:12 user=alice ok\n09:13 user=bob failed\n09:15 user=carol failed\n";

    // The leftmost match, and of those the longest; search() gives the shortest.
    const Tam_regular_expression user("user=\\w+", status);
    std::wstring users;
    for (std::size_t start = 0, length = 0; user.search_longest(log, start + length, start, length, status);) {
        users += tam_stow(log.substr(start, length)) + L' ';
    }
    tam_trim(users);
    std::wcout << users << L'\n';

    // The lines of a stream that contain a match.
    Tam_raw_memory_buffer buffer(log.size(), log.data(), Tam_raw_memory_buffer::KEEP);
    Tam_buffered_istream stream(buffer, false, status, TAM_EOL_LF);
    const Tam_regular_expression failed("failed$", status);
    Tam_object_vector<std::string> lines;
    failed.grep(stream, lines, 0, status);
    for (const std::string& line : lines) {
        std::wcout << tam_stow(line) << L'\n';
    }

    const Tam_regular_expression wrong("user=(\\w+", status);
    std::wstring text;
    Tam_messages_list::m_global_messages.format_message(status, text);
    tam_trim(text);
    std::wcout << text << L'\n';
}
