// local_zone_child STANDARD DAYLIGHT UNKNOWN: the numbers of the zone that the machine's should be when the system says
// that standard time, daylight time, or it does not know which of them is on. Ends with 0 when they are right, seen from
// several threads that ask at once, at the first use of the zones.

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include <windows.h>

#include <tam/datetime.h>

using namespace tam;

namespace {

constexpr int THREADS = 8;
constexpr DWORD TIME_LIMIT = 20000; // milliseconds

bool is_local_time_of(int zone)
{
    try {
        const Tam_date_and_time now = Tam_date_and_time::now();
        SYSTEMTIME t;
        ::GetSystemTime(&t);
        const Tam_date_and_time universal(Tam_date(t.wDay, t.wMonth, t.wYear),
                                          Tam_time(t.wHour, t.wMinute, t.wSecond, 0), Tam_time_zone::GMT);
        const long long seconds = (universal - now.utc()).seconds();
        return now.zone() == zone && seconds >= -5 && seconds <= 5;
    } catch (const std::invalid_argument&) {
        return zone == Tam_time_zone::NO_ZONE;
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 2;
    }
    TIME_ZONE_INFORMATION information;
    const DWORD kind = ::GetTimeZoneInformation(&information);
    const int expected = std::atoi(kind == TIME_ZONE_ID_STANDARD   ? argv[1]
                                   : kind == TIME_ZONE_ID_DAYLIGHT ? argv[2]
                                                                   : argv[3]);

    const HANDLE go = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::vector<int> found(THREADS, -1);
    std::vector<int> universal(THREADS, -1);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([&, i] {
            const auto n = static_cast<unsigned int>(i);
            ::WaitForSingleObject(go, TIME_LIMIT);
            if (n % 2 == 0) {
                universal[n] = Tam_time_zone::get_zone(Tam_time_zone::GMT);
                found[n] = Tam_time_zone::local();
            } else {
                found[n] = Tam_time_zone::local();
                universal[n] = Tam_time_zone::find(L"EST");
            }
        });
    }
    ::SetEvent(go);
    for (std::thread& thread : threads) {
        thread.join();
    }
    ::CloseHandle(go);
    for (int i = 0; i < THREADS; ++i) {
        const auto n = static_cast<unsigned int>(i);
        if (found[n] != expected || universal[n] != Tam_time_zone::GMT) {
            std::fprintf(stderr, "kind %lu, bias %ld: found zone %d, expected %d\n", kind, information.Bias, found[n],
                         expected);
            return 1;
        }
    }
    if (!is_local_time_of(expected)) {
        std::fputs("now() is not the local time\n", stderr);
        return 1;
    }
    return 0;
}
