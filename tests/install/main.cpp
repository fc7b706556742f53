// The library's header comes first and defines nothing that makes the platform's headers incomplete later.
#include <tam/tam.h>

#include <windows.h>

#include <aclapi.h>
#include <shellapi.h>

#include <cstdio>
#include <string>

// Types that a cut-down <windows.h> would lack.
static_assert(sizeof(SHFILEOPSTRUCTW) != 0 && sizeof(EXPLICIT_ACCESSW) != 0);

bool interface_works();

int main()
{
    tam::Tam_status status;
    tam::Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
    const tam::Tam_profile_reader reader(L"no such file.ini", status);
    std::wstring text;
    std::wstring report;
    for (const tam::Tam_status* one = &status; one != nullptr; one = one->child()) {
        tam::Tam_messages_list::m_global_messages.format_message(*one, text);
        report += text;
    }
    const bool right = status == tam::TAM_E_PROFILE_OPEN && report.find(L"no such file.ini") != std::wstring::npos &&
                       report.find(L"0xc200") == std::wstring::npos && interface_works();
    std::puts(right ? "the installed library works" : "the installed library does not work");
    return right ? 0 : 1;
}
