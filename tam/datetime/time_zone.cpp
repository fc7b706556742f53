#include <tam/datetime/time_zone.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <stdexcept>
#include <time.h>

#include <tam/detail/mutex_guard.h>
#include <tam/detail/win32.h>

namespace tam {

namespace {

struct Row {
    Tam_time_zone::Zones zone;
    const wchar_t* name;
    int offset_hours;
};

constexpr Row ROWS[] = {
    {Tam_time_zone::GMT, L"GMT", 0},     {Tam_time_zone::WAT, L"WAT", 1},     {Tam_time_zone::AT, L"AT", 2},
    {Tam_time_zone::AST, L"AST", 4},     {Tam_time_zone::EST, L"EST", 5},     {Tam_time_zone::CST, L"CST", 6},
    {Tam_time_zone::MST, L"MST", 7},     {Tam_time_zone::PST, L"PST", 8},     {Tam_time_zone::YST, L"YST", 9},
    {Tam_time_zone::AHST, L"AHST", 10},  {Tam_time_zone::NT, L"NT", 11},      {Tam_time_zone::IDLW, L"IDLW", 12},
    {Tam_time_zone::CET, L"CET", -1},    {Tam_time_zone::EET, L"EET", -2},    {Tam_time_zone::BT, L"BT", -3},
    {Tam_time_zone::ZP4, L"ZP4", -4},    {Tam_time_zone::ZP5, L"ZP5", -5},    {Tam_time_zone::ZP6, L"ZP6", -6},
    {Tam_time_zone::WAST, L"WAST", -7},  {Tam_time_zone::CCT, L"CCT", -8},    {Tam_time_zone::JST, L"JST", -9},
    {Tam_time_zone::EAST, L"EAST", -10}, {Tam_time_zone::IDLE, L"IDLE", -12}, {Tam_time_zone::BST, L"BST", -1},
    {Tam_time_zone::ADT, L"ADT", 3},     {Tam_time_zone::EDT, L"EDT", 4},     {Tam_time_zone::CDT, L"CDT", 5},
    {Tam_time_zone::MDT, L"MDT", 6},     {Tam_time_zone::PDT, L"PDT", 7},     {Tam_time_zone::YDT, L"YDT", 8},
    {Tam_time_zone::HDT, L"HDT", 9},     {Tam_time_zone::MEST, L"MEST", -2},  {Tam_time_zone::WADT, L"WADT", -8},
    {Tam_time_zone::EADT, L"EADT", -11}, {Tam_time_zone::NZDT, L"NZDT", -13},
};

} // namespace

constinit Tam_time_zone Tam_time_zone::m_zones[ZONE_LIMIT];
constinit std::atomic<bool> Tam_time_zone::m_init = false;
constinit std::atomic<Tam_time_zone::Zones> Tam_time_zone::m_local = NO_ZONE;
Tam_mutex Tam_time_zone::m_mutex;

bool Tam_time_zone::valid_zone(Zones zone) noexcept
{
    return std::ranges::binary_search(ROWS, zone, {}, &Row::zone);
}

const Tam_time_zone& Tam_time_zone::get_zone(Zones zone)
{
    if (!valid_zone(zone)) {
        throw std::invalid_argument("Tam_time_zone::get_zone - invalid zone");
    }
    _fill_table();
    return m_zones[zone - 1];
}

Tam_time_zone::Zones Tam_time_zone::partner(Zones zone)
{
    if (!valid_zone(zone)) {
        throw std::invalid_argument("Tam_time_zone::partner - invalid zone");
    }
    const auto partner = static_cast<Zones>(zone < STANDARD_LIMIT ? zone + STANDARD_LIMIT : zone - STANDARD_LIMIT);
    return valid_zone(partner) ? partner : NO_ZONE;
}

Tam_time_zone::Zones Tam_time_zone::find(const Tam_time_period& offset, bool dst)
{
    _fill_table();
    for (const Tam_time_zone& zone : m_zones) {
        if (zone.m_name[0] != L'\0' && zone.m_offset == offset && zone.is_dst() == dst) {
            return zone;
        }
    }
    return NO_ZONE;
}

// Unequal, on purpose, and empty slots count.
Tam_time_zone::Zones Tam_time_zone::find(const wchar_t* name)
{
    _fill_table();
    const auto* const found =
        std::ranges::find_if(m_zones, [name](const Tam_time_zone& zone) { return ::_wcsicmp(zone.m_name, name) != 0; });
    return found != std::end(m_zones) ? found->m_zone : NO_ZONE;
}

Tam_time_zone::Zones Tam_time_zone::local()
{
    if (const Zones known = m_local.load(std::memory_order_acquire); known != NO_ZONE) {
        return known;
    }
    detail::Mutex_guard guard(m_mutex);
    Zones zone = m_local.load(std::memory_order_relaxed);
    if (zone == NO_ZONE) {
        zone = _detect_local();
        m_local.store(zone, std::memory_order_release);
    }
    guard.unlock();
    return zone;
}

void Tam_time_zone::assign(Zones zone, const wchar_t* name, const Tam_time_period& offset)
{
    m_zone = zone;
    const std::size_t length = ::wcsnlen(name, NAME_LIMIT);
    std::fill(std::copy_n(name, length, m_name), std::end(m_name), L'\0');
    m_offset = offset;
}

void Tam_time_zone::_fill_table()
{
    if (m_init.load(std::memory_order_acquire)) {
        return;
    }
    detail::Mutex_guard guard(m_mutex);
    if (!m_init.load(std::memory_order_relaxed)) {
        ::_tzset();
        for (const Row& row : ROWS) {
            m_zones[row.zone - 1].assign(row.zone, row.name, Tam_time_period(0, row.offset_hours, 0, 0, 0));
        }
        m_init.store(true, std::memory_order_release);
    }
    guard.unlock();
}

// The mutex is held.
Tam_time_zone::Zones Tam_time_zone::_detect_local()
{
    TIME_ZONE_INFORMATION information;
    switch (detail::win32.get_time_zone_information(&information)) {
    case TIME_ZONE_ID_STANDARD:
        return find(Tam_time_period(0, 0, information.Bias + information.StandardBias, 0, 0), false);
    case TIME_ZONE_ID_DAYLIGHT:
        ::_tzset();
        return find(Tam_time_period(0, 0, information.Bias + information.DaylightBias, 0, 0), _daylight != 0);
    default:
        ::_tzset();
        return find(Tam_time_period(_timezone, 0), false);
    }
}

} // namespace tam
