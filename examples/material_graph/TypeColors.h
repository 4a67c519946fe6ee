/// @file
#pragma once

#include <foundation/Color4.h>
#include <foundation/KS_String.h>

namespace material_graph
{

/// The colour of every pin of a data type ("color3", "float", ...). A type that has none of its own gets one
/// made from its name, the same in every run; the empty text, no type, is grey.
kestrel::Color4<float> colorOfType(kestrel::KS_String const& type);

/// The same hue, darker: for the border of a pin.
kestrel::Color4<float> borderOf(kestrel::Color4<float> const& color);

} // namespace material_graph
