// write_golden_layouts FOLDER: writes the files of tests/data/layout into an existing folder. It does not use
// the library, so that what the library is tested against is not of its own making.

#include "support/SampleLayout.h"

#include <fstream>
#include <iostream>
#include <string>

namespace
{

using namespace kestrel::graph::test;

bool write(std::string const& path, std::string const& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes << std::flush;
    if (!file) std::cerr << path << " cannot be written\n";
    return file.good();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::cerr << "usage: write_golden_layouts FOLDER\n";
        return 1;
    }
    for (GoldenFile const& golden : goldenFiles())
    {
        std::string const path = std::string(argv[1]) + "/" + golden.name;
        if (!write(path, encoded(golden.layout, golden.version, golden.order).content())) return 1;
    }
}
