/// @file
#pragma once

#include <foundation/Array.h>
#include <foundation/KS_String.h>
#include <ks_graph/ks_graph_api.h>

#include <cstdint>

namespace kestrel::graph
{

/// One diagnostic: a level, a title, a content and the time at which it was made.
///
/// Levels are 1 critical, 2 error, 3 warning, 4 info and 5 debug; a smaller number is more severe. Other
/// numbers are kept as given, and no level test is true for them.
class KS_GRAPH_API Message
{
public:
    /// Level 4 (info), no title, no content, the time now.
    Message();
    /// No content, the time now.
    Message(int const& level, KS_String const& title);
    /// The time now.
    Message(int const& level, KS_String const& title, KS_String const& content);
    Message(Message const&) = default;
    Message(Message&&) noexcept = default;
    Message& operator=(Message const&) = default;
    Message& operator=(Message&&) noexcept = default;

    virtual ~Message();

    /// Any number is kept.
    int const& getLevel() const { return level_; }
    int& refLevel() { return level_; }
    void setLevel(int const& level) { level_ = level; }

    /// What the message is about, in short.
    KS_String const& getTitle() const { return title_; }
    KS_String& refTitle() { return title_; }
    void setTitle(KS_String const& title) { title_ = title; }

    /// The message itself.
    KS_String const& getContent() const { return content_; }
    KS_String& refContent() { return content_; }
    void setContent(KS_String const& content) { content_ = content; }

    /// Seconds since the epoch.
    std::int64_t const& getTime() const { return time_; }
    std::int64_t& refTime() { return time_; }
    void setTime(std::int64_t const& time) { time_ = time; }

    /// All five compare the level with their one number.
    bool isCritical() const { return level_ == 1; }
    bool isError() const { return level_ == 2; }
    bool isWarning() const { return level_ == 3; }
    bool isInfo() const { return level_ == 4; }
    bool isDebug() const { return level_ == 5; }

    /// The local time in the form of the C runtime's `asctime`, with its line feed: 24 characters such as
    /// "Sun Nov 15 01:50:38 2026" and "\n". Empty for a time that the runtime cannot convert.
    KS_String getTimeAsString() const;

    /// "<time> - <title>. <content>". The line feed that ends the time text stays in, in front of the " - ".
    KS_String asString() const;

private:
    std::int64_t time_;
    int level_;
    KS_String title_;
    KS_String content_;
};

/// Keeps the messages whose level passes its verbosity, in the order in which they came, without limit.
///
/// What is kept depends on the handler's own verbosity alone. A verbosity of 0 means "not set here":
/// `getActualVerbosityLevel` then asks the parents, but `push` does not, and keeps nothing of level 1 and
/// above. A host that wants a handler to inherit its verbosity copies it from `getActualVerbosityLevel`.
///
/// The handler owns its messages and not its parent, which has to outlive it. A copy has the same parent.
class KS_GRAPH_API MessageHandler
{
public:
    /// @name Verbosity: the highest level that is kept; 3 (warning) at start
    /// @{
    int const& getVerbosityLevel() const { return verbosityLevel_; }
    int& refVerbosityLevel() { return verbosityLevel_; }
    void setVerbosityLevel(int const& level) { verbosityLevel_ = level; }

    /// The first verbosity that is not 0, of this handler and then its parents; 0 if there is none, also when
    /// the parents form a ring.
    int getActualVerbosityLevel() const;

    /// Whether `push` would keep a message of that level.
    bool isLevelAllowed(int const& level) const { return level <= verbosityLevel_; }
    /// @}

    /// Null at start.
    MessageHandler* getParent() const { return parent_; }
    void setParent(MessageHandler* parent) { parent_ = parent; }

    /// In the order in which they were added.
    Array<Message, _Wa> const& getMessages() const { return messages_; }
    Array<Message, _Wa>& refMessages() { return messages_; }

    /// @name Adding: a message that is not allowed is dropped without a word
    /// @{

    /// Keeps a copy, with the message's own time.
    void push(Message const& message);
    /// Makes the message, with the time now, only if it is kept.
    void push(int const& level, KS_String const& title, KS_String const& content);
    void pushCritical(KS_String const& title, KS_String const& content) { push(1, title, content); }
    void pushError(KS_String const& title, KS_String const& content) { push(2, title, content); }
    void pushWarning(KS_String const& title, KS_String const& content) { push(3, title, content); }
    void pushInfo(KS_String const& title, KS_String const& content) { push(4, title, content); }
    void pushDebug(KS_String const& title, KS_String const& content) { push(5, title, content); }

    /// Keeps a copy whatever its level.
    void pushIgnoringLevel(Message const& message);
    /// @}

    /// Drops every message; the memory for them is kept for the next ones.
    void clear() { messages_.setSize(0); }

    /// All messages count, whatever their level.
    bool isEmpty() const { return messages_.isEmpty(); }
    int getNumberOfMessages() const { return static_cast<int>(messages_.size()); }

    /// @name Counting, linear in the number of messages; level 3 is a warning, 1 and 2 are errors
    /// @{
    bool hasErrorsOrCriticals() const { return getNumberOfErrorsOrCriticals() != 0; }
    int getNumberOfErrorsOrCriticals() const;
    bool hasWarnings() const { return getNumberOfWarnings() != 0; }
    int getNumberOfWarnings() const;
    /// @}

private:
    int verbosityLevel_ = 3;
    Array<Message, _Wa> messages_;
    MessageHandler* parent_ = nullptr;
};

} // namespace kestrel::graph
