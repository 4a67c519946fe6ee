#include "LayoutFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <tuple>

namespace kestrel::graph::test
{

namespace
{

using Pair = Tuple2<float, float>;
using Color = Color4<float>;

struct FlagOperations
{
    Optional<bool> (GraphLayout::*get)(KS_String const&) const;
    void (GraphLayout::*insert)(KS_String const&, bool const&);
};

// In the order of PlainFlag.
FlagOperations const flagOperations[plainFlagCount] = {
    {&GraphLayout::getCollapsedByNodeName, &GraphLayout::insertNodeCollapsed},
    {&GraphLayout::getVisibleByNodeName, &GraphLayout::insertNodeVisible},
    {&GraphLayout::getHorizontalInputsByNodeName, &GraphLayout::insertNodeHorizontalInputs},
    {&GraphLayout::getHorizontalOutputsByNodeName, &GraphLayout::insertNodeHorizontalOutputs},
    {&GraphLayout::getVisibleByConnectionName, &GraphLayout::insertConnectionVisible},
    {&GraphLayout::getBezierByConnectionName, &GraphLayout::insertConnectionBezier}};

PlainPair plain(Pair const& pair)
{
    return plainPair(pair.first, pair.second);
}

PlainColor plain(Color const& color)
{
    return plainColor(color.red, color.green, color.blue, color.alpha);
}

std::string plain(KS_String const& text)
{
    return std::string(text);
}

bool plain(bool flag)
{
    return flag;
}

float real(std::uint32_t bits)
{
    return std::bit_cast<float>(bits);
}

Pair fromPlain(PlainPair const& pair)
{
    return {real(pair[0]), real(pair[1])};
}

Color fromPlain(PlainColor const& color)
{
    return {real(color[0]), real(color[1]), real(color[2]), real(color[3])};
}

KS_String fromPlain(std::string const& text)
{
    return KS_String(std::string_view(text));
}

template <class Value>
auto plain(Optional<Value> const& value)
{
    std::optional<decltype(plain(*value))> copy;
    if (value) copy = plain(*value);
    return copy;
}

// Enters the value that `get` has for each of the names.
template <class Map, class Get>
void gather(Map& map, GraphLayout const& layout, Array<KS_String, _Wa> const& names, Get get)
{
    for (KS_String const& name : names)
        if (auto const value = (layout.*get)(name)) map.emplace(name.c_str(), plain(*value));
}

PlainNote plain(NoteDesc const& note)
{
    return {plain(note.getOwnerName()), plain(note.getText()),       plain(note.getPosition()),
            plain(note.getSize()),      plain(note.getFirstColor()), plain(note.getSecondColor())};
}

NoteDesc fromPlain(PlainNote const& plainNote)
{
    NoteDesc note;
    note.setOwnerName(fromPlain(plainNote.owner));
    if (plainNote.text) note.setText(fromPlain(*plainNote.text));
    if (plainNote.position) note.setPosition(fromPlain(*plainNote.position));
    if (plainNote.size) note.setSize(fromPlain(*plainNote.size));
    if (plainNote.firstColor) note.setFirstColor(fromPlain(*plainNote.firstColor));
    if (plainNote.secondColor) note.setSecondColor(fromPlain(*plainNote.secondColor));
    return note;
}

} // namespace

PlainLayout plainOf(GraphLayout const& layout)
{
    Array<KS_String, _Wa> nodes;
    Array<KS_String, _Wa> connections;
    layout.getAllNodeNames(nodes);
    layout.getAllConnectionNames(connections);
    PlainLayout copy;
    gather(copy.positions, layout, nodes, &GraphLayout::getPositionByNodeName);
    gather(copy.colors, layout, nodes, &GraphLayout::getColorByNodeName);
    for (std::size_t flag = 0; flag < plainFlagCount; ++flag)
        gather(copy.flags[flag], layout, flag < connectionVisible ? nodes : connections,
               flagOperations[flag].get);
    for (NoteDesc const& note : layout.getNotes()) copy.notes.push_back(plain(note));
    return copy;
}

GraphLayout layoutOf(PlainLayout const& plainLayout)
{
    GraphLayout layout;
    for (auto const& [name, position] : plainLayout.positions)
        layout.insertNodePosition(fromPlain(name), fromPlain(position));
    for (auto const& [name, color] : plainLayout.colors)
        layout.insertNodeColor(fromPlain(name), fromPlain(color));
    for (std::size_t flag = 0; flag < plainFlagCount; ++flag)
    {
        auto const insert = flagOperations[flag].insert;
        for (auto const& [name, value] : plainLayout.flags[flag]) (layout.*insert)(fromPlain(name), value);
    }
    for (PlainNote const& note : plainLayout.notes) layout.addNote(fromPlain(note));
    return layout;
}

void PrintTo(PlainLayout const& layout, std::ostream* out)
{
    *out << "positions " << ::testing::PrintToString(layout.positions);
    *out << "\n  colors " << ::testing::PrintToString(layout.colors);
    *out << "\n  flags " << ::testing::PrintToString(layout.flags);
    for (PlainNote const& note : layout.notes)
        *out << "\n  note " << ::testing::PrintToString(note.owner)
             << ::testing::PrintToString(
                    std::tie(note.text, note.position, note.size, note.firstColor, note.secondColor));
}

ScratchFile& ScratchFile::instance()
{
    static ScratchFile file;
    return file;
}

void ScratchFile::endWith(std::string_view bytes)
{
    size_ = std::max(size_, bytes.size());
    start_ = size_ - bytes.size();
    seek(start_);
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), get()), bytes.size());
    seek(start_);
}

std::size_t ScratchFile::position() const
{
    return static_cast<std::size_t>(std::ftell(get())) - start_;
}

void ScratchFile::startOver()
{
    start_ = 0;
    seek(0);
}

std::string ScratchFile::written()
{
    std::string bytes(position(), '\0');
    size_ = std::max(size_, bytes.size());
    seek(0);
    EXPECT_EQ(std::fread(bytes.data(), 1, bytes.size(), get()), bytes.size());
    return bytes;
}

void ScratchFile::seek(std::size_t offset)
{
    EXPECT_EQ(std::fseek(get(), static_cast<long>(offset), SEEK_SET), 0);
}

GraphLayout leftoverLayout()
{
    KS_String const name("leftover");
    GraphLayout layout;
    layout.insertNode(name, Pair(7.0f, 7.0f), Color(), true, true, true, true);
    layout.insertConnection(name, true, true);
    layout.addNote(name, name, Pair(), Pair(), Color(), Color());
    return layout;
}

} // namespace kestrel::graph::test
