// Plans a nightly run: the last Sunday in March, at 01:30 in Paris and elsewhere, and how long until then.
//
// Prints:
//     Sunday: 2027-03-28
//     01:30 CET is 00:30 GMT and 19:30 EST
//     from 24 March 2027, noon: 3 days, 85:5130:00

#include <iostream>
#include <string>

#include <tam/datetime.h>

using namespace tam;

int main()
{
    const Tam_date day(TAM_ORDINAL_LAST, 1, 3, 2027); // weekday 1 is Sunday
    std::wstring text;
    day.to_string(L"%Y-%m-%d", text);
    std::wcout << L"Sunday: " << text << L'\n';

    const Tam_date_and_time run(day, Tam_time(1, 30, 0, 0), Tam_time_zone::CET);
    std::wstring times;
    run.to_string(L"%H:%M %z", times);
    Tam_date_and_time elsewhere = run.utc(); // a copy, as run is const
    elsewhere.to_string(L"%H:%M %z", text);
    times += L" is " + text;
    elsewhere.zone(Tam_time_zone::EST); // the same moment
    elsewhere.to_string(L"%H:%M %z", text);
    std::wcout << times << L" and " << text << L'\n';

    // Each of %H and %M stands for the whole period.
    const Tam_date_and_time noon(Tam_date(24, 3, 2027), Tam_time(12, 0, 0, 0), Tam_time_zone::CET);
    const Tam_time_period wait = run - noon;
    wait.to_string(L"%D days, %H:%M:%S", text);
    std::wcout << L"from 24 March 2027, noon: " << text << L'\n';
}
