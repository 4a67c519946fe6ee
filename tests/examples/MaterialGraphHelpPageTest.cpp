#include "MaterialGraphSupport.h"

#include <material_graph/HelpPage.h>

#include <ks_graph/GraphSettings.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::KS_String;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphSettings;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// What the page is made around: the page without all that it adds, down to the last line feed.
std::string ownTextIn(std::string page)
{
    std::string const doctype = "<!DOCTYPE html>\n";
    EXPECT_THAT(page, StartsWith(doctype));
    page.erase(0, doctype.size());
    std::size_t const head = page.find("<head>");
    std::string const end = "</head>";
    std::size_t const body = page.find(end);
    EXPECT_NE(head, std::string::npos);
    EXPECT_NE(body, std::string::npos);
    EXPECT_THAT(page, EndsWith("\n"));
    page.pop_back();
    return page.replace(head, body + end.size() - head, "<head/>");
}

std::string pageOf(std::string const& description, GraphSettings const& settings = {})
{
    Document document("<add name='a'/>");
    document.node("a").setDescription(KS_String(description));
    return helpPage(document.node("a"), settings);
}

/// The text of an element of the page's head.
std::string inHead(char const* element, std::string const& page)
{
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(page.c_str()));
    return document.child("html").child("head").child(element).child_value();
}

TEST(MaterialHelpPage, KeepsWhatTheNodeWrites)
{
    for (char const* description :
         {"", "One sentence.", "Two\nlines.", "<head> & </head>, \"quotes\"", "<body>", "100 % {css}"})
    {
        Document document("<add name='a'/>");
        MaterialNode& node = document.node("a");
        node.setDescription(description);
        EXPECT_EQ(ownTextIn(helpPage(node, {})), std::string(node.asHTML())) << description;
    }
}

TEST(MaterialHelpPage, KeepsWhatANodeOfTheBaseWritesUnescaped)
{
    GraphNodeBase node(1);
    node.setName("plain");
    node.setDescription("<b>Adds</b> two values");
    EXPECT_EQ(ownTextIn(helpPage(node, {})),
              "<html><head/><body><p/><h3>Description</h3><p><b>Adds</b> two values.</p><p/></body></html>");
}

/// A host may write its page in whatever form it likes.
class NodeWithPage : public GraphNodeBase
{
public:
    explicit NodeWithPage(char const* page) : GraphNodeBase(1), page_(page) { setName("own"); }

    KS_String asHTML() override { return page_; }

private:
    KS_String page_;
};

std::vector<char const*> const ownPages{"<p>No page at all</p>",
                                        "<html><body><p>Without a head</p></body></html>", "text"};

TEST(MaterialHelpPage, KeepsWhatAnOverrideWrites)
{
    for (char const* own : ownPages)
    {
        NodeWithPage node(own);
        EXPECT_THAT(helpPage(node, {}),
                    AllOf(StartsWith("<!DOCTYPE html>\n"), EndsWith(std::string(own) + "\n")));
    }
}

TEST(MaterialHelpPage, HasTheStyleSheetAroundWhatAnOverrideWrites)
{
    GraphSettings settings;
    settings.setGraphHelpCss("h3 { color: #ab12cd; }");
    for (char const* own : ownPages)
    {
        NodeWithPage node(own);
        EXPECT_THAT(helpPage(node, settings), HasSubstr("h3 { color: #ab12cd; }")) << own;
    }
}

TEST(MaterialHelpPage, HasTheStyleSheetOfTheSettings)
{
    GraphSettings settings;
    EXPECT_THAT(inHead("style", pageOf("text", settings)),
                HasSubstr(std::string(settings.getGraphHelpCss())));
    settings.setGraphHelpCss("h3 { color: #ab12cd; }");
    std::string const page = pageOf("text", settings);
    EXPECT_THAT(inHead("style", page), HasSubstr("h3 { color: #ab12cd; }"));
    EXPECT_LT(page.size(), 1000u);
}

TEST(MaterialHelpPage, IsAsWideAsTheHelpWindowWithItsMargin)
{
    GraphSettings settings;
    settings.setGraphHelpCss("");
    settings.setGraphHelpSize({640.0f, 480.0f});
    settings.setGraphHelpVerticalMargin(35.0f);
    EXPECT_THAT(inHead("style", pageOf("text", settings)),
                ContainsRegex("body \\{.*max-width: 640px;.*margin: 35px"));
}

TEST(MaterialHelpPage, IsTitledWithTheFullNameOfTheNode)
{
    Document document("<nodegraph name='g'><add name='a'/></nodegraph>");
    EXPECT_EQ(inHead("title", helpPage(document.node("g.a"), {})), "root.g.a");
    document.node("g").setName("<b>&c");
    EXPECT_EQ(inHead("title", helpPage(document.node("<b>&c.a"), {})), "root.<b>&c.a");
}

TEST(MaterialHelpPage, IsWellFormedWhateverTheName)
{
    Document document("<add name='a'/>");
    MaterialNode& node = document.node("a");
    for (char const* name : {"\x01", "\xFF", "</title><script>", "\"'"})
    {
        node.setName(name);
        pugi::xml_document page;
        EXPECT_TRUE(page.load_string(helpPage(node, {}).c_str())) << name;
        EXPECT_FALSE(page.select_node("//script")) << name;
    }
}

TEST(MaterialHelpPage, SaysThatItIsUtf8)
{
    EXPECT_THAT(pageOf("\xC3\xA9t\xC3\xA9"), HasSubstr("<meta charset=\"utf-8\"/>"));
    EXPECT_THAT(pageOf("\xC3\xA9t\xC3\xA9"), HasSubstr("<p>\xC3\xA9t\xC3\xA9.</p>"));
}

TEST(MaterialHelpPage, IsTheSameFromTheProgram)
{
    Document document("<add name='a' doc='Adds.'/>");
    EXPECT_EQ(runOn("<add name='a' doc='Adds.'/>", {"html", "a"}).out, helpPage(document.node("a"), {}));
}

} // namespace

} // namespace material_graph::test
