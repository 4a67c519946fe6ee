#include <foundation/Array.h>
#include <ks_graph/GraphLayout.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kestrel::graph::test
{

namespace
{

using namespace std::string_view_literals;

using Color = Color4<float>;
using Pair = Tuple2<float, float>;

using Read = NoteDesc const&;

static_assert(!std::is_polymorphic_v<NoteDesc>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getOwnerName()), KS_String const&>);
static_assert(std::is_same_v<decltype(std::declval<NoteDesc&>().refOwnerName()), KS_String&>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getText()), Optional<KS_String>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getPosition()), Optional<Pair>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getSize()), Optional<Pair>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getFirstColor()), Optional<Color>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getSecondColor()), Optional<Color>>);
static_assert(std::is_same_v<decltype(std::declval<Read>() == std::declval<Read>()), bool>);
static_assert(std::is_copy_constructible_v<NoteDesc>);
static_assert(std::is_copy_assignable_v<NoteDesc>);
// A list of notes is left as it was by a failed change only if its notes move without failing.
static_assert(std::is_nothrow_move_constructible_v<NoteDesc>);
static_assert(std::is_nothrow_move_assignable_v<NoteDesc>);

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

NoteDesc fullNote()
{
    return NoteDesc("root.a", "text", Pair(1.5f, -2.0f), Pair(30.0f, 40.0f), Color(0.1f, 0.2f, 0.3f, 0.4f),
                    Color(0.5f, 0.6f, 0.7f, 0.8f));
}

/// One of the five parts that may be absent. `set` gives it a value that `fullNote` does not have.
struct Part
{
    char const* name;
    void (*set)(NoteDesc& note);
    void (*reset)(NoteDesc& note);
    bool (*isPresent)(NoteDesc const& note);
};

Part const parts[] = {
    {"text", [](NoteDesc& note) { note.setText("other text"); }, [](NoteDesc& note) { note.resetText(); },
     [](NoteDesc const& note) { return note.getText().has_value(); }},
    {"position", [](NoteDesc& note) { note.setPosition(Pair(1.5f, 2.0f)); },
     [](NoteDesc& note) { note.resetPosition(); },
     [](NoteDesc const& note) { return note.getPosition().has_value(); }},
    {"size", [](NoteDesc& note) { note.setSize(Pair(31.0f, 40.0f)); },
     [](NoteDesc& note) { note.resetSize(); },
     [](NoteDesc const& note) { return note.getSize().has_value(); }},
    {"first colour", [](NoteDesc& note) { note.setFirstColor(Color(0.1f, 0.2f, 0.3f, 1.0f)); },
     [](NoteDesc& note) { note.resetFirstColor(); },
     [](NoteDesc const& note) { return note.getFirstColor().has_value(); }},
    {"second colour", [](NoteDesc& note) { note.setSecondColor(Color(0.0f, 0.6f, 0.7f, 0.8f)); },
     [](NoteDesc& note) { note.resetSecondColor(); },
     [](NoteDesc const& note) { return note.getSecondColor().has_value(); }},
};

void expectFull(NoteDesc const& note)
{
    EXPECT_STREQ(note.getOwnerName().c_str(), "root.a");
    for (Part const& part : parts) ASSERT_TRUE(part.isPresent(note)) << part.name;
    EXPECT_STREQ(note.getText()->c_str(), "text");
    EXPECT_EQ(*note.getPosition(), Pair(1.5f, -2.0f));
    EXPECT_EQ(*note.getSize(), Pair(30.0f, 40.0f));
    EXPECT_EQ(*note.getFirstColor(), Color(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(*note.getSecondColor(), Color(0.5f, 0.6f, 0.7f, 0.8f));
}

void expectEqual(NoteDesc const& a, NoteDesc const& b, bool equal)
{
    EXPECT_EQ(a == b, equal);
    EXPECT_EQ(b == a, equal);
    EXPECT_EQ(a != b, !equal);
}

// ---- Construction and parts

TEST(NoteDesc, HasNoOwnerAndHoldsNothingByDefault)
{
    NoteDesc const note;
    EXPECT_STREQ(note.getOwnerName().c_str(), "");
    for (Part const& part : parts) EXPECT_FALSE(part.isPresent(note)) << part.name;
}

TEST(NoteDesc, HoldsEverythingThatItIsMadeOf)
{
    expectFull(fullNote());
}

TEST(NoteDesc, HoldsEverythingThatIsSet)
{
    NoteDesc note;
    note.setOwnerName("root.a");
    note.setText("text");
    note.setPosition(Pair(1.5f, -2.0f));
    note.setSize(Pair(30.0f, 40.0f));
    note.setFirstColor(Color(0.1f, 0.2f, 0.3f, 0.4f));
    note.setSecondColor(Color(0.5f, 0.6f, 0.7f, 0.8f));
    expectFull(note);
}

TEST(NoteDesc, SetsEachPartAlone)
{
    for (Part const& set : parts)
    {
        SCOPED_TRACE(set.name);
        NoteDesc note;
        set.set(note);
        for (Part const& part : parts) EXPECT_EQ(part.isPresent(note), &part == &set) << part.name;
        EXPECT_STREQ(note.getOwnerName().c_str(), "");
    }
}

TEST(NoteDesc, ResetsEachPartAlone)
{
    for (Part const& reset : parts)
    {
        SCOPED_TRACE(reset.name);
        NoteDesc note = fullNote();
        reset.reset(note);
        for (Part const& part : parts) EXPECT_EQ(part.isPresent(note), &part != &reset) << part.name;
        EXPECT_STREQ(note.getOwnerName().c_str(), "root.a");
    }
}

TEST(NoteDesc, APartThatIsAbsentMayBeResetAndSetAgain)
{
    for (Part const& part : parts)
    {
        SCOPED_TRACE(part.name);
        NoteDesc note;
        part.reset(note);
        EXPECT_FALSE(part.isPresent(note));
        part.set(note);
        part.reset(note);
        part.reset(note);
        EXPECT_TRUE(note == NoteDesc());
        part.set(note);
        EXPECT_TRUE(part.isPresent(note));
    }
}

TEST(NoteDesc, SettingReplacesTheValue)
{
    for (Part const& part : parts)
    {
        SCOPED_TRACE(part.name);
        NoteDesc note = fullNote();
        NoteDesc expected = fullNote();
        part.set(note);
        part.reset(expected);
        part.set(expected);
        EXPECT_TRUE(note == expected);
        EXPECT_FALSE(note == fullNote());
    }
}

TEST(NoteDesc, TheOwnersNameIsOneValueForAllThreeAccessors)
{
    NoteDesc note = fullNote();
    note.refOwnerName() += ".b";
    EXPECT_STREQ(note.getOwnerName().c_str(), "root.a.b");
    EXPECT_EQ(&note.getOwnerName(), &note.refOwnerName());
    note.setOwnerName("c");
    EXPECT_STREQ(note.refOwnerName().c_str(), "c");
}

TEST(NoteDesc, ZerosAndTheEmptyTextArePresent)
{
    NoteDesc const note("", "", Pair(), Pair(), Color(0, 0, 0, 0), Color());
    for (Part const& part : parts) EXPECT_TRUE(part.isPresent(note)) << part.name;
    EXPECT_TRUE(note.getText()->isEmpty());
    expectEqual(note, NoteDesc(), false);
}

TEST(NoteDesc, KeepsEveryByteOfItsTexts)
{
    NoteDesc note;
    note.setOwnerName("n\xF8\x80\xFF");
    note.setText("line\n\0 \xE9"sv);
    EXPECT_EQ(std::string_view(note.getOwnerName()), "n\xF8\x80\xFF"sv);
    EXPECT_EQ(std::string_view(*note.getText()), "line\n\0 \xE9"sv);
}

// ---- Equality

TEST(NoteDesc, EqualsOneWithTheSameValues)
{
    expectEqual(fullNote(), fullNote(), true);
    expectEqual(NoteDesc(), NoteDesc(), true);
}

TEST(NoteDesc, EqualsNoneOfAnotherOwner)
{
    NoteDesc other = fullNote();
    other.setOwnerName("root.A");
    expectEqual(fullNote(), other, false);
    NoteDesc nobodys;
    nobodys.setOwnerName("root");
    expectEqual(nobodys, NoteDesc(), false);
}

TEST(NoteDesc, EqualsNoneThatDiffersInOnePart)
{
    for (Part const& part : parts)
    {
        SCOPED_TRACE(part.name);
        NoteDesc other = fullNote();
        part.set(other);
        expectEqual(fullNote(), other, false);
        part.reset(other);
        expectEqual(fullNote(), other, false);
        NoteDesc only;
        part.set(only);
        expectEqual(only, NoteDesc(), false);
    }
}

TEST(NoteDesc, EqualsOneInWhichTheSamePartIsAbsent)
{
    for (Part const& part : parts)
    {
        SCOPED_TRACE(part.name);
        NoteDesc note = fullNote();
        NoteDesc other = fullNote();
        part.reset(note);
        part.set(other);
        part.reset(other);
        expectEqual(note, other, true);
    }
}

TEST(NoteDesc, TheTwoPairsAndTheTwoColoursAreNotMixedUp)
{
    NoteDesc const note("", "", Pair(1, 2), Pair(3, 4), Color(1, 0, 0, 1), Color(0, 1, 0, 1));
    expectEqual(note, NoteDesc("", "", Pair(3, 4), Pair(1, 2), Color(1, 0, 0, 1), Color(0, 1, 0, 1)), false);
    expectEqual(note, NoteDesc("", "", Pair(1, 2), Pair(3, 4), Color(0, 1, 0, 1), Color(1, 0, 0, 1)), false);
}

TEST(NoteDesc, WithAPartThatIsNotANumberEqualsNone)
{
    NoteDesc note = fullNote();
    note.setPosition(Pair(1.5f, notANumber));
    NoteDesc const copy = note;
    expectEqual(note, copy, false);
    note = fullNote();
    note.setSecondColor(Color(0.5f, notANumber, 0.7f, 0.8f));
    NoteDesc const colored = note;
    expectEqual(note, colored, false);
}

// ---- Copies

TEST(NoteDesc, ACopyHoldsTheSameValuesAndAbsences)
{
    for (Part const& part : parts)
    {
        SCOPED_TRACE(part.name);
        NoteDesc source = fullNote();
        part.reset(source);
        NoteDesc const copy(source);
        NoteDesc assigned = fullNote();
        part.set(assigned);
        assigned = source;
        EXPECT_TRUE(copy == source);
        EXPECT_TRUE(assigned == source);
        EXPECT_FALSE(part.isPresent(assigned));
    }
}

TEST(NoteDesc, AssignmentFillsWhatWasAbsent)
{
    NoteDesc note;
    note = fullNote();
    expectFull(note);
}

TEST(NoteDesc, ACopyViewsItsOwnValues)
{
    NoteDesc const source = fullNote();
    NoteDesc const copy(source);
    NoteDesc assigned;
    assigned = source;
    for (NoteDesc const* note : {&copy, &std::as_const(assigned)})
    {
        EXPECT_NE(&*note->getText(), &*source.getText());
        EXPECT_NE(note->getText()->c_str(), source.getText()->c_str());
        EXPECT_NE(&*note->getPosition(), &*source.getPosition());
        EXPECT_NE(&*note->getSize(), &*source.getSize());
        EXPECT_NE(&*note->getFirstColor(), &*source.getFirstColor());
        EXPECT_NE(&*note->getSecondColor(), &*source.getSecondColor());
    }
}

TEST(NoteDesc, ACopyOutlivesItsSource)
{
    auto source = std::make_unique<NoteDesc>(fullNote());
    NoteDesc const copy(*source);
    NoteDesc assigned;
    assigned = *source;
    source->setText("changed");
    source->resetPosition();
    source.reset();
    expectFull(copy);
    expectFull(assigned);
}

TEST(NoteDesc, AssignedToItselfStaysAsItIs)
{
    NoteDesc note = fullNote();
    NoteDesc const& same = note;
    note = same;
    expectFull(note);
}

TEST(NoteDesc, MovedTakesTheValuesAndTheSourceMayBeUsedAgain)
{
    NoteDesc source = fullNote();
    NoteDesc taker(std::move(source));
    expectFull(taker);
    source = taker;
    expectFull(source);
    NoteDesc assigned;
    assigned = std::move(taker);
    expectFull(assigned);
}

TEST(NoteDesc, MayBeSetFromItsOwnParts)
{
    NoteDesc note = fullNote();
    note.setOwnerName(note.getOwnerName());
    note.setText(*note.getText());
    note.setPosition(*note.getPosition());
    note.setSize(*note.getSize());
    note.setFirstColor(*note.getFirstColor());
    note.setSecondColor(*note.getSecondColor());
    expectFull(note);
    note.setText(note.getOwnerName());
    note.setSize(*note.getPosition());
    note.setSecondColor(*note.getFirstColor());
    EXPECT_STREQ(note.getText()->c_str(), "root.a");
    EXPECT_EQ(*note.getSize(), Pair(1.5f, -2.0f));
    EXPECT_EQ(*note.getSecondColor(), Color(0.1f, 0.2f, 0.3f, 0.4f));
}

// ---- Lists

TEST(NoteDesc, IsFoundInAListByItsValues)
{
    Array<NoteDesc, _Wa> notes;
    notes.append(NoteDesc());
    notes.append(fullNote());
    notes.append(fullNote());
    EXPECT_EQ(notes.find(fullNote()), 1u);
    EXPECT_EQ(notes.removeAll(fullNote()), 2u);
    EXPECT_FALSE(notes.contains(fullNote()));
}

TEST(NoteDesc, KeepsItsValuesWhileItsListGrows)
{
    Array<NoteDesc, _Wa> notes;
    notes.append(fullNote());
    for (int i = 0; i < 100; ++i) notes.append(notes[0]);
    for (NoteDesc const& note : notes) expectFull(note);
}

} // namespace

} // namespace kestrel::graph::test
