#include <tests/support/test.h>

#include <iterator>

using namespace tam;
using tam::test::thrown;

namespace {

// All that a vector asks of its objects: it can be copied. Counts what lives, and copies of POISON throw.
class Number {
public:
    static constexpr int POISON = -1;
    static int living;

    explicit Number(int value) : m_value(value) { ++living; }
    Number(const Number& other) : m_value(other.m_value)
    {
        if (m_value == POISON) {
            throw std::runtime_error("poison");
        }
        ++living;
    }
    Number& operator=(const Number&) = default;
    ~Number() { --living; }

    int value() const { return m_value; }
    void poison() { m_value = POISON; }

private:
    int m_value;
};

int Number::living = 0;

using Numbers = Tam_object_vector<Number>;

std::vector<int> values(const Numbers& numbers)
{
    std::vector<int> list;
    for (const Number& number : numbers) {
        list.push_back(number.value());
    }
    return list;
}

Numbers numbers_to(int n)
{
    Numbers numbers;
    for (int i = 1; i <= n; ++i) {
        numbers.push_back(Number(i));
    }
    return numbers;
}

} // namespace

static_assert(std::random_access_iterator<Numbers::iterator>);
static_assert(std::is_nothrow_move_constructible_v<Numbers> && std::is_nothrow_move_assignable_v<Numbers>);

class Object_vector : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(Number::living, 0); }
};

TEST_F(Object_vector, deletes_each_object_once_by_every_way_out)
{
    Numbers numbers = numbers_to(9);
    EXPECT_EQ(numbers.capacity(), 32u);
    EXPECT_EQ(Number::living, 9);
    numbers.erase(0);
    EXPECT_EQ(Number::living, 8);
    numbers.pop_back();
    EXPECT_EQ(Number::living, 7);
    numbers.resize(5);
    EXPECT_EQ(Number::living, 5);
    EXPECT_EQ(values(numbers), (std::vector{2, 3, 4, 5, 6}));
    numbers.put(1, Number(30));
    EXPECT_EQ(Number::living, 5);
    EXPECT_EQ(numbers.at(1).value(), 30);
    numbers.clear();
    EXPECT_EQ(Number::living, 0);
    EXPECT_EQ(numbers.capacity(), 32u);
    numbers.push_back(Number(1)); // for the destructor
}

TEST_F(Object_vector, refused_operations_leave_everything_as_it_was)
{
    {
        Numbers numbers = numbers_to(8); // full: storing would have to grow first
        const Number poison(Number::POISON);
        EXPECT_EQ(thrown<std::runtime_error>([&] { numbers.push_back(poison); }), "poison");
        EXPECT_EQ(thrown<std::runtime_error>([&] { numbers.insert(3, poison); }), "poison");
        EXPECT_EQ(thrown<std::runtime_error>([&] { numbers.put(3, poison); }), "poison");
        EXPECT_EQ(thrown<std::out_of_range>([&] { numbers.insert(9, Number(9)); }),
                  "Tam_ptrvec_impl::insert - position out of range");
        EXPECT_EQ(thrown<std::out_of_range>([&] { numbers.erase(8); }),
                  "Tam_ptrvec_impl::insert - position out of range");
        EXPECT_EQ(thrown<std::out_of_range>([&] { numbers.at(8); }), "Tam_ptrvec_impl::_at - position out of range");
        EXPECT_EQ(values(numbers), (std::vector{1, 2, 3, 4, 5, 6, 7, 8}));
        EXPECT_EQ(Number::living, 9);
    }
    Numbers empty;
    EXPECT_EQ(thrown<std::logic_error>([&] { empty.front(); }), "Tam_ptrvec_impl::front - vector is empty");
    EXPECT_EQ(thrown<std::logic_error>([&] { empty.back(); }), "Tam_ptrvec_impl::back - vector is empty");
    EXPECT_EQ(thrown<std::logic_error>([&] { empty.pop_back(); }), "Tam_ptrvec_impl::pop_back - vector is empty");
}

TEST_F(Object_vector, a_copy_is_deep_and_a_move_takes_the_objects_over)
{
    Numbers numbers = numbers_to(3);
    numbers.resize(4); // with an empty slot
    Numbers copy(numbers);
    ASSERT_EQ(copy.size(), 4u);
    EXPECT_NE(&copy.at(0), &numbers.at(0));
    EXPECT_EQ(copy.at(2).value(), 3);
    EXPECT_EQ(copy.get(3), nullptr);
    EXPECT_EQ(Number::living, 6);

    const Number* const first = &numbers.at(0);
    copy = std::move(numbers);
    EXPECT_EQ(&copy.at(0), first);
    EXPECT_EQ(Number::living, 3);
    EXPECT_TRUE(numbers.empty());
    numbers.push_back(Number(4));
    EXPECT_EQ(values(numbers), std::vector{4});

    copy = numbers;
    EXPECT_EQ(values(copy), std::vector{4});

    Numbers poisoned = numbers_to(3);
    poisoned.at(1).poison();
    EXPECT_THROW(copy = poisoned, std::runtime_error);
    EXPECT_EQ(values(copy), std::vector{4});
}

TEST_F(Object_vector, objects_keep_their_address_and_standard_algorithms_run_over_them)
{
    Numbers numbers;
    numbers.push_back(Number(500));
    const Number* const first = &numbers.front();
    for (int i = 0; i < 500; ++i) {
        numbers.insert(0, Number(i));
    }
    EXPECT_EQ(&numbers.back(), first);

    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    const Numbers& constant = numbers;
    std::sort(constant.begin(), constant.end(), [](const Number& a, const Number& b) { return a.value() < b.value(); });
    std::vector<int> expected(501);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(values(numbers), expected);
    EXPECT_EQ(constant.begin()[7].value(), 7);
    EXPECT_EQ((2 + constant.begin())->value(), 2);
    EXPECT_EQ((constant.end() - 1)->value(), 500);
    EXPECT_EQ(constant.end() - constant.begin(), 501);
}

TEST_F(Object_vector, storing_one_of_its_own_objects_copies_it)
{
    Tam_object_vector<std::wstring> texts(1);
    texts.push_back(L"a text that is too long to lie inside the string object");
    texts.push_back(texts.at(0)); // grows
    texts.insert(0, texts.at(1));
    texts.put(2, texts.at(2));
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_EQ(texts.at(0), texts.at(2));
    EXPECT_EQ(texts.at(1), texts.at(2));
    EXPECT_EQ(texts.at(2), L"a text that is too long to lie inside the string object");
}
