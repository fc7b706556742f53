#include <tests/support/test.h>

#include <clocale>

using namespace tam;
using tam::test::chain;

namespace {

using Int = Tam_int_status_arg;
using Text = Tam_wstring_status_arg;
const Tam_null_status_arg& NONE = Tam_null_status_arg::NULL_ARGUMENT;

constexpr unsigned int CODE_1 = 0xC2000001;
constexpr unsigned int CODE_2 = 0xC2000002;
constexpr unsigned int CODE_3 = 0xC2000003;

std::wstring text_of(const Tam_status_arg& argument)
{
    std::wstring text = L"before";
    argument.to_string(text);
    return text;
}

// An argument of the test's own that counts its objects and fails when it is told to.
class Counted_arg : public Tam_status_arg {
public:
    static inline int objects = 0;
    static inline int clones = 0;
    static inline int destroyed = 0;
    static inline const void* hint = nullptr;

    static void reset() { objects = clones = destroyed = 0; }

    explicit Counted_arg(int value) : m_value(value) { ++objects; }
    Counted_arg(const Counted_arg& other) : Tam_status_arg(other), m_value(other.m_value) { ++objects; }
    ~Counted_arg() override { --objects; }

    void destroy() override
    {
        ++destroyed;
        delete this;
    }
    void to_string(std::wstring& out) const override { out = std::to_wstring(m_value); }
    GUID identity() const override { return GUID{}; }
    Tam_status_arg* clone(const void* given_hint) const override
    {
        hint = given_hint;
        ++clones;
        return new Counted_arg(*this);
    }

private:
    int m_value;
};

} // namespace

struct Code_case {
    unsigned int given;
    unsigned int value;
    unsigned int facility;
    const char* severity; // of s)uccess, i)nformation, w)arning, e)rror or none of them
};

class Status_code : public testing::TestWithParam<Code_case> {
public:
    static void check(const Tam_status& status)
    {
        const Code_case& expected = GetParam();
        EXPECT_EQ(status.value(), expected.value);
        EXPECT_EQ(status.facility(), expected.facility);
        const std::string severity = expected.severity;
        EXPECT_EQ(status.is_success(), severity == "s");
        EXPECT_EQ(status.is_information(), severity == "i");
        EXPECT_EQ(status.is_warning(), severity == "w");
        EXPECT_EQ(status.is_error(), severity == "e");
        EXPECT_EQ(status.ok(), severity != "e");
        EXPECT_TRUE(status == expected.given);
        EXPECT_FALSE(status != expected.given);
        EXPECT_FALSE(status == (expected.given ^ 1U));
        EXPECT_TRUE(status != (expected.given ^ 1U));
    }
};

TEST_P(Status_code, is_read_alike_whichever_way_it_was_given)
{
    const unsigned int code = GetParam().given;
    check(Tam_status(code));
    check(Tam_status(code, Int(1, false)));
    Tam_status status(CODE_1, Int(1, false));
    status = code;
    check(status);
    status.assign(code, Int(1, false));
    check(status);
    Tam_status pushed;
    pushed.push(code);
    check(pushed);
    pushed = CODE_1;
    pushed.push(code);
    check(pushed);
    pushed.push(code, Int(1, false));
    check(pushed);
    check(*pushed.child());
    pushed.push(Tam_status(code));
    check(pushed);
}

INSTANTIATE_TEST_SUITE_P(
    codes, Status_code,
    testing::Values(Code_case{0, 0, 0, "s"}, Code_case{2, 2, 0, "e"}, Code_case{0xC0000002, 2, 0, "e"},
                    Code_case{0xFFFF, 0xFFFF, 0, "e"}, Code_case{0x10000, 0x10000, 0x10000, "s"},
                    Code_case{0x02000019, 0x02000019, 0x02000000, "s"},
                    Code_case{0xC2000019, 0xC2000019, 0x02000000, "e"}, Code_case{0x40000007, 7, 0, "i"},
                    Code_case{0x42000007, 0x42000007, 0x02000000, "i"}, Code_case{0x80000001, 1, 0, "w"},
                    Code_case{0x20000000, 0, 0, "-"}, Code_case{0xE0000002, 2, 0, "-"},
                    Code_case{0x1FFF0003, 0x1FFF0003, 0x0FFF0000, "-"},
                    Code_case{0xFFFFFFFF, 0xFFFFFFFF, 0x0FFF0000, "-"}));

TEST(Status, compares_codes_and_nothing_else)
{
    Tam_status plain(5);
    Tam_status rich(0xC0000005, Int(1, false));
    rich.push(CODE_1);
    rich.push(5, Int(2, false));
    EXPECT_TRUE(plain == rich);
    EXPECT_FALSE(plain != rich);
    EXPECT_TRUE(plain != Tam_status(CODE_1));
}

TEST(Status, with_code_0_is_clear_only_without_arguments_and_chain)
{
    Tam_status status;
    status.add_arg(Int(1, false));
    EXPECT_FALSE(status.is_clear());
    status.push(0U);
    EXPECT_FALSE(status.is_clear());
    EXPECT_EQ(chain(status), L"0 0(1)");
    status.clear();
    EXPECT_TRUE(status.is_clear());
}

TEST(Status, takes_eight_arguments_and_refuses_a_ninth)
{
    Tam_status status(CODE_1, Int(1, false), Tam_uint_status_arg(2, false), Tam_bool_status_arg(true), Text(L"4"),
                      Tam_null_status_arg(), Int(-6, false), Text(std::string("7")), Text(std::wstring(L"8")));
    const std::wstring full = L"C2000001(1, 2, True, 4, , -6, 7, 8)";
    EXPECT_EQ(chain(status), full);
    EXPECT_EQ(status.end() - status.begin(), 8);
    try {
        status.add_arg(Int(9, false));
        FAIL() << "nothing was thrown";
    } catch (const std::overflow_error& error) {
        EXPECT_STREQ(error.what(), "Tam_status::_add_arg - too many arguments.");
    }
    EXPECT_THROW(status.add_arg(Tam_null_status_arg()), std::overflow_error);
    EXPECT_EQ(chain(status), full);
    EXPECT_NO_THROW(status.add_arg(NONE));
    EXPECT_EQ(chain(status), full);
}

TEST(Status, knows_a_left_out_argument_by_its_address)
{
    const Tam_null_status_arg other;
    EXPECT_EQ(chain(Tam_status(CODE_1, NONE, Int(1, false), NONE, other, NONE, Int(2, false))), L"C2000001(1, , 2)");
    const Tam_null_status_arg copy(NONE);
    Tam_status status(CODE_1);
    status.add_arg(copy);
    EXPECT_EQ(chain(status), L"C2000001()");
    EXPECT_EQ(status.end() - status.begin(), 1);
}

TEST(Status, pushes_above_the_earlier_chain_and_pops_it_back)
{
    Tam_status status;
    status.push(7);
    EXPECT_TRUE(status == 0xC0000007);
    EXPECT_FALSE(status.has_child());
    status.push(CODE_1, Text(L"a"), NONE, Text(L"b"));
    EXPECT_EQ(chain(status), L"C2000001(a, b) 7");
    status.push(8);
    EXPECT_EQ(chain(status), L"8 C2000001(a, b) 7");

    Tam_status newer(CODE_3, Int(3, false));
    newer.push(CODE_2, Int(2, false));
    status.push(newer);
    EXPECT_EQ(chain(status), L"C2000002(2) C2000003(3) 8 C2000001(a, b) 7");
    EXPECT_EQ(chain(newer), L"C2000002(2) C2000003(3)");

    for (const wchar_t* expected :
         {L"C2000003(3) 8 C2000001(a, b) 7", L"8 C2000001(a, b) 7", L"C2000001(a, b) 7", L"7", L"", L""}) {
        status.pop();
        EXPECT_EQ(chain(status), expected);
    }
    EXPECT_TRUE(status.is_clear());

    status.push(newer);
    EXPECT_EQ(chain(status), L"C2000002(2) C2000003(3)");
    status.push(Tam_status());
    EXPECT_EQ(chain(status), L"0 C2000002(2) C2000003(3)");
}

TEST(Status, may_be_given_itself_and_what_it_owns)
{
    const auto make = [] {
        Tam_status status(CODE_3, Text(L"c"));
        status.push(CODE_2, Text(L"b1"), Text(L"b2"));
        status.push(CODE_1, Text(L"a1"), Text(L"a2"));
        return status;
    };
    const std::wstring all = L"C2000001(a1, a2) C2000002(b1, b2) C2000003(c)";

    Tam_status status = make();
    const Tam_status& self = status;
    status = self;
    EXPECT_EQ(chain(status), all);
    status.push(self);
    EXPECT_EQ(chain(status), all + L" " + all);
    status = make();
    status.push(*status.child());
    EXPECT_EQ(chain(status), L"C2000002(b1, b2) C2000003(c) " + all);
    status = make();
    status = *status.child();
    EXPECT_EQ(chain(status), L"C2000002(b1, b2) C2000003(c)");
    status = make();
    status.assign(CODE_3, *status.begin()[1], *status.child()->begin()[0]);
    EXPECT_EQ(chain(status), L"C2000003(a2, b1)");
    status = make();
    status.push(CODE_3, *status.begin()[1], *status.child()->begin()[0]);
    EXPECT_EQ(chain(status), L"C2000003(a2, b1) " + all);
    status = make();
    status.add_arg(**status.begin());
    EXPECT_EQ(chain(status), L"C2000001(a1, a2, a1) C2000002(b1, b2) C2000003(c)");
    Tam_status clear;
    clear.push(static_cast<const Tam_status&>(clear));
    EXPECT_TRUE(clear.is_clear());
}

TEST(Status, moves_leave_the_source_clear)
{
    Tam_status source(CODE_2, Text(L"b"));
    source.push(CODE_1, Text(L"a"));
    Tam_status made(std::move(source));
    EXPECT_TRUE(source.is_clear());
    Tam_status assigned(CODE_3, Text(L"old"));
    assigned.push(CODE_3);
    assigned = std::move(made);
    EXPECT_TRUE(made.is_clear());
    EXPECT_EQ(chain(assigned), L"C2000001(a) C2000002(b)");
}

TEST(Status, copies_share_nothing)
{
    Tam_status original(CODE_2, Text(L"b"));
    original.push(CODE_1, Text(L"a"));
    const Tam_status made(original);
    Tam_status longer(CODE_3);
    longer.push(CODE_3);
    longer.push(CODE_3, Text(L"x"));
    longer = original;
    Tam_status shorter;
    shorter = original;
    EXPECT_NE(*made.begin(), *original.begin());
    EXPECT_NE(*made.child()->begin(), *original.child()->begin());
    original.clear();
    for (const Tam_status* copy :
         {&made, static_cast<const Tam_status*>(&longer), static_cast<const Tam_status*>(&shorter)}) {
        EXPECT_EQ(chain(*copy), L"C2000001(a) C2000002(b)");
    }
}

class Status_arguments : public testing::Test {
protected:
    Status_arguments() { Counted_arg::reset(); }
    ~Status_arguments() override { EXPECT_EQ(Counted_arg::objects, 0); }
};

TEST_F(Status_arguments, are_cloned_for_the_status_that_asks)
{
    const Counted_arg argument(1);
    const auto expect_hint = [](const Tam_status& status) { EXPECT_EQ(Counted_arg::hint, &status); };
    Tam_status status(CODE_1, argument);
    expect_hint(status);
    Tam_status other(status);
    expect_hint(other);
    status.add_arg(argument);
    expect_hint(status);
    other = status;
    expect_hint(other);
    status.assign(CODE_2, argument);
    expect_hint(status);
    other.push(CODE_2, argument);
    expect_hint(other);
    status.push(Tam_status(CODE_1, argument));
    expect_hint(status);
}

TEST_F(Status_arguments, move_with_their_status_down_the_chain_and_back_without_a_clone)
{
    Tam_status status(CODE_1, Counted_arg(1), Counted_arg(2));
    Tam_status_arg* const first = *status.begin();
    Tam_status_arg* const second = status.begin()[1];
    Counted_arg::clones = 0;
    status.push(CODE_2);
    status.push(CODE_3, Text(L"x"));
    status.push(Tam_status(7));
    EXPECT_EQ(*status.child()->child()->child()->begin(), first);
    status.pop();
    status.pop();
    status.pop();
    EXPECT_EQ(*status.begin(), first);
    EXPECT_EQ(status.begin()[1], second);
    EXPECT_EQ(Counted_arg::clones, 0);
    EXPECT_EQ(Counted_arg::destroyed, 0);
    status.pop();
    EXPECT_EQ(Counted_arg::destroyed, 2);
}

TEST(Status, chains_of_any_length_are_copied_and_released)
{
    constexpr int LENGTH = 100000;
    const auto length = [](const Tam_status& status) {
        int count = 0;
        for (const Tam_status* one = &status; one != nullptr; one = one->child()) {
            ++count;
        }
        return count;
    };
    Tam_status status(1);
    for (int i = 1; i < LENGTH; ++i) {
        status.push(CODE_1);
    }
    Tam_status copy(status);
    EXPECT_EQ(length(copy), LENGTH);
    copy = status;
    copy.push(status);
    EXPECT_EQ(length(copy), 2 * LENGTH);
    copy.clear();
    copy = std::move(status);
    EXPECT_EQ(length(copy), LENGTH);
}

TEST(Status, reads_the_last_error_with_error_severity)
{
    ::SetLastError(0);
    EXPECT_EQ(Tam_status::get_last_error(), 0U);
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Tam_status::get_last_error(), 0xC0000002);
    ::SetLastError(0x12344);
    EXPECT_EQ(Tam_status::get_last_error(), 0xC0012344);
}

TEST(Status_arg, renders_its_value)
{
    EXPECT_EQ(text_of(Tam_null_status_arg()), L"");
    EXPECT_EQ(text_of(Int(-1234, false)), L"-1234");
    EXPECT_EQ(text_of(Int(-2147483647 - 1, true)), L"-2147483648");
    EXPECT_EQ(text_of(Tam_uint_status_arg(4294967295U, false)), L"4294967295");
    EXPECT_EQ(text_of(Tam_bool_status_arg(true)), L"True");
    EXPECT_EQ(text_of(Tam_bool_status_arg(false)), L"False");
    EXPECT_EQ(text_of(Text(L"")), L"");
    const std::wstring with_zero(L"a\0b", 3);
    EXPECT_EQ(text_of(Text(with_zero)), with_zero);
}

TEST(Status_arg, clones_keep_class_value_and_format)
{
    const Tam_status status(CODE_1, Int(1, true), Tam_uint_status_arg(2, true), Tam_bool_status_arg(false), Text(L"t"));
    const Tam_status copy(status);
    const auto* const number = dynamic_cast<const Int*>(copy.begin()[0]);
    ASSERT_NE(number, nullptr);
    EXPECT_TRUE(number->format());
    const auto* const unsigned_number = dynamic_cast<const Tam_uint_status_arg*>(copy.begin()[1]);
    ASSERT_NE(unsigned_number, nullptr);
    EXPECT_TRUE(unsigned_number->format());
    EXPECT_NE(dynamic_cast<const Tam_bool_status_arg*>(copy.begin()[2]), nullptr);
    EXPECT_NE(dynamic_cast<const Text*>(copy.begin()[3]), nullptr);
}

TEST(Status_arg, tells_its_class_by_its_identity)
{
    const Tam_null_status_arg nothing;
    const Int number(1, false);
    const Tam_uint_status_arg unsigned_number(1, false);
    const Tam_bool_status_arg flag(true);
    const Text text(L"x");
    const std::pair<const Tam_status_arg*, const GUID*> all[] = {{&nothing, &Tam_null_status_arg::ID},
                                                                 {&number, &Int::ID},
                                                                 {&unsigned_number, &Tam_uint_status_arg::ID},
                                                                 {&flag, &Tam_bool_status_arg::ID},
                                                                 {&text, &Text::ID}};
    for (const auto& [argument, id] : all) {
        const GUID identity = argument->identity();
        int equal = 0;
        for (const auto& [other, other_id] : all) {
            equal += std::memcmp(&identity, other_id, sizeof identity) == 0 ? 1 : 0;
        }
        EXPECT_EQ(equal, 1);
        EXPECT_EQ(std::memcmp(&identity, id, sizeof identity), 0);
    }
}

TEST(Status_arg, converts_narrow_text_with_the_current_locale)
{
    EXPECT_EQ(Text(std::string("plain")).value(), L"plain");
    EXPECT_EQ(Text(std::string()).value(), L"");
    EXPECT_EQ(Text(std::string("cut\0off", 7)).value(), L"cut");
    EXPECT_EQ(Text(std::string(1, '\xE4')).value(), L"\u00E4"); // the C locale keeps the byte's value

    const std::string old_locale = std::setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(std::setlocale(LC_CTYPE, ".932"), nullptr);
    EXPECT_EQ(Text(std::string("\x82\xA0z")).value(), L"\u3042z");
    EXPECT_EQ(Text(std::string("a\x81")).value(), L""); // ends within a character
    std::setlocale(LC_CTYPE, old_locale.c_str());
}
