#include "Commands.h"

#include "BoxArrangement.h"
#include "Command.h"
#include "Text.h"

#include <algorithm>

namespace material_graph
{

using kestrel::KS_String;

namespace
{

using NamedCommand = std::map<std::string, Command>::value_type;

// The command that the first words name; null if there is none.
NamedCommand const* commandOf(std::vector<std::string> const& words)
{
    if (words.empty() || words[0].find(' ') != std::string::npos) return nullptr;
    bool const twoWords = words[0] == "layout" && words.size() > 1;
    std::string const name = twoWords ? words[0] + " " + words[1] : words[0];
    for (auto const* commands : {&queryCommands(), &editCommands(), &layoutCommands()})
    {
        auto const command = commands->find(name);
        if (command != commands->end()) return &*command;
    }
    return nullptr;
}

// What is behind the command's name.
Arguments argumentsOf(NamedCommand const& command, std::vector<std::string> const& words)
{
    auto const nameWords = 1 + std::count(command.first.begin(), command.first.end(), ' ');
    return {words.begin() + nameWords, words.end()};
}

} // namespace

bool isCommand(std::vector<std::string> const& words)
{
    NamedCommand const* const command = commandOf(words);
    if (command == nullptr) return false;
    std::size_t const count = argumentsOf(*command, words).size();
    return count >= command->second.fewestArguments && count <= command->second.mostArguments;
}

std::optional<std::string> runCommand(Workspace& workspace, std::vector<std::string> const& words)
{
    NamedCommand const& command = *commandOf(words);
    try
    {
        return command.second.run(workspace, argumentsOf(command, words));
    }
    catch (NoArrangement const& reason)
    {
        return fail(workspace.scene, command.first.c_str(), reason.what());
    }
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
