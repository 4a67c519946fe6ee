#include <foundation/KS_Class.h>
#include <ks_graph/Message.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kestrel::graph::test
{

namespace
{

static_assert(std::is_polymorphic_v<Message>);
static_assert(std::has_virtual_destructor_v<Message>);
static_assert(!std::is_base_of_v<KS_Class, Message>);

static_assert(std::is_same_v<decltype(std::declval<Message const&>().getLevel()), int const&>);
static_assert(std::is_same_v<decltype(std::declval<Message&>().refLevel()), int&>);
static_assert(std::is_same_v<decltype(std::declval<Message const&>().getTime()), std::int64_t const&>);
static_assert(std::is_same_v<decltype(std::declval<Message&>().refTime()), std::int64_t&>);
static_assert(std::is_same_v<decltype(std::declval<Message const&>().getTitle()), KS_String const&>);
static_assert(std::is_same_v<decltype(std::declval<Message&>().refTitle()), KS_String&>);
static_assert(std::is_same_v<decltype(std::declval<Message const&>().getContent()), KS_String const&>);
static_assert(std::is_same_v<decltype(std::declval<Message&>().refContent()), KS_String&>);
static_assert(std::is_same_v<decltype(std::declval<Message const&>().getTimeAsString()), KS_String>);
static_assert(std::is_same_v<decltype(std::declval<Message const&>().asString()), KS_String>);

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

constexpr std::int64_t novemberNight = 1794707438; // 2026-11-15 01:50:38 UTC

/// Sets the local time zone for as long as it lives.
class TimeZone
{
public:
    explicit TimeZone(char const* zone)
    {
        if (char const* const old = std::getenv("TZ")) old_ = old;
        set(zone);
    }
    ~TimeZone() { set(old_ ? old_->c_str() : nullptr); }
    TimeZone(TimeZone const&) = delete;
    TimeZone& operator=(TimeZone const&) = delete;

private:
    static void set(char const* zone)
    {
#if defined(_WIN32)
        _putenv_s("TZ", zone != nullptr ? zone : "");
        _tzset();
#else
        if (zone != nullptr)
            setenv("TZ", zone, 1);
        else
            unsetenv("TZ");
        tzset();
#endif
    }

    std::optional<std::string> old_;
};

Message messageAt(std::int64_t time)
{
    Message message(2, "Node", "missing input");
    message.setTime(time);
    return message;
}

std::int64_t now()
{
    return static_cast<std::int64_t>(std::time(nullptr));
}

void expectMessage(Message const& message, int level, KS_String const& title, KS_String const& content)
{
    EXPECT_EQ(message.getLevel(), level);
    EXPECT_EQ(message.getTitle(), title);
    EXPECT_EQ(message.getContent(), content);
}

// ---- Construction

TEST(Message, IsAnEmptyInfoByDefault)
{
    expectMessage(Message(), 4, "", "");
}

TEST(Message, TakesLevelAndTitle)
{
    expectMessage(Message(2, "title"), 2, "title", "");
}

TEST(Message, TakesLevelTitleAndContent)
{
    expectMessage(Message(1, "title", "content"), 1, "title", "content");
}

TEST(Message, KeepsUnknownLevelsAsGiven)
{
    for (int level : {0, -1, 6, 100, lowest, highest})
    {
        EXPECT_EQ(Message(level, "title").getLevel(), level);
        EXPECT_EQ(Message(level, "title", "content").getLevel(), level);
    }
}

TEST(Message, IsMadeNow)
{
    std::int64_t const before = now();
    Message const messages[] = {Message(), Message(1, "title"), Message(1, "title", "content")};
    std::int64_t const after = now();
    for (Message const& message : messages)
    {
        EXPECT_GE(message.getTime(), before);
        EXPECT_LE(message.getTime(), after);
    }
}

TEST(Message, OwnsItsTexts)
{
    KS_String title("title");
    KS_String content("content");
    Message const message(1, title, content);
    title[0] = 'X';
    content[0] = 'X';
    expectMessage(message, 1, "title", "content");
}

// ---- Copying

TEST(Message, CopiesAllFourFields)
{
    Message const source = messageAt(42);
    Message copy(source);
    Message assigned(5, "old title", "old content");
    assigned = source;
    for (Message* message : {&copy, &assigned})
    {
        expectMessage(*message, 2, "Node", "missing input");
        EXPECT_EQ(message->getTime(), 42);
        message->refTitle() += "!";
    }
    EXPECT_EQ(source.getTitle(), KS_String("Node"));
}

TEST(Message, AssignedToItselfStaysAsItIs)
{
    Message message = messageAt(42);
    Message const& same = message;
    message = same;
    expectMessage(message, 2, "Node", "missing input");
    EXPECT_EQ(message.getTime(), 42);
}

TEST(Message, MovesAllFourFieldsAndLeavesEmptyTexts)
{
    Message source = messageAt(42);
    Message const taker(std::move(source));
    expectMessage(taker, 2, "Node", "missing input");
    EXPECT_EQ(taker.getTime(), 42);
    EXPECT_STREQ(source.getTitle().c_str(), "");
    EXPECT_STREQ(source.getContent().c_str(), "");
}

TEST(Message, IsDestroyedThroughItsBase)
{
    class Noticing : public Message
    {
    public:
        explicit Noticing(bool& gone) : gone_(gone) {}
        ~Noticing() override { gone_ = true; }

    private:
        bool& gone_;
    };
    bool gone = false;
    Message* const message = new Noticing(gone);
    EXPECT_FALSE(gone);
    delete message;
    EXPECT_TRUE(gone);
}

// ---- Accessors

TEST(Message, SetsEachFieldAlone)
{
    Message message(1, "title", "content");
    message.setTime(7);
    message.setLevel(3);
    expectMessage(message, 3, "title", "content");
    message.setTitle("new title");
    expectMessage(message, 3, "new title", "content");
    message.setContent("new content");
    expectMessage(message, 3, "new title", "new content");
    EXPECT_EQ(message.getTime(), 7);
}

TEST(Message, GivesReferencesToItsFields)
{
    Message message(1, "title", "content");
    message.refLevel() = 5;
    message.refTitle() = "new title";
    message.refContent() = "new content";
    message.refTime() = 9;
    expectMessage(message, 5, "new title", "new content");
    EXPECT_EQ(message.getTime(), 9);
    EXPECT_EQ(&message.getLevel(), &message.refLevel());
    EXPECT_EQ(&message.getTitle(), &message.refTitle());
    EXPECT_EQ(&message.getContent(), &message.refContent());
    EXPECT_EQ(&message.getTime(), &message.refTime());
}

TEST(Message, MayBeSetFromItsOwnFields)
{
    Message message(1, "title", "content");
    message.setTitle(message.getTitle());
    message.setContent(message.getTitle());
    message.setLevel(message.getLevel());
    message.setTime(message.getTime());
    expectMessage(message, 1, "title", "title");
}

TEST(Message, EachLevelTestIsTrueForItsNumberAlone)
{
    for (int level : {lowest, -1, 0, 1, 2, 3, 4, 5, 6, 7, highest})
    {
        SCOPED_TRACE(level);
        Message const message(level, "title");
        EXPECT_EQ(message.isCritical(), level == 1);
        EXPECT_EQ(message.isError(), level == 2);
        EXPECT_EQ(message.isWarning(), level == 3);
        EXPECT_EQ(message.isInfo(), level == 4);
        EXPECT_EQ(message.isDebug(), level == 5);
    }
}

// ---- Texts

TEST(MessageTime, IsTwentyFourCharactersAndALineFeed)
{
    TimeZone const zone("UTC0");
    struct Row
    {
        std::int64_t time;
        char const* expected;
    };
    Row const rows[] = {
        {novemberNight, "Sun Nov 15 01:50:38 2026\n"}, {0, "Thu Jan  1 00:00:00 1970\n"},
        {951782399, "Mon Feb 28 23:59:59 2000\n"},     {951782400, "Tue Feb 29 00:00:00 2000\n"},
        {2147483647, "Tue Jan 19 03:14:07 2038\n"},    {2147483648, "Tue Jan 19 03:14:08 2038\n"},
        {4294967296, "Sun Feb  7 06:28:16 2106\n"},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.time);
        KS_String const text = messageAt(row.time).getTimeAsString();
        EXPECT_STREQ(text.c_str(), row.expected);
        EXPECT_EQ(text.length(), 25u);
    }
}

TEST(MessageTime, IsLocal)
{
    {
        TimeZone const zone("EST5");
        EXPECT_STREQ(messageAt(novemberNight).getTimeAsString().c_str(), "Sat Nov 14 20:50:38 2026\n");
    }
    {
        TimeZone const zone("XYZ-3");
        EXPECT_STREQ(messageAt(novemberNight).getTimeAsString().c_str(), "Sun Nov 15 04:50:38 2026\n");
    }
}

#if !defined(_WIN32)
TEST(MessageTime, KnowsSummerTime)
{
    TimeZone const zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_STREQ(messageAt(novemberNight).getTimeAsString().c_str(), "Sun Nov 15 02:50:38 2026\n");
    EXPECT_STREQ(messageAt(1783166400).getTimeAsString().c_str(), "Sat Jul  4 14:00:00 2026\n");
}

TEST(MessageTime, GoesFromBeforeTheEpochToTheLastYearOfFourDigits)
{
    TimeZone const zone("UTC0");
    EXPECT_STREQ(messageAt(-1).getTimeAsString().c_str(), "Wed Dec 31 23:59:59 1969\n");
    EXPECT_STREQ(messageAt(253402300799).getTimeAsString().c_str(), "Fri Dec 31 23:59:59 9999\n");
}
#endif

TEST(MessageTime, ThatTheRuntimeCannotConvertIsEmpty)
{
    TimeZone const zone("UTC0");
    using Limits = std::numeric_limits<std::int64_t>;
    for (std::int64_t time : {Limits::max(), Limits::min()})
    {
        SCOPED_TRACE(time);
        KS_String const text = messageAt(time).getTimeAsString();
        EXPECT_STREQ(text.c_str(), "");
        EXPECT_EQ(text.length(), 0u);
        EXPECT_STREQ(messageAt(time).asString().c_str(), " - Node. missing input");
    }
}

TEST(MessageTime, IsNotReadFromTheTextOfAnotherMessage)
{
    TimeZone const zone("UTC0");
    KS_String const first = messageAt(0).getTimeAsString();
    KS_String const second = messageAt(novemberNight).getTimeAsString();
    EXPECT_STREQ(first.c_str(), "Thu Jan  1 00:00:00 1970\n");
    EXPECT_STREQ(second.c_str(), "Sun Nov 15 01:50:38 2026\n");
}

TEST(MessageText, KeepsTheLineFeedOfTheTimeInFrontOfTheTitle)
{
    TimeZone const zone("UTC0");
    EXPECT_STREQ(messageAt(novemberNight).asString().c_str(),
                 "Sun Nov 15 01:50:38 2026\n - Node. missing input");
}

TEST(MessageText, KeepsItsMarksAroundEmptyTexts)
{
    TimeZone const zone("UTC0");
    Message message;
    message.setTime(0);
    EXPECT_STREQ(message.asString().c_str(), "Thu Jan  1 00:00:00 1970\n - . ");
    message.setContent("content");
    EXPECT_STREQ(message.asString().c_str(), "Thu Jan  1 00:00:00 1970\n - . content");
    message.setContent("");
    message.setTitle("title");
    EXPECT_STREQ(message.asString().c_str(), "Thu Jan  1 00:00:00 1970\n - title. ");
}

TEST(MessageText, TakesTitleAndContentAsTextNotAsFormats)
{
    TimeZone const zone("UTC0");
    Message message(1, "50%s %d", "100%n \xE9\xFF");
    message.setTime(0);
    EXPECT_STREQ(message.asString().c_str(), "Thu Jan  1 00:00:00 1970\n - 50%s %d. 100%n \xE9\xFF");
}

TEST(MessageText, IsTheSameForEveryLevel)
{
    Message message = messageAt(42);
    KS_String const text = message.asString();
    for (int level = 0; level < 7; ++level)
    {
        message.setLevel(level);
        EXPECT_EQ(message.asString(), text);
    }
}

TEST(MessageText, TakesTextsOfAMegabyte)
{
    TimeZone const zone("UTC0");
    std::string const title(1 << 20, 't');
    std::string const content(1 << 20, 'c');
    Message message(1, std::string_view(title), std::string_view(content));
    message.setTime(0);
    EXPECT_EQ(std::string(message.asString()), "Thu Jan  1 00:00:00 1970\n - " + title + ". " + content);
}

} // namespace

} // namespace kestrel::graph::test
