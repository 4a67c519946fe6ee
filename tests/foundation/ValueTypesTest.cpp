#include <foundation/Color4.h>
#include <foundation/Flag.h>
#include <foundation/Optional.h>
#include <foundation/Tuple2.h>
#include <ks_graph/GraphNodePin.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

namespace kestrel::test
{

namespace
{

// ---- Color4

using Color = Color4<float>;

static_assert(sizeof(Color) == 4 * sizeof(float));
static_assert(std::is_trivially_copyable_v<Color>);
static_assert(std::is_standard_layout_v<Color>);
static_assert(offsetof(Color, red) == 0);
static_assert(offsetof(Color, green) == sizeof(float));
static_assert(offsetof(Color, blue) == 2 * sizeof(float));
static_assert(offsetof(Color, alpha) == 3 * sizeof(float));
static_assert(Color() == Color(0.0f, 0.0f, 0.0f, 1.0f));
static_assert(Color4<int>(1, 2, 3, 4) != Color4<int>(1, 2, 3, 5));
static_assert(!(Color4<int>(1, 2, 3, 4) != Color4<int>(1, 2, 3, 4)));

TEST(Color4, IsOpaqueBlackByDefault)
{
    Color const color;
    EXPECT_EQ(color.red, 0.0f);
    EXPECT_EQ(color.green, 0.0f);
    EXPECT_EQ(color.blue, 0.0f);
    EXPECT_EQ(color.alpha, 1.0f);
}

TEST(Color4, TakesRedGreenBlueAlphaAndClampsNothing)
{
    Color const color(0.25f, 2.0f, -1.0f, 100.0f);
    EXPECT_EQ(color.red, 0.25f);
    EXPECT_EQ(color.green, 2.0f);
    EXPECT_EQ(color.blue, -1.0f);
    EXPECT_EQ(color.alpha, 100.0f);
}

TEST(Color4, EqualsOnlyWhenEveryComponentDoes)
{
    Color const color(0.1f, 0.2f, 0.3f, 0.4f);
    Color const same(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_TRUE(color == same);
    EXPECT_FALSE(color != same);
    for (float Color::*component : {&Color::red, &Color::green, &Color::blue, &Color::alpha})
    {
        Color other = color;
        other.*component = 0.9f;
        EXPECT_FALSE(color == other);
        EXPECT_TRUE(color != other);
    }
}

// ---- Tuple2

static_assert(sizeof(Tuple2<float, float>) == 2 * sizeof(float));
static_assert(sizeof(Tuple2<int, int>) == 2 * sizeof(int));
static_assert(std::is_trivially_copyable_v<Tuple2<float, float>>);
using Floats = Tuple2<float, float>;
static_assert(offsetof(Floats, first) == 0);
static_assert(offsetof(Floats, second) == sizeof(float));
static_assert(Tuple2<int, int>() == Tuple2<int, int>(0, 0));
static_assert(Tuple2<int, int>(1, 2) != Tuple2<int, int>(2, 1));

TEST(Tuple2, IsZerosByDefault)
{
    Tuple2<float, float> const floats;
    EXPECT_EQ(floats.first, 0.0f);
    EXPECT_EQ(floats.second, 0.0f);
    Tuple2<int, float> const* const mixed = new Tuple2<int, float>;
    EXPECT_EQ(mixed->first, 0);
    EXPECT_EQ(mixed->second, 0.0f);
    delete mixed;
}

TEST(Tuple2, TakesFirstAndSecond)
{
    Tuple2<int, float> const tuple(-3, 0.5f);
    EXPECT_EQ(tuple.first, -3);
    EXPECT_EQ(tuple.second, 0.5f);
}

TEST(Tuple2, EqualsOnlyWhenBothDo)
{
    Tuple2<float, float> const tuple(1.0f, 2.0f);
    struct Row
    {
        float first;
        float second;
        bool equal;
    };
    Row const rows[] = {{1.0f, 2.0f, true}, {1.0f, 3.0f, false}, {3.0f, 2.0f, false}, {2.0f, 1.0f, false}};
    for (Row const& row : rows)
    {
        Tuple2<float, float> const other(row.first, row.second);
        EXPECT_EQ(tuple == other, row.equal);
        EXPECT_EQ(tuple != other, !row.equal);
    }
}

// ---- Flag

struct Owner;
struct OtherOwner;
using Bits = Flag<Owner, unsigned int>;

static_assert(sizeof(Bits) == sizeof(unsigned int));
static_assert(!std::is_same_v<Bits, Flag<OtherOwner, unsigned int>>);
static_assert(!std::is_convertible_v<Flag<OtherOwner, unsigned int>, Bits>);
static_assert(!std::is_constructible_v<Bits, Flag<OtherOwner, unsigned int>>);
static_assert(std::is_constructible_v<Bits, unsigned int>);
static_assert(!std::is_convertible_v<unsigned int, Bits>);
static_assert(!std::is_convertible_v<Bits, unsigned int>);
static_assert(!std::is_convertible_v<Bits, bool>);
static_assert(std::is_trivially_copyable_v<Bits>);
static_assert(Bits().value() == 0);
static_assert(Bits(5).value() == 5);
static_assert((Bits(1) | Bits(4)) == Bits(5));
static_assert((Bits(6) & Bits(3)) == Bits(2));
static_assert(Bits(3).hasAny(Bits(2)));
static_assert(!Bits(0).hasAny(Bits(3)));
static_assert((Bits(1) |= Bits(2)).value() == 3);
static_assert((Bits(3) &= Bits(2)).value() == 2);
static_assert(Bits(1) != Bits(2));
static_assert(std::is_same_v<graph::PinDirection, Flag<graph::GraphNodePin, unsigned int>>);

TEST(Flag, SharesABitExactlyWhenTheAndIsNotZero)
{
    for (unsigned int a = 0; a < 8; ++a)
    {
        for (unsigned int b = 0; b < 8; ++b)
        {
            SCOPED_TRACE(std::to_string(a) + ", " + std::to_string(b));
            EXPECT_EQ(Bits(a).hasAny(Bits(b)), (a & b) != 0);
            EXPECT_EQ((Bits(a) | Bits(b)).value(), a | b);
            EXPECT_EQ((Bits(a) & Bits(b)).value(), a & b);
            EXPECT_EQ(Bits(a) == Bits(b), a == b);
            EXPECT_EQ(Bits(a) != Bits(b), a != b);
            Bits both(a);
            both |= Bits(b);
            EXPECT_EQ(both.value(), a | b);
            Bits common(a);
            common &= Bits(b);
            EXPECT_EQ(common.value(), a & b);
        }
    }
}

TEST(Flag, HoldsAllThirtyTwoBits)
{
    Bits const all(0xFFFFFFFFu);
    Bits const highest(0x80000000u);
    EXPECT_EQ(all.value(), 0xFFFFFFFFu);
    EXPECT_TRUE(all.hasAny(highest));
    EXPECT_EQ((all & highest).value(), 0x80000000u);
    EXPECT_FALSE(highest.hasAny(Bits(0x7FFFFFFFu)));
}

TEST(Flag, CompoundAssignmentGivesTheFlagItself)
{
    Bits flag(1);
    EXPECT_EQ(&(flag |= Bits(2)), &flag);
    EXPECT_EQ(&(flag &= Bits(2)), &flag);
    EXPECT_EQ(flag.value(), 2u);
}

TEST(PinDirection, InputIsOneOutputIsTwoAndBothMatchEither)
{
    using namespace graph;
    EXPECT_EQ(PIN_INPUT.value(), 1u);
    EXPECT_EQ(PIN_OUTPUT.value(), 2u);
    PinDirection const both = PIN_INPUT | PIN_OUTPUT;
    PinDirection const none;
    EXPECT_EQ(both.value(), 3u);
    EXPECT_TRUE(both.hasAny(PIN_INPUT));
    EXPECT_TRUE(both.hasAny(PIN_OUTPUT));
    EXPECT_TRUE(PIN_INPUT.hasAny(both));
    EXPECT_TRUE(PIN_OUTPUT.hasAny(both));
    EXPECT_FALSE(PIN_INPUT.hasAny(PIN_OUTPUT));
    EXPECT_FALSE(none.hasAny(both));
    EXPECT_FALSE(both.hasAny(none));
}

// ---- Optional

constexpr int five = 5;

static_assert(sizeof(Optional<int>) == 2 * sizeof(void*));
static_assert(std::is_trivially_copyable_v<Optional<std::string>>);
static_assert(!Optional<int>().has_value());
static_assert(!Optional<int>());
static_assert(*Optional<int>(&five) == 5);
static_assert(Optional<int>(&five).value_or(7) == 5);
static_assert(Optional<int>().value_or(7) == 7);
static_assert(std::is_constructible_v<bool, Optional<int>>);
static_assert(!std::is_convertible_v<Optional<int>, bool>);
static_assert(std::is_same_v<decltype(*std::declval<Optional<int> const&>()), int const&>);
static_assert(std::is_same_v<decltype(std::declval<Optional<int> const&>().operator->()), int const*>);

TEST(Optional, IsEmptyByDefaultAndThenHasANullPointer)
{
    Optional<int> const empty;
    EXPECT_FALSE(empty.has_value());
    EXPECT_FALSE(static_cast<bool>(empty));
    EXPECT_EQ(empty.value_or(7), 7);
    int const* pointer = &five;
    std::memcpy(&pointer, &empty, sizeof pointer);
    EXPECT_EQ(pointer, nullptr);
}

TEST(Optional, IsEmptyWhenMadeFromNull)
{
    Optional<int> const empty(nullptr);
    EXPECT_FALSE(empty.has_value());
    EXPECT_FALSE(static_cast<bool>(empty));
    EXPECT_EQ(empty.value_or(7), 7);
}

TEST(Optional, ViewsTheValueWhereItIs)
{
    std::string value = "old";
    Optional<std::string> const view(&value);
    Optional<std::string> const copy = view;
    value = "newer";
    EXPECT_TRUE(view.has_value());
    EXPECT_TRUE(static_cast<bool>(view));
    EXPECT_EQ(&*view, &value);
    EXPECT_EQ(&*copy, &value);
    EXPECT_EQ(view->size(), 5u);
    EXPECT_EQ(view.value_or("other"), "newer");
}

TEST(Optional, OfAZeroIsPresent)
{
    bool const no = false;
    Optional<bool> const view(&no);
    EXPECT_TRUE(view.has_value());
    EXPECT_FALSE(*view);
    EXPECT_FALSE(view.value_or(true));
}

#if GTEST_HAS_DEATH_TEST && !defined(NDEBUG) && !defined(_WIN32)
TEST(OptionalDeathTest, AssertsThatThereIsAValueToRead)
{
    Optional<std::string> const empty;
    EXPECT_DEATH((void)*empty, "");
    EXPECT_DEATH((void)empty->size(), "");
}
#endif

} // namespace

} // namespace kestrel::test
