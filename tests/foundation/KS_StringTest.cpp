#include <foundation/KS_String.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::test
{

namespace
{

using namespace std::string_view_literals;

static_assert(KS_String::npos == 0xFFFFFFFFu);
static_assert(std::is_same_v<decltype(KS_String::npos), unsigned int const>);
static_assert(std::is_same_v<decltype(std::declval<KS_String const&>().length()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<KS_String const&>().find('a')), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<KS_String const&>().findLast('a')), unsigned int>);
static_assert(std::is_nothrow_move_constructible_v<KS_String>);
static_assert(std::is_nothrow_move_assignable_v<KS_String>);
static_assert(std::is_convertible_v<char const*, KS_String>);
static_assert(std::is_convertible_v<std::string_view, KS_String>);
static_assert(std::is_convertible_v<KS_String, std::string_view>);
static_assert(!std::is_polymorphic_v<KS_String>);

constexpr char const* nullText = nullptr;
constexpr unsigned int megabyte = 1u << 20;

std::string bytes(KS_String const& text)
{
    return std::string(text);
}

std::string bytes(std::string_view text)
{
    return std::string(text);
}

/// What holds for every text that was not moved from.
void expectWellFormed(KS_String const& text)
{
    ASSERT_GE(text.size(), 1u);
    EXPECT_EQ(text.length(), text.size() - 1);
    EXPECT_LE(text.size(), text.capacity());
    EXPECT_EQ(text.c_str()[text.length()], '\0');
}

void expectText(KS_String const& text, std::string_view expected)
{
    EXPECT_EQ(bytes(text), bytes(expected));
    expectWellFormed(text);
}

void expectExactText(KS_String const& text, std::string_view expected)
{
    expectText(text, expected);
    EXPECT_EQ(text.capacity(), text.size());
}

KS_String withCapacity(std::string_view text, unsigned int capacity)
{
    KS_String made(text);
    made.reserve(capacity, true);
    return made;
}

KS_String movedFrom()
{
    KS_String text("text");
    KS_String const taker(std::move(text));
    return text;
}

KS_String ofLength(unsigned int length, char byte = 'x')
{
    return std::string_view(std::string(length, byte));
}

/// Runs the operation on a text of the given capacity and tells whether it kept the buffer.
bool keepsBuffer(KS_String& text, std::function<void(KS_String&)> const& operation)
{
    char const* const before = text.c_str();
    operation(text);
    return text.c_str() == before;
}

// ---- Layout and construction

TEST(StringLayout, HoldsBufferThenSizeThenCapacity)
{
    struct Fields
    {
        char const* data;
        unsigned int size;
        unsigned int capacity;
    };
    static_assert(sizeof(KS_String) == sizeof(Fields));
    KS_String const text = withCapacity("abc", 10);
    Fields fields;
    std::memcpy(&fields, static_cast<void const*>(&text), sizeof fields);
    EXPECT_EQ(fields.data, text.c_str());
    EXPECT_EQ(fields.size, 4u);
    EXPECT_EQ(fields.capacity, 10u);
}

TEST(StringConstruction, DefaultIsOneNulInABufferOfOneByte)
{
    KS_String const text;
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.size(), 1u);
    EXPECT_EQ(text.capacity(), 1u);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_STREQ(text.c_str(), "");
}

TEST(StringConstruction, FromCharactersTakesThemUpToTheNulInAnExactBuffer)
{
    for (char const* source : {"", "a", "abc", "a longer text, with blanks", "\x80\xE9\xFF"})
    {
        SCOPED_TRACE(source);
        KS_String const text(source);
        expectExactText(text, source);
        EXPECT_EQ(text.size(), std::strlen(source) + 1);
        EXPECT_NE(text.c_str(), source);
        EXPECT_EQ(text.isEmpty(), *source == '\0');
    }
}

TEST(StringConstruction, NullCharactersAreTheEmptyText)
{
    KS_String const text(nullText);
    expectExactText(text, "");
    EXPECT_EQ(text.size(), 1u);
}

TEST(StringConstruction, FromViewTakesEveryByteAndNoMore)
{
    expectExactText(KS_String("a\0b"sv), "a\0b"sv);
    expectExactText(KS_String("\0"sv), "\0"sv);
    expectExactText(KS_String("abcdef"sv.substr(1, 3)), "bcd");
    expectExactText(KS_String(std::string_view()), "");
}

TEST(StringConstruction, GoesOutAsAViewWithEveryByte)
{
    KS_String const text("a\0b"sv);
    std::string_view const view = text;
    EXPECT_EQ(view.data(), text.c_str());
    EXPECT_EQ(view.size(), 3u);
}

TEST(StringConstruction, CopyHasItsOwnExactBufferWithEveryByte)
{
    KS_String const source = withCapacity("a\0b"sv, 10);
    KS_String copy(source);
    expectExactText(copy, "a\0b"sv);
    EXPECT_NE(copy.c_str(), source.c_str());
    copy[0] = 'z';
    expectText(source, "a\0b"sv);
}

// ---- Assignment

TEST(StringAssignment, ReplacesALargerBufferByAnExactOne)
{
    KS_String const source("abc");
    KS_String text = withCapacity("something", 10);
    text = source;
    expectExactText(text, "abc");
    EXPECT_EQ(text.capacity(), 4u);
}

TEST(StringAssignment, ReplacesASmallerBufferByAnExactOne)
{
    KS_String const source = withCapacity("abcdef", 20);
    KS_String text("x");
    text = source;
    expectExactText(text, "abcdef");
}

TEST(StringAssignment, KeepsABufferOfExactlyTheSourcesSize)
{
    KS_String const source = withCapacity("abc", 30);
    for (char const* old : {"xyz", "x", ""})
    {
        SCOPED_TRACE(old);
        KS_String text = withCapacity(old, 4);
        EXPECT_TRUE(keepsBuffer(text, [&](KS_String& target) { target = source; }));
        expectExactText(text, "abc");
    }
}

TEST(StringAssignment, ReplacesABufferThatDiffersByOneByte)
{
    KS_String const source("abc");
    for (unsigned int capacity : {3u, 5u})
    {
        SCOPED_TRACE(capacity);
        KS_String text = withCapacity("x", capacity);
        text = source;
        expectExactText(text, "abc");
    }
}

TEST(StringAssignment, CopiesTheBytesBehindANul)
{
    KS_String const source("a\0b"sv);
    KS_String text("abc");
    text = source;
    expectExactText(text, "a\0b"sv);
}

TEST(StringAssignment, OfItselfChangesNothing)
{
    KS_String exact("abc");
    KS_String roomy = withCapacity("abc", 10);
    for (KS_String* text : {&exact, &roomy})
    {
        KS_String const& same = *text;
        *text = same;
        expectText(*text, "abc");
    }
}

TEST(StringAssignment, TakesPartsOfItself)
{
    KS_String text("abcdef");
    text = text.left(4);
    expectText(text, "abcd");
    text = text.c_str() + 1;
    expectText(text, "bcd");
    text = std::string_view(text).substr(0, 2);
    expectText(text, "bc");
}

TEST(StringAssignment, OfNullCharactersEmptiesTheText)
{
    KS_String text("abc");
    text = nullText;
    expectText(text, "");
}

// ---- Moving

TEST(StringMove, TakesTheBufferAndLeavesAnEmptyText)
{
    KS_String source = withCapacity("abc", 10);
    char const* const buffer = source.c_str();
    KS_String const taker(std::move(source));
    expectText(taker, "abc");
    EXPECT_EQ(taker.c_str(), buffer);
    EXPECT_EQ(taker.capacity(), 10u);
    ASSERT_NE(source.c_str(), nullptr);
    EXPECT_STREQ(source.c_str(), "");
    EXPECT_EQ(source.length(), 0u);
    EXPECT_TRUE(source.isEmpty());
}

TEST(StringMove, AssignmentTakesTheBufferAndLeavesAnEmptyText)
{
    KS_String source("abc");
    char const* const buffer = source.c_str();
    KS_String target("old");
    target = std::move(source);
    expectText(target, "abc");
    EXPECT_EQ(target.c_str(), buffer);
    ASSERT_NE(source.c_str(), nullptr);
    EXPECT_STREQ(source.c_str(), "");
    EXPECT_EQ(source.length(), 0u);
}

TEST(StringMove, MovedFromTextAnswersAsTheEmptyOne)
{
    KS_String const text = movedFrom();
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(text.length(), 0u);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(std::string_view(text), ""sv);
    EXPECT_EQ(text, KS_String());
    EXPECT_EQ(KS_String(), text);
    EXPECT_FALSE(text != KS_String());
    EXPECT_FALSE(text < KS_String());
    EXPECT_FALSE(KS_String() < text);
    EXPECT_LT(text, KS_String("a"));
    EXPECT_EQ(text.find('a'), KS_String::npos);
    EXPECT_EQ(text.findLast('a'), KS_String::npos);
    EXPECT_TRUE(text.startsWith(KS_String()));
    EXPECT_FALSE(text.startsWith("a"));
    EXPECT_TRUE(KS_String("a").startsWith(text));
    expectText(text.left(3), "");
    expectText(text.mid(0), "");
    expectText(text.mid(1, 2), "");
    expectText(text.toLower(), "");
    expectText(text + text, "");
    expectText(text + "a", "a");
    expectText(KS_String("a") + text, "a");
}

TEST(StringMove, MovedFromTextMayBeUsedAgain)
{
    struct Row
    {
        char const* name;
        std::function<void(KS_String&)> change;
        std::string expected;
    };
    Row const rows[] = {
        {"assign", [](KS_String& text) { text = KS_String("abc"); }, "abc"},
        {"assign copy",
         [](KS_String& text)
         {
             KS_String const source("abc");
             text = source;
         },
         "abc"},
        {"append text", [](KS_String& text) { text += KS_String("abc"); }, "abc"},
        {"append empty", [](KS_String& text) { text += KS_String(); }, ""},
        {"append characters", [](KS_String& text) { text += "abc"; }, "abc"},
        {"append null", [](KS_String& text) { text += nullText; }, ""},
        {"append byte", [](KS_String& text) { text += 'a'; }, "a"},
        {"append itself", [](KS_String& text) { text += text; }, ""},
        {"format", [](KS_String& text) { text.format("%d", 5); }, "5"},
        {"format itself", [](KS_String& text) { text.format("%s.x", text.c_str()); }, ".x"},
        {"appendFormat", [](KS_String& text) { text.appendFormat("%d", 5); }, "5"},
        {"replace", [](KS_String& text) { EXPECT_FALSE(text.replace("a", "b")); }, ""},
        {"reserve", [](KS_String& text) { text.reserve(5, true); }, ""},
        {"append moved-from", [](KS_String& text) { text += movedFrom(); }, ""},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.name);
        KS_String text("text");
        KS_String const taker(std::move(text));
        row.change(text);
        EXPECT_EQ(bytes(text), row.expected);
        EXPECT_EQ(text.c_str()[text.length()], '\0');
    }
}

TEST(StringMove, MovedFromTextCanBeCopiedAndAssignedFrom)
{
    KS_String source("text");
    KS_String const taker(std::move(source));
    KS_String const copy(source);
    EXPECT_STREQ(copy.c_str(), "");
    EXPECT_EQ(copy.length(), 0u);
    KS_String target("old");
    target = source;
    EXPECT_STREQ(target.c_str(), "");
    EXPECT_EQ(target.length(), 0u);
    target += "new";
    expectText(target, "new");
}

TEST(StringMove, SwapExchangesTextsAndBuffers)
{
    KS_String a("abc");
    KS_String b = withCapacity("d", 9);
    char const* const bufferOfA = a.c_str();
    a.swap(b);
    expectText(a, "d");
    EXPECT_EQ(a.capacity(), 9u);
    expectExactText(b, "abc");
    EXPECT_EQ(b.c_str(), bufferOfA);
}

// ---- Capacity

TEST(StringReserve, MakesABufferOfExactlyThatCapacityAndKeepsTheText)
{
    for (unsigned int capacity : {4u, 5u, 6u, 100u})
    {
        SCOPED_TRACE(capacity);
        KS_String text("abc");
        text.reserve(capacity, true);
        expectText(text, "abc");
        EXPECT_EQ(text.capacity(), capacity);
    }
}

TEST(StringReserve, GivesBackWhatIsTooMuch)
{
    KS_String text = withCapacity("abc", 100);
    text.reserve(4, true);
    expectExactText(text, "abc");
}

TEST(StringReserve, CutsTheTextToASmallerCapacityAndStillEndsItWithNul)
{
    KS_String text("abcdef");
    text.reserve(3, true);
    expectExactText(text, "ab");
    text.reserve(1, true);
    expectExactText(text, "");
}

TEST(StringReserve, KeepsBytesBehindANul)
{
    expectText(withCapacity("a\0b"sv, 20), "a\0b"sv);
}

TEST(StringReserve, WithoutKeepLeavesAnEmptyText)
{
    KS_String text("abc");
    text.reserve(10, false);
    EXPECT_EQ(text.capacity(), 10u);
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.c_str(), "");
}

TEST(StringReserve, OfNothingReleasesTheBufferAndReadsAsEmpty)
{
    for (bool keep : {true, false})
    {
        SCOPED_TRACE(keep);
        KS_String text("abc");
        text.reserve(0, keep);
        EXPECT_EQ(text.size(), 0u);
        EXPECT_EQ(text.capacity(), 0u);
        EXPECT_EQ(text.length(), 0u);
        EXPECT_STREQ(text.c_str(), "");
        text += "abc";
        expectText(text, "abc");
    }
}

// ---- Appending

TEST(StringAppend, GrowsToExactlyTheNewSize)
{
    KS_String text("ab");
    text += KS_String("cde");
    expectExactText(text, "abcde");
    EXPECT_EQ(text.capacity(), 6u);

    KS_String other("ab");
    other += "cde";
    expectExactText(other, "abcde");
    EXPECT_EQ(other.capacity(), 6u);
}

TEST(StringAppend, GrowsOnlyWhenTheNewSizeExceedsTheCapacity)
{
    struct Row
    {
        unsigned int capacity;
        unsigned int expected;
        bool keeps;
    };
    for (Row const& row : {Row{5, 6, false}, Row{6, 6, true}, Row{7, 7, true}, Row{50, 50, true}})
    {
        SCOPED_TRACE(row.capacity);
        KS_String const tail("cde");
        KS_String text = withCapacity("ab", row.capacity);
        EXPECT_EQ(keepsBuffer(text, [&](KS_String& target) { target += tail; }), row.keeps);
        expectText(text, "abcde");
        EXPECT_EQ(text.capacity(), row.expected);

        KS_String other = withCapacity("ab", row.capacity);
        EXPECT_EQ(keepsBuffer(other, [](KS_String& target) { target += "cde"; }), row.keeps);
        expectText(other, "abcde");
        EXPECT_EQ(other.capacity(), row.expected);
    }
}

TEST(StringAppend, OfNothingKeepsTheBuffer)
{
    KS_String text("abc");
    EXPECT_TRUE(keepsBuffer(text, [](KS_String& target) { target += KS_String(); }));
    EXPECT_TRUE(keepsBuffer(text, [](KS_String& target) { target += ""; }));
    EXPECT_TRUE(keepsBuffer(text, [](KS_String& target) { target += nullText; }));
    expectExactText(text, "abc");
}

TEST(StringAppend, ReallocatesAtEveryRepeatedAppendToTheExactSize)
{
    KS_String text;
    for (unsigned int i = 1; i <= 20; ++i)
    {
        text += "ab";
        EXPECT_EQ(text.size(), 2 * i + 1);
        EXPECT_EQ(text.capacity(), 2 * i + 1);
    }
}

TEST(StringAppend, TakesEveryByteOfBothTexts)
{
    KS_String text("a\0b"sv);
    text += KS_String("c\0d"sv);
    expectExactText(text, "a\0bc\0d"sv);
    text += "e";
    expectExactText(text, "a\0bc\0de"sv);
}

TEST(StringAppend, ReturnsTheTextItself)
{
    KS_String text("a");
    EXPECT_EQ(&(text += KS_String("b")), &text);
    EXPECT_EQ(&(text += "c"), &text);
    EXPECT_EQ(&(text += 'd'), &text);
    expectText(text, "abcd");
}

TEST(StringAppend, OfItselfDoublesTheText)
{
    KS_String exact("ab");
    exact += exact;
    expectExactText(exact, "abab");

    KS_String roomy = withCapacity("ab", 10);
    EXPECT_TRUE(keepsBuffer(roomy, [](KS_String& text) { text += text; }));
    expectText(roomy, "abab");
    EXPECT_EQ(roomy.capacity(), 10u);
}

TEST(StringAppend, OfItsOwnCharactersTakesThemAsTheyWere)
{
    for (unsigned int capacity : {4u, 30u})
    {
        SCOPED_TRACE(capacity);
        KS_String text = withCapacity("abc", capacity);
        text += text.c_str();
        expectText(text, "abcabc");
        text += text.c_str() + 4;
        expectText(text, "abcabcbc");
        text += text.c_str() + text.length();
        expectText(text, "abcabcbc");
    }
}

TEST(StringAppend, OfOneByteGrowsByAnEighthAndFour)
{
    KS_String text;
    std::vector<unsigned int> capacities{text.capacity()};
    for (unsigned int length = 1; length <= 45; ++length)
    {
        text += 'x';
        ASSERT_EQ(text.length(), length);
        if (text.capacity() != capacities.back()) capacities.push_back(text.capacity());
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{1, 5, 9, 14, 19, 25, 32, 40, 49}));
    expectText(text, std::string(45, 'x'));
}

TEST(StringAppend, OfOneByteGrowsOnlyAFullBuffer)
{
    KS_String text = withCapacity("abc", 5);
    EXPECT_TRUE(keepsBuffer(text, [](KS_String& target) { target += 'd'; }));
    EXPECT_EQ(text.capacity(), 5u);
    text += 'e';
    EXPECT_EQ(text.capacity(), 9u);
    expectText(text, "abcde");
}

TEST(StringAppend, OfOneByteTakesEveryByte)
{
    KS_String text("a");
    text += '\xE9';
    text += '\0';
    text += 'b';
    expectText(text, "a\xE9\0b"sv);
}

TEST(StringPlus, GivesANewExactTextAndLeavesBothAlone)
{
    KS_String const a = withCapacity("ab", 20);
    KS_String const b("cde");
    expectExactText(a + b, "abcde");
    expectExactText(a + "cde", "abcde");
    expectExactText(a + a, "abab");
    expectExactText(a + a.c_str(), "abab");
    expectText(a, "ab");
    expectText(b, "cde");
    EXPECT_EQ(a.capacity(), 20u);
}

TEST(StringPlus, TakesNothingFromEmptyAndNull)
{
    KS_String const a("ab");
    expectExactText(a + KS_String(), "ab");
    expectExactText(a + "", "ab");
    expectExactText(a + nullText, "ab");
    expectExactText(KS_String() + a, "ab");
    expectExactText(KS_String() + KS_String(), "");
}

TEST(StringPlus, TakesEveryByteOfBothTexts)
{
    expectExactText(KS_String("a\0b"sv) + KS_String("c\0"sv), "a\0bc\0"sv);
}

TEST(StringConcatenated, JoinsThePartsInOneExactBuffer)
{
    KS_String const text("xy");
    expectExactText(KS_String::concatenated({"a\0b"sv, "", text, "c", text}), "a\0bxycxy"sv);
    expectExactText(KS_String::concatenated({"a"}), "a");
    expectExactText(KS_String::concatenated({}), "");
}

TEST(StringConcatenated, RefusesWhatASizeCannotSay)
{
    std::size_t const size = std::size_t{1} << 28;
    auto const bytes = std::make_unique_for_overwrite<char[]>(size); // whose pages nobody touches
    std::string_view const x(bytes.get(), size);
    EXPECT_THROW(KS_String::concatenated({x, x, x, x, x, x, x, x, x, x, x, x, x, x, x, x}),
                 std::bad_array_new_length);
}

TEST(StringConcatenated, MayBeAssignedToOneOfItsParts)
{
    KS_String text("ab");
    text = KS_String::concatenated({text, ".", text});
    expectText(text, "ab.ab");
}

// ---- Comparing

TEST(StringCompare, OrdersByUnsignedBytesAndPrefixesFirst)
{
    std::vector<KS_String> const ascending = {
        "",      "\x01",   " ",     "A",        "Node",     "a",    "ab",   "abc",  "b",     "node",
        "node1", "node10", "node2", "node\x7F", "node\x80", "\x7F", "\x80", "\xE9", "\xE9z", "\xFF",
    };
    for (std::size_t i = 0; i < ascending.size(); ++i)
    {
        for (std::size_t j = 0; j < ascending.size(); ++j)
        {
            KS_String const& a = ascending[i];
            KS_String const b(ascending[j]);
            SCOPED_TRACE(bytes(a) + " | " + bytes(b));
            EXPECT_EQ(a == b, i == j);
            EXPECT_EQ(a != b, i != j);
            EXPECT_EQ(a < b, i < j);
            EXPECT_EQ(a > b, i > j);
            EXPECT_EQ(a <= b, i <= j);
            EXPECT_EQ(a >= b, i >= j);
        }
    }
}

TEST(StringCompare, LooksNoFurtherThanTheFirstNul)
{
    KS_String const a("a\0b"sv);
    KS_String const longer("a\0c and more"sv);
    KS_String const plain("a");
    for (KS_String const* other : {&longer, &plain})
    {
        EXPECT_TRUE(a == *other);
        EXPECT_FALSE(a != *other);
        EXPECT_FALSE(a < *other);
        EXPECT_FALSE(a > *other);
        EXPECT_TRUE(a <= *other);
        EXPECT_TRUE(a >= *other);
    }
    EXPECT_TRUE(a < KS_String("ab"));
    EXPECT_TRUE(KS_String("ab") > a);
}

/// All six questions about two texts of any kinds.
template <class A, class B>
void expectOrder(A const& a, B const& b, int order)
{
    EXPECT_EQ(a == b, order == 0);
    EXPECT_EQ(a != b, order != 0);
    EXPECT_EQ(a < b, order < 0);
    EXPECT_EQ(a <= b, order <= 0);
    EXPECT_EQ(a > b, order > 0);
    EXPECT_EQ(a >= b, order >= 0);
}

TEST(StringCompare, WithViewsStandardTextsAndCharactersGoesBothWays)
{
    struct Row
    {
        std::string_view own;
        std::string_view other;
        int order;
    };
    for (Row const& row :
         {Row{"", "", 0}, Row{"a", "a", 0}, Row{"", "a", -1}, Row{"a", "", 1}, Row{"a", "ab", -1},
          Row{"ab", "a", 1}, Row{"a", "b", -1}, Row{"\xFF", "a", 1}, Row{"a", "\x80", -1},
          Row{"a\0b"sv, "a", 0}, Row{"a", "a\0b"sv, 0}, Row{"a\0c"sv, "a\0b"sv, 0}, Row{"\0b"sv, "", 0},
          Row{"a\0z"sv, "ab", -1}, Row{"ab", "a\0z"sv, 1}})
    {
        SCOPED_TRACE(bytes(row.own) + " | " + bytes(row.other));
        KS_String const own(row.own);
        std::string const standard(row.other);
        expectOrder(own, row.other, row.order);
        expectOrder(row.other, own, -row.order);
        expectOrder(own, standard, row.order);
        expectOrder(standard, own, -row.order);
        expectOrder(own, standard.c_str(), row.order);
        expectOrder(standard.c_str(), own, -row.order);
    }
}

TEST(StringCompare, IgnoresTheCapacity)
{
    EXPECT_EQ(withCapacity("abc", 40), KS_String("abc"));
    EXPECT_FALSE(withCapacity("abc", 40) < KS_String("abc"));
}

TEST(StringCompare, TakesCharactersAndReadsNullAsEmpty)
{
    EXPECT_TRUE(KS_String("abc") == "abc");
    EXPECT_TRUE(KS_String("abc") != "abd");
    EXPECT_TRUE(KS_String() == nullText);
    EXPECT_TRUE(KS_String("a") != nullText);
}

TEST(StringCompare, IsTheKeyOrderOfMaps)
{
    std::map<KS_String, int> map;
    for (char const* key : {"\xE9", "node1", "Node", "node", "a > b", "a"}) map.insert({key, 0});
    std::string keys;
    for (auto const& entry : map) keys += bytes(entry.first) + "|";
    EXPECT_EQ(keys, "Node|a|a > b|node|node1|\xE9|");
    EXPECT_EQ(map.count("node"), 1u);
    EXPECT_EQ(map.count("nod"), 0u);
}

// ---- Reading

TEST(StringIndex, ReadsAndWritesOneByte)
{
    KS_String text("abc");
    KS_String const& constant = text;
    EXPECT_EQ(constant[0], 'a');
    EXPECT_EQ(constant[2], 'c');
    EXPECT_EQ(constant[3], '\0');
    text[1] = 'X';
    expectText(text, "aXc");
}

#if GTEST_HAS_DEATH_TEST && !defined(NDEBUG) && !defined(_WIN32)
TEST(StringIndexDeathTest, AssertsItsBound)
{
    KS_String text("abc");
    KS_String const& constant = text;
    EXPECT_DEATH(text[4] = 'x', "");
    EXPECT_DEATH((void)constant[4], "");
}
#endif

TEST(StringFind, GivesTheFirstAndTheLastIndex)
{
    struct Row
    {
        char const* text;
        char wanted;
        unsigned int first;
        unsigned int last;
    };
    Row const rows[] = {
        {"a > b > c", '>', 2, 6},
        {"node.pin", '.', 4, 4},
        {".a.", '.', 0, 2},
        {"aaa", 'a', 0, 2},
        {"abc", 'a', 0, 0},
        {"abc", 'c', 2, 2},
        {"abc", '>', 0xFFFFFFFFu, 0xFFFFFFFFu},
        {"abc", 'A', 0xFFFFFFFFu, 0xFFFFFFFFu},
        {"", 'a', 0xFFFFFFFFu, 0xFFFFFFFFu},
        {"a\xE9\x62\xE9", '\xE9', 1, 3},
        {"abc", '\xE9', 0xFFFFFFFFu, 0xFFFFFFFFu},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(std::string(row.text) + " " + row.wanted);
        EXPECT_EQ(KS_String(row.text).find(row.wanted), row.first);
        EXPECT_EQ(KS_String(row.text).findLast(row.wanted), row.last);
    }
}

TEST(StringFind, LooksNoFurtherThanTheFirstNul)
{
    KS_String const text("ab\0ba"sv);
    EXPECT_EQ(text.find('b'), 1u);
    EXPECT_EQ(text.findLast('a'), 0u);
    EXPECT_EQ(KS_String("a\0b"sv).find('b'), KS_String::npos);
    EXPECT_EQ(KS_String("a\0b"sv).findLast('b'), KS_String::npos);
}

TEST(StringFind, OfNulGivesTheFirstOne)
{
    EXPECT_EQ(KS_String("abc").find('\0'), 3u);
    EXPECT_EQ(KS_String("abc").findLast('\0'), 3u);
    EXPECT_EQ(KS_String("ab\0c"sv).find('\0'), 2u);
    EXPECT_EQ(KS_String("ab\0c"sv).findLast('\0'), 2u);
}

TEST(StringStartsWith, IsTrueForPrefixesTheEmptyAndTheEqualText)
{
    struct Row
    {
        char const* text;
        char const* prefix;
        bool expected;
    };
    Row const rows[] = {
        {"node.pin", "node", true},
        {"node.pin", "n", true},
        {"node.pin", "", true},
        {"node.pin", "node.pin", true},
        {"", "", true},
        {"node", "node.pin", false},
        {"node.pin", "node.q", false},
        {"node", "ode", false},
        {"node", "Node", false},
        {"", "n", false},
        {"\xE9x", "\xE9", true},
        {"\xE9x", "\xE8", false},
        {"node", nullText, true},
        {"nodf", "node", false},
        {"xode", "node", false},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.text + std::string(" | ") + (row.prefix != nullptr ? row.prefix : "null"));
        EXPECT_EQ(KS_String(row.text).startsWith(row.prefix), row.expected);
    }
}

TEST(StringStartsWith, TakesItself)
{
    KS_String const text("abc");
    EXPECT_TRUE(text.startsWith(text));
}

// ---- Parts

TEST(StringLeft, GivesTheFirstBytesOrAllThereAre)
{
    KS_String const text = withCapacity("abcd", 20);
    struct Row
    {
        unsigned int count;
        char const* expected;
    };
    Row const rows[] = {
        {0, ""},
        {1, "a"},
        {3, "abc"},
        {4, "abcd"},
        {5, "abcd"},
        {6, "abcd"},
        {0xFFFFFFFEu, "abcd"},
        {0xFFFFFFFFu, "abcd"},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.count);
        expectExactText(text.left(row.count), row.expected);
    }
    expectExactText(KS_String().left(0), "");
    expectExactText(KS_String().left(1), "");
    expectText(text, "abcd");
}

TEST(StringMid, GivesTheBytesFromTheStartOrAllThereAre)
{
    KS_String const text = withCapacity("abcd", 20);
    struct Row
    {
        unsigned int start;
        unsigned int count;
        char const* expected;
    };
    constexpr unsigned int all = 0xFFFFFFFFu;
    Row const rows[] = {
        {0, 0, ""},    {0, 1, "a"},        {0, 4, "abcd"}, {0, 5, "abcd"},  {0, all, "abcd"}, {1, 0, ""},
        {1, 2, "bc"},  {1, 3, "bcd"},      {1, 4, "bcd"},  {1, all, "bcd"}, {3, 1, "d"},      {3, 2, "d"},
        {3, all, "d"}, {2, all - 1, "cd"}, {4, 0, ""},     {4, 1, ""},      {4, all, ""},     {5, 0, ""},
        {5, 1, ""},    {5, all, ""},       {6, 1, ""},     {all, 0, ""},    {all, 1, ""},     {all, all, ""},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(std::to_string(row.start) + ", " + std::to_string(row.count));
        expectExactText(text.mid(row.start, row.count), row.expected);
    }
    expectText(text, "abcd");
}

TEST(StringMid, WithoutCountGoesToTheEnd)
{
    KS_String const text("abcd");
    expectExactText(text.mid(0), "abcd");
    expectExactText(text.mid(2), "cd");
    expectExactText(text.mid(4), "");
    expectExactText(text.mid(5), "");
}

TEST(StringParts, KeepBytesBehindANul)
{
    KS_String const text("a\0bc"sv);
    expectText(text.left(3), "a\0b"sv);
    expectText(text.mid(1, 2), "\0b"sv);
    expectText(text.mid(2), "bc");
}

TEST(StringParts, SplitADottedNameAtItsLastDot)
{
    KS_String const name("root.node.pin");
    unsigned int const dot = name.findLast('.');
    expectText(name.left(dot), "root.node");
    expectText(name.mid(dot + 1, name.length() - dot - 1), "pin");
}

TEST(StringParts, SplitAConnectionNameAtItsArrow)
{
    KS_String const name("a.out > b.in");
    unsigned int const arrow = name.find('>');
    expectText(name.left(arrow - 1), "a.out");
    expectText(name.mid(arrow + 2), "b.in");
}

TEST(StringToLower, GivesALowerCaseCopy)
{
    KS_String const text = withCapacity("Input.PIN", 30);
    expectExactText(text.toLower(), "input.pin");
    expectText(text, "Input.PIN");
    expectExactText(KS_String().toLower(), "");
    expectText(KS_String("@AZ[`az{").toLower(), "@az[`az{");
}

TEST(StringToLower, PassesEveryByteThroughTheRuntime)
{
    std::string source;
    std::string expected;
    for (int byte = 0; byte < 256; ++byte)
    {
        source += static_cast<char>(byte);
        expected += static_cast<char>(std::tolower(byte));
    }
    EXPECT_EQ(bytes(KS_String(std::string_view(source)).toLower()), expected);
}

TEST(StringToLower, GoesOnBehindANul)
{
    expectText(KS_String("A\0B"sv).toLower(), "a\0b"sv);
}

// ---- Formatting

TEST(StringFormat, ReplacesTheTextAndGrowsToExactlyItsSize)
{
    KS_String text("abc");
    text.format("%s%02d", "node", 7);
    expectExactText(text, "node07");
    EXPECT_EQ(text.capacity(), 7u);
}

TEST(StringFormat, WritesWhatTheRuntimeWrites)
{
    KS_String text;
    text.format("%s%%0%dd", "node", 3);
    expectText(text, "node%03d");
    text.format("%s.%s > %s.%s", "a", "out", "b", "in");
    expectText(text, "a.out > b.in");
    text.format("%d %u %x %c %.2f %5d|%-5d|", -1, 0xFFFFFFFFu, 255u, 'c', 0.5, 42, 42);
    expectText(text, "-1 4294967295 ff c 0.50    42|42   |");
    text.format("%s", "\x80\xE9\xFF");
    expectText(text, "\x80\xE9\xFF");
}

TEST(StringFormat, GrowsOnlyWhenTheSizeExceedsTheCapacity)
{
    struct Row
    {
        unsigned int capacity;
        unsigned int expected;
        bool keeps;
    };
    for (Row const& row : {Row{6, 7, false}, Row{7, 7, true}, Row{8, 8, true}, Row{50, 50, true}})
    {
        SCOPED_TRACE(row.capacity);
        KS_String text = withCapacity("old", row.capacity);
        bool const kept = keepsBuffer(text, [](KS_String& target) { target.format("%s%02d", "node", 7); });
        EXPECT_EQ(kept, row.keeps);
        expectText(text, "node07");
        EXPECT_EQ(text.capacity(), row.expected);
    }
}

TEST(StringFormat, OfAShorterTextKeepsTheCapacity)
{
    KS_String text("a long text");
    text.format("%d", 5);
    expectText(text, "5");
    EXPECT_EQ(text.capacity(), 12u);
    text.format("%s", "");
    expectText(text, "");
    EXPECT_EQ(text.size(), 1u);
    EXPECT_EQ(text.capacity(), 12u);
}

TEST(StringFormat, MayUseTheTextItself)
{
    KS_String exact("a");
    exact.format("%s.x", exact.c_str());
    expectExactText(exact, "a.x");

    KS_String roomy = withCapacity("ab", 20);
    roomy.format("<%s|%s>", roomy.c_str(), roomy.c_str() + 1);
    expectText(roomy, "<ab|b>");
    EXPECT_EQ(roomy.capacity(), 20u);
}

TEST(StringFormat, MayUseTheTextAsTheFormat)
{
    KS_String exact("%s and %s");
    exact.format(exact.c_str(), "this", "that");
    expectText(exact, "this and that");

    KS_String roomy = withCapacity("%s!", 20);
    roomy.format(roomy.c_str(), "wow");
    expectText(roomy, "wow!");
    EXPECT_EQ(roomy.capacity(), 20u);
}

TEST(StringFormat, TakesResultsOfAnyLength)
{
    for (int power = 5; power <= 16; ++power)
    {
        for (int off = -2; off <= 2; ++off)
        {
            int const length = (1 << power) + off;
            SCOPED_TRACE(length);
            KS_String text;
            text.format("%*d", length, 7);
            expectExactText(text, std::string(static_cast<std::size_t>(length) - 1, ' ') + "7");
            text.appendFormat("%0*d", length, 8);
            EXPECT_EQ(text.length(), static_cast<unsigned int>(2 * length));
            EXPECT_EQ(text.capacity(), text.size());
            EXPECT_EQ(text[text.length() - 1], '8');
            EXPECT_EQ(text[text.length() - static_cast<unsigned int>(length)], '0');
        }
    }
}

TEST(StringFormat, KeepsANulThatWasWritten)
{
    KS_String text;
    text.format("a%cb", 0);
    expectExactText(text, "a\0b"sv);
    text.appendFormat("%cc", 0);
    expectExactText(text, "a\0b\0c"sv);
}

#if defined(__GLIBC__)
TEST(StringFormat, OfAnArgumentThatTheRuntimeRefusesGivesTheEmptyText)
{
    KS_String text("abc");
    text.format("%ls", L"\u20AC");
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.c_str(), "");
    KS_String other("abc");
    other.appendFormat("%ls", L"\u20AC");
    expectText(other, "abc");
}
#endif

TEST(StringAppendFormat, AppendsAndGrowsToExactlyTheNewSize)
{
    KS_String text("ab");
    text.appendFormat("%s%02d", "node", 7);
    expectExactText(text, "abnode07");
    text.appendFormat("%s", "");
    expectExactText(text, "abnode07");
}

TEST(StringAppendFormat, GrowsOnlyWhenTheSizeExceedsTheCapacity)
{
    struct Row
    {
        unsigned int capacity;
        unsigned int expected;
        bool keeps;
    };
    for (Row const& row : {Row{4, 5, false}, Row{5, 5, true}, Row{6, 6, true}})
    {
        SCOPED_TRACE(row.capacity);
        KS_String text = withCapacity("ab", row.capacity);
        EXPECT_EQ(keepsBuffer(text, [](KS_String& target) { target.appendFormat("%d", 42); }), row.keeps);
        expectText(text, "ab42");
        EXPECT_EQ(text.capacity(), row.expected);
    }
}

TEST(StringAppendFormat, MayUseTheTextItself)
{
    KS_String exact("ab");
    exact.appendFormat(".%s", exact.c_str());
    expectExactText(exact, "ab.ab");

    KS_String roomy = withCapacity("ab", 20);
    roomy.appendFormat(".%s%s", roomy.c_str() + 1, roomy.c_str());
    expectText(roomy, "ab.bab");
    EXPECT_EQ(roomy.capacity(), 20u);

    KS_String format("%s|");
    format.appendFormat(format.c_str(), "x");
    expectText(format, "%s|x|");
}

TEST(StringAppendFormat, KeepsTheBytesBehindANul)
{
    KS_String text("a\0b"sv);
    text.appendFormat("%d", 1);
    expectText(text, "a\0b1"sv);
}

// ---- Replacing

TEST(StringReplace, ReplacesEveryOccurrenceFromLeftToRight)
{
    struct Row
    {
        char const* text;
        char const* from;
        char const* to;
        char const* expected;
        bool found;
    };
    Row const rows[] = {
        {"banana", "a", "aa", "baanaanaa", true},
        {"banana", "x", "y", "banana", false},
        {"banana", "an", "", "ba", true},
        {"banana", "banana", "b", "b", true},
        {"banana", "banana", "", "", true},
        {"banana", "bananas", "x", "banana", false},
        {"banana", "b", "c", "canana", true},
        {"banana", "na", "NA", "baNANA", true},
        {"banana", "ana", "x", "bxna", true},
        {"aaa", "aa", "b", "ba", true},
        {"aaaa", "aa", "a", "aa", true},
        {"aab", "ab", "b", "ab", true},
        {"a.b.c", ".", " > ", "a > b > c", true},
        {"aaa", "a", "a", "aaa", true},
        {"", "a", "b", "", false},
        {"a", "a", "", "", true},
        {"<&>", "&", "&amp;", "<&amp;>", true},
        {"x\xE9x", "\xE9", "\xFF\x80", "x\xFF\x80x", true},
        {"Banana", "b", "x", "Banana", false},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(std::string(row.text) + ": " + row.from + " -> " + row.to);
        KS_String text(row.text);
        EXPECT_EQ(text.replace(row.from, row.to), row.found);
        expectText(text, row.expected);
    }
}

TEST(StringReplace, OfNothingIsRefused)
{
    KS_String text("abc");
    EXPECT_FALSE(text.replace("", "x"));
    EXPECT_FALSE(text.replace(nullText, "x"));
    EXPECT_FALSE(text.replace("", ""));
    EXPECT_FALSE(KS_String().replace("", "x"));
    expectExactText(text, "abc");
}

TEST(StringReplace, ByNullRemoves)
{
    KS_String text("abcb");
    EXPECT_TRUE(text.replace("b", nullText));
    expectText(text, "ac");
}

TEST(StringReplace, RefusesWhatASizeCannotSay)
{
    KS_String text(std::string(1u << 14, 'x'));
    std::string const longer(1u << 18, 'y');
    EXPECT_THROW(text.replace("x", longer.c_str()), std::bad_array_new_length);
    EXPECT_EQ(text.length(), 1u << 14);
}

TEST(StringReplace, WithoutMatchKeepsTheBuffer)
{
    KS_String text = withCapacity("banana", 20);
    EXPECT_TRUE(keepsBuffer(text, [](KS_String& target) { target.replace("x", "y"); }));
    EXPECT_EQ(text.capacity(), 20u);
}

TEST(StringReplace, OfAnExactTextByNothingShorterLeavesAnExactText)
{
    KS_String longer("banana");
    longer.replace("a", "aa");
    expectExactText(longer, "baanaanaa");
    KS_String same("banana");
    same.replace("a", "o");
    expectExactText(same, "bonono");
    KS_String ofMany("banana");
    ofMany.replace("an", "xyz");
    expectExactText(ofMany, "bxyzxyza");
}

TEST(StringReplace, MayUseTheTextItself)
{
    for (unsigned int capacity : {4u, 40u})
    {
        SCOPED_TRACE(capacity);
        KS_String whole = withCapacity("aba", capacity);
        EXPECT_TRUE(whole.replace(whole.c_str(), "b"));
        expectText(whole, "b");

        KS_String part = withCapacity("aba", capacity);
        EXPECT_TRUE(part.replace(part.c_str() + 2, "xyz"));
        expectText(part, "xyzbxyz");

        KS_String target = withCapacity("aba", capacity);
        EXPECT_TRUE(target.replace("a", target.c_str()));
        expectText(target, "abababa");

        KS_String both = withCapacity("aba", capacity);
        EXPECT_TRUE(both.replace(both.c_str() + 2, both.c_str() + 1));
        expectText(both, "babba");
    }
}

TEST(StringReplace, LooksNoFurtherThanANulButKeepsWhatIsBehindIt)
{
    KS_String text("a\0a"sv);
    EXPECT_TRUE(text.replace("a", "bb"));
    expectText(text, "bb\0a"sv);

    KS_String unchanged("x\0a"sv);
    EXPECT_FALSE(unchanged.replace("a", "b"));
    expectText(unchanged, "x\0a"sv);
}

// ---- A megabyte

TEST(StringOfAMegabyte, CopiesAppendsAndCompares)
{
    KS_String const text = ofLength(megabyte);
    EXPECT_EQ(text.length(), megabyte);
    EXPECT_EQ(text.capacity(), megabyte + 1);
    KS_String other(text);
    EXPECT_EQ(other, text);
    other += "y";
    EXPECT_EQ(other.capacity(), megabyte + 2);
    EXPECT_LT(text, other);
    EXPECT_TRUE(other.startsWith(text));
    EXPECT_FALSE(text.startsWith(other));
    EXPECT_EQ(other.find('y'), megabyte);
    EXPECT_EQ(other.findLast('x'), megabyte - 1);
    EXPECT_EQ(other.left(megabyte), text);
    expectExactText(other.mid(megabyte - 1), "xy");
    EXPECT_EQ(ofLength(megabyte, 'X').toLower(), text);
}

TEST(StringOfAMegabyte, FormatsAndReplaces)
{
    KS_String const text = ofLength(megabyte);
    KS_String formatted("ab");
    formatted.format("<%s>", text.c_str());
    EXPECT_EQ(formatted.length(), megabyte + 2);
    EXPECT_EQ(formatted.capacity(), megabyte + 3);
    formatted.appendFormat("%s", text.c_str());
    EXPECT_EQ(formatted.length(), 2 * megabyte + 2);
    EXPECT_EQ(formatted.find('>'), megabyte + 1);

    KS_String replaced(text);
    EXPECT_TRUE(replaced.replace("x", "yz"));
    EXPECT_EQ(replaced.length(), 2 * megabyte);
    EXPECT_EQ(replaced.find('x'), KS_String::npos);
    EXPECT_TRUE(replaced.replace("yz", ""));
    expectText(replaced, "");
}

} // namespace

} // namespace kestrel::test
