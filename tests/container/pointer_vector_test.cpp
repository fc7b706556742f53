#include <tests/support/test.h>

using namespace tam;
using tam::test::thrown;

namespace {

constexpr char AT_TEXT[] = "Tam_ptrvec_impl::_at - position out of range";
constexpr char FRONT_TEXT[] = "Tam_ptrvec_impl::front - vector is empty";
constexpr char BACK_TEXT[] = "Tam_ptrvec_impl::back - vector is empty";
constexpr char POP_TEXT[] = "Tam_ptrvec_impl::pop_back - vector is empty";
constexpr char INSERT_TEXT[] = "Tam_ptrvec_impl::insert - position out of range";

char objects[16];

void* object(unsigned int i)
{
    return &objects[i];
}

void fill(Tam_ptrvec_impl& vector, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i) {
        vector.push_back(object(i));
    }
}

std::vector<void*> contents(const Tam_ptrvec_impl& vector)
{
    return {vector.begin(), vector.end()};
}

// The slots that are not in use must be null at all times.
bool spare_slots_are_null(const Tam_ptrvec_impl& vector)
{
    return std::all_of(vector.end(), vector.begin() + vector.capacity(), [](void* p) { return p == nullptr; });
}

} // namespace

TEST(Pointer_vector, capacities_are_rounded_up_to_powers_of_two)
{
    constexpr struct {
        unsigned int asked, got;
    } ROWS[] = {{0, 1}, {1, 1}, {2, 2}, {3, 4}, {4, 4}, {5, 8}, {8, 8}, {9, 16}, {1023, 1024}, {1025, 2048}};
    for (const auto& row : ROWS) {
        EXPECT_EQ(Tam_ptrvec_impl(row.asked).capacity(), row.got) << row.asked;
        Tam_ptrvec_impl reserved(1);
        reserved.reserve(row.asked);
        EXPECT_EQ(reserved.capacity(), row.got) << row.asked;
        Tam_ptrvec_impl resized(1);
        resized.resize(row.asked);
        EXPECT_EQ(resized.capacity(), row.got) << row.asked;
        EXPECT_EQ(resized.size(), row.asked);
        EXPECT_TRUE(spare_slots_are_null(resized));
    }
    EXPECT_EQ(Tam_ptrvec_impl().capacity(), 8u);
}

TEST(Pointer_vector, a_full_one_grows_to_four_times_its_capacity_and_keeps_its_order)
{
    Tam_ptrvec_impl vector(2);
    fill(vector, 2);
    vector.insert(1, object(9));
    EXPECT_EQ(vector.capacity(), 8u);
    vector.insert(0, object(8));
    vector.insert(4, object(7));
    EXPECT_EQ(contents(vector), (std::vector{object(8), object(0), object(9), object(1), object(7)}));
    vector.erase(4);
    vector.erase(0);
    vector.pop_back();
    EXPECT_EQ(contents(vector), (std::vector{object(0), object(9)}));
    EXPECT_TRUE(spare_slots_are_null(vector));
    vector.clear();
    EXPECT_EQ(vector.capacity(), 8u);
    EXPECT_TRUE(vector.empty() && spare_slots_are_null(vector));
}

TEST(Pointer_vector, wrong_positions_and_empty_vectors_throw_the_documented_texts)
{
    Tam_ptrvec_impl vector;
    const Tam_ptrvec_impl& constant = vector;
    EXPECT_EQ(thrown<std::logic_error>([&] { vector.front(); }), FRONT_TEXT);
    EXPECT_EQ(thrown<std::logic_error>([&] { constant.front(); }), FRONT_TEXT);
    EXPECT_EQ(thrown<std::logic_error>([&] { vector.back(); }), BACK_TEXT);
    EXPECT_EQ(thrown<std::logic_error>([&] { constant.back(); }), BACK_TEXT);
    EXPECT_EQ(thrown<std::logic_error>([&] { vector.pop_back(); }), POP_TEXT);

    fill(vector, 3);
    EXPECT_EQ(thrown<std::out_of_range>([&] { vector.at(3); }), AT_TEXT);
    EXPECT_EQ(thrown<std::out_of_range>([&] { constant.at(0xFFFFFFFF); }), AT_TEXT);
    EXPECT_EQ(thrown<std::out_of_range>([&] { vector.insert(4, nullptr); }), INSERT_TEXT);
    EXPECT_EQ(thrown<std::out_of_range>([&] { vector.erase(3); }), INSERT_TEXT);
    EXPECT_EQ(contents(vector), (std::vector{object(0), object(1), object(2)}));
}

TEST(Pointer_vector, more_slots_than_the_maximum_are_refused_and_change_nothing)
{
    Tam_ptrvec_impl vector;
    fill(vector, 3);
    EXPECT_EQ(vector.max_size(), 0x80000000u);
    EXPECT_THROW(vector.reserve(0x80000001), std::bad_alloc);
    EXPECT_THROW(vector.resize(0xFFFFFFFF), std::bad_alloc);
    EXPECT_THROW(Tam_ptrvec_impl(0x80000001), std::bad_alloc);
    EXPECT_EQ(vector.capacity(), 8u);
    EXPECT_EQ(contents(vector), (std::vector{object(0), object(1), object(2)}));
}

TEST(Pointer_vector, slots_cut_off_by_resize_read_as_null_when_they_come_back)
{
    Tam_ptrvec_impl vector;
    fill(vector, 5);
    vector.resize(2);
    EXPECT_TRUE(spare_slots_are_null(vector));
    vector.resize(5);
    EXPECT_EQ(contents(vector), (std::vector<void*>{object(0), object(1), nullptr, nullptr, nullptr}));
}

TEST(Pointer_vector, a_move_leaves_an_empty_vector_that_can_be_used_again)
{
    Tam_ptrvec_impl from;
    fill(from, 3);
    Tam_ptrvec_impl to;
    fill(to, 9);
    to = std::move(from);
    EXPECT_EQ(contents(to), (std::vector{object(0), object(1), object(2)}));

    EXPECT_TRUE(from.empty());
    from.clear();
    from.resize(0);
    EXPECT_THROW(from.front(), std::logic_error);
    from.push_back(object(4));
    EXPECT_EQ(contents(from), std::vector{object(4)});
    EXPECT_EQ(from.capacity(), 8u);
    EXPECT_TRUE(spare_slots_are_null(from));

    Tam_ptrvec_impl& itself = to;
    to = std::move(itself);
    EXPECT_EQ(to.size(), 3u);
}
