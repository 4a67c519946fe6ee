#include "TypeColors.h"

#include <cstdint>
#include <map>
#include <string_view>

namespace material_graph
{

namespace
{

using Color = kestrel::Color4<float>;

std::map<std::string_view, Color> const& knownTypes()
{
    static std::map<std::string_view, Color> const colors{
        {"", {0.5f, 0.5f, 0.5f, 1.0f}},
        {"float", {0.6f, 0.6f, 0.65f, 1.0f}},
        {"integer", {0.35f, 0.55f, 0.75f, 1.0f}},
        {"boolean", {0.75f, 0.3f, 0.3f, 1.0f}},
        {"color3", {0.9f, 0.75f, 0.2f, 1.0f}},
        {"color4", {0.95f, 0.6f, 0.15f, 1.0f}},
        {"vector2", {0.55f, 0.4f, 0.85f, 1.0f}},
        {"vector3", {0.4f, 0.35f, 0.9f, 1.0f}},
        {"vector4", {0.3f, 0.25f, 0.75f, 1.0f}},
        {"matrix33", {0.3f, 0.6f, 0.6f, 1.0f}},
        {"matrix44", {0.2f, 0.5f, 0.5f, 1.0f}},
        {"string", {0.7f, 0.5f, 0.35f, 1.0f}},
        {"filename", {0.6f, 0.4f, 0.25f, 1.0f}},
        {"BSDF", {0.3f, 0.75f, 0.4f, 1.0f}},
        {"EDF", {0.55f, 0.8f, 0.3f, 1.0f}},
        {"VDF", {0.2f, 0.6f, 0.45f, 1.0f}},
        {"surfaceshader", {0.2f, 0.8f, 0.7f, 1.0f}},
        {"displacementshader", {0.15f, 0.65f, 0.8f, 1.0f}},
        {"volumeshader", {0.15f, 0.55f, 0.6f, 1.0f}},
        {"lightshader", {0.95f, 0.9f, 0.5f, 1.0f}},
        {"material", {0.85f, 0.35f, 0.6f, 1.0f}},
    };
    return colors;
}

std::uint32_t hashOf(std::string_view text)
{
    std::uint32_t hash = 2166136261u;
    for (char const letter : text) hash = (hash ^ static_cast<unsigned char>(letter)) * 16777619u;
    return hash;
}

float componentFrom(std::uint32_t bits)
{
    return 0.3f + 0.6f * static_cast<float>(bits & 0xFFu) / 255.0f;
}

} // namespace

Color colorOfType(kestrel::KS_String const& type)
{
    auto const known = knownTypes().find(type);
    if (known != knownTypes().end()) return known->second;
    std::uint32_t const hash = hashOf(type);
    return {componentFrom(hash), componentFrom(hash >> 8), componentFrom(hash >> 16), 1.0f};
}

Color borderOf(Color const& color)
{
    return {color.red * 0.6f, color.green * 0.6f, color.blue * 0.6f, color.alpha};
}

} // namespace material_graph
