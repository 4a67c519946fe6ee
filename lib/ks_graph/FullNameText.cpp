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

} // namespace

FullNameText::FullNameText(GraphNodeBase& node)
{
    if (isPlain(node))
        join(node, {});
    else
        keep(node.getFullName());
}

FullNameText::FullNameText(GraphNodePin& pin)
{
    if (!isPlain(pin))
        keep(pin.getFullName());
    else if (pin.parentNode_ == nullptr)
        keep(pin.name_);
    else if (isPlain(*pin.parentNode_))
        join(*pin.parentNode_, cText(pin.name_));
    else
        keep(dottedName(pin.parentNode_->getFullName(), pin.name_));
}

void FullNameText::keep(KS_String const& text)
{
    std::string_view const kept = cText(text);
    view_ = {std::copy(kept.begin(), kept.end(), room(kept.size())) - kept.size(), kept.size()};
}

// The node is plain. The first one above it that is not is asked for its full name.
void FullNameText::join(GraphNodeBase& node, std::string_view pinName)
{
    bool const hasPin = pinName.data() != nullptr;
    std::size_t length = hasPin ? pinName.size() + 1 : 0;
    GraphNodeBase* above = &node;
    for (; above != nullptr && isPlain(*above); above = above->nodeOwner_)
        length += cText(above->name_).size() + 1;
    KS_String const start = above != nullptr ? above->getFullName() : KS_String();
    length = above != nullptr ? length + cText(start).size() : length - 1;

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
    writer.prepend(cText(start));
    view_ = {text, length};
}

char* FullNameText::room(std::size_t length)
{
    if (length <= short_.size()) return short_.data();
    long_.resize(length);
    return long_.data();
}

} // namespace kestrel::graph
