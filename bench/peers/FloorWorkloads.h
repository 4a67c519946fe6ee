/// @file
#pragma once

#include "../Inputs.h"
#include "../Timing.h"
#include "FloorScene.h"
#include "Report.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace bench
{

template <class Parts>
class FloorWorkloads
{
public:
    explicit FloorWorkloads(Arguments const& arguments)
        : in_(arguments.nodes), report_(arguments), elements_(in_.n), scene_(std::make_unique<Scene>())
    {
        for (std::uint32_t const place : in_.namesAskedFor)
        {
            nodesAskedFor_.push_back(std::string("root.").append(in_.names[place]));
            pinsAskedFor_.push_back(
                std::string(nodesAskedFor_.back()).append(place % 2 != 0 ? ".in1" : ".in0"));
        }
    }

    void run()
    {
        report_.start();
        build();
        ask();
        walkNeighbours();
        report_.loop("rename", in_.renamed.size(),
                     [&](std::size_t i) { scene_->rename(elements_[in_.renamed[i]].node, in_.newNames[i]); });
        report_.once("serialise", in_.n, [&] { xml_ = scene_->toXml(); });
        std::fprintf(stderr, "serialised bytes: %zu\n", xml_.size());
        group();
        report_.loop("remove", in_.removed.size(),
                     [&](std::size_t i) { scene_->removeNode(elements_[in_.removed[i]].node); });
        report_.once("clear", in_.n,
                     [&]
                     {
                         scene_->clear();
                         scene_.reset();
                     });
    }

private:
    using Scene = FloorScene<Parts>;
    using Node = typename Scene::Node;
    using Pin = typename Scene::Pin;
    using Connection = typename Scene::Connection;

    struct Element
    {
        Node* node;
        Pin* inputs[2];
        Pin* output;
    };

    void build()
    {
        root_ = scene_->addNode(0, "root", nullptr);
        report_.all("build", in_.n,
                    [&](std::size_t i)
                    {
                        Node* const node =
                            scene_->addNode(static_cast<std::uint32_t>(i) + 1, in_.names[i], root_);
                        elements_[i].node = node;
                        elements_[i].inputs[0] = scene_->addPin(node, floorInput, "in0");
                        elements_[i].inputs[1] = scene_->addPin(node, floorInput, "in1");
                        elements_[i].output = scene_->addPin(node, floorOutput, "out");
                    });
        report_.all("connect", in_.edges.size(),
                    [&](std::size_t i) { require(connect(in_.edges[i]) != nullptr); });
    }

    Connection* connect(Edge const& edge)
    {
        return scene_->connect(elements_[edge.source].output, elements_[edge.target].inputs[edge.port],
                               false);
    }

    bool areConnected(Edge const& edge) const
    {
        return scene_->areConnected(elements_[edge.source].node, elements_[edge.target].node);
    }

    void ask()
    {
        report_.loop("are_connected", in_.pairs.size(),
                     [&](std::size_t i) { keep(areConnected(in_.pairs[i])); });
        report_.loop("are_connected_hit", in_.connectedPairs.size(),
                     [&](std::size_t i) { require(areConnected(in_.connectedPairs[i])); });
        report_.loop("lookup_name", nodesAskedFor_.size(),
                     [&](std::size_t i) {
                         require(scene_->findNode(nodesAskedFor_[i]) == elements_[in_.namesAskedFor[i]].node);
                     });
        report_.loop("lookup_pin_name", pinsAskedFor_.size(),
                     [&](std::size_t i)
                     {
                         std::uint32_t const place = in_.namesAskedFor[i];
                         require(scene_->findPin(pinsAskedFor_[i]) == elements_[place].inputs[place % 2]);
                     });
        report_.loop("lookup_id", in_.idsAskedFor.size(),
                     [&](std::size_t i)
                     {
                         std::uint32_t const place = in_.idsAskedFor[i];
                         require(scene_->findNode(place + 1) == elements_[place].node);
                     });
    }

    void walkNeighbours()
    {
        std::uintptr_t sum = 0;
        auto const visit = [&sum](Connection const* connection)
        { sum += reinterpret_cast<std::uintptr_t>(connection); };
        report_.loop("neighbours", in_.neighboursAskedFor.size(),
                     [&](std::size_t i)
                     {
                         for (Pin const* const pin : elements_[in_.neighboursAskedFor[i]].node->pins)
                         {
                             for (Connection const* const input : pin->inputs) visit(input);
                             for (Connection const* const output : pin->outputs) visit(output);
                         }
                     });
        keep(sum);
    }

    void group()
    {
        std::uint32_t nextId = in_.n + 1;
        Node* const first = addCompound(nextId++, "compound01");
        Node* const second = addCompound(nextId++, "compound02");
        report_.loop("group", in_.grouped.size(),
                     [&](std::size_t i) { scene_->setOwner(elements_[in_.grouped[i]].node, first); });
        std::vector<Node*> moved;
        for (std::uint32_t const place : in_.groupedWithRewiring) moved.push_back(elements_[place].node);
        report_.once("group_rewire", moved.size(), [&] { scene_->moveToCompound(moved, second, nextId); });
    }

    Node* addCompound(std::uint32_t id, char const* name)
    {
        Node* const compound = scene_->addNode(id, name, root_);
        compound->compound = true;
        return compound;
    }

    Inputs const in_;
    Report const report_;
    std::vector<std::string> nodesAskedFor_;
    std::vector<std::string> pinsAskedFor_;
    std::vector<Element> elements_;
    std::unique_ptr<Scene> scene_;
    Node* root_ = nullptr;
    std::string xml_;
};

} // namespace bench
