// Shows and changes who may do what with a file or a registry key.
//
//     acl KIND NAME show
//     acl KIND NAME grant|deny|test TRUSTEE RIGHTS
//
// KIND is "file" or "key". The name of a key begins with its root: MACHINE\Software\..., CURRENT_USER\..., USERS\...
// TRUSTEE is the name of an account; RIGHTS is the system's access mask, in hexadecimal. What is granted or denied is
// added to what the object's list has already; "test" counts the groups of the trustee.
//
// Exit code 0; 1 with the whole status chain on standard error when something failed; 2 when called wrongly.

#include <cstdio>
#include <cwchar>
#include <memory>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <io.h>

#include <tam/tam.h>

using namespace tam;

namespace {

enum Exit_code { DONE = 0, FAILED = 1, WRONG_USAGE = 2 };

void print_line(std::FILE* stream, const std::wstring& text)
{
    std::fputws((text + L"\n").c_str(), stream);
}

// Newest first: what this program asked for, then the reasons below it.
void print_chain(const Tam_status& status)
{
    std::wstring text;
    for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
        Tam_messages_list::m_global_messages.format_message(*one, text);
        tam_trim(text);
        print_line(stderr, text);
    }
}

std::wstring as_hex(unsigned int rights)
{
    wchar_t digits[16];
    std::swprintf(digits, std::size(digits), L"%08x", rights);
    return digits;
}

bool read_hex(const wchar_t* text, unsigned int& rights)
{
    constexpr std::wstring_view DIGITS = L"0123456789abcdefABCDEF";
    const std::wstring_view digits = text;
    if (digits.empty() || digits.size() > 8 || digits.find_first_not_of(DIGITS) != digits.npos) {
        return false;
    }
    rights = static_cast<unsigned int>(std::wcstoul(text, nullptr, 16));
    return true;
}

// No list is another thing than an empty one: without a list everybody may do everything.
void show(Tam_security& security, Tam_status& status)
{
    const std::unique_ptr<Tam_acl> acl(security.get_disc_acl(status));
    if (acl == nullptr) {
        if (status.ok()) {
            print_line(stdout, L"no list: everybody has full access");
        }
        return;
    }
    unsigned int count = 0;
    acl->get_entry_count(count, status);
    for (unsigned int i = 0; i < count && status.ok(); ++i) {
        std::wstring name;
        Tam_access_modes mode{};
        unsigned int rights = 0;
        acl->get_entry(i, name, mode, rights, status);
        if (status.ok()) {
            const wchar_t* const word = mode == TAM_ACCESS_GRANT  ? L"grant "
                                        : mode == TAM_ACCESS_DENY ? L"deny  "
                                                                  : L"other ";
            print_line(stdout, word + as_hex(rights) + L" " + name);
        }
    }
}

// The entries that the object has already stay: they are merged into the new list.
void add(Tam_security& security, Tam_access_modes mode, const std::wstring& trustee, unsigned int rights,
         Tam_status& status)
{
    Tam_acl acl;
    acl.set_rights(trustee, mode, rights, status);
    if (status.ok()) {
        security.set_disc_acl(acl, status, true);
    }
}

void test(Tam_security& security, const std::wstring& trustee, unsigned int rights, Tam_status& status)
{
    const std::unique_ptr<Tam_acl> acl(security.get_disc_acl(status));
    if (!status.ok()) {
        return;
    }
    unsigned int found = 0xFFFFFFFF;
    const bool granted = acl == nullptr || acl->test_rights(trustee, rights, status, &found);
    if (status.ok()) {
        print_line(stdout, (granted ? L"yes: " : L"no: ") + trustee + L" has " + as_hex(found));
    }
}

int usage()
{
    print_line(stderr, L"usage: acl file|key NAME show\n"
                       L"       acl file|key NAME grant|deny|test TRUSTEE RIGHTS");
    return WRONG_USAGE;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    _setmode(_fileno(stdout), _O_U8TEXT);
    _setmode(_fileno(stderr), _O_U8TEXT);
    if (argc != 4 && argc != 6) {
        return usage();
    }
    const std::wstring kind = argv[1];
    const std::wstring command = argv[3];
    unsigned int rights = 0;
    const bool takes_rights = command == L"grant" || command == L"deny" || command == L"test";
    if ((kind != L"file" && kind != L"key") || (argc == 4 && command != L"show") || (argc == 6 && !takes_rights) ||
        (argc == 6 && !read_hex(argv[5], rights))) {
        return usage();
    }

    // Without the message module the statuses still show their codes and arguments.
    Tam_status status;
    Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
    if (!status.ok()) {
        print_chain(status);
    }

    Tam_security security;
    status.clear();
    security.associate_with_object(kind == L"file" ? TAM_SEC_OBJ_FILE : TAM_SEC_OBJ_REGISTRY_KEY, std::wstring(argv[2]),
                                   status);
    if (command == L"show") {
        show(security, status);
    } else if (command == L"test") {
        test(security, argv[4], rights, status);
    } else {
        add(security, command == L"grant" ? TAM_ACCESS_GRANT : TAM_ACCESS_DENY, argv[4], rights, status);
    }
    if (!status.ok()) {
        print_chain(status);
        return FAILED;
    }
    return DONE;
}
