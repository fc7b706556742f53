#include <tests/support/test.h>

#include <tests/security/lists.h>

using namespace tam;

namespace {

using Sid = std::vector<unsigned char>;

// Copies of identifiers as the cache hands them out.
class Copies {
public:
    Copies() = default;
    ~Copies() { clear(); }
    Copies(const Copies&) = delete;
    Copies& operator=(const Copies&) = delete;

    void clear()
    {
        for (void* const sid : sids) {
            ::operator delete(sid);
        }
        sids.clear();
    }
    std::vector<std::wstring> texts() const
    {
        std::vector<std::wstring> result;
        for (void* const sid : sids) {
            result.push_back(test::text_of(sid));
        }
        return result;
    }

    std::vector<void*> sids;
};

} // namespace

TEST(Acl_group_cache, the_first_look_up_drops_what_was_stored_before)
{
    Sid alice = test::sid_of(L"S-1-5-21-1-1");
    Sid group = test::sid_of(L"S-1-5-21-1-9");
    Tam_acl_group_cache cache;
    cache.set_groups(alice.data(), {group.data()});
    Copies groups;
    EXPECT_FALSE(cache.get_groups(alice.data(), groups.sids));
    EXPECT_FALSE(cache.get_groups(alice.data(), groups.sids));
    EXPECT_TRUE(groups.sids.empty());
}

TEST(Acl_group_cache, gives_copies_of_copies_and_the_oldest_entry)
{
    Sid alice = test::sid_of(L"S-1-5-21-1-1");
    Sid bob = test::sid_of(L"S-1-5-21-1-2");
    const Sid other = test::sid_of(L"S-1-5-21-1-11"); // begins as bob's, but for its end
    Sid first = test::sid_of(L"S-1-1-0");
    Sid second = test::sid_of(L"S-1-5-32-544");
    Tam_acl_group_cache cache;
    Copies groups;
    ASSERT_FALSE(cache.get_groups(alice.data(), groups.sids));
    cache.set_groups(alice.data(), {first.data(), second.data()});
    cache.set_groups(bob.data(), {});
    cache.set_groups(alice.data(), {second.data()});
    first.assign(first.size(), 0);
    second.assign(second.size(), 0);
    bob = other;
    EXPECT_FALSE(cache.get_groups(bob.data(), groups.sids));
    bob = test::sid_of(L"S-1-5-21-1-2");
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(cache.get_groups(alice.data(), groups.sids));
        EXPECT_EQ(groups.texts(), (std::vector<std::wstring>{L"S-1-1-0", L"S-1-5-32-544"}));
        groups.clear();
    }
    std::vector<void*> replaced{bob.data()};
    EXPECT_TRUE(cache.get_groups(bob.data(), replaced));
    EXPECT_TRUE(replaced.empty()) << "the trustee is known, and has no groups";
}

TEST(Acl_group_cache, leaves_nothing_behind)
{
    Sid alice = test::sid_of(L"S-1-5-21-1-1");
    const auto use = [&] {
        Tam_acl_group_cache cache;
        Copies groups;
        cache.get_groups(alice.data(), groups.sids);
        cache.set_groups(alice.data(), {alice.data(), alice.data()});
        cache.get_groups(alice.data(), groups.sids);
    };
    use();
    const unsigned int blocks = test::heap_blocks();
    const unsigned int handles = test::open_handles();
    use();
    EXPECT_EQ(test::heap_blocks(), blocks);
    EXPECT_EQ(test::open_handles(), handles);
}

TEST(Acl_group_cache, serves_several_threads)
{
    constexpr int ROUNDS = 200;
    Tam_acl_group_cache cache;
    Copies none;
    Sid nobody = test::sid_of(L"S-1-1-0");
    cache.get_groups(nobody.data(), none.sids);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < ROUNDS; ++round) {
                Sid sid = test::sid_of(L"S-1-5-21-" + std::to_wstring(thread) + L"-" + std::to_wstring(round));
                cache.set_groups(sid.data(), {sid.data()});
                Copies groups;
                const bool found = cache.get_groups(sid.data(), groups.sids);
                if (!found || groups.sids.size() != 1 || !::EqualSid(groups.sids[0], sid.data())) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0) << "unless the quarter of an hour ended or midnight came meanwhile";
}
