#include "LayoutFile.h"

#include "FileNames.h"
#include "OutputFile.h"
#include "Platform.h"

#include <foundation/FileStream.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

namespace material_graph
{

using kestrel::FileStreamEndian;
using kestrel::FileStreamRaw;
using kestrel::graph::GraphLayout;

namespace
{

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// A version number is small: in the other byte order, it is not.
bool isInMachineOrder(std::FILE* file)
{
    unsigned int machine = 0;
    unsigned int endian = 0;
    bool const whole = FileStreamRaw(file).readValue(machine);
    std::rewind(file);
    FileStreamEndian(file).readValue(endian);
    std::rewind(file);
    return whole && machine < endian;
}

bool readEither(std::FILE* file, GraphLayout& layout)
{
    if (isInMachineOrder(file))
    {
        FileStreamRaw stream(file);
        return layout.read(stream);
    }
    FileStreamEndian stream(file);
    return layout.read(stream);
}

} // namespace

std::string saveLayout(std::string const& path, GraphLayout const& layout)
{
    return writeOutputFile(path,
                           [&layout](std::FILE* file)
                           {
                               FileStreamEndian stream(file);
                               return layout.write(stream);
                           });
}

std::string loadLayout(std::string const& path, GraphLayout& layout)
{
    std::error_code unknown;
    if (std::filesystem::is_directory(pathOf(path), unknown)) return "it is a directory";
    File const file(openFile(pathOf(path), "rb"), &std::fclose);
    if (!file) return std::strerror(errno);
    GraphLayout loaded;
    if (!readEither(file.get(), loaded)) return "it is damaged or no layout file";
    layout = std::move(loaded);
    return {};
}

} // namespace material_graph
