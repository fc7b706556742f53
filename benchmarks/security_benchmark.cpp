#include <stdexcept>
#include <string>

#include <windows.h>

#include <benchmarks/benchmarks.h>
#include <tam/security/acl.h>
#include <tam/status/status.h>
#include <tam/thread/mutex.h>

namespace tam::benchmarks {

namespace {

constexpr int QUESTIONS = 1000;
constexpr unsigned int ENTRIES = 50;

void check(bool right)
{
    if (!right) {
        throw std::runtime_error("an access list or an account does not answer as it should");
    }
}

} // namespace

void run_security_benchmarks()
{
    // A trustee whose groups no network is asked for, so that the first question is answered anywhere.
    const std::wstring name = L"NT AUTHORITY\\SYSTEM";
    Tam_status status;
    Tam_acl acl;
    for (unsigned int i = 1; i < ENTRIES; ++i) {
        // An audit becomes a grant each time: that many entries for few trustees.
        acl.set_rights(TAM_TRUSTEE_USERS, TAM_ACCESS_AUDIT, 1U << i % 16, status);
    }
    acl.set_rights(name, TAM_ACCESS_GRANT, 0x3, status);
    unsigned int count = 0;
    acl.get_entry_count(count, status);
    check(count == ENTRIES && acl.test_rights(name, 0x3, status));

    Tam_mutex mutex;
    compare({
        .name = "acl/test_rights/50_entries",
        .unit = "questions",
        .amount = QUESTIONS,
        .ours =
            [&] {
                for (int i = 0; i < QUESTIONS; ++i) {
                    check(acl.test_rights(name, 0x3, status));
                }
            },
        .peer_name = "mutex and account look-up",
        .peer =
            [&] {
                for (int i = 0; i < QUESTIONS; ++i) {
                    BYTE sid[SECURITY_MAX_SID_SIZE];
                    wchar_t domain[256];
                    DWORD sid_size = sizeof sid;
                    DWORD domain_size = 256;
                    SID_NAME_USE use{};
                    mutex.lock();
                    mutex.unlock();
                    check(::LookupAccountNameW(nullptr, name.c_str(), sid, &sid_size, domain, &domain_size, &use));
                    consume(sid);
                }
            },
        .goal = ">= 0.77",
    });
}

} // namespace tam::benchmarks
