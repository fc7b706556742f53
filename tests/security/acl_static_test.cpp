#include <tests/support/test.h>

#include <lmerr.h>

#include <tam/detail/win32.h>
#include <tests/security/lists.h>
#include <tests/security/security_access.h>
#include <tests/support/failing_new.h>

using namespace tam;
using detail::win32;
using test::chain;
using test::entries_of;
using test::Swap;
using Access = detail::Security_access;
using Rows = std::vector<std::wstring>;

namespace {

constexpr wchar_t ALICE[] = L"S-1-5-21-7-7-7-1001";

// What the machine and its network know, in the platform's place.
struct Network {
    struct Answer {
        NET_API_STATUS result = NERR_Success;
        Rows names;
        DWORD total = 0; // of the names, if not more
    };

    std::map<std::wstring, std::wstring> accounts; // identifiers by name, without their domain
    std::map<std::wstring, Answer> answers;        // by question: "local", "global", "local \\DC" ...
    std::wstring controller;                       // empty: none is found
    Rows calls;
    std::vector<std::unique_ptr<std::byte[]>> buffers; // given out and not freed
    SYSTEMTIME clock{};
    DWORD name_error = 0;
    DWORD name_units = 0; // demanded from the look-ups of names, whatever they need
} network;

BYTE* new_buffer(std::size_t size)
{
    network.buffers.push_back(std::make_unique<std::byte[]>(size));
    return reinterpret_cast<BYTE*>(network.buffers.back().get());
}

NET_API_STATUS WINAPI free_buffer(void* buffer)
{
    EXPECT_EQ(std::erase_if(network.buffers, [buffer](const auto& one) { return one.get() == buffer; }), 1U);
    ::SetLastError(ERROR_INVALID_FUNCTION);
    return NERR_Success;
}

NET_API_STATUS answer(std::wstring question, const wchar_t* server, const wchar_t* user, DWORD level, DWORD preferred,
                      BYTE** buffer, DWORD* read, DWORD* total)
{
    EXPECT_EQ(level, 0U);
    EXPECT_EQ(preferred, 8096U);
    question += server != nullptr ? L' ' + std::wstring(server) : std::wstring();
    network.calls.push_back(question + L" " + user);
    const Network::Answer& given = network.answers[question];
    std::size_t units = 0;
    for (const std::wstring& name : given.names) {
        units += name.size() + 1;
    }
    *buffer = new_buffer(given.names.size() * sizeof(wchar_t*) + units * sizeof(wchar_t) + 1);
    auto** const names = reinterpret_cast<wchar_t**>(*buffer);
    auto* text = reinterpret_cast<wchar_t*>(names + given.names.size());
    for (std::size_t i = 0; i < given.names.size(); ++i) {
        names[i] = text;
        text = std::copy_n(given.names[i].c_str(), given.names[i].size() + 1, text);
    }
    *read = static_cast<DWORD>(given.names.size());
    *total = std::max(given.total, *read);
    return given.result;
}

NET_API_STATUS WINAPI local_groups(const wchar_t* server, const wchar_t* user, DWORD level, DWORD flags, BYTE** buffer,
                                   DWORD preferred, DWORD* read, DWORD* total)
{
    EXPECT_EQ(flags, DWORD{LG_INCLUDE_INDIRECT});
    return answer(L"local", server, user, level, preferred, buffer, read, total);
}

NET_API_STATUS WINAPI global_groups(const wchar_t* server, const wchar_t* user, DWORD level, BYTE** buffer,
                                    DWORD preferred, DWORD* read, DWORD* total)
{
    return answer(L"global", server, user, level, preferred, buffer, read, total);
}

NET_API_STATUS WINAPI find_controller(const wchar_t* server, const wchar_t* domain, BYTE** buffer)
{
    EXPECT_EQ(server, nullptr);
    network.calls.push_back(domain != nullptr ? L"controller of " + std::wstring(domain) : L"controller");
    if (network.controller.empty()) {
        return NERR_DCNotFound;
    }
    *buffer = new_buffer((network.controller.size() + 1) * sizeof(wchar_t));
    std::copy_n(network.controller.c_str(), network.controller.size() + 1, reinterpret_cast<wchar_t*>(*buffer));
    return NERR_Success;
}

BOOL fail(DWORD error)
{
    ::SetLastError(error);
    return FALSE;
}

bool too_small(DWORD* given, DWORD needed)
{
    const bool result = *given < needed;
    *given = needed;
    return result;
}

BOOL WINAPI look_up_name(const wchar_t*, const wchar_t* name, void* sid, DWORD* sid_size, wchar_t*, DWORD* units,
                         SID_NAME_USE*)
{
    const wchar_t* const backslash = std::wcschr(name, L'\\');
    const auto account = network.accounts.find(backslash != nullptr ? backslash + 1 : name);
    if (account == network.accounts.end()) {
        return fail(ERROR_NONE_MAPPED);
    }
    const std::vector<unsigned char> bytes = test::sid_of(account->second);
    const bool sid_fits = !too_small(sid_size, static_cast<DWORD>(bytes.size()));
    if (too_small(units, network.name_units) || !sid_fits) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(sid, bytes.data(), bytes.size());
    return TRUE;
}

// Those whose relative identifier begins with 1 are users, all others are groups. All are of the domain DOM.
BOOL WINAPI look_up_sid(const wchar_t*, void* sid, wchar_t* name, DWORD* name_units, wchar_t* domain,
                        DWORD* domain_units, SID_NAME_USE* use)
{
    if (network.name_error != 0) {
        return fail(network.name_error);
    }
    const std::wstring text = test::text_of(sid);
    const auto account =
        std::find_if(network.accounts.begin(), network.accounts.end(), [&](const auto& a) { return a.second == text; });
    if (account == network.accounts.end()) {
        return fail(ERROR_NONE_MAPPED);
    }
    const bool name_fits = !too_small(name_units, std::max<DWORD>(network.name_units, 32));
    if (too_small(domain_units, std::max<DWORD>(network.name_units, 32)) || !name_fits) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::copy_n(account->first.c_str(), account->first.size() + 1, name);
    std::copy_n(L"DOM", 4, domain);
    *use = text[text.rfind(L'-') + 1] == L'1' ? SidTypeUser : SidTypeGroup;
    return TRUE;
}

void WINAPI local_time(SYSTEMTIME* time)
{
    *time = network.clock;
}

void set_clock(int hour, int minute, int second, int millisecond)
{
    network.clock.wHour = static_cast<WORD>(hour);
    network.clock.wMinute = static_cast<WORD>(minute);
    network.clock.wSecond = static_cast<WORD>(second);
    network.clock.wMilliseconds = static_cast<WORD>(millisecond);
}

// It is noon then. The clock has to be the test's own.
void forget_groups()
{
    // The expiry time is not known: the last moment of the day takes it to a quarter of an hour after midnight.
    Tam_status status;
    unsigned int rights = 0;
    set_clock(23, 59, 59, 999);
    Tam_acl().get_rights(TAM_TRUSTEE_EVERYONE, rights, status);
    EXPECT_TRUE(status.is_clear());
    set_clock(12, 0, 0, 0);
    Tam_acl().get_rights(TAM_TRUSTEE_EVERYONE, rights, status);
    EXPECT_TRUE(status.is_clear());
}

// A machine in a network of the test's own. It is noon, and nothing is cached.
class Acl_in_a_network : public testing::Test {
protected:
    Acl_in_a_network()
    {
        network = {};
        network.accounts = {{L"alice", ALICE},
                            {L"Writers", L"S-1-5-21-7-7-7-2001"},
                            {L"Readers", L"S-1-5-21-7-7-7-2002"},
                            {L"Staff", L"S-1-5-21-7-7-7-2003"},
                            {L"Guests", L"S-1-5-21-7-7-7-2004"}};
        forget_groups();
        for (const auto& [name, sid] : network.accounts) {
            acl.set_rights(name, TAM_ACCESS_GRANT, 1U << (sid.back() - L'0'), status);
        }
        acl.set_rights(TAM_TRUSTEE_EVERYONE, TAM_ACCESS_GRANT, 0x100, status);
        EXPECT_TRUE(status.is_clear());
        EXPECT_TRUE(network.calls.empty());
    }
    ~Acl_in_a_network() override { EXPECT_TRUE(network.buffers.empty()) << "not freed"; }

    // Bit n is granted to the group whose identifier ends in n, bit 8 to everyone; alice herself has bit 1, as Writers.
    unsigned int rights()
    {
        unsigned int result = 0;
        network.calls.clear();
        acl.get_rights(L"DOM\\alice", result, status);
        return result;
    }

    Rows groups(const std::wstring& name)
    {
        Tam_object_vector<std::wstring> found;
        found.push_back(L"before");
        network.calls.clear();
        Tam_acl::get_groups(name, found, status);
        return {found.begin(), found.end()};
    }

    const Swap<decltype(win32.net_user_get_local_groups)> m_local{win32.net_user_get_local_groups, &local_groups};
    const Swap<decltype(win32.net_user_get_groups)> m_global{win32.net_user_get_groups, &global_groups};
    const Swap<decltype(win32.net_get_dc_name)> m_controller{win32.net_get_dc_name, &find_controller};
    const Swap<decltype(win32.net_api_buffer_free)> m_free{win32.net_api_buffer_free, &free_buffer};
    const Swap<decltype(win32.lookup_account_name)> m_name{win32.lookup_account_name, &look_up_name};
    const Swap<decltype(win32.lookup_account_sid)> m_sid{win32.lookup_account_sid, &look_up_sid};
    const Swap<decltype(win32.get_local_time)> m_time{win32.get_local_time, &local_time};
    Tam_status status;
    Tam_acl acl;
};

const Rows ASKED_OF_THE_MACHINE{L"local alice", L"global alice", L"controller of DOM"};
const Rows ASKED_OF_BOTH{L"local alice", L"global alice", L"controller of DOM", L"local \\\\DC alice",
                         L"global \\\\DC alice"};

} // namespace

TEST_F(Acl_in_a_network, rights_come_from_every_group_that_machine_and_controller_know)
{
    network.controller = L"\\\\DC";
    network.answers[L"local"].names = {L"Writers"};
    network.answers[L"global"].names = {L"Readers"};
    network.answers[L"local \\\\DC"].names = {L"Staff", L"Writers"};
    network.answers[L"global \\\\DC"].names = {L"Guests"};
    EXPECT_EQ(rights(), 0x11EU);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(network.calls, ASKED_OF_BOTH);
    acl.set_rights(L"Staff", TAM_ACCESS_DENY, 0x102, status);
    EXPECT_EQ(rights(), 0x1CU) << "a group's denial takes what Everyone and the trustee itself are granted";

    EXPECT_EQ(groups(L"DOM\\alice"), (Rows{L"Writers", L"Readers", L"Staff", L"Writers", L"Guests"}));
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(network.calls, ASKED_OF_BOTH) << "names are not remembered";
}

TEST_F(Acl_in_a_network, no_controller_is_no_failure_and_is_remembered)
{
    network.answers[L"local"].names = {L"Readers"};
    EXPECT_EQ(rights(), 0x106U);
    EXPECT_EQ(network.calls, ASKED_OF_THE_MACHINE);
    EXPECT_EQ(rights(), 0x106U);
    EXPECT_EQ(network.calls, Rows());
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(groups(L"alice"), Rows{L"Readers"});
    EXPECT_EQ(network.calls, (Rows{L"local alice", L"global alice", L"controller"})) << "no domain: the machine's own";
}

TEST_F(Acl_in_a_network, a_user_that_is_not_found_has_no_groups)
{
    network.controller = L"\\\\DC";
    network.answers[L"local"] = {NERR_UserNotFound, {L"Readers"}};
    network.answers[L"global"] = {NERR_UserNotFound, {}, 7};
    network.answers[L"local \\\\DC"] = {NERR_UserNotFound, {}};
    network.answers[L"global \\\\DC"] = {NERR_UserNotFound, {}};
    EXPECT_EQ(rights(), 0x102U);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(network.calls, ASKED_OF_BOTH);
}

TEST_F(Acl_in_a_network, accounts_that_are_no_users_are_not_asked_about)
{
    unsigned int result = 0;
    acl.get_rights(L"Readers", result, status);
    EXPECT_EQ(result, 0x104U);
    acl.get_rights(TAM_TRUSTEE_SERVICES, result, status); // unknown to this network
    EXPECT_EQ(result, 0x100U);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(network.calls, Rows());
}

TEST_F(Acl_in_a_network, failures_are_reported_and_not_remembered)
{
    struct Row {
        const wchar_t* question;
        Network::Answer answer;
        const wchar_t* chain;
        Rows groups;
        std::size_t calls;
    };
    const Rows all{L"Writers", L"Readers"};
    const Row rows[] = {
        {L"local", {53, {}}, L"C2000081 53", {}, 1},
        {L"local", {NERR_BufTooSmall, {L"Readers"}}, L"C2000081 2123", {}, 1},
        {L"local", {ERROR_MORE_DATA, {L"Readers"}, 5}, L"C200007F(5)", {L"Readers"}, 1},
        {L"local", {NERR_Success, {L"Readers"}, 2}, L"C200007F(2)", {L"Readers"}, 1},
        {L"local", {ERROR_MORE_DATA, {L"Readers"}, 1}, L"C200007F(1)", {L"Readers"}, 1},
        {L"global", {124, {L"Readers"}}, L"C2000082 124", {L"Staff"}, 2},
        {L"global", {NERR_Success, all, 1000}, L"C2000080(1000)", {L"Staff", L"Writers", L"Readers"}, 2},
        {L"local \\\\DC", {5, {}}, L"C2000081 5", {L"Staff"}, 4},
        {L"local \\\\DC", {0, all, 3}, L"C200007F(3)", {L"Staff", L"Writers", L"Readers"}, 4},
        {L"global \\\\DC", {1722, {}}, L"C2000082 1722", {L"Staff"}, 5},
        {L"global \\\\DC", {234, {}, 3}, L"C2000080(3)", {L"Staff"}, 5},
        {L"global \\\\DC", {0, {L"Nobodies"}}, L"C2000074 1332", {L"Staff", L"Nobodies"}, 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.question);
        SCOPED_TRACE(row.chain);
        network.controller = L"\\\\DC";
        network.answers = {{L"local", {NERR_Success, {L"Staff"}}}};
        network.answers[row.question] = row.answer;
        EXPECT_EQ(rights(), 0U);
        EXPECT_EQ(chain(status), row.chain);
        EXPECT_EQ(network.calls.size(), row.calls);
        unsigned int found = 5;
        EXPECT_FALSE(acl.test_rights(L"alice", 0, status, &found));
        EXPECT_EQ(found, 0U);
        EXPECT_EQ(chain(status), row.chain);
        EXPECT_EQ(groups(L"DOM\\alice"), row.groups);
        EXPECT_EQ(chain(status), row.chain == std::wstring(L"C2000074 1332") ? L"" : row.chain);
        EXPECT_TRUE(network.buffers.empty());
    }
    network.answers.clear();
    EXPECT_EQ(rights(), 0x102U);
    EXPECT_EQ(network.calls, ASKED_OF_BOTH);
}

TEST_F(Acl_in_a_network, groups_are_forgotten_after_fifteen_minutes)
{
    rights();
    set_clock(12, 14, 59, 999);
    rights();
    EXPECT_EQ(network.calls, Rows());
    set_clock(12, 15, 0, 0);
    rights();
    EXPECT_EQ(network.calls, ASKED_OF_THE_MACHINE);
    set_clock(12, 29, 59, 999);
    rights();
    EXPECT_EQ(network.calls, Rows());
    EXPECT_TRUE(status.is_clear());
}

// The expiry time is a time of day: this is how it is meant to be.
TEST_F(Acl_in_a_network, the_quarter_of_an_hour_before_midnight_remembers_nothing)
{
    set_clock(23, 50, 0, 0);
    rights();
    set_clock(23, 51, 0, 0);
    rights();
    EXPECT_EQ(network.calls, ASKED_OF_THE_MACHINE) << "23:51 is later than 00:05";
    set_clock(0, 5, 59, 999);
    rights();
    EXPECT_EQ(network.calls, Rows());
    set_clock(0, 6, 0, 0);
    rights();
    EXPECT_EQ(network.calls, ASKED_OF_THE_MACHINE);

    set_clock(23, 44, 59, 0);
    rights();
    set_clock(23, 59, 0, 0); // one minute before the expiry time; the next look is a day later
    rights();
    EXPECT_EQ(network.calls, Rows());
    set_clock(9, 0, 0, 0);
    rights();
    EXPECT_EQ(network.calls, Rows());
}

TEST_F(Acl_in_a_network, look_ups_are_repeated_with_the_sizes_that_they_ask_for)
{
    network.name_units = 1000;
    network.accounts[L"alice"] = L"S-1-5-21-1-2-3-4-5-6-7-8-9-10-11-12-13-1001";
    acl.set_rights(L"alice", TAM_ACCESS_GRANT, 0x20, status);
    EXPECT_EQ(rights(), 0x120U);
    std::wstring name;
    Tam_access_modes mode{};
    unsigned int found = 0;
    acl.get_entry(6, name, mode, found, status);
    EXPECT_TRUE(status.is_clear());
    EXPECT_EQ(name, L"DOM\\alice");
}

TEST_F(Acl_in_a_network, a_name_that_cannot_be_looked_up_is_reported)
{
    for (const DWORD error : {DWORD{ERROR_INSUFFICIENT_BUFFER}, DWORD{RPC_S_SERVER_UNAVAILABLE}}) {
        network.name_error = error; // "too small" without larger sizes must not loop
        const std::wstring expected = std::to_wstring(error);
        std::wstring name = L"before";
        Tam_access_modes mode = TAM_ACCESS_DENY;
        unsigned int found = 0;
        acl.get_entry(0, name, mode, found, status);
        EXPECT_EQ(chain(status), expected);
        EXPECT_EQ(name, L"");
        EXPECT_EQ(mode, TAM_ACCESS_GRANT);
        EXPECT_NE(found, 0U);
        name = L"before";
        Tam_acl::get_trustee_name(TAM_TRUSTEE_USERS, name, status);
        EXPECT_EQ(chain(status), expected);
        EXPECT_EQ(name, L"before");
        EXPECT_EQ(rights(), 0U);
        EXPECT_EQ(chain(status), expected);
        EXPECT_EQ(network.calls, Rows());
    }
    network.name_error = 0;
    EXPECT_EQ(rights(), 0x102U) << "and was not remembered";
    const auto look_up = tam::test::failing<ERROR_INSUFFICIENT_BUFFER>(win32.lookup_account_name);
    EXPECT_EQ(rights(), 0U);
    EXPECT_EQ(chain(status), L"C2000074 122");
}

// A user with two groups, told by answers that do not allocate.
struct Plain_answers {
    static NET_API_STATUS WINAPI groups(const wchar_t*, const wchar_t*, DWORD, BYTE** buffer, DWORD, DWORD* read,
                                        DWORD* total)
    {
        static const wchar_t* names[] = {L"Writers", L"Readers"};
        ++buffers;
        *buffer = reinterpret_cast<BYTE*>(names);
        *read = *total = 2;
        return NERR_Success;
    }
    static NET_API_STATUS WINAPI local_groups(const wchar_t* server, const wchar_t* user, DWORD level, DWORD,
                                              BYTE** buffer, DWORD preferred, DWORD* read, DWORD* total)
    {
        return groups(server, user, level, buffer, preferred, read, total);
    }
    static NET_API_STATUS WINAPI controller(const wchar_t*, const wchar_t*, BYTE** buffer)
    {
        static wchar_t name[] = L"\\\\DC";
        ++buffers;
        *buffer = reinterpret_cast<BYTE*>(name);
        return NERR_Success;
    }
    static NET_API_STATUS WINAPI free(void*)
    {
        --buffers;
        return NERR_Success;
    }
    static BOOL WINAPI name(const wchar_t*, const wchar_t* name, void* sid, DWORD*, wchar_t*, DWORD*, SID_NAME_USE*)
    {
        const SID one{SID_REVISION, 1, SECURITY_NT_AUTHORITY, {*name}};
        std::memcpy(sid, &one, sizeof one);
        return TRUE;
    }
    static BOOL WINAPI sid(const wchar_t*, void*, wchar_t* name, DWORD*, wchar_t* domain, DWORD*, SID_NAME_USE* use)
    {
        std::copy_n(L"alice", 6, name);
        std::copy_n(L"DOM", 4, domain);
        *use = SidTypeUser;
        return TRUE;
    }
    static inline int buffers = 0;
};

// Every allocation on the way fails in turn: each is reported, nothing is lost, nothing half-done stays.
TEST(Acl, memory_that_runs_out_is_a_failure_like_others)
{
    const Swap local(win32.net_user_get_local_groups, &Plain_answers::local_groups);
    const Swap global(win32.net_user_get_groups, &Plain_answers::groups);
    const Swap controller(win32.net_get_dc_name, &Plain_answers::controller);
    const Swap release(win32.net_api_buffer_free, &Plain_answers::free);
    const Swap look_up_names(win32.lookup_account_name, &Plain_answers::name);
    const Swap look_up_sids(win32.lookup_account_sid, &Plain_answers::sid);
    const Swap clock(win32.get_local_time, &local_time);
    forget_groups();
    test::Raw_list raw;
    raw.add(1, 0x2, L"S-1-5-21-7-7-7-2001");
    raw.add_object(6, 8, 3, L"S-1-5-32-545");
    raw.add(0, 0x40, L"S-1-5-32-544");
    const Tam_acl other = raw.acl();
    Tam_status status;
    Tam_acl acl(TAM_TRUSTEE_USERS, 1, status);
    const std::wstring alice = L"DOM\\alice";
    unsigned int rights = 0;
    std::wstring name;
    Tam_access_modes mode{};
    Tam_object_vector<std::wstring> groups;

    struct Row {
        const char* name;
        std::function<void()> operation;
        unsigned int least_failures;
    };
    const Row rows[] = {
        {"set_rights of a trustee", [&] { acl.set_rights(TAM_TRUSTEE_SERVICES, TAM_ACCESS_DENY, 2, status); }, 2},
        {"set_rights of a user", [&] { acl.set_rights(TAM_TRUSTEE_PROCESS_USER, TAM_ACCESS_DENY, 2, status); }, 2},
        {"set_rights of a name", [&] { acl.set_rights(alice, TAM_ACCESS_DENY, 2, status); }, 3},
        {"merge", [&] { acl.merge(other, status); }, 4},
        {"get_entry", [&] { acl.get_entry(0, name, mode, rights, status); }, 2},
        {"get_trustee_name", [&] { Tam_acl::get_trustee_name(TAM_TRUSTEE_USERS, name, status); }, 3},
        {"get_rights", [&] { acl.get_rights(alice, rights, status); }, 20},
        {"get_rights of a known trustee", [&] { acl.get_rights(alice, rights, status); }, 3},
        {"get_groups", [&] { Tam_acl::get_groups(alice, groups, status); }, 8},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned char> before = test::bytes_of(Access::list(acl));
        long long blocks = 0;
        const auto clear = [&] {
            groups.clear();
            name = L"";
            status.clear();
        };
        const unsigned int failures = test::fail_each_allocation(
            [&] {
                clear();
                blocks = test::live_blocks();
            },
            row.operation,
            [&](unsigned int nth, bool) {
                EXPECT_TRUE(chain(status) == L"C2000001" || chain(status) == L"C2000074 C2000001") << nth;
                clear();
                EXPECT_EQ(test::live_blocks(), blocks) << nth;
                EXPECT_EQ(test::bytes_of(Access::list(acl)), before) << nth;
                EXPECT_EQ(Plain_answers::buffers, 0) << nth;
            });
        EXPECT_TRUE(status.is_clear());
        EXPECT_GE(failures, row.least_failures);
    }
}

TEST(Acl, a_user_whose_token_does_not_answer_is_reported)
{
    Tam_acl acl;
    Tam_status status;
    const auto reports = [&](Tam_standard_trustees trustee) {
        acl.set_rights(trustee, TAM_ACCESS_GRANT, 1, status);
        return chain(status);
    };
    const unsigned int handles = test::open_handles();
    {
        const auto open = tam::test::failing<ERROR_CANT_OPEN_ANONYMOUS>(win32.open_thread_token);
        EXPECT_EQ(reports(TAM_TRUSTEE_THREAD_USER), L"C2000074 C2000072 1347") << "not the process's user instead";
        EXPECT_EQ(reports(TAM_TRUSTEE_PROCESS_USER), L"");
    }
    {
        const auto open = tam::test::failing<ERROR_ACCESS_DENIED>(win32.open_process_token);
        EXPECT_EQ(reports(TAM_TRUSTEE_THREAD_USER), L"C2000074 C2000072 5");
        EXPECT_EQ(reports(TAM_TRUSTEE_PROCESS_USER), L"C2000074 C2000072 5");
    }
    {
        const Swap get(
            win32.get_token_information,
            +[](HANDLE, TOKEN_INFORMATION_CLASS kind, void*, DWORD size, DWORD* needed) WINAPI -> BOOL {
                EXPECT_EQ(kind, TokenUser);
                EXPECT_EQ(size, 512U);
                *needed = 600;
                return fail(ERROR_INSUFFICIENT_BUFFER);
            });
        EXPECT_EQ(reports(TAM_TRUSTEE_PROCESS_USER), L"C2000074 C2000073(600) 122");
        EXPECT_EQ((*status.child()->begin())->identity(), Tam_int_status_arg::ID);
    }
    EXPECT_EQ(test::open_handles(), handles);
    EXPECT_EQ(entries_of(acl).size(), 1U);
}

TEST(Acl, a_list_that_cannot_be_built_keeps_the_old_one)
{
    Tam_status status;
    Tam_acl acl(TAM_TRUSTEE_USERS, 1, status);
    const Tam_acl other(TAM_TRUSTEE_SERVICES, 1, status);
    const ACL* const list = Access::list(acl);
    const long long blocks = test::live_blocks();
    const auto reports = [&](const wchar_t* expected) {
        for (const Tam_access_modes mode : {TAM_ACCESS_GRANT, TAM_ACCESS_DENY}) {
            acl.set_rights(TAM_TRUSTEE_SERVICES, mode, 1, status);
            EXPECT_EQ(chain(status), expected) << mode;
        }
        acl.merge(other, status);
        EXPECT_EQ(chain(status), expected);
        EXPECT_EQ(Access::list(acl), list);
    };
    {
        const auto initialise = tam::test::failing<ERROR_INVALID_PARAMETER>(win32.initialize_acl);
        reports(L"C2000070 87");
    }
    {
        const auto add = tam::test::failing<ERROR_INVALID_ACL>(win32.add_ace);
        reports(L"C2000071 1336");
    }
    {
        const auto no_entry =
            +[](ACL*, DWORD, DWORD, void*) WINAPI -> BOOL { return fail(ERROR_ALLOTTED_SPACE_EXCEEDED); };
        const Swap allow(win32.add_access_allowed_ace, no_entry);
        const Swap deny(win32.add_access_denied_ace, no_entry);
        reports(L"C2000071 1344");
    }
    status.clear();
    EXPECT_EQ(test::live_blocks(), blocks);
}

TEST(Acl, that_cannot_be_initialised_throws_and_keeps_its_list)
{
    Tam_acl acl;
    const ACL* const list = Access::list(acl);
    Tam_status status(5);
    {
        const auto initialise = tam::test::failing<0>(win32.initialize_acl);
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([] { Tam_acl another; }), "::InitializeAcl");
        EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { acl.erase(status); }), "::InitializeAcl");
    }
    EXPECT_TRUE(status.is_clear());
    {
        const test::Failing_new failure(1);
        acl.erase(status);
    }
    EXPECT_EQ(status, 0xC2000001U);
    EXPECT_EQ(Access::list(acl), list);
    {
        const test::Failing_new failure(1);
        EXPECT_THROW(Tam_acl another, std::bad_alloc);
    }
}

TEST(Acl, a_copy_without_memory_has_no_list)
{
    const Tam_acl acl;
    Tam_status status;
    const auto copy = [&](const Tam_acl& source) { return std::make_unique<Tam_acl>(source, status); };
    std::unique_ptr<Tam_acl> without;
    {
        const test::Failing_new failure(2); // the first is the object
        without = copy(acl);
    }
    EXPECT_EQ(status, 0xC2000001U);
    EXPECT_EQ(Access::list(*without), nullptr);
    EXPECT_EQ(Access::list(*copy(*without)), nullptr);
    EXPECT_TRUE(status.is_clear());
}
