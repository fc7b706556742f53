#include <tests/support/test.h>

using namespace tam;
using test::chain;

namespace {

struct Ticks {
    unsigned int wanted;    // false from this one on; 0: never
    unsigned int count = 0; // so far
    ULONGLONG first = 0;    // milliseconds
    ULONGLONG last = 0;
};

bool tick(void* argument)
{
    Ticks& ticks = *static_cast<Ticks*>(argument);
    ticks.last = ::GetTickCount64();
    if (++ticks.count == 1) {
        ticks.first = ticks.last;
    }
    return ticks.count != ticks.wanted;
}

unsigned int free_ticks = 0;

bool free_tick(void* argument)
{
    EXPECT_EQ(argument, nullptr);
    return ++free_ticks != 4;
}

class Timer : public test::Limited {
protected:
    Tam_timer m_timer;
    Tam_status m_status;
};

} // namespace

TEST_F(Timer, calls_until_the_count_or_the_callback_ends_it)
{
    struct Row {
        unsigned int count;
        unsigned int wanted;
        unsigned int calls;
    };
    const unsigned int handles = test::open_handles();
    for (const Row& row : {Row{3, 0, 3}, Row{1, 0, 1}, Row{0, 5, 5}, Row{0, 1, 1}, Row{5, 2, 2}, Row{2, 2, 2}}) {
        Ticks ticks{row.wanted};
        m_timer.init(&tick, 1, m_status, row.count, &ticks);
        EXPECT_EQ(ticks.count, row.calls) << row.count << " " << row.wanted;
        EXPECT_EQ(chain(m_status), L"");
    }
    EXPECT_EQ(test::open_handles(), handles);
}

TEST_F(Timer, ticks_at_once_and_then_every_period)
{
    Ticks ticks{0};
    const ULONGLONG start = ::GetTickCount64();
    m_timer.init(&tick, 100, m_status, 3, &ticks);
    EXPECT_LT(ticks.first - start, 90U);
    EXPECT_GE(ticks.last - start, 180U);
    Ticks single{0};
    m_timer.init(&tick, 0, m_status, 1, &single);
    EXPECT_EQ(single.count, 1U);
}

TEST_F(Timer, runs_in_its_constructor_with_a_null_argument)
{
    const unsigned int handles = test::open_handles();
    {
        free_ticks = 0;
        const Tam_timer counted(&free_tick, 1, m_status, 3);
        EXPECT_EQ(free_ticks, 3U);
        free_ticks = 0;
        const Tam_timer until_false(&free_tick, 1, m_status);
        EXPECT_EQ(free_ticks, 4U);
    }
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(test::open_handles(), handles);
}

TEST_F(Timer, that_is_none_cannot_be_stopped)
{
    m_status = 7;
    ::SetLastError(ERROR_ACCESS_DENIED);
    m_timer.stop(m_status);
    EXPECT_EQ(chain(m_status), L"C2000067 5");
    ::SetLastError(0);
    m_timer.stop(m_status);
    EXPECT_EQ(chain(m_status), L"C2000067");
}

TEST_F(Timer, stopped_by_its_callback_calls_no_more)
{
    struct Stopping {
        Tam_timer& timer;
        unsigned int count;
    } stopping{m_timer, 0};
    const auto stop = [](void* argument) {
        auto& self = *static_cast<Stopping*>(argument);
        ++self.count;
        Tam_status status;
        self.timer.stop(status);
        EXPECT_EQ(chain(status), L"");
        return true;
    };
    m_timer.init(stop, 1, m_status, 0, &stopping);
    EXPECT_EQ(stopping.count, 1U);
    EXPECT_EQ(chain(m_status), L"C2000067 6") << "there is none to stop in the end";
}

TEST_F(Timer, is_stopped_when_its_callback_throws)
{
    const auto fail = [](void*) -> bool { throw std::logic_error("in the callback"); };
    EXPECT_THROW(fail(nullptr), std::logic_error); // the run-time opens handles at the first one
    const unsigned int handles = test::open_handles();
    EXPECT_EQ(test::thrown<std::logic_error>([&] { m_timer.init(fail, 1, m_status); }), "in the callback");
    EXPECT_EQ(test::thrown<std::logic_error>([&] { const Tam_timer timer(fail, 1, m_status); }), "in the callback");
    EXPECT_EQ(chain(m_status), L"");
    EXPECT_EQ(test::open_handles(), handles);
}
