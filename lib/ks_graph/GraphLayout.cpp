#include <ks_graph/GraphLayout.h>

#include <foundation/FileStream.h>
#include <ks_graph/Names.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace kestrel::graph
{

using Position = Tuple2<float, float>;
using Color = Color4<float>;

NoteDesc::NoteDesc() = default;

NoteDesc::NoteDesc(KS_String const& ownerName, KS_String const& text, Position const& position,
                   Position const& size, Color const& firstColor, Color const& secondColor)
    : ownerName_(ownerName),
      text_(text),
      position_(position),
      size_(size),
      firstColor_(firstColor),
      secondColor_(secondColor)
{}

NoteDesc& NoteDesc::operator=(NoteDesc const& other)
{
    return *this = NoteDesc(other);
}

bool NoteDesc::operator==(NoteDesc const& other) const
{
    return ownerName_ == other.ownerName_ && text_ == other.text_ && position_ == other.position_ &&
           size_ == other.size_ && firstColor_ == other.firstColor_ && secondColor_ == other.secondColor_;
}

// The maps in the order of the file, which is that of every walk over all of them.
struct GraphLayout::Fields
{
    // `firstVersion` is the first version of the file that has the map.
    template <class Map>
    struct Field
    {
        Map GraphLayout::*map;
        unsigned int firstVersion;
    };
    template <class Map>
    Field(Map GraphLayout::*, unsigned int) -> Field<Map>;

    static constexpr unsigned int anyVersion = 0;

    static constexpr auto ofNodes()
    {
        return std::tuple(
            Field{&GraphLayout::nodePositions_, anyVersion}, Field{&GraphLayout::nodeColors_, anyVersion},
            Field{&GraphLayout::nodeCollapsed_, anyVersion}, Field{&GraphLayout::nodeVisible_, 2},
            Field{&GraphLayout::nodeHorizontalInputs_, anyVersion},
            Field{&GraphLayout::nodeHorizontalOutputs_, anyVersion});
    }

    static constexpr auto ofConnections()
    {
        return std::tuple(Field{&GraphLayout::connectionVisible_, 2},
                          Field{&GraphLayout::connectionBezier_, 2});
    }

    template <class... Field, class Action>
    static void forEach(std::tuple<Field...> const& fields, Action action)
    {
        std::apply([&action](auto const&... field) { (action(field), ...); }, fields);
    }

    template <class Action>
    static void forEach(Action action)
    {
        forEach(ofNodes(), action);
        forEach(ofConnections(), action);
    }

    // Whether the condition holds for all; stops at the first for which it does not.
    template <class Condition>
    static bool all(Condition condition)
    {
        auto const holds = [&condition](auto const&... field) { return (condition(field) && ...); };
        return std::apply(holds, ofNodes()) && std::apply(holds, ofConnections());
    }

    // The maps are in order, so their names are merged, one map after the other.
    template <class Selected>
    static bool gatherNames(GraphLayout const& layout, Selected const& fields, Array<KS_String, _Wa>& out)
    {
        std::vector<KS_String const*> names;
        forEach(fields,
                [&](auto const& field)
                {
                    std::vector<KS_String const*> more;
                    for (auto const& record : layout.*field.map) more.push_back(&record.first);
                    std::vector<KS_String const*> merged;
                    std::set_union(names.begin(), names.end(), more.begin(), more.end(),
                                   std::back_inserter(merged),
                                   [](auto const* a, auto const* b) { return *a < *b; });
                    names.swap(merged);
                });
        for (KS_String const* name : names) out.append(*name);
        return !out.isEmpty();
    }
};

namespace
{

template <class Value>
Optional<Value> find(std::map<KS_String, Value> const& map, KS_String const& name)
{
    auto const record = map.find(name);
    return record != map.end() ? Optional<Value>(&record->second) : Optional<Value>();
}

// All new names are there before the first record moves: once the moving starts, nothing can fail. A record
// that is still to be moved stays where its iterator points, whatever is written over its value.
template <class Map, class Rule>
void renameKeys(Map& map, Rule const& newNameFor)
{
    std::vector<std::pair<typename Map::iterator, KS_String>> moves;
    for (auto record = map.begin(); record != map.end(); ++record)
    {
        std::optional<KS_String> newName = newNameFor(record->first);
        if (newName && *newName != record->first) moves.emplace_back(record, std::move(*newName));
    }
    for (auto& [record, newName] : moves)
    {
        auto node = map.extract(record);
        node.key() = std::move(newName);
        auto const result = map.insert(std::move(node));
        if (!result.inserted) result.position->second = result.node.mapped();
    }
}

void lower(float& least, float value)
{
    if (value < least) least = value;
}

} // namespace

unsigned int const GraphLayout::VERSION = 2;

GraphLayout::GraphLayout() = default;

GraphLayout& GraphLayout::operator=(GraphLayout const& other)
{
    return *this = GraphLayout(other);
}

GraphLayout::~GraphLayout() = default;

void GraphLayout::insertNodePosition(KS_String const& name, Position const& position)
{
    nodePositions_.try_emplace(name, position);
}

void GraphLayout::insertNodeColor(KS_String const& name, Color const& color)
{
    nodeColors_.try_emplace(name, color);
}

void GraphLayout::insertNodeCollapsed(KS_String const& name, bool const& collapsed)
{
    nodeCollapsed_.try_emplace(name, collapsed);
}

void GraphLayout::insertNodeVisible(KS_String const& name, bool const& visible)
{
    nodeVisible_.try_emplace(name, visible);
}

void GraphLayout::insertNodeHorizontalInputs(KS_String const& name, bool const& horizontalInputs)
{
    nodeHorizontalInputs_.try_emplace(name, horizontalInputs);
}

void GraphLayout::insertNodeHorizontalOutputs(KS_String const& name, bool const& horizontalOutputs)
{
    nodeHorizontalOutputs_.try_emplace(name, horizontalOutputs);
}

void GraphLayout::insertConnectionVisible(KS_String const& name, bool const& visible)
{
    connectionVisible_.try_emplace(name, visible);
}

void GraphLayout::insertConnectionBezier(KS_String const& name, bool const& bezier)
{
    connectionBezier_.try_emplace(name, bezier);
}

void GraphLayout::insertNode(KS_String const& name, Position const& position, Color const& color,
                             bool const& collapsed, bool const& visible, bool const& horizontalInputs,
                             bool const& horizontalOutputs)
{
    insertNodePosition(name, position);
    insertNodeColor(name, color);
    insertNodeCollapsed(name, collapsed);
    insertNodeVisible(name, visible);
    insertNodeHorizontalInputs(name, horizontalInputs);
    insertNodeHorizontalOutputs(name, horizontalOutputs);
}

void GraphLayout::insertNode(KS_String const& name, Position const& position, bool const& collapsed,
                             bool const& visible, bool const& horizontalInputs, bool const& horizontalOutputs)
{
    insertNodePosition(name, position);
    insertNodeCollapsed(name, collapsed);
    insertNodeVisible(name, visible);
    insertNodeHorizontalInputs(name, horizontalInputs);
    insertNodeHorizontalOutputs(name, horizontalOutputs);
}

void GraphLayout::insertConnection(KS_String const& name, bool const& visible, bool const& bezier)
{
    insertConnectionVisible(name, visible);
    insertConnectionBezier(name, bezier);
}

void GraphLayout::addNote(NoteDesc const& note)
{
    notes_.append(note);
}

void GraphLayout::addNote(KS_String const& ownerName, KS_String const& text, Position const& position,
                          Position const& size, Color const& firstColor, Color const& secondColor)
{
    addNote(NoteDesc(ownerName, text, position, size, firstColor, secondColor));
}

void GraphLayout::moveNotes(Array<NoteDesc, _Wa> const& notes, KS_String const& ownerName)
{
    for (NoteDesc const& note : notes)
    {
        unsigned int const found = notes_.find(note);
        if (found != notes_.npos) notes_[found].setOwnerName(ownerName);
    }
}

Optional<Position> GraphLayout::getPositionByNodeName(KS_String const& name) const
{
    return find(nodePositions_, name);
}

Optional<Color> GraphLayout::getColorByNodeName(KS_String const& name) const
{
    return find(nodeColors_, name);
}

Optional<bool> GraphLayout::getCollapsedByNodeName(KS_String const& name) const
{
    return find(nodeCollapsed_, name);
}

Optional<bool> GraphLayout::getVisibleByNodeName(KS_String const& name) const
{
    return find(nodeVisible_, name);
}

Optional<bool> GraphLayout::getHorizontalInputsByNodeName(KS_String const& name) const
{
    return find(nodeHorizontalInputs_, name);
}

Optional<bool> GraphLayout::getHorizontalOutputsByNodeName(KS_String const& name) const
{
    return find(nodeHorizontalOutputs_, name);
}

Optional<bool> GraphLayout::getVisibleByConnectionName(KS_String const& name) const
{
    return find(connectionVisible_, name);
}

Optional<bool> GraphLayout::getBezierByConnectionName(KS_String const& name) const
{
    return find(connectionBezier_, name);
}

bool GraphLayout::getAllNodeNames(Array<KS_String, _Wa>& out) const
{
    return Fields::gatherNames(*this, Fields::ofNodes(), out);
}

bool GraphLayout::getAllConnectionNames(Array<KS_String, _Wa>& out) const
{
    return Fields::gatherNames(*this, Fields::ofConnections(), out);
}

bool GraphLayout::getInvolvedNodeNames(Array<KS_String, _Wa>& out) const
{
    for (auto const& record : nodePositions_) out.append(record.first);
    return !out.isEmpty();
}

Position GraphLayout::getTopLeftCorner() const
{
    if (nodePositions_.empty()) return {};
    constexpr float largest = std::numeric_limits<float>::max();
    Position corner(largest, largest);
    for (auto const& [name, position] : nodePositions_)
    {
        lower(corner.first, position.first);
        lower(corner.second, position.second);
    }
    return corner;
}

void GraphLayout::offset(Position const& distance)
{
    Position const step = distance; // a view of a position of this layout would move along
    auto const moved = [&step](Position const& position)
    { return Position(position.first + step.first, position.second + step.second); };
    for (auto& record : nodePositions_) record.second = moved(record.second);
    for (NoteDesc& note : notes_)
        if (Optional<Position> const position = note.getPosition()) note.setPosition(moved(*position));
}

template <class Rule>
void GraphLayout::rename(Rule newNameFor)
{
    Fields::forEach([&](auto const& field) { renameKeys(this->*field.map, newNameFor); });
    for (NoteDesc& note : notes_)
        if (std::optional<KS_String> newName = newNameFor(note.getOwnerName()))
            note.refOwnerName() = std::move(*newName);
}

// The rules hold copies: an argument may be the name of an owner, which changes on the way.

void GraphLayout::replaceTxtInNames(KS_String const& from, KS_String const& to)
{
    rename(
        [from, to](KS_String const& name) -> std::optional<KS_String>
        {
            KS_String newName = name;
            if (!newName.replace(from.c_str(), to.c_str())) return std::nullopt;
            return newName;
        });
}

void GraphLayout::replacePrefixInNames(KS_String const& oldPrefix, KS_String const& newPrefix)
{
    rename(
        [oldPrefix, newPrefix](KS_String const& name) -> std::optional<KS_String>
        {
            if (!name.startsWith(oldPrefix)) return std::nullopt;
            return KS_String::concatenated({cText(newPrefix), cText(name).substr(cText(oldPrefix).size())});
        });
}

void GraphLayout::applyDictionary(std::map<KS_String const, KS_String> const& dictionary)
{
    rename(
        [&dictionary](KS_String const& name) -> std::optional<KS_String>
        {
            auto const entry = dictionary.find(name);
            if (entry == dictionary.end()) return std::nullopt;
            return entry->second;
        });
}

void GraphLayout::updateWithOther(GraphLayout const& other)
{
    Fields::forEach(
        [&](auto const& field)
        {
            for (auto const& [name, value] : other.*field.map)
                (this->*field.map).insert_or_assign(name, value);
        });
    // The other may be this one, and an override of addNote may do with the list what it likes.
    Array<NoteDesc, _Wa> const added = other.notes_;
    for (NoteDesc const& note : added) addNote(note);
}

void GraphLayout::removeNode(KS_String const& name)
{
    Fields::forEach(Fields::ofNodes(), [&](auto const& field) { (this->*field.map).erase(name); });
}

void GraphLayout::clear()
{
    Fields::forEach([this](auto const& field) { (this->*field.map).clear(); });
    notes_.clear();
}

bool GraphLayout::operator==(GraphLayout const& other) const
{
    return Fields::all([&](auto const& field) { return this->*field.map == other.*field.map; }) &&
           std::equal(notes_.begin(), notes_.end(), other.notes_.begin(), other.notes_.end());
}

void GraphLayout::printValues() const {}

namespace
{

template <class Stream, class Value>
bool readItem(Stream& stream, Value& value)
{
    return stream.readValue(value);
}

template <class Stream>
bool readItem(Stream& stream, KS_String& text)
{
    return text.read(stream);
}

template <class Stream, class Value>
bool writeItem(Stream& stream, Value const& value)
{
    return stream.writeValue(value);
}

template <class Stream>
bool writeItem(Stream& stream, KS_String const& text)
{
    return text.write(stream);
}

// A record enters the map when both its name and its value have arrived. Files have them in order, so each
// goes to the end.
template <class Stream, class Map>
bool readMap(Stream& stream, Map& map)
{
    int count = 0;
    if (!readItem(stream, count) || count < 0) return false;
    for (int i = 0; i < count; ++i)
    {
        KS_String name;
        typename Map::mapped_type value{};
        if (!readItem(stream, name) || !readItem(stream, value)) return false;
        map.insert_or_assign(map.end(), std::move(name), value);
    }
    return true;
}

template <class Stream, class Map>
bool writeMap(Stream& stream, Map const& map)
{
    // coverage: two thousand million names
    if (map.size() > INT_MAX || !writeItem(stream, static_cast<int>(map.size()))) return false;
    return std::all_of(map.begin(), map.end(),
                       [&stream](auto const& record)
                       { return writeItem(stream, record.first) && writeItem(stream, record.second); });
}

template <class Stream, class Value>
bool readPart(Stream& stream, NoteDesc& note, void (NoteDesc::*set)(Value const&))
{
    bool present = false;
    if (!readItem(stream, present)) return false;
    if (!present) return true;
    Value value;
    if (!readItem(stream, value)) return false;
    (note.*set)(value);
    return true;
}

template <class Stream>
bool readNote(Stream& stream, NoteDesc& note)
{
    return readItem(stream, note.refOwnerName()) && readPart(stream, note, &NoteDesc::setText) &&
           readPart(stream, note, &NoteDesc::setPosition) && readPart(stream, note, &NoteDesc::setSize) &&
           readPart(stream, note, &NoteDesc::setFirstColor) &&
           readPart(stream, note, &NoteDesc::setSecondColor);
}

// Notes come in as any other note does, through the virtual operation.
template <class Stream>
bool readNotes(Stream& stream, GraphLayout& layout)
{
    unsigned int count = 0;
    if (!readItem(stream, count)) return false;
    for (unsigned int i = 0; i < count; ++i)
    {
        NoteDesc note;
        if (!readNote(stream, note)) return false;
        layout.addNote(note);
    }
    return true;
}

template <class Stream, class Value>
bool writePart(Stream& stream, Optional<Value> part)
{
    return writeItem(stream, part.has_value()) && (!part || writeItem(stream, *part));
}

template <class Stream>
bool writeNote(Stream& stream, NoteDesc const& note)
{
    return writeItem(stream, note.getOwnerName()) && writePart(stream, note.getText()) &&
           writePart(stream, note.getPosition()) && writePart(stream, note.getSize()) &&
           writePart(stream, note.getFirstColor()) && writePart(stream, note.getSecondColor());
}

template <class Stream>
bool writeNotes(Stream& stream, Array<NoteDesc, _Wa> const& notes)
{
    return writeItem(stream, notes.size()) &&
           std::all_of(notes.begin(), notes.end(),
                       [&stream](NoteDesc const& note) { return writeNote(stream, note); });
}

} // namespace

template <class Stream>
bool GraphLayout::read(Stream& stream)
{
    clear();
    unsigned int version = 0;
    if (!readItem(stream, version)) return false;
    auto const readField = [&](auto const& field)
    { return version < field.firstVersion || readMap(stream, this->*field.map); };
    return Fields::all(readField) && readNotes(stream, *this);
}

template <class Stream>
bool GraphLayout::write(Stream& stream) const
{
    auto const writeField = [&](auto const& field) { return writeMap(stream, this->*field.map); };
    return writeItem(stream, VERSION) && Fields::all(writeField) && writeNotes(stream, notes_) &&
           stream.flush();
}

template KS_GRAPH_API bool GraphLayout::read(FileStreamRaw&);
template KS_GRAPH_API bool GraphLayout::read(FileStreamEndian&);
template KS_GRAPH_API bool GraphLayout::write(FileStreamRaw&) const;
template KS_GRAPH_API bool GraphLayout::write(FileStreamEndian&) const;

} // namespace kestrel::graph
