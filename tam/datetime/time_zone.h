#pragma once

#include <atomic>
#include <string>

#include <tam/datetime/period.h>
#include <tam/detail/export.h>
#include <tam/thread/mutex.h>

namespace tam {

/// One of 35 named time zones: abbreviation, offset from universal time, and whether it is a daylight-saving zone. The
/// table of zones is fixed, and so is each entry.
///
/// Standard-time zones have numbers below 50, daylight-saving zones above; the daylight partner of zone n is n + 50. An
/// offset is what is added to the zone's local time to get universal time: it is positive west of Greenwich.
///
/// Any thread may call any member. The table is filled at its first use, under a mutex; later uses take no lock.
/// Whatever reads it can throw Tam_sys_call_fail at that first use, when the mutex fails.
class TAM_API Tam_time_zone {
public:
    /// Numbers of zones. Any other number may be cast to it, and is refused as the operations say.
    enum Zones : int {
        NO_ZONE = 0,
        GMT = 1,   ///< offset 0
        WAT = 2,   ///< +1 hour
        AT = 3,    ///< +2
        AST = 5,   ///< +4
        EST = 6,   ///< +5
        CST = 7,   ///< +6
        MST = 8,   ///< +7
        PST = 9,   ///< +8
        YST = 10,  ///< +9
        AHST = 11, ///< +10
        NT = 12,   ///< +11
        IDLW = 13, ///< +12
        CET = 14,  ///< -1
        EET = 15,  ///< -2
        BT = 16,   ///< -3
        ZP4 = 17,  ///< -4
        ZP5 = 18,  ///< -5
        ZP6 = 19,  ///< -6
        WAST = 20, ///< -7
        CCT = 21,  ///< -8
        JST = 22,  ///< -9
        EAST = 23, ///< -10
        IDLE = 25, ///< -12
        BST = 51,  ///< -1, daylight time of GMT
        ADT = 55,  ///< +3, of AST
        EDT = 56,  ///< +4, of EST
        CDT = 57,  ///< +5, of CST
        MDT = 58,  ///< +6, of MST
        PDT = 59,  ///< +7, of PST
        YDT = 60,  ///< +8, of YST
        HDT = 61,  ///< +9, of AHST
        MEST = 64, ///< -2, of CET
        WADT = 70, ///< -8, of WAST
        EADT = 73, ///< -11, of EAST
        NZDT = 75, ///< -13, of IDLE
    };

    /// True for the 35 zones.
    static bool valid_zone(Zones zone) noexcept;

    /// The zone of that number; the reference stays good.
    /// @throws std::invalid_argument  "Tam_time_zone::get_zone - invalid zone"
    static const Tam_time_zone& get_zone(Zones zone);

    /// The daylight-saving zone of a standard-time zone, or the reverse; NO_ZONE when there is none.
    /// @throws std::invalid_argument  "Tam_time_zone::partner - invalid zone"
    static Zones partner(Zones zone);

    /// The zone of lowest number with that offset and that kind of time; NO_ZONE when there is none.
    static Zones find(const Tam_time_period& offset, bool dst);

    /// The zone of lowest number whose abbreviation is NOT name, case aside. The test is the wrong way round and kept
    /// so: GMT finds WAT (2), and every other text finds GMT (1).
    /// @param name  not null
    static Zones find(const wchar_t* name);

    /// The machine's zone, or NO_ZONE when none of the table fits it, as none fits a half-hour offset.
    ///
    /// A zone once found is kept for the life of the process, also when summer ends meanwhile; NO_ZONE is not, the next
    /// call looks again. The zone is found by the offset that the system gives for now and by the kind of time. The
    /// kind is standard time, unless the system says that daylight time is on and the C run-time, that the zone has
    /// such a time at all. Where the system does not know which of the two is on, as in zones without daylight time, the
    /// offset is the C run-time's.
    /// @throws Tam_sys_call_fail  the mutex that guards the search failed
    static Zones local();

    /// The abbreviation.
    std::wstring name() const { return m_name; }

    /// What is added to the zone's local time to get universal time.
    const Tam_time_period& offset() const noexcept { return m_offset; }

    /// A zone of standard time: its number is below 50.
    bool is_std() const noexcept { return m_zone < STANDARD_LIMIT; }

    /// A zone of daylight-saving time: its number is above 50.
    bool is_dst() const noexcept { return m_zone > STANDARD_LIMIT; }

    /// The number.
    operator Zones() const noexcept { return m_zone; }

protected:
    /// NO_ZONE, with an empty name and offset 0.
    constexpr Tam_time_zone() noexcept = default;

    /// assign(zone, name, offset).
    Tam_time_zone(Zones zone, const wchar_t* name, const Tam_time_period& offset) { assign(zone, name, offset); }

    /// Becomes a zone with these properties.
    /// @param name  not null; what exceeds ten characters is cut off
    void assign(Zones zone, const wchar_t* name, const Tam_time_period& offset);

private:
    static constexpr int STANDARD_LIMIT = 50;
    static constexpr int ZONE_LIMIT = 75;
    static constexpr int NAME_LIMIT = 10;

    static void _fill_table();
    static Zones _detect_local();

    static Tam_time_zone m_zones[ZONE_LIMIT]; // zone n at n - 1; what is not defined is empty
    static std::atomic<bool> m_init;          // the table is filled
    static std::atomic<Zones> m_local;        // NO_ZONE until detected
    static Tam_mutex m_mutex;                 // held by whoever changes one of the three

    Zones m_zone = NO_ZONE;
    wchar_t m_name[NAME_LIMIT + 1] = {};
    Tam_time_period m_offset;
};

} // namespace tam
