// Takes a line of commands apart.
//
// Prints:
//     [copy] ["C:\\My Data"] [C:\Backup] [=] [12]
//     without quotes: C:\My Data
//     12 is 0xc

#include <iostream>
#include <string>

#include <tam/text.h>

using namespace tam;

int main()
{
    // Blanks end a token, an equals sign is a token of its own, and quotes keep together what stands between them.
    Tam_tokeniser tokeniser;
    tokeniser.terminals(L"=");
    Tam_object_vector<std::wstring> tokens;
    tokeniser.tokenise(L"copy \"C:\\\\My Data\" C:\\Backup=12", tokens);

    std::wstring line;
    for (const std::wstring& token : tokens) {
        line += L"[" + token + L"] ";
    }
    tam_trim(line);
    std::wcout << line << L'\n';

    std::wstring directory;
    tam_unquote(tokens.at(1), directory);
    std::wcout << L"without quotes: " << directory << L'\n';

    const std::wstring& last = tokens.back();
    if (tam_is_int32(last)) { // tam_wtoi32 throws for what is none
        std::wstring digits;
        tam_itow(tam_wtoi32(last), digits, 16, false);
        std::wcout << last << L" is 0x" << digits << L'\n';
    }
}
