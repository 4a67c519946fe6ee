#include <foundation/KS_Class.h>
#include <ks_graph/Message.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

static_assert(!std::is_polymorphic_v<MessageHandler>);
static_assert(!std::is_base_of_v<KS_Class, MessageHandler>);
using Handler = MessageHandler;
static_assert(std::is_same_v<decltype(std::declval<Handler const&>().getVerbosityLevel()), int const&>);
static_assert(std::is_same_v<decltype(std::declval<Handler&>().refVerbosityLevel()), int&>);
static_assert(std::is_same_v<decltype(std::declval<Handler const&>().getActualVerbosityLevel()), int>);
static_assert(std::is_same_v<decltype(std::declval<Handler const&>().getParent()), Handler*>);
using Messages = Array<Message, _Wa>;
static_assert(std::is_same_v<decltype(std::declval<Handler const&>().getMessages()), Messages const&>);
static_assert(std::is_same_v<decltype(std::declval<Handler&>().refMessages()), Messages&>);
static_assert(std::is_same_v<decltype(std::declval<Handler const&>().getNumberOfMessages()), int>);
static_assert(std::is_same_v<decltype(std::declval<Handler const&>().isLevelAllowed(1)), bool>);

using Levels = std::vector<int>;
using Push = void (MessageHandler::*)(KS_String const&, KS_String const&);

struct Shortcut
{
    Push push;
    int level;
};

Shortcut const shortcuts[] = {
    {&MessageHandler::pushCritical, 1}, {&MessageHandler::pushError, 2}, {&MessageHandler::pushWarning, 3},
    {&MessageHandler::pushInfo, 4},     {&MessageHandler::pushDebug, 5},
};

Levels levelsOf(MessageHandler const& handler)
{
    Levels levels;
    for (Message const& message : handler.getMessages()) levels.push_back(message.getLevel());
    return levels;
}

MessageHandler handlerWith(Levels const& levels)
{
    MessageHandler handler;
    for (int level : levels) handler.pushIgnoringLevel(Message(level, "title"));
    return handler;
}

MessageHandler handlerOf(int verbosity, MessageHandler* parent = nullptr)
{
    MessageHandler handler;
    handler.setVerbosityLevel(verbosity);
    handler.setParent(parent);
    return handler;
}

std::int64_t now()
{
    return static_cast<std::int64_t>(std::time(nullptr));
}

// ---- A new handler

TEST(MessageHandler, StartsWithWarningsAndWorseWithoutMessagesAndParent)
{
    MessageHandler const handler;
    EXPECT_EQ(handler.getVerbosityLevel(), 3);
    EXPECT_EQ(handler.getParent(), nullptr);
    EXPECT_EQ(handler.getMessages().size(), 0u);
    EXPECT_EQ(handler.getMessages().capacity(), 0u);
    EXPECT_TRUE(handler.isEmpty());
    EXPECT_EQ(handler.getNumberOfMessages(), 0);
    EXPECT_FALSE(handler.hasErrorsOrCriticals());
    EXPECT_FALSE(handler.hasWarnings());
}

TEST(MessageHandler, KeepsWarningsAndWorseAtFirst)
{
    MessageHandler handler;
    handler.pushDebug("debug", "");
    handler.pushInfo("info", "");
    EXPECT_TRUE(handler.isEmpty());
    handler.pushWarning("warning", "");
    handler.pushError("error", "");
    handler.pushCritical("critical", "");
    EXPECT_EQ(levelsOf(handler), (Levels{3, 2, 1}));
}

TEST(MessageHandler, AccessorsReachItsFields)
{
    MessageHandler parent;
    MessageHandler handler;
    handler.setVerbosityLevel(5);
    EXPECT_EQ(handler.getVerbosityLevel(), 5);
    handler.refVerbosityLevel() = 1;
    EXPECT_EQ(handler.getVerbosityLevel(), 1);
    EXPECT_EQ(&handler.getVerbosityLevel(), &handler.refVerbosityLevel());
    handler.setParent(&parent);
    EXPECT_EQ(handler.getParent(), &parent);
    handler.setParent(nullptr);
    EXPECT_EQ(handler.getParent(), nullptr);
    handler.refMessages().append(Message(5, "title"));
    EXPECT_EQ(levelsOf(handler), (Levels{5}));
    EXPECT_EQ(&handler.getMessages(), &handler.refMessages());
}

// ---- Filtering

TEST(MessageFilter, KeepsTheLevelsUpToItsOwnVerbosity)
{
    for (int verbosity = -2; verbosity <= 7; ++verbosity)
    {
        for (int level = -3; level <= 8; ++level)
        {
            SCOPED_TRACE(std::to_string(verbosity) + ", " + std::to_string(level));
            Levels const expected = level <= verbosity ? Levels{level} : Levels{};
            MessageHandler byMessage = handlerOf(verbosity);
            EXPECT_EQ(byMessage.isLevelAllowed(level), level <= verbosity);
            byMessage.push(Message(level, "title"));
            EXPECT_EQ(levelsOf(byMessage), expected);
            MessageHandler byTexts = handlerOf(verbosity);
            byTexts.push(level, "title", "content");
            EXPECT_EQ(levelsOf(byTexts), expected);
            MessageHandler ignoring = handlerOf(verbosity);
            ignoring.pushIgnoringLevel(Message(level, "title"));
            EXPECT_EQ(levelsOf(ignoring), Levels{level});
        }
    }
}

TEST(MessageFilter, AppliesToEachShortcut)
{
    for (int verbosity = 0; verbosity <= 5; ++verbosity)
    {
        SCOPED_TRACE(verbosity);
        MessageHandler handler = handlerOf(verbosity);
        for (Shortcut const& shortcut : shortcuts) (handler.*shortcut.push)("title", "content");
        Levels expected;
        for (int level = 1; level <= verbosity; ++level) expected.push_back(level);
        EXPECT_EQ(levelsOf(handler), expected);
    }
}

TEST(MessageFilter, NeverAsksTheParent)
{
    MessageHandler parent = handlerOf(5);
    MessageHandler handler = handlerOf(0, &parent);
    EXPECT_EQ(handler.getActualVerbosityLevel(), 5);
    for (Shortcut const& shortcut : shortcuts)
    {
        SCOPED_TRACE(shortcut.level);
        EXPECT_FALSE(handler.isLevelAllowed(shortcut.level));
        (handler.*shortcut.push)("title", "content");
        handler.push(Message(shortcut.level, "title"));
        handler.push(shortcut.level, "title", "content");
    }
    EXPECT_TRUE(handler.isEmpty());
    EXPECT_TRUE(parent.isEmpty());
    handler.pushIgnoringLevel(Message(5, "title"));
    EXPECT_EQ(levelsOf(handler), (Levels{5}));
}

TEST(MessageFilter, OfAStricterParentDropsNothing)
{
    MessageHandler parent = handlerOf(1);
    MessageHandler handler = handlerOf(5, &parent);
    handler.pushDebug("title", "content");
    EXPECT_EQ(levelsOf(handler), (Levels{5}));
    EXPECT_TRUE(parent.isEmpty());
}

TEST(MessageFilter, DropsNothingThatIsKeptAlready)
{
    MessageHandler handler = handlerWith({1, 3, 5});
    handler.setVerbosityLevel(0);
    EXPECT_EQ(levelsOf(handler), (Levels{1, 3, 5}));
    EXPECT_TRUE(handler.hasErrorsOrCriticals());
    EXPECT_TRUE(handler.hasWarnings());
}

// ---- Pushing

TEST(MessagePush, KeepsACopyWithTheMessagesOwnTime)
{
    Message message(2, "title", "content");
    message.setTime(42);
    MessageHandler handler;
    handler.push(message);
    handler.pushIgnoringLevel(message);
    message.setTitle("changed");
    ASSERT_EQ(handler.getNumberOfMessages(), 2);
    for (Message const& kept : handler.getMessages())
    {
        EXPECT_EQ(kept.getLevel(), 2);
        EXPECT_EQ(kept.getTitle(), KS_String("title"));
        EXPECT_EQ(kept.getContent(), KS_String("content"));
        EXPECT_EQ(kept.getTime(), 42);
    }
}

TEST(MessagePush, OfTextsMakesAMessageNow)
{
    MessageHandler handler;
    std::int64_t const before = now();
    handler.push(2, "title", "content");
    std::int64_t const after = now();
    ASSERT_EQ(handler.getNumberOfMessages(), 1);
    Message const& kept = handler.getMessages()[0];
    EXPECT_EQ(kept.getLevel(), 2);
    EXPECT_EQ(kept.getTitle(), KS_String("title"));
    EXPECT_EQ(kept.getContent(), KS_String("content"));
    EXPECT_GE(kept.getTime(), before);
    EXPECT_LE(kept.getTime(), after);
}

TEST(MessagePush, ByShortcutGivesLevelTitleAndContent)
{
    for (Shortcut const& shortcut : shortcuts)
    {
        SCOPED_TRACE(shortcut.level);
        MessageHandler handler = handlerOf(5);
        std::int64_t const before = now();
        (handler.*shortcut.push)("title", "content");
        ASSERT_EQ(handler.getNumberOfMessages(), 1);
        Message const& kept = handler.getMessages()[0];
        EXPECT_EQ(kept.getLevel(), shortcut.level);
        EXPECT_EQ(kept.getTitle(), KS_String("title"));
        EXPECT_EQ(kept.getContent(), KS_String("content"));
        EXPECT_GE(kept.getTime(), before);
    }
}

TEST(MessagePush, KeepsTheOrderAndGrowsAsArraysDo)
{
    MessageHandler handler = handlerOf(200);
    std::vector<unsigned int> capacities{0};
    Levels expected;
    for (int level = 1; level <= 20; ++level)
    {
        handler.push(level, "title", "content");
        expected.push_back(level);
        unsigned int const capacity = handler.getMessages().capacity();
        if (capacity != capacities.back()) capacities.push_back(capacity);
    }
    EXPECT_EQ(levelsOf(handler), expected);
    EXPECT_EQ(capacities, (std::vector<unsigned int>{0, 4, 8, 13, 18, 24}));
}

TEST(MessagePush, HasNoLimit)
{
    MessageHandler handler;
    for (int i = 0; i < 20000; ++i) handler.push(i % 3 + 1, "title", "content");
    EXPECT_EQ(handler.getNumberOfMessages(), 20000);
    EXPECT_EQ(handler.getNumberOfErrorsOrCriticals(), 13334);
    EXPECT_EQ(handler.getNumberOfWarnings(), 6666);
    EXPECT_EQ(handler.getMessages()[0].getLevel(), 1);
    EXPECT_EQ(handler.getMessages()[19999].getLevel(), 2);
}

TEST(MessagePush, TakesOneOfItsOwnMessagesEvenWhenItGrows)
{
    MessageHandler handler;
    handler.push(1, "the first title", "the first content");
    for (int i = 0; i < 10; ++i)
    {
        handler.push(handler.getMessages()[0]);
        handler.pushIgnoringLevel(handler.getMessages()[0]);
        Message const& first = handler.getMessages()[0];
        handler.push(first.getLevel(), first.getTitle(), first.getContent());
    }
    ASSERT_EQ(handler.getNumberOfMessages(), 31);
    for (Message const& kept : handler.getMessages())
    {
        EXPECT_EQ(kept.getLevel(), 1);
        EXPECT_EQ(kept.getTitle(), KS_String("the first title"));
        EXPECT_EQ(kept.getContent(), KS_String("the first content"));
    }
}

// ---- The verbosity that is inherited

TEST(ActualVerbosity, IsTheHandlersOwnWhenItIsNotZero)
{
    MessageHandler parent = handlerOf(4);
    for (int verbosity : {-1, 1, 3, 5, 9})
    {
        EXPECT_EQ(handlerOf(verbosity, &parent).getActualVerbosityLevel(), verbosity);
        EXPECT_EQ(handlerOf(verbosity).getActualVerbosityLevel(), verbosity);
    }
}

TEST(ActualVerbosity, IsTheNearestThatIsNotZeroUpTheParents)
{
    MessageHandler farthest = handlerOf(1);
    MessageHandler middle = handlerOf(4, &farthest);
    MessageHandler near = handlerOf(0, &middle);
    MessageHandler const handler = handlerOf(0, &near);
    EXPECT_EQ(handler.getActualVerbosityLevel(), 4);
    EXPECT_EQ(near.getActualVerbosityLevel(), 4);
    middle.setVerbosityLevel(0);
    EXPECT_EQ(handler.getActualVerbosityLevel(), 1);
    near.setVerbosityLevel(-5);
    EXPECT_EQ(handler.getActualVerbosityLevel(), -5);
}

TEST(ActualVerbosity, IsZeroWhenNobodyHasOne)
{
    MessageHandler farthest = handlerOf(0);
    MessageHandler near = handlerOf(0, &farthest);
    EXPECT_EQ(handlerOf(0).getActualVerbosityLevel(), 0);
    EXPECT_EQ(handlerOf(0, &farthest).getActualVerbosityLevel(), 0);
    EXPECT_EQ(handlerOf(0, &near).getActualVerbosityLevel(), 0);
}

TEST(ActualVerbosity, ChangesNothingOnTheHandler)
{
    MessageHandler parent = handlerOf(4);
    MessageHandler const handler = handlerOf(0, &parent);
    EXPECT_EQ(handler.getActualVerbosityLevel(), 4);
    EXPECT_EQ(handler.getVerbosityLevel(), 0);
    EXPECT_EQ(handler.getParent(), &parent);
}

TEST(ActualVerbosity, OfARingOfParentsWithoutOneIsZero)
{
    for (std::size_t ring = 1; ring <= 5; ++ring)
    {
        for (std::size_t tail = 0; tail <= 5; ++tail)
        {
            SCOPED_TRACE(std::to_string(ring) + " in a ring behind " + std::to_string(tail));
            std::vector<MessageHandler> handlers(tail + ring, handlerOf(0));
            for (std::size_t i = 0; i + 1 < handlers.size(); ++i) handlers[i].setParent(&handlers[i + 1]);
            handlers.back().setParent(&handlers[tail]);
            for (MessageHandler const& handler : handlers) EXPECT_EQ(handler.getActualVerbosityLevel(), 0);

            for (std::size_t i = 0; i < handlers.size(); ++i)
            {
                handlers[i].setVerbosityLevel(5);
                bool const inRing = i >= tail;
                for (std::size_t from = 0; from < handlers.size(); ++from)
                {
                    int const expected = inRing || from <= i ? 5 : 0;
                    EXPECT_EQ(handlers[from].getActualVerbosityLevel(), expected) << i << " from " << from;
                }
                handlers[i].setVerbosityLevel(0);
            }
        }
    }
}

TEST(ActualVerbosity, IsFoundAtTheEndOfALongChain)
{
    std::vector<MessageHandler> handlers(20000, handlerOf(0));
    for (std::size_t i = 0; i + 1 < handlers.size(); ++i) handlers[i].setParent(&handlers[i + 1]);
    EXPECT_EQ(handlers.front().getActualVerbosityLevel(), 0);
    handlers.back().setVerbosityLevel(2);
    EXPECT_EQ(handlers.front().getActualVerbosityLevel(), 2);
}

// ---- Clearing, copying, counting

TEST(MessageHandler, ClearDropsTheMessagesAndKeepsEverythingElse)
{
    MessageHandler parent;
    MessageHandler handler = handlerWith({1, 2, 3, 4, 5});
    handler.setVerbosityLevel(4);
    handler.setParent(&parent);
    Message const* const block = handler.getMessages().data();
    handler.clear();
    EXPECT_TRUE(handler.isEmpty());
    EXPECT_EQ(handler.getNumberOfMessages(), 0);
    EXPECT_FALSE(handler.hasErrorsOrCriticals());
    EXPECT_FALSE(handler.hasWarnings());
    EXPECT_EQ(handler.getMessages().capacity(), 8u);
    EXPECT_EQ(handler.getMessages().data(), block);
    EXPECT_EQ(handler.getVerbosityLevel(), 4);
    EXPECT_EQ(handler.getParent(), &parent);
    handler.pushInfo("again", "");
    ASSERT_EQ(levelsOf(handler), (Levels{4}));
    EXPECT_EQ(handler.getMessages()[0].getTitle(), KS_String("again"));
    EXPECT_EQ(handler.getMessages().data(), block);
}

TEST(MessageHandler, CopiesVerbosityMessagesAndParent)
{
    MessageHandler parent;
    MessageHandler source = handlerWith({1, 5, 3, 2, 4});
    source.setVerbosityLevel(0);
    source.setParent(&parent);
    MessageHandler copy(source);
    MessageHandler assigned = handlerWith({3});
    assigned = source;
    for (MessageHandler* handler : {&copy, &assigned})
    {
        EXPECT_EQ(handler->getVerbosityLevel(), 0);
        EXPECT_EQ(handler->getParent(), &parent);
        EXPECT_EQ(levelsOf(*handler), (Levels{1, 5, 3, 2, 4}));
        EXPECT_EQ(handler->getMessages().capacity(), 5u);
        handler->refMessages()[0].setTitle("changed");
        handler->pushIgnoringLevel(Message(1, "more"));
    }
    EXPECT_EQ(source.getNumberOfMessages(), 5);
    EXPECT_EQ(source.getMessages()[0].getTitle(), KS_String("title"));
}

TEST(MessageHandler, AssignedToItselfStaysAsItIs)
{
    MessageHandler parent;
    MessageHandler handler = handlerWith({1, 5});
    handler.setParent(&parent);
    MessageHandler const& same = handler;
    handler = same;
    EXPECT_EQ(levelsOf(handler), (Levels{1, 5}));
    EXPECT_EQ(handler.getParent(), &parent);
}

TEST(MessageHandler, CountsEachLevelWhereItBelongs)
{
    for (int level = -1; level <= 7; ++level)
    {
        SCOPED_TRACE(level);
        MessageHandler const handler = handlerWith({level});
        bool const error = level == 1 || level == 2;
        EXPECT_FALSE(handler.isEmpty());
        EXPECT_EQ(handler.getNumberOfMessages(), 1);
        EXPECT_EQ(handler.hasErrorsOrCriticals(), error);
        EXPECT_EQ(handler.getNumberOfErrorsOrCriticals(), error ? 1 : 0);
        EXPECT_EQ(handler.hasWarnings(), level == 3);
        EXPECT_EQ(handler.getNumberOfWarnings(), level == 3 ? 1 : 0);
    }
}

TEST(MessageHandler, CountsAllOfItsMessages)
{
    MessageHandler const handler = handlerWith({4, 1, 3, 2, 5, 3, 0, 1, 2, 2, 6, -1, 3});
    EXPECT_EQ(handler.getNumberOfMessages(), 13);
    EXPECT_EQ(handler.getNumberOfErrorsOrCriticals(), 5);
    EXPECT_EQ(handler.getNumberOfWarnings(), 3);
    EXPECT_TRUE(handler.hasErrorsOrCriticals());
    EXPECT_TRUE(handler.hasWarnings());
}

TEST(MessageHandler, FindsTheOneThatStandsLast)
{
    EXPECT_TRUE(handlerWith({5, 5, 5, 2}).hasErrorsOrCriticals());
    EXPECT_TRUE(handlerWith({5, 5, 5, 3}).hasWarnings());
    EXPECT_FALSE(handlerWith({5, 4, 3}).hasErrorsOrCriticals());
    EXPECT_FALSE(handlerWith({5, 4, 2, 1}).hasWarnings());
}

TEST(MessageHandler, ForgetsWhatWasRemovedFromItsList)
{
    MessageHandler handler = handlerWith({1, 3, 1});
    handler.refMessages().removeIf([](Message const& message) { return message.isCritical(); });
    EXPECT_EQ(levelsOf(handler), (Levels{3}));
    EXPECT_FALSE(handler.hasErrorsOrCriticals());
}

} // namespace

} // namespace kestrel::graph::test
