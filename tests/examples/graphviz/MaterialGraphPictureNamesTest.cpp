#include "examples/MaterialGraphPictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::KS_String;
using kestrel::graph::NoteDesc;
using ::testing::HasSubstr;

std::vector<std::string> const strangeNames{
    "a<b>&c",
    "\"quoted\" and 'quoted'",
    "]]> <!-- & -->",
    "tab\tand\nline",
    "control \x01\x1B\x7F",
    "not UTF-8: \xFF \xC3( \xE2\x82",
    "surrogate \xED\xA0\x80, overlong \xC0\x80, too high \xF4\x90\x80\x80",
    "no characters: \xEF\xBF\xBE \xEF\xBF\xBF",
    "\xE2\x82\xAC \xF0\x9F\x8E\xA8 \xC3\xA9",
    "   ",
    std::string(3000, 'W'),
    "many_words_" + std::string(200, 'i') + " and some more.of them",
};

/// A node, its pin, its messages, a compound and a note, all of that name.
class PictureOfName : public ::testing::TestWithParam<std::size_t>
{
protected:
    PictureOfName()
    {
        KS_String const strange(name());
        MaterialScene& scene = canvas_.document.scene;
        MaterialNode& node = scene.addMaterialNode(strange, strange, scene.root());
        node.setDescription(strange);
        node.refMessages().pushError(strange, strange);
        scene.addInput(node, strange, strange);
        compound_ = std::string(scene.addCompound(KS_String("in " + name()), scene.root()).getFullName());

        NoteDesc note;
        note.setOwnerName("root");
        note.setText(strange);
        canvas_.layout.addNote(note);
        canvas_.settings.setNodeShowBadge(true);
    }

    static std::string const& name() { return strangeNames.at(GetParam()); }

    Canvas canvas_{""};
    std::string compound_;
};

INSTANTIATE_TEST_SUITE_P(MaterialPicture, PictureOfName,
                         ::testing::Range<std::size_t>(0, strangeNames.size()));

TEST_P(PictureOfName, IsWellFormedAndOnThePage)
{
    for (std::string const& level : {std::string("root"), compound_})
    {
        expectWellFormed(canvas_.drawn(level));
        expectOnThePage(canvas_.picture(level));
    }
}

TEST_P(PictureOfName, TellsItWhole)
{
    std::string const fullName = printable("root." + name());
    Picture const& picture = canvas_.picture();
    pugi::xml_node const node = picture.node(fullName);
    pugi::xml_node const pin = picture.pin(fullName + "." + printable(name()));
    for (pugi::xml_node element : {node, pin, picture.ofClass("note").at(0)})
        EXPECT_THAT(lettersOf(element), HasSubstr(lettersOf(printable(name()))));
}

TEST_P(PictureOfName, StandsInItsNode)
{
    expectReadable(canvas_.picture());
}

} // namespace

} // namespace material_graph::test
