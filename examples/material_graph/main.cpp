#include "CommandLine.h"

#include <unistd.h>

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    using namespace material_graph;
    try
    {
        Progress progress(::isatty(STDERR_FILENO) != 0 ? &std::cerr : nullptr);
        std::vector<std::string> const arguments(argc > 0 ? argv + 1 : argv, argv + argc);
        return static_cast<int>(runCommandLine(arguments, std::cout, std::cerr, progress));
    }
    catch (std::exception const& failure)
    {
        std::cerr << "material_graph: " << failure.what() << "\n";
        return static_cast<int>(Status::NotRun);
    }
}
