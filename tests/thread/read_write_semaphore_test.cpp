#include <tests/support/test.h>

#include <tests/support/descriptors.h>
#include <tests/support/run_child.h>

using namespace tam;
using namespace std::chrono_literals;

namespace {

class Read_write_semaphore : public test::Limited {};

template <class Action>
auto elsewhere(Action action)
{
    return std::async(std::launch::async, action).get();
}

// Whether each kind of lock is to be had at this moment by another thread; what was taken is given back.
std::string free_elsewhere(Tam_read_write_semaphore& semaphore)
{
    return elsewhere([&] {
        const bool read = semaphore.try_read_lock();
        if (read) {
            semaphore.read_unlock();
        }
        const bool write = semaphore.try_write_lock();
        if (write) {
            semaphore.write_unlock();
        }
        return std::string(read ? "read" : "") + (write ? "write" : "");
    });
}

} // namespace

TEST_F(Read_write_semaphore, lets_in_many_readers_or_one_writer)
{
    Tam_read_write_semaphore semaphore;
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
    EXPECT_TRUE(semaphore.try_read_lock());
    EXPECT_TRUE(elsewhere([&] { return semaphore.try_read_lock(); }));
    EXPECT_EQ(free_elsewhere(semaphore), "read") << "and the writer mutex was given back";
    EXPECT_FALSE(semaphore.try_write_lock()) << "a reader does not become a writer";
    semaphore.read_unlock();
    EXPECT_EQ(free_elsewhere(semaphore), "read");
    semaphore.read_unlock(); // the other thread's
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");

    EXPECT_TRUE(semaphore.try_write_lock());
    EXPECT_EQ(free_elsewhere(semaphore), "");
    semaphore.write_unlock();
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}

TEST_F(Read_write_semaphore, the_writing_thread_may_nest_both_kinds)
{
    Tam_read_write_semaphore semaphore;
    semaphore.write_lock();
    semaphore.write_lock();
    EXPECT_TRUE(semaphore.try_write_lock());
    EXPECT_TRUE(semaphore.try_read_lock());
    semaphore.read_lock();
    semaphore.write_lock(); // a writer does not wait for its own read locks
    semaphore.read_unlock();
    semaphore.read_unlock();
    for (int locks = 4; locks > 0; --locks) {
        EXPECT_EQ(free_elsewhere(semaphore), "") << locks << " left";
        semaphore.write_unlock();
    }
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}

TEST_F(Read_write_semaphore, unbalanced_unlocks_do_nothing)
{
    Tam_read_write_semaphore semaphore;
    semaphore.read_unlock();
    semaphore.write_unlock();
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
    semaphore.read_lock();
    semaphore.write_unlock();
    EXPECT_EQ(free_elsewhere(semaphore), "read");
    semaphore.read_unlock();
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}

TEST_F(Read_write_semaphore, a_write_unlock_by_another_thread_counts)
{
    Tam_read_write_semaphore semaphore;
    semaphore.write_lock();
    elsewhere([&] { semaphore.write_unlock(); });
    EXPECT_EQ(free_elsewhere(semaphore), "read") << "not counted any more, but the writer mutex is still owned";
    semaphore.write_unlock();
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}

TEST_F(Read_write_semaphore, a_waiting_writer_does_not_stop_readers)
{
    Tam_read_write_semaphore semaphore;
    semaphore.read_lock();
    std::future<void> writer = std::async(std::launch::async, [&] {
        semaphore.write_lock();
        semaphore.write_unlock();
    });
    EXPECT_EQ(writer.wait_for(50ms), std::future_status::timeout);
    EXPECT_EQ(free_elsewhere(semaphore), "read");
    elsewhere([&] { semaphore.read_lock(); });
    semaphore.read_unlock();
    EXPECT_EQ(writer.wait_for(20ms), std::future_status::timeout);
    semaphore.read_unlock();
    EXPECT_EQ(writer.wait_for(10s), std::future_status::ready);
}

TEST_F(Read_write_semaphore, guards_give_back_their_lock_when_an_exception_leaves_their_scope)
{
    Tam_read_write_semaphore semaphore;
    const auto write_and_throw = [&] {
        const Tam_write_lock outer(semaphore);
        const Tam_write_lock inner(semaphore);
        EXPECT_EQ(free_elsewhere(semaphore), "");
        throw std::runtime_error("inside");
    };
    EXPECT_EQ(test::thrown<std::runtime_error>(write_and_throw), "inside");
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
    {
        const Tam_read_write_semaphore& for_readers = semaphore;
        const Tam_read_lock guard(for_readers);
        EXPECT_EQ(free_elsewhere(semaphore), "read");
    }
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}

TEST_F(Read_write_semaphore, named_consists_of_three_kernel_objects)
{
    unsigned int made = 0;
    unsigned int left = 0;
    const auto use_a_name = [&] {
        const std::wstring name = test::unique_name(L"rw");
        const unsigned int before = test::open_handles();
        {
            const Tam_read_write_semaphore first(name);
            const Tam_read_write_semaphore second(name.c_str());
            made = test::open_handles() - before;
            const HANDLE objects[] = {::OpenMutexW(SYNCHRONIZE, FALSE, (name + L"_$MUTEX").c_str()),
                                      ::OpenMutexW(SYNCHRONIZE, FALSE, (name + L"_$WRITE").c_str()),
                                      ::OpenEventW(SYNCHRONIZE, FALSE, (name + L"_$EVENT").c_str())};
            for (const HANDLE object : objects) {
                EXPECT_NE(object, nullptr);
                ::CloseHandle(object);
            }
        }
        left = test::open_handles() - before;
    };
    use_a_name(); // the system opens handles of its own for the first name of a process
    use_a_name();
    EXPECT_EQ(made, 6U);
    EXPECT_EQ(left, 0U);
}

// The counters are each object's own.
TEST_F(Read_write_semaphore, objects_of_one_name_exclude_each_others_writers_only)
{
    const std::wstring name = test::unique_name(L"rw_two");
    Tam_read_write_semaphore ours(name);
    Tam_read_write_semaphore theirs(name);
    ours.write_lock();
    EXPECT_EQ(free_elsewhere(ours), "");
    EXPECT_EQ(free_elsewhere(theirs), "read");
    ours.write_unlock();
    ours.read_lock();
    EXPECT_EQ(free_elsewhere(ours), "read");
    EXPECT_EQ(free_elsewhere(theirs), "readwrite");
    ours.read_unlock();
}

TEST_F(Read_write_semaphore, gives_the_callers_security_to_the_first_mutex_alone)
{
    const std::wstring name = test::unique_name(L"rw_security");
    const auto access_list = [](HANDLE object) -> std::string {
        const test::Found_list found = test::list_of(object, SE_KERNEL_OBJECT);
        ::CloseHandle(object);
        return !found.present ? "none" : found.null ? "open" : "list";
    };
    const auto access_lists = [&] {
        return access_list(::OpenMutexW(READ_CONTROL, FALSE, (name + L"_$MUTEX").c_str())) + " " +
               access_list(::OpenMutexW(READ_CONTROL, FALSE, (name + L"_$WRITE").c_str())) + " " +
               access_list(::OpenEventW(READ_CONTROL, FALSE, (name + L"_$EVENT").c_str()));
    };
    {
        const Tam_read_write_semaphore plain(name, nullptr);
        EXPECT_EQ(access_lists(), "none none none");
    }
    // A list that is not the null list of the library's own security: all may do everything.
    Tam_status status(5);
    Tam_security security(Tam_acl(TAM_TRUSTEE_EVERYONE, MUTEX_ALL_ACCESS, status), status);
    Tam_read_write_semaphore secured(name, &security);
    EXPECT_EQ(access_lists(), "list open open");
    status = 5;
    secured.add_security(security, status);
    EXPECT_EQ(test::chain(status), L"");
    secured.add_security(security, status);
    EXPECT_EQ(test::chain(status), L"C2000078");
}

TEST_F(Read_write_semaphore, refuses_names_of_other_objects)
{
    const std::wstring name = test::unique_name(L"rw_taken");
    const Tam_event event(name + L"_$WRITE");
    const Tam_mutex mutex(name + L"2_$EVENT");
    const unsigned int handles = test::open_handles();
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_read_write_semaphore refused(name); }), "::CreateMutex");
    EXPECT_EQ(test::thrown<Tam_sys_call_fail>([&] { Tam_read_write_semaphore refused(name + L"2"); }), "::CreateEvent");
    EXPECT_EQ(test::open_handles(), handles);
}

TEST_F(Read_write_semaphore, shares_its_writers_with_other_processes)
{
    const std::wstring name = test::unique_name(L"rw_process");
    const Tam_event asked(name + L"asked");
    Tam_read_write_semaphore semaphore(name);
    semaphore.write_lock();
    std::future<DWORD> child =
        std::async(std::launch::async, [&] { return test::run_child(L"thread_child", L"write_lock " + name); });
    EXPECT_EQ(::WaitForSingleObject(asked.handle(), 30000), WAIT_OBJECT_0);
    EXPECT_EQ(child.wait_for(100ms), std::future_status::timeout) << "it waits";
    semaphore.write_unlock();
    EXPECT_EQ(child.get(), 0U);
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}

// A miss is for good here: after the pulse there is no other one.
TEST_F(Read_write_semaphore, a_waiter_does_not_miss_the_pulse_that_comes_as_it_begins_to_wait)
{
    constexpr int ROUNDS = 300; // apart, the two steps miss one in 60
    Tam_read_write_semaphore semaphore;
    Tam_event turns[] = {Tam_event(), Tam_event()};
    std::atomic<bool> is_asking = false;
    std::future<void> reader = std::async(std::launch::async, [&] {
        for (int round = 0; round < ROUNDS; ++round) {
            turns[0].wait();
            turns[0].reset();
            is_asking = true;
            semaphore.read_lock();
            semaphore.read_unlock();
            turns[1].signal();
        }
    });
    for (int round = 0; round < ROUNDS; ++round) {
        semaphore.write_lock();
        turns[0].signal();
        while (!is_asking) {
            tam_thread_yield();
        }
        is_asking = false;
        semaphore.write_unlock();
        ASSERT_TRUE(turns[1].wait(20000)) << "in round " << round;
        turns[1].reset();
    }
    reader.get();
}

// The halves of the data agree except while a writer is at work.
TEST_F(Read_write_semaphore, readers_never_see_a_writers_half_done_state)
{
    constexpr std::size_t THREADS = 8;
    constexpr auto DURATION = 1500ms;
    Tam_read_write_semaphore semaphore;
    std::array<unsigned int, 2> data{};
    unsigned int writes = 0; // guarded by the write lock
    std::atomic<unsigned int> active_readers = 0;
    std::array<unsigned int, THREADS> written{};
    std::array<unsigned int, THREADS> read{};
    const auto end = std::chrono::steady_clock::now() + DURATION;
    const auto write = [&](std::size_t index) {
        EXPECT_EQ(active_readers, 0U);
        const unsigned int value = ++data[0];
        tam_thread_yield();
        EXPECT_EQ(data[1], value - 1);
        data[1] = value;
        ++writes;
        ++written[index];
    };
    const auto work = [&](std::size_t index) {
        std::mt19937 random(static_cast<unsigned int>(index));
        while (std::chrono::steady_clock::now() < end) {
            const unsigned int choice = random() % 8;
            if (choice == 0) {
                const Tam_write_lock outer(semaphore);
                write(index);
                const Tam_write_lock inner(semaphore);
                const Tam_read_lock reader(semaphore);
                write(index);
            } else if (choice == 1) {
                if (semaphore.try_write_lock()) {
                    write(index);
                    semaphore.write_unlock();
                }
            } else if (choice > 2 || semaphore.try_read_lock()) {
                if (choice > 2) {
                    semaphore.read_lock();
                }
                ++active_readers;
                const unsigned int first = data[0];
                tam_thread_yield();
                EXPECT_EQ(data[1], first);
                ++read[index];
                --active_readers;
                semaphore.read_unlock();
            }
        }
    };
    std::vector<std::future<void>> threads;
    for (std::size_t i = 0; i < THREADS; ++i) {
        threads.push_back(std::async(std::launch::async, work, i));
    }
    for (auto& thread : threads) {
        // With no traffic left, the last ones are woken by the last locks that are given back.
        ASSERT_EQ(thread.wait_for(20s), std::future_status::ready);
    }
    EXPECT_EQ(std::accumulate(written.begin(), written.end(), 0U), writes);
    EXPECT_EQ(data[0], writes);
    EXPECT_GT(writes, 0U);
    EXPECT_GT(std::accumulate(read.begin(), read.end(), 0U), 0U);
    EXPECT_EQ(free_elsewhere(semaphore), "readwrite");
}
