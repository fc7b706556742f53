#include <tam/detail/account.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <new>
#include <stdexcept>

#include <windows.h>

#include <lm.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>

namespace tam::detail {

namespace {

constexpr wchar_t UNKNOWN_ACCOUNT[] = L"BUILTIN\\Account Unknown";
constexpr DWORD TOKEN_USER_BYTES = 512;
constexpr DWORD GROUP_LIST_BYTES = 8096; // preferred size of one answer
constexpr DWORD NAME_UNITS = 128;        // spares most look-ups a second call

// Memory of the network management calls.
struct Net_memory_traits {
    using Type = void*;
    static constexpr Type NONE = nullptr;
    static bool is_none(Type memory) noexcept { return memory == nullptr; }
    static void release(Type memory) noexcept { win32.net_api_buffer_free(memory); }
};
using Net_memory = Unique_handle<Net_memory_traits>;

struct Well_known_sid {
    SID_IDENTIFIER_AUTHORITY authority;
    BYTE count;
    DWORD sub_authorities[2];
};

// In the order of Tam_standard_trustees; the current users follow.
constexpr Well_known_sid WELL_KNOWN_SIDS[] = {
    {SECURITY_WORLD_SID_AUTHORITY, 1, {SECURITY_WORLD_RID}},
    {SECURITY_NT_AUTHORITY, 1, {SECURITY_LOCAL_SYSTEM_RID}},
    {SECURITY_NT_AUTHORITY, 1, {SECURITY_SERVICE_RID}},
    {SECURITY_NT_AUTHORITY, 2, {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_USERS}},
    {SECURITY_NT_AUTHORITY, 2, {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS}},
};

Owned_sid make_sid(const Well_known_sid& parts)
{
    Owned_sid memory(::operator new(SECURITY_MAX_SID_SIZE));
    auto* const sid = static_cast<SID*>(memory.get());
    sid->Revision = SID_REVISION;
    sid->SubAuthorityCount = parts.count;
    sid->IdentifierAuthority = parts.authority;
    std::copy_n(parts.sub_authorities, parts.count, sid->SubAuthority);
    return memory;
}

Kernel_handle open_token(bool of_thread, Tam_status& status)
{
    HANDLE token = nullptr;
    if (of_thread) {
        // The thread may act for somebody who must not even ask who that is, hence "as self".
        if (win32.open_thread_token(::GetCurrentThread(), DWORD{TOKEN_QUERY}, TRUE, &token)) {
            return Kernel_handle(token);
        }
        // Only a thread that acts for nobody stands for the process's user.
        if (::GetLastError() != ERROR_NO_TOKEN) {
            push_last_error(status, TAM_E_TOKEN_OPEN);
            return {};
        }
    }
    if (!win32.open_process_token(::GetCurrentProcess(), DWORD{TOKEN_QUERY}, &token)) {
        push_last_error(status, TAM_E_TOKEN_OPEN);
        return {};
    }
    return Kernel_handle(token);
}

Owned_sid get_current_sid(bool of_thread, Tam_status& status)
{
    const Kernel_handle token = open_token(of_thread, status);
    if (!token) {
        return {};
    }
    alignas(TOKEN_USER) std::byte user[TOKEN_USER_BYTES];
    DWORD needed = 0;
    if (!win32.get_token_information(token.get(), TokenUser, user, TOKEN_USER_BYTES, &needed)) {
        push_last_error(status, TAM_E_TOKEN_USER, static_cast<int>(needed));
        return {};
    }
    return copy_sid(reinterpret_cast<const TOKEN_USER*>(user)->User.Sid);
}

Owned_sid look_up_sid(const std::wstring& name, Tam_status& status)
{
    std::size_t size = SECURITY_MAX_SID_SIZE;
    std::wstring domain(NAME_UNITS, L'\0');
    for (;;) {
        Owned_sid sid(::operator new(size));
        auto needed_size = static_cast<DWORD>(size);
        auto needed_units = static_cast<DWORD>(domain.size());
        SID_NAME_USE use{};
        if (win32.lookup_account_name(nullptr, name.c_str(), sid.get(), &needed_size, domain.data(), &needed_units,
                                      &use)) {
            return sid;
        }
        const DWORD error = ::GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER || (needed_size <= size && needed_units <= domain.size())) {
            status = error;
            return {};
        }
        size = std::max<std::size_t>(size, needed_size);
        domain.resize(std::max<std::size_t>(domain.size(), needed_units));
    }
}

// What make gives. Where that is nothing, status says so on top of make's reasons.
template <class Make>
Owned_sid sid_or_report(Tam_status& status, const Make& make)
{
    Owned_sid sid;
    try {
        sid = make();
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
    }
    if (sid == nullptr) {
        push_failure(status, TAM_E_SID);
    }
    return sid;
}

// One of the two questions about a user's groups, and how its failures are reported.
struct Question {
    NET_API_STATUS (*ask)(const wchar_t* server, const wchar_t* user, BYTE** answer, DWORD* read, DWORD* total);
    unsigned int failed;
    unsigned int truncated;
};

constexpr Question QUESTIONS[] = {
    {[](const wchar_t* server, const wchar_t* user, BYTE** answer, DWORD* read, DWORD* total) {
         return win32.net_user_get_local_groups(server, user, DWORD{0}, DWORD{LG_INCLUDE_INDIRECT}, answer,
                                                GROUP_LIST_BYTES, read, total);
     },
     TAM_E_LOCAL_GROUPS, TAM_E_LOCAL_GROUPS_TRUNCATED},
    {[](const wchar_t* server, const wchar_t* user, BYTE** answer, DWORD* read, DWORD* total) {
         return win32.net_user_get_groups(server, user, DWORD{0}, answer, GROUP_LIST_BYTES, read, total);
     },
     TAM_E_GLOBAL_GROUPS, TAM_E_GLOBAL_GROUPS_TRUNCATED},
};

// Both answers are arrays of this.
static_assert(sizeof(LOCALGROUP_USERS_INFO_0) == sizeof(GROUP_USERS_INFO_0));
using Group_name = GROUP_USERS_INFO_0;

void add_answer(const Question& question, const wchar_t* server, const std::wstring& user,
                Tam_object_vector<std::wstring>& groups, Tam_status& status)
{
    BYTE* memory = nullptr;
    DWORD read = 0;
    DWORD total = 0;
    const NET_API_STATUS result = question.ask(server, user.c_str(), &memory, &read, &total);
    const Net_memory answer(memory);
    if (result == NERR_UserNotFound) {
        return;
    }
    if (result != NERR_Success && result != ERROR_MORE_DATA) {
        push_system_error(status, result, question.failed);
        return;
    }
    const auto* const names = static_cast<const Group_name*>(answer.get());
    for (DWORD i = 0; names != nullptr && i < read; ++i) {
        groups.push_back(std::wstring(names[i].grui0_name));
    }
    if (read < total || result == ERROR_MORE_DATA) {
        assign_failure(status, question.truncated, static_cast<int>(total));
    }
}

void add_groups_known_to(const wchar_t* server, const std::wstring& user, Tam_object_vector<std::wstring>& groups,
                         Tam_status& status)
{
    for (const Question& question : QUESTIONS) {
        add_answer(question, server, user, groups, status);
        if (!status.ok()) {
            return;
        }
    }
}

// Null when there is none; why is nobody's business.
Net_memory find_domain_controller(const std::wstring& domain)
{
    BYTE* name = nullptr;
    const NET_API_STATUS result = win32.net_get_dc_name(nullptr, domain.empty() ? nullptr : domain.c_str(), &name);
    Net_memory controller(name);
    if (result != NERR_Success) {
        controller.reset();
    }
    return controller;
}

} // namespace

Owned_sid create_sid(Tam_standard_trustees trustee, Tam_status& status)
{
    if (trustee > TAM_TRUSTEE_THREAD_USER) {
        throw std::invalid_argument("Invalid argument to Tam_acl::create_sid()");
    }
    return sid_or_report(status, [&] {
        return trustee < std::size(WELL_KNOWN_SIDS) ? make_sid(WELL_KNOWN_SIDS[trustee])
                                                    : get_current_sid(trustee == TAM_TRUSTEE_THREAD_USER, status);
    });
}

Owned_sid create_sid(const std::wstring& name, Tam_status& status)
{
    return sid_or_report(status, [&] { return look_up_sid(name, status); });
}

void sid_to_name(void* sid, std::wstring& name, Tam_status& status, SID_NAME_USE* use)
{
    std::wstring account(NAME_UNITS, L'\0');
    std::wstring domain(NAME_UNITS, L'\0');
    SID_NAME_USE found_use = SidTypeUnknown;
    for (;;) {
        auto account_units = static_cast<DWORD>(account.size());
        auto domain_units = static_cast<DWORD>(domain.size());
        if (win32.lookup_account_sid(nullptr, sid, account.data(), &account_units, domain.data(), &domain_units,
                                     &found_use)) {
            account.resize(std::wcslen(account.c_str()));
            domain.resize(std::wcslen(domain.c_str()));
            name = domain.empty() ? std::move(account) : domain + L'\\' + account;
            break;
        }
        const DWORD error = ::GetLastError();
        if (error == ERROR_NONE_MAPPED) {
            name = UNKNOWN_ACCOUNT;
            found_use = SidTypeUnknown;
            break;
        }
        if (error != ERROR_INSUFFICIENT_BUFFER || (account_units <= account.size() && domain_units <= domain.size())) {
            status = error;
            return;
        }
        account.resize(std::max<std::size_t>(account.size(), account_units));
        domain.resize(std::max<std::size_t>(domain.size(), domain_units));
    }
    if (use != nullptr) {
        *use = found_use;
    }
}

void add_group_names(const std::wstring& name, Tam_object_vector<std::wstring>& groups, Tam_status& status)
{
    const std::size_t backslash = name.find(L'\\');
    const bool has_domain = backslash != std::wstring::npos;
    const std::wstring domain = has_domain ? name.substr(0, backslash) : std::wstring();
    const std::wstring user = has_domain ? name.substr(backslash + 1) : name;
    add_groups_known_to(nullptr, user, groups, status);
    if (!status.ok()) {
        return;
    }
    if (const Net_memory controller = find_domain_controller(domain)) {
        add_groups_known_to(static_cast<const wchar_t*>(controller.get()), user, groups, status);
    }
}

} // namespace tam::detail
