#include <tam/datetime/idgen.h>

#include <cstdio>
#include <mutex>

#include <tam/datetime/date.h>
#include <tam/datetime/time.h>
#include <tam/thread/critical.h>

namespace tam {

namespace {

Tam_critical g_guard;
unsigned int g_last_number = 0; // guarded by g_guard

unsigned int next_number()
{
    const std::lock_guard guard(g_guard);
    return ++g_last_number;
}

} // namespace

void tam_idgen_date_time_number(std::string& id)
{
    const auto day = static_cast<unsigned int>(Tam_date::today().julian_day());
    const auto second = static_cast<unsigned int>(Tam_time::now().seconds());
    char text[36]; // three numbers of up to ten digits
    std::snprintf(text, sizeof text, "%u.%u.%u", day, second, next_number());
    id = text;
}

} // namespace tam
