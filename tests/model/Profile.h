/// @file
#pragma once

#include <array>
#include <string>

namespace kestrel::graph::test::model
{

/// What kind of host a sequence belongs to. All are off for one that uses the library's own classes and does
/// whatever it likes.
struct Profile
{
    bool orderly = false;   // keeps to what leaves all the scene's views in agreement
    bool large = false;     // has some hundred connections, many of one pin
    bool nodes = false;     // nodes of its own class, whose pins go with them
    bool names = false;     // nodes and pins of its own classes decorate their names
    bool fullNames = false; // and their nodes the full names
    bool pins = false;      // makes pins of its own class, with ids of its own
    bool rules = false;     // which have rules of their own
    bool ids = false;       // gives out node ids of its own
    bool factories = false; // makes connections, compounds and interface nodes of its own, or refuses to
};

/// The words of a profile in the text of a sequence.
inline constexpr std::array<std::pair<char const*, bool Profile::*>, 9> profileWords{
    {{"orderly", &Profile::orderly},
     {"large", &Profile::large},
     {"nodes", &Profile::nodes},
     {"names", &Profile::names},
     {"fullNames", &Profile::fullNames},
     {"pins", &Profile::pins},
     {"rules", &Profile::rules},
     {"ids", &Profile::ids},
     {"factories", &Profile::factories}}};

} // namespace kestrel::graph::test::model
