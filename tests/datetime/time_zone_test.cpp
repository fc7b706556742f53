#include <tests/support/test.h>

using namespace tam;

namespace {

using Zones = Tam_time_zone::Zones;

struct Zone {
    std::wstring name;
    int offset;
    int partner;
};

const std::map<int, Zone> ZONES = {
    {1, {L"GMT", 0, 51}},    {2, {L"WAT", 1, 0}},      {3, {L"AT", 2, 0}},       {5, {L"AST", 4, 55}},
    {6, {L"EST", 5, 56}},    {7, {L"CST", 6, 57}},     {8, {L"MST", 7, 58}},     {9, {L"PST", 8, 59}},
    {10, {L"YST", 9, 60}},   {11, {L"AHST", 10, 61}},  {12, {L"NT", 11, 0}},     {13, {L"IDLW", 12, 0}},
    {14, {L"CET", -1, 64}},  {15, {L"EET", -2, 0}},    {16, {L"BT", -3, 0}},     {17, {L"ZP4", -4, 0}},
    {18, {L"ZP5", -5, 0}},   {19, {L"ZP6", -6, 0}},    {20, {L"WAST", -7, 70}},  {21, {L"CCT", -8, 0}},
    {22, {L"JST", -9, 0}},   {23, {L"EAST", -10, 73}}, {25, {L"IDLE", -12, 75}}, {51, {L"BST", -1, 1}},
    {55, {L"ADT", 3, 5}},    {56, {L"EDT", 4, 6}},     {57, {L"CDT", 5, 7}},     {58, {L"MDT", 6, 8}},
    {59, {L"PDT", 7, 9}},    {60, {L"YDT", 8, 10}},    {61, {L"HDT", 9, 11}},    {64, {L"MEST", -2, 14}},
    {70, {L"WADT", -8, 20}}, {73, {L"EADT", -11, 23}}, {75, {L"NZDT", -13, 25}},
};

Tam_time_period hours(int count)
{
    return Tam_time_period(0, count, 0, 0, 0);
}

template <class Action>
std::string refusal(Action action)
{
    return tam::test::thrown<std::invalid_argument>(action);
}

class Made_zone : public Tam_time_zone {
public:
    Made_zone() = default;
    Made_zone(int zone, const wchar_t* name, const Tam_time_period& offset)
        : Tam_time_zone(static_cast<Zones>(zone), name, offset)
    {}
    using Tam_time_zone::assign;
};

} // namespace

TEST(Time_zone, has_exactly_its_35_zones)
{
    ASSERT_EQ(ZONES.size(), 35U);
    for (int number = -200; number <= 200; ++number) {
        const auto zone = static_cast<Zones>(number);
        const auto row = ZONES.find(number);
        ASSERT_EQ(Tam_time_zone::valid_zone(zone), row != ZONES.end()) << number;
        if (row == ZONES.end()) {
            EXPECT_EQ(refusal([&] { Tam_time_zone::get_zone(zone); }), "Tam_time_zone::get_zone - invalid zone");
            EXPECT_EQ(refusal([&] { Tam_time_zone::partner(zone); }), "Tam_time_zone::partner - invalid zone");
            continue;
        }
        const Tam_time_zone& entry = Tam_time_zone::get_zone(zone);
        EXPECT_EQ(&entry, &Tam_time_zone::get_zone(zone));
        EXPECT_EQ(entry, zone);
        EXPECT_EQ(entry.name(), row->second.name);
        EXPECT_EQ(entry.offset(), hours(row->second.offset)) << number;
        EXPECT_EQ(entry.is_std(), number < 50);
        EXPECT_EQ(entry.is_dst(), number > 50);
        EXPECT_EQ(Tam_time_zone::partner(zone), row->second.partner) << number;
    }
    for (const int number : {INT_MIN, INT_MAX}) {
        EXPECT_FALSE(Tam_time_zone::valid_zone(static_cast<Zones>(number)));
    }
    EXPECT_EQ(Tam_time_zone::GMT, 1);
    EXPECT_EQ(Tam_time_zone::NZDT, 75);
}

TEST(Time_zone, is_found_by_offset_and_kind)
{
    for (int offset = -14; offset <= 14; ++offset) {
        for (const bool dst : {false, true}) {
            int expected = 0;
            for (const auto& [number, zone] : ZONES) {
                if (expected == 0 && zone.offset == offset && (number > 50) == dst) {
                    expected = number;
                }
            }
            EXPECT_EQ(Tam_time_zone::find(hours(offset), dst), expected) << offset;
        }
    }
    EXPECT_EQ(Tam_time_zone::find(hours(5), false), Tam_time_zone::EST);
    EXPECT_EQ(Tam_time_zone::find(hours(5), true), Tam_time_zone::CDT);
    EXPECT_EQ(Tam_time_zone::find(Tam_time_period(0, 3, 30, 0, 0), false), 0);
    EXPECT_EQ(Tam_time_zone::find(Tam_time_period(0, 1), false), 0);
}

TEST(Time_zone, search_by_name_is_inverted)
{
    for (const wchar_t* name : {L"EST", L"", L"GM", L"GMTX", L"nowhere"}) {
        EXPECT_EQ(Tam_time_zone::find(name), 1);
    }
    for (const wchar_t* name : {L"GMT", L"gmt", L"gMt"}) {
        EXPECT_EQ(Tam_time_zone::find(name), 2);
    }
}

TEST(Time_zone, entries_keep_ten_characters_of_the_name)
{
    const Made_zone none;
    EXPECT_EQ(none, Tam_time_zone::NO_ZONE);
    EXPECT_EQ(none.name(), L"");
    EXPECT_EQ(none.offset(), Tam_time_period::ZERO);
    EXPECT_TRUE(none.is_std());
    Made_zone made(50, L"0123456789A", hours(7));
    EXPECT_EQ(made.name(), L"0123456789");
    EXPECT_EQ(made.offset(), hours(7));
    EXPECT_FALSE(made.is_std() || made.is_dst());
    made.assign(Tam_time_zone::BT, L"AB", hours(-3));
    EXPECT_EQ(made, Tam_time_zone::BT);
    EXPECT_EQ(made.name(), L"AB");
}
