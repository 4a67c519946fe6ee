/// @file
#pragma once

#include <foundation/Array.h>
#include <foundation/Color4.h>
#include <foundation/KS_String.h>
#include <foundation/Optional.h>
#include <foundation/Tuple2.h>
#include <ks_graph/ks_graph_api.h>

#include <map>
#include <optional>

namespace kestrel
{

class FileStreamEndian;
class FileStreamRaw;

} // namespace kestrel

namespace kestrel::graph
{

/// A free text box on the canvas. Everything but the owner's name may be absent, for the editor to choose.
///
/// A note owns its values; what the getters return views them, until the note changes or goes. A `set...`
/// makes a value present, a `reset...` makes it absent. Positions and sizes are in the units of the canvas,
/// which the library does not interpret.
class KS_GRAPH_API NoteDesc
{
public:
    /// An empty owner's name, everything else absent.
    NoteDesc();

    /// Everything is present.
    NoteDesc(KS_String const& ownerName, KS_String const& text, Tuple2<float, float> const& position,
             Tuple2<float, float> const& size, Color4<float> const& firstColor,
             Color4<float> const& secondColor);

    NoteDesc(NoteDesc const&) = default;
    NoteDesc(NoteDesc&&) noexcept = default;
    /// When an allocation fails, the note is as it was.
    NoteDesc& operator=(NoteDesc const& other);
    NoteDesc& operator=(NoteDesc&&) noexcept = default;
    ~NoteDesc() = default;

    /// Owners are equal, and each of the rest is absent in both or present with equal values. A note with a
    /// coordinate or component that is not a number equals no note.
    bool operator==(NoteDesc const& other) const;

    /// @name The full name of the node that the note belongs to
    /// @{
    KS_String const& getOwnerName() const { return ownerName_; }
    KS_String& refOwnerName() { return ownerName_; }
    void setOwnerName(KS_String const& ownerName) { ownerName_ = ownerName; }
    /// @}

    /// @name Text
    /// @{
    Optional<KS_String> getText() const { return viewOf(text_); }
    void setText(KS_String const& text) { text_ = text; }
    void resetText() { text_.reset(); }
    /// @}

    /// @name Position of the top left corner
    /// @{
    Optional<Tuple2<float, float>> getPosition() const { return viewOf(position_); }
    void setPosition(Tuple2<float, float> const& position) { position_ = position; }
    void resetPosition() { position_.reset(); }
    /// @}

    /// @name Size
    /// @{
    Optional<Tuple2<float, float>> getSize() const { return viewOf(size_); }
    void setSize(Tuple2<float, float> const& size) { size_ = size; }
    void resetSize() { size_.reset(); }
    /// @}

    /// @name The two colours
    /// @{
    Optional<Color4<float>> getFirstColor() const { return viewOf(firstColor_); }
    void setFirstColor(Color4<float> const& color) { firstColor_ = color; }
    void resetFirstColor() { firstColor_.reset(); }

    Optional<Color4<float>> getSecondColor() const { return viewOf(secondColor_); }
    void setSecondColor(Color4<float> const& color) { secondColor_ = color; }
    void resetSecondColor() { secondColor_.reset(); }
    /// @}

private:
    template <class T>
    static Optional<T> viewOf(std::optional<T> const& value)
    {
        return Optional<T>(value ? &*value : nullptr);
    }

    KS_String ownerName_;
    std::optional<KS_String> text_;
    std::optional<Tuple2<float, float>> position_;
    std::optional<Tuple2<float, float>> size_;
    std::optional<Color4<float>> firstColor_;
    std::optional<Color4<float>> secondColor_;
};

/// How a graph looks on the canvas, apart from the graph itself: for each node name a position, a colour and
/// four flags, for each connection name two flags, and a list of notes. Any of them may be missing for a
/// name.
///
/// Names are full names, never pointers or ids, so that a layout outlives the graph and fits a copy of it.
/// Nothing tells a layout of a rename: a host that renames or moves nodes renames them here, too, best by
/// `applyDictionary`, with an entry for each node and for each connection, whose name holds the names of two
/// nodes. Names order by their bytes and end at the first NUL.
///
/// One name costs the logarithm of the number of names; what works on all of them, renaming, gathering,
/// comparing, updating, costs that for each. A single change happens whole or, when an allocation fails, not
/// at all; the operations that change many names are a series of such changes. One thread at a time uses a
/// layout.
class KS_GRAPH_API GraphLayout
{
public:
    /// The version that `write` writes: 2.
    static unsigned int const VERSION;

    GraphLayout();
    GraphLayout(GraphLayout const&) = default;
    GraphLayout(GraphLayout&&) = default;
    /// When an allocation fails, the layout is as it was.
    GraphLayout& operator=(GraphLayout const& other);
    GraphLayout& operator=(GraphLayout&&) = default;
    virtual ~GraphLayout();

    /// @name Inserting one value: the first one stays
    /// A value for a name that has one already is dropped. To change the values of a node, remove it first;
    /// to change one value, also of a connection, use `updateWithOther` with a layout that holds the new one.
    /// Overrides see what `insertNode` and `insertConnection` insert, but not what `read` and
    /// `updateWithOther` bring in.
    /// @{
    virtual void insertNodePosition(KS_String const& name, Tuple2<float, float> const& position);
    virtual void insertNodeColor(KS_String const& name, Color4<float> const& color);
    virtual void insertNodeCollapsed(KS_String const& name, bool const& collapsed);
    virtual void insertNodeVisible(KS_String const& name, bool const& visible);
    virtual void insertNodeHorizontalInputs(KS_String const& name, bool const& horizontalInputs);
    virtual void insertNodeHorizontalOutputs(KS_String const& name, bool const& horizontalOutputs);
    virtual void insertConnectionVisible(KS_String const& name, bool const& visible);
    virtual void insertConnectionBezier(KS_String const& name, bool const& bezier);
    /// @}

    /// @name Inserting all values of a name, each through the operation above, in the order of the parameters
    /// @{
    void insertNode(KS_String const& name, Tuple2<float, float> const& position, Color4<float> const& color,
                    bool const& collapsed, bool const& visible, bool const& horizontalInputs,
                    bool const& horizontalOutputs);
    /// Without a colour.
    void insertNode(KS_String const& name, Tuple2<float, float> const& position, bool const& collapsed,
                    bool const& visible, bool const& horizontalInputs, bool const& horizontalOutputs);
    void insertConnection(KS_String const& name, bool const& visible, bool const& bezier);
    /// @}

    /// @name Notes: a list in the order in which they were added
    /// A note of the list is valid until the list changes.
    /// @{

    /// Appends a copy. An override sees the notes that come in by the form below, by `updateWithOther` and by
    /// `read`, but not those of `setNotes` and `refNotes`. It hides the form below, unless a
    /// using-declaration brings that back.
    virtual void addNote(NoteDesc const& note);
    virtual void addNote(KS_String const& ownerName, KS_String const& text,
                         Tuple2<float, float> const& position, Tuple2<float, float> const& size,
                         Color4<float> const& firstColor, Color4<float> const& secondColor);

    Array<NoteDesc, _Wa> const& getNotes() const { return notes_; }
    Array<NoteDesc, _Wa>& refNotes() { return notes_; }
    void setNotes(Array<NoteDesc, _Wa> const& notes) { notes_ = notes; }

    /// Gives the owner to the layout's notes that are equal to the given ones: for each of these, in order,
    /// to the first equal one, so that one that was given its new owner may not be found a second time. One
    /// that is not found is skipped. The cost is the number of given notes times that of the layout's.
    void moveNotes(Array<NoteDesc, _Wa> const& notes, KS_String const& ownerName);
    /// @}

    /// @name Looking up: absent for an unknown name; valid until the layout changes
    /// @{
    Optional<Tuple2<float, float>> getPositionByNodeName(KS_String const& name) const;
    Optional<Color4<float>> getColorByNodeName(KS_String const& name) const;
    Optional<bool> getCollapsedByNodeName(KS_String const& name) const;
    Optional<bool> getVisibleByNodeName(KS_String const& name) const;
    Optional<bool> getHorizontalInputsByNodeName(KS_String const& name) const;
    Optional<bool> getHorizontalOutputsByNodeName(KS_String const& name) const;
    Optional<bool> getVisibleByConnectionName(KS_String const& name) const;
    Optional<bool> getBezierByConnectionName(KS_String const& name) const;
    /// @}

    /// @name Gathering names: appended to the list, each once, in ascending order
    /// They return whether the list holds anything afterwards.
    /// @{

    /// Every name that has a position, a colour or one of the four flags.
    bool getAllNodeNames(Array<KS_String, _Wa>& out) const;
    bool getAllConnectionNames(Array<KS_String, _Wa>& out) const;
    /// Only names that have a position.
    bool getInvolvedNodeNames(Array<KS_String, _Wa>& out) const;
    /// @}

    /// @name Positions
    /// @{

    /// The smallest x and, independently, the smallest y of all node positions, starting from the largest
    /// finite float; zeros when there are no positions. Notes do not count.
    Tuple2<float, float> getTopLeftCorner() const;

    /// Moves every node, and every note that has a position.
    void offset(Tuple2<float, float> const& distance);
    /// @}

    /// @name Renaming
    /// They rewrite the names of nodes and connections and, by the same rule, the owners' names of the notes.
    ///
    /// The names of each kind of value are rewritten one at a time, in ascending order of the old names, and
    /// a value that is moved to a name in use replaces the one there. So a chain, "a" to "b" and "b" to "c",
    /// depends on that order: "a" arrives at "b" before "b" goes on to "c", and ends there itself; and of two
    /// names that are exchanged only one value is left. An owner's name is rewritten once. A name whose new
    /// name is equal keeps its value.
    /// @{

    /// Every occurrence of `from` in a name becomes `to`. An empty `from` occurs nowhere.
    void replaceTxtInNames(KS_String const& from, KS_String const& to);

    /// `oldPrefix` in front of a name becomes `newPrefix`. It need not end where a part of the name ends:
    /// "root.a" is in front of "root.ab", too. An empty one is in front of every name. Of a connection, only
    /// the source's name stands in front: "root.a.x.out > root.a.y.in" keeps its target.
    void replacePrefixInNames(KS_String const& oldPrefix, KS_String const& newPrefix);

    /// Names that are keys, as a whole, become the values.
    void applyDictionary(std::map<KS_String const, KS_String> const& dictionary);
    /// @}

    /// Takes over every value of the other layout, in place of this one's for the same name, and appends its
    /// notes, also those that are here already. What only this layout has stays. Updated with itself, a
    /// layout holds its notes twice.
    void updateWithOther(GraphLayout const& other);

    /// Removes all that is known of a node, if anything is; its notes and connections stay.
    void removeNode(KS_String const& name);

    /// Removes all values and notes.
    void clear();

    /// Equal values under equal names, and equal notes in the same order. A layout with a number that is not
    /// a number equals none, not even itself.
    bool operator==(GraphLayout const& other) const;

    /// Does nothing; a place for a debugger.
    void printValues() const;

    /// @name The binary file; docs/layout-format.md lays out its bytes
    /// `Stream` is `FileStreamRaw` or `FileStreamEndian` of <foundation/FileStream.h>; name it when passing
    /// an object of a class derived from one of them, since there are no other instances:
    /// `layout.write<FileStreamRaw>(stream)`. The stream stands right behind the layout
    /// afterwards, so several of them may follow each other in one file.
    /// @{

    /// Replaces this layout by the file's. Version 1 has no visibility of nodes and connections and no bezier
    /// flags; any version of 2 or more is read as 2, and 0 as 1.
    ///
    /// False when the stream ended early or held a negative count: what was read whole up to there is kept,
    /// and nothing that is half read. No count or length in a file is trusted: memory grows with the bytes
    /// that arrive. A text without its NUL gets one, and of two values for one name the last stays.
    template <class Stream>
    bool read(Stream& stream);

    /// Writes version 2 and flushes the file. False when any of it could not be written, or when a kind of
    /// value has more names than a signed 32-bit count can say.
    template <class Stream>
    bool write(Stream& stream) const;
    /// @}

private:
    struct Fields;

    template <class Rule>
    void rename(Rule newNameFor);

    std::map<KS_String, Tuple2<float, float>> nodePositions_;
    std::map<KS_String, Color4<float>> nodeColors_;
    std::map<KS_String, bool> nodeCollapsed_;
    std::map<KS_String, bool> nodeVisible_;
    std::map<KS_String, bool> nodeHorizontalInputs_;
    std::map<KS_String, bool> nodeHorizontalOutputs_;
    std::map<KS_String, bool> connectionVisible_;
    std::map<KS_String, bool> connectionBezier_;
    Array<NoteDesc, _Wa> notes_;
};

extern template KS_GRAPH_INSTANCE_API bool GraphLayout::read(FileStreamRaw&);
extern template KS_GRAPH_INSTANCE_API bool GraphLayout::read(FileStreamEndian&);
extern template KS_GRAPH_INSTANCE_API bool GraphLayout::write(FileStreamRaw&) const;
extern template KS_GRAPH_INSTANCE_API bool GraphLayout::write(FileStreamEndian&) const;

} // namespace kestrel::graph
