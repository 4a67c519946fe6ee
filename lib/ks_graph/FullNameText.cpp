#include "FullNameText.h"

#include "Names.h"
#include "PlainTypes.h"

#include <algorithm>

namespace kestrel::graph
{

namespace
{

// Writes texts one before the other, from the end of the room down.
class BackwardWriter
{
public:
    explicit BackwardWriter(char* end) : begin_(end) {}

    void prepend(std::string_view text)
    {
        begin_ -= text.size();
        std::copy(text.begin(), text.end(), begin_);
    }

private:
    char* begin_;
};

// False, with nothing changed, if it has another end.
bool removeEnd(std::string_view& text, std::string_view end)
{
    if (!text.ends_with(end)) return false;
    text.remove_suffix(end.size());
    return true;
}

} // namespace

FullNameText::FullNameText(GraphNodeBase& node)
{
    if (isPlain(node))
        join(node, {});
    else
        keep(cText(node.getFullName()));
}

FullNameText::FullNameText(GraphNodePin& pin)
{
    if (!isPlain(pin))
        keep(cText(pin.getFullName()));
    else if (pin.parentNode_ == nullptr)
        keep(cText(pin.name_));
    else if (isPlain(*pin.parentNode_))
        join(*pin.parentNode_, cText(pin.name_));
    else
        keep(cText(dottedName(pin.parentNode_->getFullName(), KS_String(pin.name_))));
}

void FullNameText::keep(std::string_view text)
{
    view_ = {std::copy(text.begin(), text.end(), room(text.size())) - text.size(), text.size()};
}

// The node is plain. The first one above it that is not is asked for its full name.
void FullNameText::join(GraphNodeBase& node, std::string_view pinName)
{
    bool const hasPin = pinName.data() != nullptr;
    std::size_t length = hasPin ? pinName.size() + 1 : 0;
    GraphNodeBase* above = &node;
    for (; above != nullptr && isPlain(*above); above = above->nodeOwner_)
        length += cText(above->name_).size() + 1;
    std::string const start(above != nullptr ? cText(above->getFullName()) : std::string_view());
    length = above != nullptr ? length + start.size() : length - 1;

    char* const text = room(length);
    BackwardWriter writer(text + length);
    if (hasPin)
    {
        writer.prepend(pinName);
        writer.prepend(".");
    }
    for (GraphNodeBase const* part = &node; part != above; part = part->nodeOwner_)
    {
        writer.prepend(cText(part->name_));
        if (part->nodeOwner_ != nullptr) writer.prepend(".");
    }
    writer.prepend(start);
    view_ = {text, length};
    if (above == nullptr) plainNode_ = &node;
    nodeLength_ = hasPin ? length - pinName.size() - 1 : length;
}

HashedText FullNameText::hashed() const
{
    if (plainNode_ == nullptr) return HashedText(view_);
    return {view_, continuedHash(plainNode_->placeInNames_.fullNameHash, view_.substr(nodeLength_))};
}

bool FullNameText::isFullName(GraphNodeBase& node, std::string_view text)
{
    return hasPlainFullName(node) ? isPlainFullName(node, text) : FullNameText(node).view() == text;
}

// From the end up to the root: nothing is put together for a question.
bool FullNameText::isPlainFullName(GraphNodeBase const& node, std::string_view text)
{
    for (GraphNodeBase const* part = &node; removeEnd(text, cText(part->name_)); part = part->nodeOwner_)
    {
        if (part->nodeOwner_ == nullptr) return text.empty();
        if (!removeEnd(text, ".")) return false;
    }
    return false;
}

std::uint64_t FullNameText::hashInFrontOf(GraphNodePin const& pin)
{
    if (pin.parentNode_ == nullptr) return emptyTextHash;
    return continuedHash(pin.parentNode_->placeInNames_.fullNameHash, ".");
}

char* FullNameText::room(std::size_t length)
{
    if (length <= short_.size()) return short_.data();
    long_.resize(length);
    return long_.data();
}

} // namespace kestrel::graph
