/// @file
/// One step of a sequence as a plain record, and its text.
#pragma once

#include "Model.h"

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

namespace kestrel::graph::test::model
{

enum class Kind
{
#define KIND(name, signature, weight, orderlyWeight) name,
#include "Operations.inc"
#undef KIND
};

/// What kinds of arguments an operation takes, one letter each: n, p, c for a node, a pin, a connection, the
/// same in upper case where null will do; # for a number, b for a flag, s for a text; l for a list of nodes
/// (null among them), k for one of pins, t for one of texts.
struct KindOfOperation
{
    char const* name;
    char const* signature;
    unsigned int weight; // how often it occurs among the others
    unsigned int orderlyWeight;
};

inline constexpr std::array kinds{
#define KIND(name, signature, weight, orderlyWeight) KindOfOperation{#name, signature, weight, orderlyWeight},
#include "Operations.inc"
#undef KIND
};

struct Operation
{
    int label = 0; // unique in its sequence: references name it
    Kind kind{};
    std::array<Reference, 3> references{};
    std::array<unsigned int, 4> numbers{};
    std::array<std::string, 2> texts;
    std::vector<Reference> list;
    std::vector<std::string> names;
};

/// A sequence and the kind of host that it is for: all it takes to run it again.
struct Sequence
{
    Profile profile;
    std::vector<Operation> operations;
};

/// One line for the profile and one for each operation, such as "7 connectPins 3.0 5.1 1": the label, the
/// name and the arguments, where 5.1 is the second thing that operation 5 made. Lines that begin with "//"
/// are comments.
std::ostream& operator<<(std::ostream& out, Operation const& operation);
std::ostream& operator<<(std::ostream& out, Sequence const& sequence);

/// Throws `std::runtime_error` for anything that the output operator does not write.
Sequence parsedSequence(std::istream& in);

} // namespace kestrel::graph::test::model
