/// @file
/// Internal: a full name for a look-up, put together without touching the heap where that can be.
#pragma once

#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>

#include <foundation/KS_String.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace kestrel::graph
{

/// The full name that `getFullName()` of a node or a pin gives, up to its first NUL. Plain names are read;
/// whoever else has a say in it is asked.
class FullNameText
{
public:
    explicit FullNameText(GraphNodeBase& node);
    explicit FullNameText(GraphNodePin& pin);
    FullNameText(FullNameText const&) = delete;
    FullNameText& operator=(FullNameText const&) = delete;

    std::string_view view() const { return view_; }

private:
    void keep(KS_String const& text);
    void join(GraphNodeBase& node, std::string_view pinName);
    char* room(std::size_t length);

    std::array<char, 256> short_;
    std::string long_;
    std::string_view view_;
};

} // namespace kestrel::graph
