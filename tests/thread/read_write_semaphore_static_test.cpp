#include <tests/support/test.h>

#include <tam/detail/win32.h>

using namespace tam;
using detail::win32;
using test::Swap;

namespace {

// The calls of the kernel that the calling thread makes, in order; the n-th one fails.
std::string calls;
std::size_t call_to_fail = 0;

bool must_fail(char call)
{
    calls += call;
    if (calls.size() != call_to_fail) {
        return false;
    }
    ::SetLastError(ERROR_INVALID_HANDLE);
    return true;
}

DWORD WINAPI wait_for(HANDLE handle, DWORD milliseconds)
{
    return must_fail('w') ? WAIT_FAILED : ::WaitForSingleObject(handle, milliseconds);
}

BOOL WINAPI release(HANDLE handle)
{
    return must_fail('r') ? FALSE : ::ReleaseMutex(handle);
}

BOOL WINAPI pulse(HANDLE handle)
{
    return must_fail('p') ? FALSE : ::PulseEvent(handle);
}

// Waits no longer than the test has patience.
DWORD WINAPI give_up_and_wait(HANDLE mutex, HANDLE event, DWORD, BOOL)
{
    return must_fail('s') ? WAIT_FAILED : ::SignalObjectAndWait(mutex, event, 10, FALSE);
}

class Read_write_calls : public test::Limited {
protected:
    Tam_read_write_semaphore m_semaphore;

    // The calls that action makes, with the n-th failing (0: none), and behind a blank what it throws.
    template <class Action>
    std::string calls_of(Action action, std::size_t nth = 0)
    {
        const Swap waits(win32.wait_for_single_object, &wait_for);
        const Swap releases(win32.release_mutex, &release);
        const Swap pulses(win32.pulse_event, &pulse);
        const Swap signals(win32.signal_object_and_wait, &give_up_and_wait);
        calls.clear();
        call_to_fail = nth;
        const std::string text = test::thrown<Tam_sys_call_fail>(action);
        return nth == 0 ? calls : calls + " " + text;
    }

    // What another thread can have at this moment.
    std::string free_elsewhere()
    {
        return std::async(std::launch::async,
                          [&] {
                              std::string result;
                              if (m_semaphore.try_read_lock()) {
                                  m_semaphore.read_unlock();
                                  result = "read";
                              }
                              if (m_semaphore.try_write_lock()) {
                                  m_semaphore.write_unlock();
                                  result += "write";
                              }
                              return result;
                          })
            .get();
    }
};

constexpr char LOCK_FAILED[] = "::WaitForSingleObject failed, reason 6";

} // namespace

TEST_F(Read_write_calls, are_those_of_the_steps_and_no_more)
{
    EXPECT_EQ(calls_of([&] { m_semaphore.read_lock(); }), "wr");
    EXPECT_EQ(calls_of([&] { m_semaphore.try_read_lock(); }), "wr");
    EXPECT_EQ(calls_of([&] { m_semaphore.try_write_lock(); }), "wwrr");
    EXPECT_EQ(calls_of([&] { m_semaphore.read_unlock(); }), "wr");
    EXPECT_EQ(calls_of([&] { m_semaphore.read_unlock(); }), "wpr");
    EXPECT_EQ(calls_of([&] { m_semaphore.read_unlock(); }), "wpr") << "pulses although there was nothing to give back";
    EXPECT_EQ(calls_of([&] { m_semaphore.write_lock(); }), "wwr");
    EXPECT_EQ(calls_of([&] { m_semaphore.read_lock(); }), "wwrr") << "the writer's own";
    EXPECT_EQ(calls_of([&] { m_semaphore.read_unlock(); }), "wr") << "no pulse while there is a writer";
    EXPECT_EQ(calls_of([&] { m_semaphore.try_write_lock(); }), "wwr");
    EXPECT_EQ(calls_of([&] { m_semaphore.write_unlock(); }), "wprr");
    EXPECT_EQ(calls_of([&] { m_semaphore.write_unlock(); }), "wprr");
    EXPECT_EQ(calls_of([&] { m_semaphore.write_unlock(); }), "wrr");
}

TEST_F(Read_write_calls, that_fail_leave_the_lock_as_it_was)
{
    EXPECT_EQ(calls_of([&] { m_semaphore.read_lock(); }, 1), std::string("w ") + LOCK_FAILED);
    EXPECT_EQ(calls_of([&] { m_semaphore.try_read_lock(); }, 1), std::string("w ") + LOCK_FAILED);
    EXPECT_EQ(calls_of([&] { m_semaphore.write_lock(); }, 1), std::string("w ") + LOCK_FAILED);
    EXPECT_EQ(calls_of([&] { m_semaphore.write_lock(); }, 2), std::string("wwr ") + LOCK_FAILED);
    EXPECT_EQ(calls_of([&] { m_semaphore.try_write_lock(); }, 1), "w ::WaitForSingleObject");
    EXPECT_EQ(calls_of([&] { m_semaphore.try_write_lock(); }, 2), std::string("wwr ") + LOCK_FAILED);
    EXPECT_EQ(free_elsewhere(), "readwrite");

    m_semaphore.read_lock();
    EXPECT_EQ(calls_of([&] { m_semaphore.read_unlock(); }, 1), std::string("w ") + LOCK_FAILED);
    EXPECT_EQ(calls_of([&] { m_semaphore.read_unlock(); }, 2), "wpr ::PulseEvent");
    EXPECT_EQ(calls_of([&] { m_semaphore.write_lock(); }, 3), "wwsrr ::WaitForSingleObject") << "of the two in one";
    EXPECT_EQ(free_elsewhere(), "read");
    m_semaphore.read_unlock();

    m_semaphore.write_lock();
    EXPECT_EQ(calls_of([&] { m_semaphore.read_lock(); }, 2), "wwr ::WaitForSingleObject");
    EXPECT_EQ(calls_of([&] { m_semaphore.write_unlock(); }, 1), std::string("w ") + LOCK_FAILED);
    EXPECT_EQ(calls_of([&] { m_semaphore.write_unlock(); }, 2), "wpr ::PulseEvent");
    EXPECT_EQ(free_elsewhere(), "");
    m_semaphore.write_unlock();
    EXPECT_EQ(free_elsewhere(), "readwrite");
}

// A waiter that is woken for nothing waits again.
TEST_F(Read_write_calls, of_a_waiter_give_up_the_counters_and_wait_in_one)
{
    m_semaphore.read_lock();
    std::future<void> reader = std::async(std::launch::async, [&] {
        ::Sleep(50);
        m_semaphore.read_unlock();
    });
    const Swap signals(win32.signal_object_and_wait, &give_up_and_wait);
    calls.clear();
    call_to_fail = 0;
    m_semaphore.write_lock();
    reader.get();
    EXPECT_NE(calls.find("s"), std::string::npos);
    EXPECT_EQ(free_elsewhere(), "");
    m_semaphore.write_unlock();
}

TEST_F(Read_write_calls, of_a_guards_end_are_reported_unless_an_exception_is_under_way)
{
    EXPECT_EQ(calls_of([&] { const Tam_read_lock lock(m_semaphore); }, 4), "wrwpr ::PulseEvent");
    m_semaphore.read_unlock();
    EXPECT_EQ(calls_of([&] { const Tam_write_lock lock(m_semaphore); }, 5), "wwrwpr ::PulseEvent");
    m_semaphore.write_unlock();
    EXPECT_EQ(calls_of(
                  [&] {
                      const Tam_read_lock lock(m_semaphore);
                      throw Tam_sys_call_fail("first");
                  },
                  4),
              "wrwpr first");
    m_semaphore.read_unlock();
    EXPECT_EQ(calls_of(
                  [&] {
                      const Tam_write_lock lock(m_semaphore);
                      throw Tam_sys_call_fail("first");
                  },
                  5),
              "wwrwpr first");
    m_semaphore.write_unlock();
    EXPECT_EQ(free_elsewhere(), "readwrite");
}
