#include "CommandLine.h"

#include "Commands.h"
#include "DocumentReader.h"
#include "OutputFile.h"
#include "SourceFile.h"
#include "Text.h"
#include "Workspace.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace material_graph
{

using kestrel::graph::Message;

namespace
{

constexpr char const* usage =
    "usage: material_graph FILE.mtlx [COMMAND [+ COMMAND]...] [-o FILE]\n"
    "\n"
    "  summary                     counts what is in the document; the command if none is given\n"
    "  xml                         the whole graph\n"
    "  svg [COMPOUND]              a picture of what is in the compound, or of the document's own level\n"
    "  html NODE                   a page with the node's description\n"
    "  connections NODE            every connection of the node\n"
    "  find PIN                    a pin, whatever the case of its letters, and its connections\n"
    "  group NAME NODE...          moves the nodes into a new compound\n"
    "  ungroup COMPOUND            moves what is in the compound out of it, and removes it\n"
    "  rename NODE NAME            gives the node another name\n"
    "  layout save FILE            writes where everything stands\n"
    "  layout load FILE            reads it for the commands that follow\n"
    "  layout show FILE            what is in a layout file, byte by byte\n"
    "  layout hide NAME...         leaves nodes or connections out of the picture\n"
    "  layout collapse NODE...     shows nodes without their pins\n"
    "\n"
    "Each command works on what the ones before it have made. The result is that of the last one.\n";

struct Request
{
    std::string document;
    std::vector<std::vector<std::string>> commands;
    std::optional<std::string> outputFile;
};

// The words behind the document, split where a "+" stands.
std::vector<std::vector<std::string>> splitCommands(std::vector<std::string> const& words)
{
    if (words.size() == 1) return {{"summary"}};
    std::vector<std::vector<std::string>> commands(1);
    for (std::size_t i = 1; i < words.size(); ++i)
    {
        if (words[i] == "+")
            commands.emplace_back();
        else
            commands.back().push_back(words[i]);
    }
    return commands;
}

std::optional<Request> parse(std::vector<std::string> const& arguments)
{
    Request request;
    std::vector<std::string> words;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        if (arguments[i] != "-o")
            words.push_back(arguments[i]);
        else if (++i < arguments.size() && !request.outputFile)
            request.outputFile = arguments[i];
        else
            return std::nullopt;
    }
    if (words.empty()) return std::nullopt;
    request.document = words[0];
    request.commands = splitCommands(words);
    if (!std::all_of(request.commands.begin(), request.commands.end(), isCommand)) return std::nullopt;
    return request;
}

// Ends at the first command that cannot be done.
std::optional<std::string> runCommands(Workspace& workspace,
                                       std::vector<std::vector<std::string>> const& commands)
{
    std::optional<std::string> result;
    for (std::vector<std::string> const& command : commands)
    {
        result = runCommand(workspace, command);
        if (!result) break;
    }
    return result;
}

void printMessages(MaterialScene const& scene, std::ostream& err)
{
    for (Message const& message : scene.getMessages().getMessages())
        err << message.getTitle().c_str() << ": error: " << message.getContent().c_str() << "\n";
}

Status deliver(std::string const& result, std::optional<std::string> const& file, std::ostream& out,
               std::ostream& err)
{
    if (file)
    {
        std::string const error = writeOutputFile(*file, result);
        if (error.empty()) return Status::Done;
        err << "material_graph: cannot write " << inQuotes(*file) << ": " << error << "\n";
        return Status::NotRun;
    }
    if (out << result << std::flush) return Status::Done;
    err << "material_graph: cannot write the result\n";
    return Status::NotRun;
}

} // namespace

Status runCommandLine(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& err,
                      Progress& progress)
{
    std::optional<Request> const request = parse(arguments);
    if (!request)
    {
        err << usage;
        return Status::NotRun;
    }
    if (request->outputFile && isSameFile(request->document, *request->outputFile))
    {
        err << "material_graph: " << inQuotes(*request->outputFile) << " is the document itself\n";
        return Status::NotRun;
    }
    Workspace workspace;
    workspace.document = request->document;
    MaterialScene& scene = workspace.scene;
    std::string const unreadable = DocumentReader(scene, progress).readFile(request->document);
    if (!unreadable.empty())
    {
        err << "material_graph: cannot read " << inQuotes(request->document) << ": " << unreadable << "\n"
            << usage;
        return Status::NotRun;
    }
    std::optional<std::string> const result = runCommands(workspace, request->commands);
    printMessages(scene, err);
    Status const status = result ? deliver(*result, request->outputFile, out, err) : Status::Defects;
    if (status == Status::Done && scene.getMessages().hasErrorsOrCriticals()) return Status::Defects;
    return status;
}

} // namespace material_graph
