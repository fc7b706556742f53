#include <tests/support/test.h>

#include <tests/support/failing_new.h>

using namespace tam;
using tam::test::chain;
using tam::test::Failing_new;
using tam::test::live_blocks;

namespace {

using Text = Tam_wstring_status_arg;

// Longer than what a string holds without an allocation.
const std::wstring LENGTHY(100, L'x');
const Text LENGTHY_TEXT(LENGTHY);

constexpr unsigned int CODE_1 = 0xC2000001;
constexpr unsigned int CODE_2 = 0xC2000002;

} // namespace

struct Failing_allocation_case {
    const char* name;
    void (*operation)(Tam_status&, const Tam_status&); // this status and a newer one
    unsigned int allocations;
    std::wstring after;
    std::wstring after_on_clear;
};

TEST(Status, whose_allocation_fails_is_left_in_the_documented_state)
{
    const std::wstring unchanged = L"C2000001(" + LENGTHY + L", " + LENGTHY + L") 7(" + LENGTHY + L")";
    // A push keeps the new code over the old arguments and chain.
    const std::wstring new_code = L"C2000002(" + LENGTHY + L", " + LENGTHY + L") 7(" + LENGTHY + L")";
    const Failing_allocation_case cases[] = {
        // Two allocations an argument and one a status of the chain.
        {"push of a status", [](Tam_status& s, const Tam_status& newer) { s.push(newer); }, 6, new_code, L"C2000002"},
        {"push of a code", [](Tam_status& s, const Tam_status&) { s.push(CODE_2); }, 1, new_code, L""},
        {"push with arguments", [](Tam_status& s, const Tam_status&) { s.push(CODE_2, LENGTHY_TEXT, LENGTHY_TEXT); }, 5,
         new_code, L"C2000002"},
        {"push of itself", [](Tam_status& s, const Tam_status&) { s.push(static_cast<const Tam_status&>(s)); }, 8,
         unchanged, L""},
        {"assign", [](Tam_status& s, const Tam_status&) { s.assign(CODE_2, LENGTHY_TEXT, LENGTHY_TEXT); }, 4, unchanged,
         L""},
        {"copy assignment", [](Tam_status& s, const Tam_status& newer) { s = newer; }, 5, unchanged, L""},
        {"add_arg", [](Tam_status& s, const Tam_status&) { s.add_arg(LENGTHY_TEXT); }, 2, unchanged, L""},
        {"construction",
         [](Tam_status&, const Tam_status&) { const Tam_status made(CODE_2, LENGTHY_TEXT, LENGTHY_TEXT); }, 4,
         unchanged, L""},
        {"copy construction", [](Tam_status&, const Tam_status& newer) { const Tam_status made(newer); }, 5, unchanged,
         L""},
        {"pop", [](Tam_status& s, const Tam_status&) { s.pop(); }, 0, L"", L""},
        {"clear", [](Tam_status& s, const Tam_status&) { s.clear(); }, 0, L"", L""},
    };
    Tam_status newer(7, LENGTHY_TEXT);
    newer.push(CODE_2, LENGTHY_TEXT);
    for (const Failing_allocation_case& one : cases) {
        SCOPED_TRACE(one.name);
        for (const bool clear : {false, true}) {
            bool failed = true;
            for (unsigned int nth = 1; failed; ++nth) {
                SCOPED_TRACE(nth);
                const long long outside = live_blocks();
                {
                    Tam_status status;
                    if (!clear) {
                        status.assign(7, LENGTHY_TEXT);
                        status.push(CODE_1, LENGTHY_TEXT, LENGTHY_TEXT);
                    }
                    const long long before = live_blocks();
                    bool thrown = false;
                    {
                        const Failing_new failing(nth);
                        try {
                            one.operation(status, newer);
                        } catch (const std::bad_alloc&) {
                            thrown = true;
                        }
                        failed = failing.failed();
                    }
                    EXPECT_EQ(thrown, failed);
                    if (failed) {
                        EXPECT_EQ(live_blocks(), before);
                        EXPECT_EQ(chain(status), clear ? one.after_on_clear : one.after);
                    } else if (!clear) {
                        EXPECT_EQ(nth - 1, one.allocations);
                    }
                }
                EXPECT_EQ(live_blocks(), outside);
            }
        }
    }
}
