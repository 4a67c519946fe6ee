#include "ExportedOperations.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <regex>
#include <stdexcept>
#include <string_view>

namespace kestrel::graph::test
{

namespace
{

std::ifstream opened(std::filesystem::path const& path)
{
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    return file;
}

void eraseAll(std::string& text, std::string_view part)
{
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part))
        text.erase(at, part.size());
}

// Erases a template argument with all that is in its brackets.
void eraseArguments(std::string& text, std::string_view start)
{
    for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start))
    {
        std::size_t end = at + start.size();
        for (int open = 1; open > 0; ++end) open += text[end] == '<' ? 1 : text[end] == '>' ? -1 : 0;
        text.erase(at, end - at);
    }
}

std::string shortened(std::string symbol)
{
    for (char const* const part : {"kestrel::graph::", "kestrel::", "weak "}) eraseAll(symbol, part);
    for (char const* const start : {", std::less<", ", std::allocator<"}) eraseArguments(symbol, start);
    for (std::size_t at = symbol.find(" >"); at != std::string::npos; at = symbol.find(" >"))
        symbol.erase(at, 1);
    return symbol;
}

// The names of one class in one kind of section.
using Names = std::map<std::string, std::set<std::string>>;

struct Members
{
    Names open; // public and protected
    Names hidden;
};

// Relies on the layout of the headers: a class at the margin, and its labels too; its members four columns
// in.
void readHeader(std::filesystem::path const& path, Members& members)
{
    static std::regex const classLine("class (?:\\w+_API )?(\\w+)(?: :.*)?");
    static std::regex const nestedLine("    (?:class|struct) (\\w+).*");
    static std::regex const memberLine("    [^ /][^(]*?(~?\\w+|operator[^(]+)\\(.*");
    std::ifstream file = opened(path);
    std::string name;
    bool isHidden = false;
    std::smatch match;
    for (std::string line; std::getline(file, line);)
    {
        if (std::regex_match(line, match, classLine))
        {
            name = match[1];
            isHidden = true;
        }
        else if (line == "private:")
            isHidden = true;
        else if (line == "public:" || line == "protected:")
            isHidden = false;
        else if (std::regex_match(line, match, nestedLine) || std::regex_match(line, match, memberLine))
            (isHidden ? members.hidden : members.open)[name].insert(match[1]);
    }
}

Members membersInHeaders()
{
    Members members;
    for (char const* const folder : {"foundation", "ks_graph"})
        for (auto const& entry : std::filesystem::directory_iterator(std::filesystem::path(LIB_DIR) / folder))
            if (entry.path().extension() == ".h") readHeader(entry.path(), members);
    return members;
}

bool isPrivate(std::string const& operation, Members& members)
{
    static std::regex const qualified("(?:[^(]* )?(\\w+)::(~?\\w+|operator[^(]+)[<:(].*");
    std::smatch match;
    if (!std::regex_match(operation, match, qualified)) return false;
    return members.hidden[match[1]].count(match[2]) != 0 && members.open[match[1]].count(match[2]) == 0;
}

} // namespace

std::set<std::string> exportedOperations()
{
    Members members = membersInHeaders();
    std::set<std::string> operations;
    std::ifstream file = opened(EXPORTED_SYMBOLS);
    for (std::string line; std::getline(file, line);)
    {
        std::string const operation = shortened(line);
        if (operation.find('(') != std::string::npos && !isPrivate(operation, members))
            operations.insert(operation);
    }
    return operations;
}

} // namespace kestrel::graph::test
