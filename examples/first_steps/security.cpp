// Makes an event that services may signal and everybody may wait for, and looks at its access list.
//
// Prints:
//     2 entries
//     everybody may wait
//     everybody may not signal

#include <iostream>
#include <memory>

#include <windows.h>

#include <tam/security.h>
#include <tam/status.h>
#include <tam/thread.h>

using namespace tam;

int main()
{
    Tam_status status;
    Tam_acl acl(TAM_TRUSTEE_SERVICES, EVENT_ALL_ACCESS, status);
    if (status.ok()) {
        acl.set_rights(TAM_TRUSTEE_EVERYONE, TAM_ACCESS_GRANT, SYNCHRONIZE | READ_CONTROL, status);
    }
    if (!status.ok()) {
        return 1; // an acl whose constructor failed holds no list, which would grant everybody everything
    }
    Tam_security security(acl, status);
    if (!status.ok()) {
        return 1;
    }
    Tam_event event(false, &security);

    // Another security object, associated with the event, reads the list of the moment.
    Tam_security editor;
    event.add_security(editor, status);
    std::unique_ptr<Tam_acl> list;
    if (status.ok()) {
        list.reset(editor.get_disc_acl(status));
    }
    if (!status.ok() || list == nullptr) {
        return 1;
    }
    unsigned int count = 0;
    list->get_entry_count(count, status);
    std::wcout << count << L" entries\n";
    const bool can_wait = list->test_rights(TAM_TRUSTEE_EVERYONE, SYNCHRONIZE, status);
    std::wcout << L"everybody may " << (can_wait ? L"" : L"not ") << L"wait\n";
    const bool can_signal = list->test_rights(TAM_TRUSTEE_EVERYONE, EVENT_MODIFY_STATE, status);
    std::wcout << L"everybody may " << (can_signal ? L"" : L"not ") << L"signal\n";
}
