#include "Commands.h"

#include "Command.h"
#include "Text.h"

#include <utility>

namespace material_graph
{

using kestrel::KS_String;

namespace
{

// The command that the first words name, and how many words that took; null if there is none.
std::pair<Command const*, std::size_t> commandOf(std::vector<std::string> const& words)
{
    if (words.empty()) return {nullptr, 0};
    bool const twoWords = words[0] == "layout" && words.size() > 1;
    if (words[0].find(' ') != std::string::npos) return {nullptr, 0};
    std::string const name = twoWords ? words[0] + " " + words[1] : words[0];
    for (auto const* commands : {&queryCommands(), &editCommands(), &layoutCommands()})
    {
        auto const command = commands->find(name);
        if (command != commands->end()) return {&command->second, twoWords ? 2u : 1u};
    }
    return {nullptr, 0};
}

} // namespace

bool isCommand(std::vector<std::string> const& words)
{
    auto const [command, nameWords] = commandOf(words);
    if (command == nullptr) return false;
    std::size_t const arguments = words.size() - nameWords;
    return arguments >= command->fewestArguments && arguments <= command->mostArguments;
}

std::optional<std::string> runCommand(Workspace& workspace, std::vector<std::string> const& words)
{
    auto const [command, nameWords] = commandOf(words);
    return command->run(workspace,
                        Arguments(words.begin() + static_cast<std::ptrdiff_t>(nameWords), words.end()));
}

Result fail(MaterialScene& scene, char const* command, std::string const& reason)
{
    scene.refMessages().pushError(command, KS_String(reason));
    return std::nullopt;
}

MaterialNode* nodeNamed(MaterialScene& scene, char const* command, std::string const& name)
{
    MaterialNode* const node = scene.findNode(name);
    if (node == nullptr) fail(scene, command, "there is no node " + inQuotes(name));
    return node;
}

} // namespace material_graph
