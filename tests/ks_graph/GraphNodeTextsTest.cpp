#include <ks_graph/GraphNodeBase.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <deque>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using testing::EndsWith;
using Lines = std::vector<std::string>;

/// A node whose pins live and die with it.
class PinnedNode : public GraphNodeBase
{
public:
    void addPins(Lines const& names)
    {
        for (std::string const& name : names)
        {
            GraphNodePin& pin = pins_.emplace_back(nullptr, 1u, PIN_INPUT);
            pin.setName(KS_String(name));
            addNodePin(&pin);
        }
    }

    std::string freeName(std::string const& name) { return getFreePinNameLikeThis(KS_String(name)).c_str(); }

private:
    std::deque<GraphNodePin> pins_;
};

/// A node whose children live and die with it.
class Parent : public GraphNodeBase
{
public:
    explicit Parent(Lines const& names = {})
    {
        for (std::string const& name : names)
        {
            GraphNodeBase& child = children_.emplace_back();
            child.setName(KS_String(name));
            addNode(&child);
        }
    }

    std::string freeName(std::string const& name, GraphNodeBase* otherParent = nullptr)
    {
        return getFreeNodeNameLikeThis(KS_String(name), otherParent).c_str();
    }

private:
    std::deque<GraphNodeBase> children_;
};

/// What both generators make of a name that is taken, when nothing else is.
struct FreeNameRow
{
    char const* name;
    char const* first;
    char const* second;
};

constexpr FreeNameRow freeNameRows[] = {
    {"value", "value1", "value2"},
    {"value0", "value1", "value2"},
    {"value7", "value1", "value2"},
    {"value09", "value01", "value02"},
    {"value000", "value001", "value002"},
    {"12", "01", "02"},
    {"0", "1", "2"},
    {"", "1", "2"},
    {"007x", "007x1", "007x2"},
    {"a1b22", "a1b01", "a1b02"},
    {"9 ", "9 1", "9 2"},
    {"v1.20", "v1.01", "v1.02"},
    {"a.b", "a.b1", "a.b2"},
    {"a.", "a.1", "a.2"},
    {"-5", "-1", "-2"},
    {"50%s", "50%s1", "50%s2"},
    {"100%", "100%1", "100%2"},
    {"%d", "%d1", "%d2"},
    {"%05", "%01", "%02"},
    {"%%", "%%1", "%%2"},
    {"%n%x3", "%n%x1", "%n%x2"},
    {"%*.*f", "%*.*f1", "%*.*f2"},
    {"\xC3\xA9t\xC3\xA9",
     "\xC3\xA9t\xC3\xA9"
     "1",
     "\xC3\xA9t\xC3\xA9"
     "2"},
    {"\xB2\xB3",
     "\xB2\xB3"
     "1",
     "\xB2\xB3"
     "2"},
};

std::string pageWith(std::string const& paragraph)
{
    return "<html><head/><body><p/><h3>Description</h3>" + paragraph + "<p/></body></html>";
}

/// Reports one message of each of the given levels.
class ReportingNode : public GraphNodeBase
{
public:
    explicit ReportingNode(std::vector<int> levels) : levels_(std::move(levels)) {}

    using GraphNodeBase::getMessages;
    bool getMessages(Array<Message, _Wa>& out) const override
    {
        for (int const level : levels_) out.append(Message(level, "title", "content"));
        return !out.isEmpty();
    }

private:
    std::vector<int> levels_;
};

} // namespace

TEST(NodeSampleMessages, AreAnErrorAWarningAndAnInfo)
{
    GraphNodeBase const node;
    Array<Message, _Wa> messages;
    std::int64_t const before = std::time(nullptr);
    EXPECT_TRUE(node.getMessages(messages));
    std::int64_t const after = std::time(nullptr);
    ASSERT_EQ(messages.size(), 3u);
    char const* const titles[] = {"prueba 1", "prueba 2", "prueba 3"};
    for (unsigned int i = 0; i < 3; ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(messages[i].getLevel(), static_cast<int>(i) + 2);
        EXPECT_EQ(messages[i].getTitle(), titles[i]);
        EXPECT_EQ(messages[i].getContent(), "");
        EXPECT_GE(messages[i].getTime(), before);
        EXPECT_LE(messages[i].getTime(), after);
    }
}

TEST(NodeSampleMessages, AreAppendedAtEachCall)
{
    GraphNodeBase const node;
    Array<Message, _Wa> messages;
    messages.append(Message(5, "mine"));
    node.getMessages(messages);
    node.getMessages(messages);
    ASSERT_EQ(messages.size(), 7u);
    EXPECT_EQ(messages[0].getTitle(), "mine");
    EXPECT_EQ(messages[1].getTitle(), "prueba 1");
    EXPECT_EQ(messages[4].getTitle(), "prueba 1");
}

TEST(NodeSampleMessages, MakeEveryPlainNodeReport)
{
    GraphNodeBase const node;
    EXPECT_TRUE(node.hasErrors());
    EXPECT_TRUE(node.hasWarnings());
    EXPECT_TRUE(node.hasMessages());
}

TEST(NodeSampleMessages, ReadAsTexts)
{
    GraphNodeBase const node;
    Array<KS_String, _Wa> texts;
    texts.append("before");
    EXPECT_TRUE(node.getMessagesAsStrings(texts));
    ASSERT_EQ(texts.size(), 4u);
    EXPECT_EQ(texts[0], "before");
    EXPECT_THAT(texts[1].c_str(), EndsWith("\n - prueba 1. "));
    EXPECT_THAT(texts[2].c_str(), EndsWith("\n - prueba 2. "));
    EXPECT_THAT(texts[3].c_str(), EndsWith("\n - prueba 3. "));
}

TEST(NodeMessages, LevelsDecideWhatTheNodeHas)
{
    struct Row
    {
        std::vector<int> levels;
        bool errors;
        bool warnings;
    };
    Row const rows[] = {{{}, false, false},       {{0}, false, false},      {{1}, true, false},
                        {{2}, true, false},       {{3}, false, true},       {{4}, false, false},
                        {{5}, false, false},      {{6}, false, false},      {{-1}, false, false},
                        {{4, 5, 1}, true, false}, {{4, 5, 3}, false, true}, {{3, 2}, true, true}};
    for (Row const& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.levels));
        ReportingNode const node(row.levels);
        EXPECT_EQ(node.hasErrors(), row.errors);
        EXPECT_EQ(node.hasWarnings(), row.warnings);
        EXPECT_EQ(node.hasMessages(), !row.levels.empty());
    }
}

TEST(NodeMessages, TextsAreThoseOfTheMessagesInOrder)
{
    ReportingNode const node({4, 1});
    Array<Message, _Wa> messages;
    node.getMessages(messages);
    Array<KS_String, _Wa> texts;
    node.getMessagesAsStrings(texts);
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_THAT(texts[0].c_str(), EndsWith("\n - title. content"));
    EXPECT_THAT(texts[1].c_str(), EndsWith("\n - title. content"));
}

TEST(NodeMessages, NodeWithoutMessagesHasNoTexts)
{
    ReportingNode const node({});
    Array<KS_String, _Wa> texts;
    EXPECT_FALSE(node.getMessagesAsStrings(texts));
    texts.append("before");
    EXPECT_TRUE(node.getMessagesAsStrings(texts));
    EXPECT_EQ(texts.size(), 1u);
}

TEST(NodeMessageHandlers, AreEmptyAndNew)
{
    GraphNodeBase node;
    GraphNodeBase const& reader = node;
    for (MessageHandler const* handler : {&reader.getMessages(), &std::as_const(node.refMessages())})
    {
        EXPECT_TRUE(handler->isEmpty());
        EXPECT_EQ(handler->getVerbosityLevel(), 3);
        EXPECT_EQ(handler->getParent(), nullptr);
    }
}

TEST(NodeMessageHandlers, AreTwoThatAllNodesShare)
{
    GraphNodeBase a;
    GraphNodeBase b;
    GraphNodeBase const& aReader = a;
    GraphNodeBase const& bReader = b;
    EXPECT_EQ(&aReader.getMessages(), &bReader.getMessages());
    EXPECT_EQ(&a.refMessages(), &b.refMessages());
    EXPECT_NE(&aReader.getMessages(), &a.refMessages());
}

TEST(NodeMessageHandlers, WhatIsPushedIsReadNowhereElseAndNotCleared)
{
    GraphNodeBase node;
    GraphNodeBase const& reader = node;
    node.refMessages().pushError("title", "content");
    node.clearMessages();
    EXPECT_EQ(node.refMessages().getNumberOfMessages(), 1);
    EXPECT_TRUE(reader.getMessages().isEmpty());
    Array<Message, _Wa> messages;
    reader.getMessages(messages);
    EXPECT_EQ(messages.size(), 3u);
    node.refMessages().clear();
}

TEST(NodeDescription, IsKeptAndInfoIsEmpty)
{
    GraphNodeBase node;
    node.setDescription("Adds two values.");
    EXPECT_EQ(node.getDescription(), "Adds two values.");
    EXPECT_EQ(node.getInfo(), "");
}

TEST(NodeHtml, ParagraphsEndWithOneFullStop)
{
    struct Row
    {
        char const* description;
        char const* paragraph;
    };
    Row const rows[] = {
        {"", "<p>.</p>"},
        {".", "<p>.</p>"},
        {"..", "<p>..</p>"},
        {"...", "<p>...</p>"},
        {"Adds two values.", "<p>Adds two values.</p>"},
        {"Adds two values", "<p>Adds two values.</p>"},
        {"Really?", "<p>Really?.</p>"},
        {"Trailing. ", "<p>Trailing. .</p>"},
        {".leading", "<p>.leading.</p>"},
        {"One.\nTwo.", "<p>One.</p><p>Two.</p>"},
        {"One\nTwo", "<p>One</p><p>Two.</p>"},
        {"One.\n", "<p>One.</p><p>.</p>"},
        {"\n", "<p></p><p>.</p>"},
        {"\n\n", "<p></p><p></p><p>.</p>"},
        {"One.\r\nTwo.", "<p>One.\r</p><p>Two.</p>"},
        {"50%s of %d%%.", "<p>50%s of %d%%.</p>"},
        {"a < b & c", "<p>a < b & c.</p>"},
        {"<b>bold</b>.", "<p><b>bold</b>.</p>"},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.description);
        GraphNodeBase node;
        node.setDescription(row.description);
        EXPECT_STREQ(node.asHTML().c_str(), pageWith(row.paragraph).c_str());
    }
}

TEST(NodeHtml, LeavesTheDescriptionAsItIs)
{
    GraphNodeBase node;
    node.setDescription("One.\nTwo.");
    node.asHTML();
    EXPECT_EQ(node.getDescription(), "One.\nTwo.");
}

TEST(NodeHtml, TakesLongDescriptions)
{
    std::string const description(100000, 'x');
    GraphNodeBase node;
    node.setDescription(KS_String(description));
    EXPECT_STREQ(node.asHTML().c_str(), pageWith("<p>" + description + ".</p>").c_str());
}

TEST(FreePinName, NameThatIsFreeIsReturnedUnchanged)
{
    PinnedNode node;
    node.addPins({"value", "other1"});
    for (char const* name : {"", "Value", "value1", "value07", "12", "valu", "50%s", "a.b"})
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(node.freeName(name), name);
    }
}

TEST(FreePinName, NumbersStartAtOneWithTheWidthOfTheGivenNumber)
{
    for (FreeNameRow const& row : freeNameRows)
    {
        SCOPED_TRACE(row.name);
        PinnedNode node;
        node.addPins({row.name});
        EXPECT_EQ(node.freeName(row.name), row.first);
        node.addPins({row.first});
        EXPECT_EQ(node.freeName(row.name), row.second);
    }
}

TEST(FreePinName, FirstGapIsTaken)
{
    PinnedNode node;
    node.addPins({"value", "value2", "value1", "value4"});
    EXPECT_EQ(node.freeName("value"), "value3");
    EXPECT_EQ(node.freeName("value4"), "value3");
}

TEST(FreePinName, NumberThatOutgrowsItsWidthGetsLonger)
{
    PinnedNode node;
    for (int i = 0; i <= 9; ++i) node.addPins({"x" + std::to_string(i)});
    EXPECT_EQ(node.freeName("x5"), "x10");
}

TEST(FreePinName, WidthOfTheNumberMayBeLarge)
{
    std::string const zeros(1000, '0');
    PinnedNode node;
    node.addPins({"x" + zeros});
    EXPECT_EQ(node.freeName("x" + zeros), "x" + zeros.substr(1) + "1");
}

TEST(FreePinName, StemMayBeLong)
{
    std::string const stem(100000, 'x');
    PinnedNode node;
    node.addPins({stem});
    EXPECT_EQ(node.freeName(stem), stem + "1");
}

TEST(FreePinName, OwnersPinsCountForAnInterfaceOnly)
{
    PinnedNode owner;
    PinnedNode node;
    owner.addNode(&node);
    owner.addPins({"value", "in1"});
    node.addPins({"in"});
    EXPECT_EQ(node.freeName("value"), "value");
    EXPECT_EQ(node.freeName("in"), "in1");
    node.setInterface(true);
    EXPECT_EQ(node.freeName("value"), "value1");
    EXPECT_EQ(node.freeName("in"), "in2");
}

TEST(FreePinName, InterfaceWithoutOwnerHasItsOwnPinsOnly)
{
    PinnedNode node;
    node.setInterface(true);
    node.addPins({"in"});
    EXPECT_EQ(node.freeName("in"), "in1");
    EXPECT_EQ(node.freeName("out"), "out");
}

TEST(FreePinName, GivesNoNameAway)
{
    PinnedNode node;
    node.addPins({"in"});
    EXPECT_EQ(node.freeName("in"), "in1");
    EXPECT_EQ(node.freeName("in"), "in1");
    EXPECT_EQ(node.getNodePins().size(), 1u);
}

TEST(FreeNodeName, NameThatIsFreeIsReturnedUnchanged)
{
    Parent parent({"value", "other1"});
    for (char const* name : {"", "value1", "value07", "12", "valu", "50%s", "a.b"})
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(parent.freeName(name), name);
    }
}

TEST(FreeNodeName, NumbersStartAtOneWithTheWidthOfTheGivenNumber)
{
    for (FreeNameRow const& row : freeNameRows)
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Parent({row.name}).freeName(row.name), row.first);
        EXPECT_EQ(Parent({row.name, row.first}).freeName(row.name), row.second);
    }
}

TEST(FreeNodeName, TakenNamesAreComparedWithoutCase)
{
    EXPECT_EQ(Parent({"add"}).freeName("Add"), "Add1");
    EXPECT_EQ(Parent({"ADD"}).freeName("add"), "add1");
    EXPECT_EQ(Parent({"add", "ADD1", "aDD2"}).freeName("Add"), "Add3");
}

TEST(FreeNodeName, GrandchildrenDoNotCount)
{
    Parent parent({"group"});
    GraphNodeBase grandchild;
    grandchild.setName("add");
    parent.getNodes()[0]->addNode(&grandchild);
    EXPECT_EQ(parent.freeName("add"), "add");
}

TEST(FreeNodeName, OtherParentIsNotAskedAboutTheNameItself)
{
    Parent parent({"mul"});
    Parent other({"add"});
    EXPECT_EQ(parent.freeName("add", &other), "add");
}

TEST(FreeNodeName, OtherParentIsAskedAboutEveryNumberedName)
{
    Parent parent({"add", "add2"});
    Parent other({"Add1", "ADD3"});
    EXPECT_EQ(parent.freeName("add", &other), "add4");
    EXPECT_EQ(parent.freeName("add", nullptr), "add1");
    EXPECT_EQ(parent.freeName("add", &parent), "add1");
}

TEST(FreeNodeName, NumberThatOutgrowsItsWidthGetsLonger)
{
    Lines names;
    for (int i = 0; i <= 99; ++i) names.push_back((i < 10 ? "x0" : "x") + std::to_string(i));
    EXPECT_EQ(Parent(names).freeName("x42"), "x100");
}

TEST(FreeNodeName, GivesNoNameAway)
{
    Parent parent({"add"});
    EXPECT_EQ(parent.freeName("add"), "add1");
    EXPECT_EQ(parent.freeName("add"), "add1");
    EXPECT_EQ(parent.getNodes().size(), 1u);
}

// The full name of each level is appended to that of its owner: a long one has room to spare, so that it is
// not copied for each level.
TEST(NodeFullName, OfMoreThan256BytesHasRoomForHalfAsManyAgain)
{
    struct Node : GraphNodeBase
    {
    };
    Node owner;
    Node child;
    Node grandchild;
    owner.addNode(&child);
    child.addNode(&grandchild);
    for (unsigned int const length : {50u, 255u, 256u, 257u, 300u})
    {
        SCOPED_TRACE(length);
        owner.setName("top");
        child.setName(KS_String(std::string(length - 4, 'n')));
        unsigned int const bytes = length + 1;
        KS_String const fullName = child.getFullName();
        ASSERT_EQ(fullName.size(), bytes);
        EXPECT_EQ(fullName.capacity(), length > 256 ? bytes + length / 2 : bytes);
    }
    unsigned int const roomOfItsOwner = 301 + 150;
    grandchild.setName(KS_String(std::string(149, 'g')));
    EXPECT_EQ(grandchild.getFullName().size(), roomOfItsOwner);
    EXPECT_EQ(grandchild.getFullName().capacity(), roomOfItsOwner);
    grandchild.setName(KS_String(std::string(150, 'g')));
    EXPECT_EQ(grandchild.getFullName().capacity(), 452u + 451 / 2);
}

TEST(NodeFullName, OfAnOwnerEndsAtTheFirstNul)
{
    struct Owner : GraphNodeBase
    {
        KS_String getFullName() override { return KS_String(std::string_view("top\0rest", 8)); }
    };
    struct Child : GraphNodeBase
    {
    };
    Owner owner;
    Child child;
    child.setName("child");
    owner.addNode(&child);
    EXPECT_EQ(std::string(child.getFullName()), "top.child");
    owner.removeNode(&child);
}

} // namespace kestrel::graph::test
