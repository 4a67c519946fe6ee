/// @file
#pragma once

#include "Model.h"
#include "Operation.h"
#include "Random.h"

#include <cstdint>
#include <string>

namespace kestrel::graph::test::model
{

/// Makes up operations that suit what the model holds.
class Generator
{
public:
    explicit Generator(std::uint64_t seed);

    Profile const& profile() const { return profile_; }

    Operation next(Model const& model);

private:
    Kind nextKind(Model const& model);
    Kind weightedKind();
    bool isOrderly(Operation const& operation, Model const& model) const;
    bool isPromising(Operation const& operation, Model const& model) const;
    Operation fill(Kind kind, Model const& model);
    void fillNumbers(Operation& operation, Model const& model);
    void fillTexts(Operation& operation, Model const& model);
    void fillNames(Operation& operation, Model const& model);
    void aim(Operation& operation, Model const& model);

    Reference anyNode(Model const& model, bool nullToo);
    Reference anyPin(Model const& model, bool nullToo);
    Reference anyConnection(Model const& model, bool nullToo);
    unsigned int anyNumber(Kind kind, int place, Model const& model);
    unsigned int anyId(Model const& model);
    std::string anyNodeName();
    std::string anyPinName();
    std::string anyFullName(Model const& model);
    std::string anyLayoutName(Model const& model);

    Random random_;
    Profile profile_;
    std::size_t nodeLimit_;
    std::size_t connectionLimit_;
    int label_ = 0;
};

} // namespace kestrel::graph::test::model
