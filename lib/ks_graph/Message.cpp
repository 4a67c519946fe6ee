#include <ks_graph/Message.h>

#include <algorithm>
#include <ctime>

namespace kestrel::graph
{

namespace
{

bool toLocalTime(std::int64_t seconds, std::tm& local)
{
    std::time_t const time = static_cast<std::time_t>(seconds);
#if defined(_WIN32)
    return localtime_s(&local, &time) == 0;
#else
    return localtime_r(&time, &local) != nullptr;
#endif
}

bool isErrorOrCritical(Message const& message)
{
    return message.isError() || message.isCritical();
}

bool isWarning(Message const& message)
{
    return message.isWarning();
}

template <class Predicate>
int count(Array<Message, _Wa> const& messages, Predicate predicate)
{
    return static_cast<int>(std::count_if(messages.begin(), messages.end(), predicate));
}

} // namespace

Message::Message() : Message(4, KS_String()) {}

Message::Message(int const& level, KS_String const& title) : Message(level, title, KS_String()) {}

Message::Message(int const& level, KS_String const& title, KS_String const& content)
    : time_(std::time(nullptr)), level_(level), title_(title), content_(content)
{}

Message::~Message() = default;

// The text of asctime, which itself is neither safe between threads nor defined for every year.
KS_String Message::getTimeAsString() const
{
    static char const* const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static char const* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    KS_String text;
    std::tm local{};
    if (!toLocalTime(time_, local)) return text;
    text.format("%s %s%3d %.2d:%.2d:%.2d %lld\n", days[local.tm_wday], months[local.tm_mon], local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec, 1900LL + local.tm_year);
    return text;
}

KS_String Message::asString() const
{
    KS_String text;
    text.format("%s - %s. %s", getTimeAsString().c_str(), title_.c_str(), content_.c_str());
    return text;
}

int MessageHandler::getActualVerbosityLevel() const
{
    // The second walk moves at half the speed; in a ring of parents the first one meets it.
    MessageHandler const* handler = this;
    MessageHandler const* follower = this;
    for (bool followerMoves = false; handler->verbosityLevel_ == 0 && handler->parent_ != nullptr;
         followerMoves = !followerMoves)
    {
        handler = handler->parent_;
        if (handler == follower) return 0;
        if (followerMoves) follower = follower->parent_;
    }
    return handler->verbosityLevel_;
}

void MessageHandler::push(Message const& message)
{
    if (isLevelAllowed(message.getLevel())) pushIgnoringLevel(message);
}

void MessageHandler::push(int const& level, KS_String const& title, KS_String const& content)
{
    if (isLevelAllowed(level)) pushIgnoringLevel(Message(level, title, content));
}

void MessageHandler::pushIgnoringLevel(Message const& message)
{
    messages_.append(message);
}

int MessageHandler::getNumberOfErrorsOrCriticals() const
{
    return count(messages_, isErrorOrCritical);
}

int MessageHandler::getNumberOfWarnings() const
{
    return count(messages_, isWarning);
}

} // namespace kestrel::graph
