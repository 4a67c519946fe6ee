/// @file
/// Internal: a full name for a look-up, put together without touching the heap where that can be.
#pragma once

#include "Hashing.h"

#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>

#include <array>
#include <cstddef>
#include <cstdint>
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
    HashedText hashed() const;

    /// Whether the text is the full name of the node.
    static bool isFullName(GraphNodeBase& node, std::string_view text);
    /// The same. REQUIRES: a plain full name.
    static bool isPlainFullName(GraphNodeBase const& node, std::string_view text);

    /// The hash of what stands in front of the pin's own name. REQUIRES: plain full names of the pin and its
    /// node.
    static std::uint64_t hashInFrontOf(GraphNodePin const& pin);

private:
    void keep(std::string_view text);
    void join(GraphNodeBase& node, std::string_view pinName);
    char* room(std::size_t length);

    std::array<char, 256> short_;
    std::string long_;
    std::string_view view_;
    // Of the full name that the text begins with, when it is made of plain names; null otherwise.
    GraphNodeBase const* plainNode_ = nullptr;
    std::size_t nodeLength_ = 0;
};

} // namespace kestrel::graph
