#include "LayoutDriver.h"

#include "support/LayoutFiles.h"

#include <foundation/FileStream.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <set>

namespace kestrel::graph::test::model
{

namespace
{

using Pair = Tuple2<float, float>;
using Color = Color4<float>;
using Insert = void (GraphLayout::*)(KS_String const&, bool const&);

// In the order of PlainFlag.
constexpr Insert inserts[plainFlagCount] = {
    &GraphLayout::insertNodeCollapsed,        &GraphLayout::insertNodeVisible,
    &GraphLayout::insertNodeHorizontalInputs, &GraphLayout::insertNodeHorizontalOutputs,
    &GraphLayout::insertConnectionVisible,    &GraphLayout::insertConnectionBezier};

// Quarters, which add up exactly, around zero.
float real(unsigned int number)
{
    return static_cast<float>(static_cast<int>(number % 2001) - 1000) * 0.25f;
}

Pair pairOf(unsigned int number)
{
    return {real(number), real(number / 7)};
}

Color colorOf(unsigned int number)
{
    return {real(number), real(number / 3), real(number / 5), real(number / 11)};
}

PlainPair plain(Pair const& pair)
{
    return plainPair(pair.first, pair.second);
}

PlainColor plain(Color const& color)
{
    return plainColor(color.red, color.green, color.blue, color.alpha);
}

KS_String text(std::string const& plainText)
{
    return KS_String(std::string_view(plainText));
}

float sum(std::uint32_t bits, float distance)
{
    return std::bit_cast<float>(bits) + distance;
}

void offset(PlainPair& position, Pair const& distance)
{
    position = plainPair(sum(position[0], distance.first), sum(position[1], distance.second));
}

std::optional<std::string> replaced(std::string name, std::string const& from, std::string const& to)
{
    bool found = false;
    for (std::size_t at = from.empty() ? std::string::npos : name.find(from); at != std::string::npos;
         at = name.find(from, at + to.size()))
    {
        name = name.substr(0, at) + to + name.substr(at + from.size());
        found = true;
    }
    return found ? std::optional(name) : std::nullopt;
}

// One at a time, in the order of the old names.
template <class Value, class Rule>
void rename(std::map<std::string, Value>& map, Rule const& rule)
{
    std::vector<std::string> names;
    for (auto const& entry : map) names.push_back(entry.first);
    for (std::string const& name : names)
    {
        std::optional<std::string> const newName = rule(name);
        if (!newName || *newName == name) continue;
        Value const value = map[name];
        map[*newName] = value;
        map.erase(name);
    }
}

template <class Rule>
void rename(PlainLayout& layout, Rule const& rule)
{
    rename(layout.positions, rule);
    rename(layout.colors, rule);
    for (auto& flags : layout.flags) rename(flags, rule);
    for (PlainNote& note : layout.notes) note.owner = rule(note.owner).value_or(note.owner);
}

template <class Value>
void update(std::map<std::string, Value>& map, std::map<std::string, Value> const& other)
{
    for (auto const& [name, value] : other) map[name] = value;
}

void update(PlainLayout& layout, PlainLayout const& other)
{
    update(layout.positions, other.positions);
    update(layout.colors, other.colors);
    for (std::size_t flag = 0; flag < plainFlagCount; ++flag) update(layout.flags[flag], other.flags[flag]);
    std::vector<PlainNote> const notes = other.notes;
    layout.notes.insert(layout.notes.end(), notes.begin(), notes.end());
}

void removeNode(PlainLayout& layout, std::string const& name)
{
    layout.positions.erase(name);
    layout.colors.erase(name);
    for (std::size_t flag = 0; flag < connectionVisible; ++flag) layout.flags[flag].erase(name);
}

std::map<KS_String const, KS_String> dictionaryOf(std::vector<std::string> const& names)
{
    std::map<KS_String const, KS_String> dictionary;
    for (std::size_t i = 0; i + 1 < names.size(); i += 2)
        dictionary.emplace(text(names[i]), text(names[i + 1]));
    return dictionary;
}

std::optional<std::string> translated(std::string const& name, std::vector<std::string> const& names)
{
    for (std::size_t i = 0; i + 1 < names.size(); i += 2)
        if (names[i] == name) return names[i + 1];
    return std::nullopt;
}

Pair topLeftCorner(PlainLayout const& layout)
{
    float const largest = std::numeric_limits<float>::max();
    Pair corner(largest, largest);
    for (auto const& [name, position] : layout.positions)
    {
        corner.first = std::min(corner.first, std::bit_cast<float>(position[0]));
        corner.second = std::min(corner.second, std::bit_cast<float>(position[1]));
    }
    return layout.positions.empty() ? Pair(0.0f, 0.0f) : corner;
}

std::vector<std::string> namesOf(Array<KS_String, _Wa> const& names)
{
    return {names.begin(), names.end()};
}

template <class Stream>
void passThrough(PlainLayout const& plainLayout, GraphLayout const& from, GraphLayout& to,
                 Difference& difference)
{
    std::string const bytes = writtenBy<Stream>(from);
    ByteWriter const expected = encoded(plainLayout, 2, orderOf<Stream>);
    if (bytes != expected.content()) difference.note("the file of a layout differs from the model's");
    ScratchFile& file = ScratchFile::instance();
    file.endWith(bytes);
    Stream stream(file.get());
    difference.expect("whether a layout was read", true, to.read(stream));
    difference.expect("the end of a layout in its file", bytes.size(), file.position());
}

} // namespace

bool LayoutDriver::apply(Operation const& operation, bool& hadEffect, Difference& difference)
{
    if (operation.kind < Kind::layoutInsert) return false;
    std::size_t const which = operation.numbers[0] % 2;
    PlainLayout const before = plain_[which];
    if (operation.kind == Kind::layoutFile)
        passThroughFile(which, operation.numbers[1] % 2, operation.numbers[2] != 0, difference);
    else
        perform(operation);
    hadEffect = operation.kind == Kind::layoutFile ? before != PlainLayout() : before != plain_[which];
    compare(0, difference);
    compare(1, difference);
    return true;
}

void LayoutDriver::perform(Operation const& operation)
{
    PlainLayout& layout = plain_[operation.numbers[0] % 2];
    GraphLayout& library = layouts_[operation.numbers[0] % 2];
    std::string const& name = operation.texts[0];
    std::string const& second = operation.texts[1];
    std::size_t const other = operation.numbers[1] % 2;
    unsigned int const value = operation.numbers[1];
    switch (operation.kind)
    {
    case Kind::layoutInsert:
        return insert(operation);
    case Kind::layoutInsertNode:
        layout.positions.emplace(name, plain(pairOf(value)));
        if (value % 2 != 0) layout.colors.emplace(name, plain(colorOf(value)));
        for (std::size_t flag = 0; flag < connectionVisible; ++flag)
            layout.flags[flag].emplace(name, (value >> flag & 2u) != 0);
        if (value % 2 != 0)
            library.insertNode(text(name), pairOf(value), colorOf(value), (value & 2u) != 0,
                               (value & 4u) != 0, (value & 8u) != 0, (value & 16u) != 0);
        else
            library.insertNode(text(name), pairOf(value), (value & 2u) != 0, (value & 4u) != 0,
                               (value & 8u) != 0, (value & 16u) != 0);
        return;
    case Kind::layoutInsertConnection:
        layout.flags[connectionVisible].emplace(name, (value & 1u) != 0);
        layout.flags[connectionBezier].emplace(name, (value & 2u) != 0);
        return library.insertConnection(text(name), (value & 1u) != 0, (value & 2u) != 0);
    case Kind::layoutNote:
        return addNote(operation);
    case Kind::layoutRemoveNode:
        removeNode(layout, name);
        return library.removeNode(text(name));
    case Kind::layoutReplaceText:
        rename(layout, [&](std::string const& old) { return replaced(old, name, second); });
        return library.replaceTxtInNames(text(name), text(second));
    case Kind::layoutReplacePrefix:
        rename(layout,
               [&](std::string const& old) {
                   return old.starts_with(name) ? std::optional(second + old.substr(name.size()))
                                                : std::nullopt;
               });
        return library.replacePrefixInNames(text(name), text(second));
    case Kind::layoutDictionary:
        rename(layout, [&](std::string const& old) { return translated(old, operation.names); });
        return library.applyDictionary(dictionaryOf(operation.names));
    case Kind::layoutUpdate:
        update(layout, plain_[other]);
        return library.updateWithOther(layouts_[other]);
    case Kind::layoutMoveNotes:
    {
        std::vector<PlainNote> const notes = plain_[other].notes;
        Array<NoteDesc, _Wa> const libraryNotes = layouts_[other].getNotes();
        for (PlainNote const& note : notes)
        {
            auto const found = std::find(layout.notes.begin(), layout.notes.end(), note);
            if (found != layout.notes.end()) found->owner = name;
        }
        return library.moveNotes(libraryNotes, text(name));
    }
    case Kind::layoutOffset:
        for (auto& [moved, position] : layout.positions) offset(position, pairOf(value));
        for (PlainNote& note : layout.notes)
            if (note.position) offset(*note.position, pairOf(value));
        return library.offset(pairOf(value));
    case Kind::layoutClear:
        layout = PlainLayout();
        return library.clear();
    default:
        layout = plain_[other];
        library = layouts_[other];
    }
}

void LayoutDriver::insert(Operation const& operation)
{
    PlainLayout& layout = plain_[operation.numbers[0] % 2];
    GraphLayout& library = layouts_[operation.numbers[0] % 2];
    std::string const& name = operation.texts[0];
    unsigned int const value = operation.numbers[2];
    std::size_t const map = operation.numbers[1] % (2 + plainFlagCount);
    if (map == 0)
    {
        layout.positions.emplace(name, plain(pairOf(value)));
        library.insertNodePosition(text(name), pairOf(value));
    }
    else if (map == 1)
    {
        layout.colors.emplace(name, plain(colorOf(value)));
        library.insertNodeColor(text(name), colorOf(value));
    }
    else
    {
        layout.flags[map - 2].emplace(name, value % 2 != 0);
        (library.*inserts[map - 2])(text(name), value % 2 != 0);
    }
}

// The bits of the number say what is present; with all of them, the longer form is used.
void LayoutDriver::addNote(Operation const& operation)
{
    GraphLayout& library = layouts_[operation.numbers[0] % 2];
    unsigned int const value = operation.numbers[1];
    PlainNote note{operation.texts[0]};
    NoteDesc libraryNote;
    libraryNote.setOwnerName(text(note.owner));
    if ((value & 1u) != 0) note.text = operation.texts[1];
    if ((value & 1u) != 0) libraryNote.setText(text(operation.texts[1]));
    if ((value & 2u) != 0) note.position = plain(pairOf(value));
    if ((value & 2u) != 0) libraryNote.setPosition(pairOf(value));
    if ((value & 4u) != 0) note.size = plain(pairOf(value / 3));
    if ((value & 4u) != 0) libraryNote.setSize(pairOf(value / 3));
    if ((value & 8u) != 0) note.firstColor = plain(colorOf(value));
    if ((value & 8u) != 0) libraryNote.setFirstColor(colorOf(value));
    if ((value & 16u) != 0) note.secondColor = plain(colorOf(value / 3));
    if ((value & 16u) != 0) libraryNote.setSecondColor(colorOf(value / 3));
    if ((value & 31u) == 31u)
        library.addNote(text(note.owner), text(operation.texts[1]), pairOf(value), pairOf(value / 3),
                        colorOf(value), colorOf(value / 3));
    else
        library.addNote(libraryNote);
    plain_[operation.numbers[0] % 2].notes.push_back(note);
}

void LayoutDriver::passThroughFile(std::size_t from, std::size_t to, bool endian, Difference& difference)
{
    if (endian)
        passThrough<FileStreamEndian>(plain_[from], layouts_[from], layouts_[to], difference);
    else
        passThrough<FileStreamRaw>(plain_[from], layouts_[from], layouts_[to], difference);
    plain_[to] = PlainLayout(plain_[from]);
}

void LayoutDriver::compare(std::size_t which, Difference& difference) const
{
    PlainLayout const& expected = plain_[which];
    GraphLayout const& actual = layouts_[which];
    if (plainOf(actual) != expected) difference.note("layout ", which, " differs from the model's");
    Pair const corner = actual.getTopLeftCorner();
    if (corner != topLeftCorner(expected)) difference.note("the corner of layout ", which, " is another one");
    difference.expect("whether the layouts are equal", plain_[0] == plain_[1], layouts_[0] == layouts_[1]);

    std::vector<std::string> expectedNames;
    for (auto const& [name, position] : expected.positions) expectedNames.push_back(name);
    Array<KS_String, _Wa> names;
    difference.expect("whether a layout has positions", !expectedNames.empty(),
                      actual.getInvolvedNodeNames(names));
    if (namesOf(names) != expectedNames)
        difference.note("the names with positions of layout ", which, " differ");
}

} // namespace kestrel::graph::test::model
