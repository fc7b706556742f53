// Opens a file that does not exist, and shows what the status tells: the chain of codes, their texts and arguments.
//
// Prints:
//     C2000026: The file "missing.txt" could not be opened.
//     C200001E: The file "missing.txt" does not exist.
//     Recognised, for missing.txt

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
    if (status.ok()) {
        return 1;
    }

    // The newest status leads; what lay beneath follows.
    std::wstring text;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, text);
        tam_trim(text);
        std::wcout << std::hex << std::uppercase << one->value() << L": " << text << L'\n';
    }

    //! [decide]
    // A program decides by the code, and finds the particulars in the arguments.
    if (status.child() != nullptr && *status.child() == TAM_E_FILE_NOT_FOUND) {
        for (const Tam_status_arg* argument : *status.child()) {
            argument->to_string(text);
            std::wcout << L"Recognised, for " << text << L'\n';
        }
    }
    //! [decide]
}
