#include "CommandLine.h"

#include "Commands.h"
#include "DocumentReader.h"
#include "MaterialScene.h"
#include "OutputFile.h"
#include "Text.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>

namespace material_graph
{

using kestrel::graph::Message;

namespace
{

constexpr char const* usage = "usage: material_graph FILE.mtlx [summary | xml | html NODE | connections NODE "
                              "| find NAME | group NAME NODE... "
                              "| ungroup COMPOUND] [-o FILE]\n";

struct Request
{
    std::string document;
    std::string command = "summary";
    std::vector<std::string> arguments;
    std::optional<std::string> outputFile;
};

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
    if (words.size() > 1) request.command = words[1];
    if (words.size() > 2) request.arguments.assign(words.begin() + 2, words.end());
    if (!isCommand(request.command, request.arguments.size())) return std::nullopt;
    return request;
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

// Whether both names lead to one file; false for what does not exist.
bool isSameFile(std::string const& a, std::string const& b)
{
    std::error_code notThere;
    return std::filesystem::equivalent(a, b, notThere);
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
    MaterialScene scene;
    std::string const unreadable = DocumentReader(scene, progress).readFile(request->document);
    if (!unreadable.empty())
    {
        err << "material_graph: cannot read " << inQuotes(request->document) << ": " << unreadable << "\n"
            << usage;
        return Status::NotRun;
    }
    std::optional<std::string> const result = runCommand(scene, request->command, request->arguments);
    printMessages(scene, err);
    Status const status = result ? deliver(*result, request->outputFile, out, err) : Status::Defects;
    if (status == Status::Done && scene.getMessages().hasErrorsOrCriticals()) return Status::Defects;
    return status;
}

} // namespace material_graph
