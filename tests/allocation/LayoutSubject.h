/// @file
#pragma once

#include "Operation.h"

#include <foundation/Array.h>
#include <foundation/KS_String.h>
#include <ks_graph/GraphLayout.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// A layout with everything under each of three names, and notes.
class LayoutSubject
{
public:
    LayoutSubject();
    LayoutSubject(LayoutSubject const&) = delete;
    LayoutSubject& operator=(LayoutSubject const&) = delete;

    std::string state() const;
    std::string results() const;
    void prepareRepeat() { out = Results(); }
    void expectWhole() const {} // any set of values is whole

    /// Of those that are made: the list is full with 4, and has room for more with 5.
    static unsigned int numberOfNotes;

    struct Results
    {
        long number = -1;
        Array<KS_String, _Wa> names;
        std::unique_ptr<GraphLayout> madeLayout;
        std::unique_ptr<NoteDesc> madeNote;
    };

    Results out;

    GraphLayout layout;
    GraphLayout const other;
    std::unique_ptr<GraphLayout> spare = std::make_unique<GraphLayout>();
    NoteDesc const note{"a new owner", "a text", {}, {}, {}, {}};
    KS_String const newName = "a name that is longer than any of the others";
    KS_String const known = "root.b";
    KS_String const rootPrefix = "root.";
    KS_String const otherPrefix = "somewhere else entirely.";
    std::map<KS_String const, KS_String> dictionary;
    std::string rawFile;
    std::string endianFile;
};

std::vector<Operation<LayoutSubject>> layoutOperations();

} // namespace kestrel::graph::test
