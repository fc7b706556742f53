#include <tests/support/test.h>

#include <tests/datetime/tokens.h>

using namespace tam;

namespace {

__extension__ using Wide = __int128;

void expect_is(const Tam_time_period& period, long long seconds, int microseconds)
{
    EXPECT_EQ(period.seconds(), seconds);
    EXPECT_EQ(period.microseconds(), microseconds);
}

template <class Action>
void expect_refused(Action action)
{
    EXPECT_EQ(tam::test::thrown<std::invalid_argument>(action), "Invalid time period given to Tam_time_period::set()");
}

std::wstring text_of(const Tam_time_period& period, const std::wstring& format)
{
    std::wstring text = L"old";
    period.to_string(format, text);
    return text;
}

Wide total(const Tam_time_period& period)
{
    return static_cast<Wide>(period.seconds()) * 1000000 + period.microseconds();
}

} // namespace

TEST(Time_period, is_set_from_its_parts)
{
    expect_is(Tam_time_period(), 0, 0);
    expect_is(Tam_time_period::ZERO, 0, 0);
    expect_is(Tam_time_period(0, 0, 0, 0, 1500000), 1, 500000);
    expect_is(Tam_time_period(0, -1, 0, 0, -500000), -3600, -500000);
    expect_is(Tam_time_period(1, 2, 3, 4, 500000), 93784, 500000);
    expect_is(Tam_time_period(INT_MAX, 0, 0, INT_MAX, INT_MAX), 185542587100800 + 2147483647 + 2147, 483647);
    expect_is(Tam_time_period(INT_MIN, 0, 0, 0, INT_MIN), -185542587187200 - 2147, -483648);
    expect_is(Tam_time_period(0, INT_MAX), 2147, 483647);
    expect_is(Tam_time_period(-3, -1000000), -4, 0);
    Tam_time_period period;
    period = 5;
    expect_is(period, 5, 0);
    period = -3'000'000'000;
    expect_is(period, -3'000'000'000, 0);
}

TEST(Time_period, hours_and_minutes_wrap_in_32_bits)
{
    expect_is(Tam_time_period(0, 596523, 0, 0, 0), 2147482800, 0);
    expect_is(Tam_time_period(0, 596524, 0, 0, 0), 2147486400 - 4294967296, 0);
    expect_is(Tam_time_period(0, -596524, 0, 0, 0), 4294967296 - 2147486400, 0);
    expect_is(Tam_time_period(0, 0, 35791394, 0, 0), 2147483640, 0);
    expect_is(Tam_time_period(0, 0, 35791395, 0, 0), 2147483700 - 4294967296, 0);
    // What has wrapped is normalised with the microseconds as they stand.
    expect_is(Tam_time_period(0, 596524, 0, 0, 1), 2147486400 - 4294967296 + 1, -999999);
}

TEST(Time_period, refuses_mixed_signs_and_stays_as_it_was)
{
    Tam_time_period period(7, 8);
    expect_refused([&] { period.set(1, -1); });
    expect_refused([&] { period.set(-1, 1); });
    expect_refused([&] { period = timeval{1, -1}; });
    expect_refused([] { Tam_time_period(1, -1, 0, 0, 0); });
    for (int position = 0; position < 5; ++position) {
        for (const int sign : {1, -1}) {
            int parts[5] = {sign, sign, sign, sign, sign};
            parts[position] = -sign;
            expect_refused([&] { period.set(parts[0], parts[1], parts[2], parts[3], parts[4]); });
        }
    }
    expect_is(period, 7, 8);
}

TEST(Time_period, reads_and_gives_timeval_and_chrono)
{
    expect_is(Tam_time_period(timeval{INT_MIN, -1500000}), -2147483649, -500000);
    const timeval low = Tam_time_period(0x1FFFFFFFE, 5);
    EXPECT_EQ(low.tv_sec, -2);
    EXPECT_EQ(low.tv_usec, 5);
    expect_is(Tam_time_period(std::chrono::milliseconds(-1500)), -1, -500000);
    EXPECT_EQ(static_cast<std::chrono::microseconds>(Tam_time_period(2, 3)), std::chrono::microseconds(2000003));
}

TEST(Time_period, totals_truncate_toward_zero)
{
    const Tam_time_period hour(0, -1, 0, 0, 0);
    EXPECT_EQ(hour.days(), 0);
    EXPECT_EQ((hour * 25).days(), -1);
    EXPECT_EQ((hour * 25).hours(), -25);
    EXPECT_EQ((hour * 25).minutes(), -1500);
    EXPECT_EQ(Tam_time_period(LLONG_MAX, 0).days(), 106751991167300);
    EXPECT_TRUE(Tam_time_period::valid_microsecond(999999) && Tam_time_period::valid_microsecond(-999999));
    EXPECT_FALSE(Tam_time_period::valid_microsecond(1000000) || Tam_time_period::valid_microsecond(-1000000));
}

TEST(Time_period, calculates_exactly_within_its_fields)
{
    std::mt19937_64 random(20);
    for (int round = 0; round < 20000; ++round) {
        const auto any = [&] {
            const auto sign = random() % 2 != 0 ? 1 : -1;
            return Tam_time_period(sign * static_cast<long long>(random() % 4),
                                   sign * static_cast<int>(random() % 1000000));
        };
        const Tam_time_period a = any();
        const Tam_time_period b = any();
        const int k = static_cast<int>(random() % 4000) - 2000;
        const std::pair<Tam_time_period, Wide> results[] = {
            {a + b, total(a) + total(b)},
            {a - b, total(a) - total(b)},
            {-a, -total(a)},
            {a * k, total(a) * k},
            {a / (k != 0 ? k : 1), total(a) / (k != 0 ? k : 1)},
            {a % (k != 0 ? k : 1), total(a) % (k != 0 ? k : 1)},
        };
        for (const auto& [result, expected] : results) {
            expect_is(result, static_cast<long long>(expected / 1000000), static_cast<int>(expected % 1000000));
        }
        EXPECT_EQ(a < b, total(a) < total(b));
        EXPECT_EQ(a > b, total(a) > total(b));
        EXPECT_EQ(a <= b, total(a) <= total(b));
        EXPECT_EQ(a >= b, total(a) >= total(b));
        EXPECT_EQ(a == b, total(a) == total(b));
        EXPECT_EQ(a != b, total(a) != total(b));
        if (HasFailure()) {
            FAIL() << "round " << round;
        }
    }
}

TEST(Time_period, kept_oddities_of_arithmetic)
{
    // The product of the microseconds wraps: 2500000000 is -1794967296.
    expect_is(Tam_time_period(1, 500000) * 5000, 3205, -967296);
    expect_refused([] { -(Tam_time_period(1, 500000) * 5000); });
    expect_refused([] { -Tam_time_period(LLONG_MIN, -1); });
    expect_is(-Tam_time_period(LLONG_MIN, 0), LLONG_MIN, 0);
    expect_is(Tam_time_period(LLONG_MAX, 999999) + Tam_time_period(0, 1), LLONG_MIN + 1, 0);
    expect_is(Tam_time_period(5, 0) + Tam_time_period(0, -250000), 4, 750000);
    expect_is(Tam_time_period(10, 0) / 4, 2, 500000);
    expect_is(Tam_time_period(10, 0) % 3, 0, 1);
    // -9223372036854775808 microseconds, the lowest total.
    const Tam_time_period lowest(-9223372036854, -775808);
    expect_is(lowest / -1, -9223372036854, -775808);
    expect_is(lowest % -1, 0, 0);
}

TEST(Time_period, is_changed_by_the_assigning_operators)
{
    Tam_time_period period(1, 0);
    expect_is(((period += Tam_time_period(2, 1)) -= Tam_time_period(0, 2)) *= 3, 8, 999997);
    expect_is(period /= 2, 4, 499998);
    expect_is(period %= 1000000, 0, 499998);
    expect_is(period -= period, 0, 0);
}

TEST(Time_period, formats_totals)
{
    const Tam_time_period period(90061, 500000);
    EXPECT_EQ(text_of(period, L"%D %H %M %S %C"), L"1 25 1501 01 50");
    EXPECT_EQ(text_of(Tam_time_period(1, 2, 3, 4, 500000), L"%P"), L"1 26:1563:04.50");
    EXPECT_EQ(text_of(Tam_time_period(0, 0, 0, 5, 67890), L"%P|%u|%C"), L"00:00:05.06|67890|06");
    EXPECT_EQ(text_of(-Tam_time_period(1, 2, 3, 4, 567890), L"%P|%u"), L"-1 -26:-1563:-4.-56|-567890");
    EXPECT_EQ(text_of(Tam_time_period(-5, 0), L"%S"), L"-5");
    EXPECT_EQ(text_of(period, L"100%% a%"), L"100% a%");
    EXPECT_EQ(text_of(period, L"%%%"), L"%%");
    EXPECT_EQ(text_of(period, L""), L"");
    EXPECT_EQ(text_of(period, std::wstring(L"a\0b", 3)), std::wstring(L"a\0b", 3));
    // Days 0x100000001 and hours 24 * 0x100000001, of which the low 32 bits are printed.
    EXPECT_EQ(text_of(Tam_time_period(0x100000001LL * 86400, 0), L"%D %H"), L"1 24");
    EXPECT_EQ(text_of(Tam_time_period(0x80000000LL * 86400, 0), L"%D"), L"-2147483648");
}

TEST(Time_period, refuses_unknown_tokens_and_keeps_the_text_so_far)
{
    tam::test::expect_format_tokens(Tam_time_period(1, 0), L"", std::wstring(L"cdhmpsUX x0\0", 12), "Tam_time_period",
                                    L"%S", L"a01");
}
