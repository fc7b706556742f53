#include <tests/support/test.h>

#include <cstdlib>

#include <tam/detail/win32.h>

using namespace tam;
using tam::test::Swap;
using tam::test::thrown;

// The zone is found once in a process, so each case is tried in one of its own.

namespace {

DWORD g_kind;
TIME_ZONE_INFORMATION g_information;
int g_calls;

DWORD WINAPI answer(TIME_ZONE_INFORMATION* information)
{
    ++g_calls;
    *information = g_information;
    return g_kind;
}

struct Local_case {
    const char* variable; // what the C run-time reads
    DWORD kind;
    long bias; // minutes
    long standard_bias;
    long daylight_bias;
    int expected;
};

// Ends the process with the zone found.
void find_and_exit(const Local_case& given)
{
    ::_putenv(given.variable);
    g_kind = given.kind;
    g_information.Bias = given.bias;
    g_information.StandardBias = given.standard_bias;
    g_information.DaylightBias = given.daylight_bias;
    const Swap guard(detail::win32.get_time_zone_information, &answer);
    const Tam_time_zone::Zones zone = Tam_time_zone::local();
    // A found one is kept although the system now answers otherwise; nothing found is looked for again.
    g_kind = TIME_ZONE_ID_STANDARD;
    g_information = {};
    const Tam_time_zone::Zones again = Tam_time_zone::local();
    const bool right =
        zone != Tam_time_zone::NO_ZONE ? again == zone && g_calls == 1 : again == Tam_time_zone::GMT && g_calls == 2;
    std::exit(right ? zone : 100 + again);
}

void refuse_local_values_and_exit()
{
    g_kind = TIME_ZONE_ID_STANDARD;
    g_information.Bias = -330;
    const Swap guard(detail::win32.get_time_zone_information, &answer);
    for (const auto make :
         {&Tam_date_and_time::now, &Tam_date_and_time::min_date_and_time, &Tam_date_and_time::max_date_and_time}) {
        if (thrown<std::invalid_argument>([&] { make(); }) != "Tam_date_and_time::date_and_time - invalid zone.") {
            std::exit(1);
        }
    }
    std::exit(0);
}

void fail_the_mutex_and_exit()
{
    const auto use = [] { return thrown<Tam_sys_call_fail>([] { Tam_time_zone::get_zone(Tam_time_zone::GMT); }); };
    const auto use_local = [] { return thrown<Tam_sys_call_fail>([] { Tam_time_zone::local(); }); };
    const std::string failed = "::WaitForSingleObject failed, reason 5";
    {
        const auto guard = tam::test::failing<ERROR_ACCESS_DENIED, WAIT_FAILED>(detail::win32.wait_for_single_object);
        if (use() != failed || use_local() != failed) {
            std::exit(1);
        }
    }
    std::exit(use() == "threw nothing" && use_local() == "threw nothing" ? 0 : 2);
}

class Local_zone : public testing::TestWithParam<Local_case> {};

} // namespace

TEST_P(Local_zone, is_the_one_that_the_system_tells)
{
    EXPECT_EXIT(find_and_exit(GetParam()), testing::ExitedWithCode(GetParam().expected), "");
}

INSTANTIATE_TEST_SUITE_P(kinds, Local_zone,
                         testing::Values(Local_case{"TZ=JST-9", TIME_ZONE_ID_STANDARD, 300, 0, -60, 6},
                                         Local_case{"TZ=JST-9", TIME_ZONE_ID_STANDARD, 0, -60, 0, 14},
                                         Local_case{"TZ=EST5EDT", TIME_ZONE_ID_DAYLIGHT, 300, 0, -60, 56},
                                         // The C run-time knows no daylight time, so this is a standard time.
                                         Local_case{"TZ=JST-9", TIME_ZONE_ID_DAYLIGHT, 300, 0, -60, 5},
                                         Local_case{"TZ=EST5EDT", TIME_ZONE_ID_DAYLIGHT, 300, 0, 60, 58},
                                         Local_case{"TZ=JST-9", TIME_ZONE_ID_UNKNOWN, 300, 0, -60, 22},
                                         Local_case{"TZ=EST5EDT", TIME_ZONE_ID_INVALID, 0, 0, 0, 6},
                                         Local_case{"TZ=JST-9", TIME_ZONE_ID_STANDARD, -330, 0, 0, 0},
                                         Local_case{"TZ=EST5EDT", TIME_ZONE_ID_DAYLIGHT, 0, 0, 0, 0}));

TEST(Local_zone, that_is_none_of_the_table_is_refused)
{
    EXPECT_EXIT(refuse_local_values_and_exit(), testing::ExitedWithCode(0), "");
}

TEST(Time_zone_table, is_filled_later_when_the_mutex_failed)
{
    EXPECT_EXIT(fail_the_mutex_and_exit(), testing::ExitedWithCode(0), "");
}
