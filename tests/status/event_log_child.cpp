// Writes a chain of three statuses to the event log; what the platform makes of the calls is seen in Wine's traces.
#include <cstdio>

#include <tam/status.h>

int main()
{
    using namespace tam;
    Tam_status report(2);
    report.push(0x8200AAAA, Tam_wstring_status_arg(L"middle"));
    report.push(0xC2000026, Tam_wstring_status_arg(L"C:\\newest"), Tam_int_status_arg(-7, false));
    Tam_status status;
    void* const log = tam_open_syslog(L"tam test source", status);
    tam_report_to_syslog(log, 0x12345, report, true, status);
    tam_close_syslog(log, status);
    if (status.is_clear()) {
        std::puts("all written");
    }
}
