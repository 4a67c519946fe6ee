#include "LayoutSubject.h"

#include "support/LayoutFiles.h"

#include <foundation/FileStream.h>

#include <string>

namespace kestrel::graph::test
{

namespace
{

using S = LayoutSubject;
using enum Promise;
using Color = Color4<float>;
using Pair = Tuple2<float, float>;

NoteDesc noteOf(char const* owner, unsigned int x)
{
    return NoteDesc(owner, "a text", Pair(static_cast<float>(x), 2), Pair(3, 4), Color(), Color());
}

GraphLayout otherLayout()
{
    GraphLayout layout;
    for (char const* name : {"root.b", "root.other"})
    {
        layout.insertNode(name, Pair(5, 6), Color(0, 1, 0, 1), false, false, false, false);
        layout.insertConnection(name, false, false);
    }
    layout.insertNodePosition("root.a", Pair(9, 9));
    for (unsigned int i = 0; i < 3; ++i) layout.addNote(noteOf("root.other", i));
    return layout;
}

template <class Stream>
void read(S& s, std::string const& bytes)
{
    ScratchFile::instance().endWith(bytes);
    Stream stream(ScratchFile::instance().get());
    s.out.number = s.layout.read(stream);
}

template <class Stream>
void write(S& s)
{
    ScratchFile::instance().startOver();
    Stream stream(ScratchFile::instance().get());
    s.out.number = s.layout.write(stream);
}

} // namespace

unsigned int LayoutSubject::numberOfNotes = 4;

LayoutSubject::LayoutSubject() : other(otherLayout())
{
    for (char const* name : {"root.a", "root.b", "root.c"})
    {
        layout.insertNode(name, Pair(1, 2), Color(1, 0, 0, 1), true, true, true, true);
        layout.insertConnection(name, true, true);
    }
    for (unsigned int i = 0; i < numberOfNotes; ++i) layout.addNote(noteOf("root.a", i));
    rawFile = writtenBy<FileStreamRaw>(other);
    endianFile = writtenBy<FileStreamEndian>(other);
    for (char const* name : {"root.a", "root.b"}) dictionary.emplace(name, KS_String("another ") + name);
}

std::string LayoutSubject::state() const
{
    return writtenBy<FileStreamRaw>(layout);
}

std::string LayoutSubject::results() const
{
    std::string lines = std::to_string(out.number) + " ";
    for (KS_String const& name : out.names) lines += std::string(name) + "; ";
    if (out.madeLayout) lines += writtenBy<FileStreamRaw>(*out.madeLayout);
    if (out.madeNote) lines += std::string(out.madeNote->getOwnerName());
    return lines;
}

std::vector<Operation<LayoutSubject>> layoutOperations()
{
    return {
        {"GraphLayout::GraphLayout()", allocatesNothing, [](S&) { GraphLayout const layout; }},
        {"GraphLayout::GraphLayout of another", allOrNothing,
         [](S& s) { s.out.madeLayout = std::make_unique<GraphLayout>(s.layout); }},
        {"GraphLayout::operator=(GraphLayout const&)", allOrNothing, [](S& s) { s.layout = s.other; }},
        {"GraphLayout::operator==(GraphLayout const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout == s.other; }},
        {"GraphLayout::~GraphLayout()", allocatesNothing, [](S& s) { s.spare.reset(); }},

        // Single values
        {"GraphLayout::insertNodePosition(KS_String const&, Tuple2<float, float> const&)", allOrNothing,
         [](S& s) { s.layout.insertNodePosition(s.newName, Pair()); }},
        {"GraphLayout::insertNodeColor(KS_String const&, Color4<float> const&)", allOrNothing,
         [](S& s) { s.layout.insertNodeColor(s.newName, Color()); }},
        {"GraphLayout::insertNodeCollapsed(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.layout.insertNodeCollapsed(s.newName, true); }},
        {"GraphLayout::insertNodeVisible(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.layout.insertNodeVisible(s.newName, true); }},
        {"GraphLayout::insertNodeHorizontalInputs(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.layout.insertNodeHorizontalInputs(s.newName, true); }},
        {"GraphLayout::insertNodeHorizontalOutputs(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.layout.insertNodeHorizontalOutputs(s.newName, true); }},
        {"GraphLayout::insertConnectionVisible(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.layout.insertConnectionVisible(s.newName, true); }},
        {"GraphLayout::insertConnectionBezier(KS_String const&, bool const&)", allOrNothing,
         [](S& s) { s.layout.insertConnectionBezier(s.newName, true); }},
        {"GraphLayout::getPositionByNodeName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getPositionByNodeName(s.known).has_value(); }},
        {"GraphLayout::getColorByNodeName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getColorByNodeName(s.known).has_value(); }},
        {"GraphLayout::getCollapsedByNodeName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getCollapsedByNodeName(s.known).has_value(); }},
        {"GraphLayout::getVisibleByNodeName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getVisibleByNodeName(s.known).has_value(); }},
        {"GraphLayout::getHorizontalInputsByNodeName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getHorizontalInputsByNodeName(s.known).has_value(); }},
        {"GraphLayout::getHorizontalOutputsByNodeName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getHorizontalOutputsByNodeName(s.known).has_value(); }},
        {"GraphLayout::getVisibleByConnectionName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getVisibleByConnectionName(s.known).has_value(); }},
        {"GraphLayout::getBezierByConnectionName(KS_String const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getBezierByConnectionName(s.known).has_value(); }},

        // Whole records
        {"GraphLayout::insertNode(KS_String const&, Tuple2<float, float> const&, Color4<float> const&, bool "
         "const&, bool const&, bool const&, bool const&)",
         repeatCompletes,
         [](S& s) { s.layout.insertNode(s.newName, Pair(), Color(), true, true, true, true); }},
        {"GraphLayout::insertNode(KS_String const&, Tuple2<float, float> const&, bool const&, bool const&, "
         "bool const&, bool const&)",
         repeatCompletes, [](S& s) { s.layout.insertNode(s.newName, Pair(), true, true, true, true); }},
        {"GraphLayout::insertConnection(KS_String const&, bool const&, bool const&)", repeatCompletes,
         [](S& s) { s.layout.insertConnection(s.newName, true, true); }},
        {"GraphLayout::getAllNodeNames(Array<KS_String, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.layout.getAllNodeNames(s.out.names); }},
        {"GraphLayout::getAllConnectionNames(Array<KS_String, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.layout.getAllConnectionNames(s.out.names); }},
        {"GraphLayout::getInvolvedNodeNames(Array<KS_String, _Wa>&) const", allOrNothing,
         [](S& s) { s.out.number = s.layout.getInvolvedNodeNames(s.out.names); }},
        {"GraphLayout::getTopLeftCorner() const", allocatesNothing,
         [](S& s) { s.out.number = static_cast<long>(s.layout.getTopLeftCorner().first); }},
        {"GraphLayout::offset(Tuple2<float, float> const&)", allocatesNothing,
         [](S& s) { s.layout.offset(Pair(10, 20)); }},
        // A note that was taken over comes again.
        {"GraphLayout::updateWithOther(GraphLayout const&)", partsRemain,
         [](S& s) { s.layout.updateWithOther(s.other); }},
        {"GraphLayout::removeNode(KS_String const&)", allocatesNothing,
         [](S& s) { s.layout.removeNode(s.known); }},
        {"GraphLayout::clear()", allocatesNothing, [](S& s) { s.layout.clear(); }},
        {"GraphLayout::printValues() const", allocatesNothing, [](S& s) { s.spare->printValues(); }},

        // Names: each value stands under its old or its new one
        {"GraphLayout::replaceTxtInNames(KS_String const&, KS_String const&)", repeatCompletes,
         [](S& s) { s.layout.replaceTxtInNames(s.rootPrefix, s.otherPrefix); }},
        {"GraphLayout::replacePrefixInNames(KS_String const&, KS_String const&)", repeatCompletes,
         [](S& s) { s.layout.replacePrefixInNames(s.rootPrefix, s.otherPrefix); }},
        {"GraphLayout::applyDictionary(std::map<KS_String const, KS_String> const&)", repeatCompletes,
         [](S& s) { s.layout.applyDictionary(s.dictionary); }},

        // Notes
        {"GraphLayout::addNote(NoteDesc const&)", allOrNothing, [](S& s) { s.layout.addNote(s.note); }},
        {"GraphLayout::addNote(NoteDesc const&)", allOrNothing,
         [](S& s) { s.layout.addNote(s.layout.getNotes()[0]); }},
        {"GraphLayout::addNote(KS_String const&, KS_String const&, Tuple2<float, float> const&, "
         "Tuple2<float, float> const&, Color4<float> const&, Color4<float> const&)",
         allOrNothing, [](S& s) { s.layout.addNote(s.newName, s.known, Pair(), Pair(), Color(), Color()); }},
        {"GraphLayout::setNotes", allOrNothing, [](S& s) { s.layout.setNotes(s.other.getNotes()); }},
        {"GraphLayout::moveNotes(Array<NoteDesc, _Wa> const&, KS_String const&)", repeatCompletes,
         [](S& s) { s.layout.moveNotes(s.layout.getNotes(), s.newName); }},
        {"NoteDesc::NoteDesc()", allOrNothing, [](S& s) { s.out.madeNote = std::make_unique<NoteDesc>(); }},
        {"NoteDesc::NoteDesc(KS_String const&, KS_String const&, Tuple2<float, float> const&, Tuple2<float, "
         "float> const&, Color4<float> const&, Color4<float> const&)",
         allOrNothing,
         [](S& s) {
             s.out.madeNote =
                 std::make_unique<NoteDesc>(s.newName, s.known, Pair(), Pair(), Color(), Color());
         }},
        {"NoteDesc::NoteDesc of another", allOrNothing,
         [](S& s) { s.out.madeNote = std::make_unique<NoteDesc>(s.note); }},
        {"NoteDesc::operator=(NoteDesc const&)", allOrNothing, [](S& s) { s.layout.refNotes()[1] = s.note; }},
        {"NoteDesc::operator==(NoteDesc const&) const", allocatesNothing,
         [](S& s) { s.out.number = s.layout.getNotes()[1] == s.note; }},
        {"NoteDesc::setOwnerName", allOrNothing,
         [](S& s) { s.layout.refNotes()[1].setOwnerName(s.newName); }},
        {"NoteDesc::setText", allOrNothing, [](S& s) { s.layout.refNotes()[1].setText(s.newName); }},

        // Files: a read that fails keeps what was read whole
        {"bool GraphLayout::read<FileStreamRaw>(FileStreamRaw&)", repeatCompletes,
         [](S& s) { read<FileStreamRaw>(s, s.rawFile); }},
        {"bool GraphLayout::read<FileStreamEndian>(FileStreamEndian&)", repeatCompletes,
         [](S& s) { read<FileStreamEndian>(s, s.endianFile); }},
        {"bool GraphLayout::write<FileStreamRaw>(FileStreamRaw&) const", allocatesNothing,
         [](S& s) { write<FileStreamRaw>(s); }},
        {"bool GraphLayout::write<FileStreamEndian>(FileStreamEndian&) const", allocatesNothing,
         [](S& s) { write<FileStreamEndian>(s); }},
    };
}

} // namespace kestrel::graph::test
