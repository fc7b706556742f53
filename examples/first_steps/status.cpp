// Opens a file that does not exist, and shows what the status tells: the chain of codes and their texts.
//
// Prints:
//     C2000026: The file "missing.txt" could not be opened.
//     C200001E: The file "missing.txt" does not exist.
//     Make it first.

#include <iostream>
#include <string>

#include <tam/file.h>
#include <tam/status.h>
#include <tam/text.h>

using namespace tam;

int main()
{
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status); // the texts of the library's codes

    Tam_file file(L"missing.txt", TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status);

    // People read the texts: of the newest status first, then of what lay beneath.
    std::wstring text;
    for (const Tam_status* one = &status; !status.ok() && one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, text);
        tam_trim(text);
        std::wcout << std::hex << std::uppercase << one->value() << L": " << text << L'\n';
    }

    //! [decide]
    // Programs decide by the codes.
    const Tam_status* const reason = status.child();
    if (status == TAM_E_FILE_OPEN && reason != nullptr && *reason == TAM_E_FILE_NOT_FOUND) {
        std::wcout << L"Make it first.\n";
    }
    //! [decide]
}
