/// @file
#pragma once

#include <ks_graph/GraphNodeBase.h>

namespace material_graph
{

/// A node of a material document: its type is the category of its element ("image", "nodegraph"), its
/// description the element's `doc`. It deletes its pins with itself, and has messages of its own.
class MaterialNode : public kestrel::graph::GraphNodeBase
{
public:
    explicit MaterialNode(unsigned int const& id);
    MaterialNode(MaterialNode const&) = delete;
    MaterialNode& operator=(MaterialNode const&) = delete;
    ~MaterialNode() override;

    /// Joins the names of all owners at once: linear in the result, however deep the node lies.
    kestrel::KS_String getFullName() override;

    /// The base's page, with the description escaped: in a document it is plain text.
    kestrel::KS_String asHTML() override;

    /// @name The node's own messages, in place of the base's samples
    /// @{
    kestrel::graph::MessageHandler const& getMessages() const override { return messages_; }
    bool getMessages(kestrel::Array<kestrel::graph::Message, kestrel::_Wa>& out) const override;
    kestrel::graph::MessageHandler& refMessages() override { return messages_; }
    void clearMessages() override { messages_.clear(); }
    /// @}

private:
    kestrel::graph::MessageHandler messages_;
};

} // namespace material_graph
