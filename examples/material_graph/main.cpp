#include "CommandLine.h"
#include "Platform.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    using namespace material_graph;
    try
    {
        prepareOutput();
        Progress progress(isErrorTerminal() ? &std::cerr : nullptr);
        return static_cast<int>(runCommandLine(programArguments(argc, argv), std::cout, std::cerr, progress));
    }
    catch (std::exception const& failure)
    {
        std::cerr << "material_graph: " << failure.what() << "\n";
        return static_cast<int>(Status::NotRun);
    }
}
