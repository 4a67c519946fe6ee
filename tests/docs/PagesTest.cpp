// What the pages say of the sources is compared with them: the operations to override, the tests that hold a
// property, and the files that are linked.

#include <gmock/gmock.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace fs = std::filesystem;

using Names = std::set<std::string>;

fs::path const projectDir = PROJECT_DIR;

std::string textOf(fs::path const& file)
{
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::vector<std::string> linesOf(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<fs::path> filesBelow(fs::path const& folder, std::string_view extension)
{
    std::vector<fs::path> files;
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == extension) files.push_back(entry.path());
    return files;
}

std::vector<fs::path> pages()
{
    std::vector<fs::path> pages = filesBelow(projectDir / "docs", ".md");
    pages.push_back(projectDir / "README.md");
    return pages;
}

// The part of `text` between the first `begin` behind `from` and the `end` behind that, both excluded.
std::string between(std::string const& text, std::string_view begin, std::string_view end)
{
    std::size_t const found = text.find(begin);
    if (found == std::string::npos) return {};
    std::size_t const first = found + begin.size();
    return text.substr(first, text.find(end, first) - first);
}

// Everything in `line` that stands between two backticks.
std::vector<std::string> quotedIn(std::string_view line)
{
    std::vector<std::string> quoted;
    for (std::size_t open = line.find('`'); open != std::string_view::npos; open = line.find('`', open))
    {
        std::size_t const close = line.find('`', open + 1);
        if (close == std::string_view::npos) break;
        quoted.emplace_back(line.substr(open + 1, close - open - 1));
        open = close + 1;
    }
    return quoted;
}

std::string withoutComments(std::string const& text)
{
    std::string code;
    for (std::string const& line : linesOf(text)) code += line.substr(0, line.find("//")) + "\n";
    return code;
}

// The exported classes that a header defines, each with its body.
std::map<std::string, std::string> classesIn(std::string const& header)
{
    std::map<std::string, std::string> classes;
    std::string const code = withoutComments(header);
    std::string const mark = "\nclass ";
    for (std::size_t at = code.find(mark); at != std::string::npos; at = code.find(mark, at + 1))
    {
        std::istringstream head(code.substr(at + mark.size(), code.find('\n', at + 1) - at - mark.size()));
        std::string macro, name;
        head >> macro >> name;
        if (macro.ends_with("_API")) classes[name] = code.substr(at, code.find("\n};", at) - at);
    }
    return classes;
}

// The names of the virtual operations in the body of a class, but for the destructor.
Names virtualOperations(std::string const& body)
{
    Names names;
    std::string const mark = "virtual ";
    for (std::size_t at = body.find(mark); at != std::string::npos; at = body.find(mark, at + 1))
    {
        std::size_t const end = body.find('(', at);
        std::size_t const first = body.find_last_of(" *&\n", end) + 1;
        if (body[first] != '~') names.insert(body.substr(first, end - first));
    }
    return names;
}

// The operations in the first column of the tables below the heading of a class.
Names documentedOperations(std::string const& page, std::string const& className)
{
    Names names;
    for (std::string const& line : linesOf(between(page, "\n## " + className + "\n", "\n## ")))
        if (line.starts_with("| `"))
            for (std::string const& name : quotedIn(line.substr(0, line.find('|', 1)))) names.insert(name);
    return names;
}

// "Suite.Name" of every test in the text of a source file.
Names testsIn(std::string const& source)
{
    Names tests;
    for (std::string const macro : {"\nTEST(", "\nTEST_F(", "\nTEST_P(", "\nTYPED_TEST("})
        for (std::size_t at = source.find(macro); at != std::string::npos; at = source.find(macro, at + 1))
        {
            std::size_t const first = at + macro.size();
            std::string name;
            for (char c : source.substr(first, source.find(')', first) - first))
            {
                if (c == ',')
                    name += '.';
                else if (std::isspace(static_cast<unsigned char>(c)) == 0)
                    name += c;
            }
            tests.insert(name);
        }
    return tests;
}

Names allTests()
{
    Names tests;
    for (fs::path const& file : filesBelow(projectDir / "tests", ".cpp")) tests.merge(testsIn(textOf(file)));
    return tests;
}

// The tests that the paragraphs of a text name that begin with "Held by".
std::vector<std::string> holdersIn(std::string const& text)
{
    std::vector<std::string> holders;
    std::string const mark = "\nHeld by ";
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1))
        for (std::string const& test : quotedIn(text.substr(at, text.find("\n\n", at) - at)))
            holders.push_back(test);
    return holders;
}

// The parts of a page below each heading of the third level, heading included.
std::vector<std::string> propertiesIn(std::string const& page)
{
    std::vector<std::string> properties;
    std::string const mark = "\n### ";
    for (std::size_t at = page.find(mark); at != std::string::npos; at = page.find(mark, at + 1))
        properties.push_back(page.substr(at, page.find("\n##", at + 1) - at));
    return properties;
}

std::string withoutBlocks(std::string const& page)
{
    std::string text;
    bool inBlock = false;
    for (std::string const& line : linesOf(page))
    {
        bool const fence = line.starts_with("```");
        if (fence) inBlock = !inBlock;
        if (!inBlock && !fence) text += line + "\n";
    }
    return text;
}

std::vector<std::string> linksIn(std::string const& page)
{
    std::vector<std::string> links;
    for (std::size_t at = page.find("]("); at != std::string::npos; at = page.find("](", at + 1))
        links.push_back(page.substr(at + 2, page.find_first_of(")#", at) - at - 2));
    return links;
}

bool leadsSomewhere(fs::path const& page, std::string const& link)
{
    return link.empty() || link.starts_with("http") || fs::exists(page.parent_path() / link);
}

} // namespace

TEST(PageReading, FindsTheVirtualOperationsOfEachClass)
{
    std::string const header =
        "\nclass A_API Other\n{\n    virtual void some();\n};\n\nclass Hidden\n{\n};\n"
        "\nclass A_API Node : public Base\n{\n    virtual ~Node();\n    // virtual void no();\n"
        "    virtual int const& getId() const;\n    virtual bool\n    isIt(int a);\n"
        "    virtual Node* make();\n    virtual bool operator==(Node const&);\n"
        "    void no();\n};\n";
    std::map<std::string, std::string> const classes = classesIn(header);
    ASSERT_EQ(classes.size(), 2u);
    EXPECT_THAT(virtualOperations(classes.at("Node")), ElementsAre("getId", "isIt", "make", "operator=="));
    EXPECT_THAT(virtualOperations(classes.at("Other")), ElementsAre("some"));
}

TEST(PageReading, FindsTheOperationsInTheTablesOfAClass)
{
    std::string const page =
        "# T\n\n## A\n\n| operation | x |\n|---|---|\n| `a`, `b` | `no` |\n\n## B\n| `c` | |\n";
    EXPECT_THAT(documentedOperations(page, "A"), ElementsAre("a", "b"));
    EXPECT_THAT(documentedOperations(page, "B"), ElementsAre("c"));
}

TEST(PageReading, FindsTheTestsOfASourceFile)
{
    EXPECT_THAT(testsIn("\nTEST(A, B)\n{\n}\nTEST_F(C,\n       D)\n// TEST(E, F)\n"),
                ElementsAre("A.B", "C.D"));
}

TEST(PageReading, FindsThePropertiesOfAPageAndTheTestsThatHoldThem)
{
    std::string const page = "# T\n\n## A\n\n### B\n\nHeld by `C.D` and\n`E.F`.\n\n`no`\n\n### G\n\n## H\n";
    std::vector<std::string> const properties = propertiesIn(page);
    ASSERT_EQ(properties.size(), 2u);
    EXPECT_THAT(holdersIn(properties[0]), ElementsAre("C.D", "E.F"));
    EXPECT_THAT(holdersIn(properties[1]), IsEmpty());
}

TEST(PageReading, FindsTheLinksOutsideOfBlocks)
{
    std::string const page = "A [b](c.md#d) and ![e](f.svg).\n```cpp\n[](int g) {}\n```\n[h](i)\n";
    EXPECT_THAT(linksIn(withoutBlocks(page)), ElementsAre("c.md", "f.svg", "i"));
}

TEST(DerivingPage, NamesTheVirtualOperationsOfEveryClassAndNoOther)
{
    std::string const page = textOf(projectDir / "docs" / "deriving.md");
    Names classes;
    for (fs::path const& header : filesBelow(projectDir / "lib", ".h"))
        for (auto const& [name, body] : classesIn(textOf(header)))
        {
            EXPECT_EQ(documentedOperations(page, name), virtualOperations(body)) << name;
            classes.insert(name);
        }
    EXPECT_THAT(classes, IsSupersetOf({"GraphScene", "GraphNodeBase", "GraphNodePin", "GraphConnection",
                                       "GraphLayout"}));
}

TEST(SurprisesPage, NamesATestForEveryProperty)
{
    std::vector<std::string> const properties = propertiesIn(textOf(projectDir / "docs" / "surprises.md"));
    EXPECT_THAT(properties, Not(IsEmpty()));
    for (std::string const& property : properties)
        EXPECT_THAT(holdersIn(property), Not(IsEmpty())) << property;
}

TEST(SurprisesPage, ShowsAnExampleOfEveryProperty)
{
    for (std::string const& property : propertiesIn(textOf(projectDir / "docs" / "surprises.md")))
        EXPECT_THAT(property, HasSubstr("\n```cpp\n"));
}

TEST(Pages, NameTestsThatExist)
{
    Names const tests = allTests();
    for (fs::path const& page : pages())
        for (std::string const& test : holdersIn(textOf(page))) EXPECT_THAT(tests, Contains(test)) << page;
}

TEST(Pages, LinkToFilesThatExist)
{
    for (fs::path const& page : pages())
        for (std::string const& link : linksIn(withoutBlocks(textOf(page))))
            EXPECT_TRUE(leadsSomewhere(page, link)) << page << " links to " << link;
}
