#include "OutputFile.h"

#include "FileNames.h"
#include "Platform.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace material_graph
{

namespace fs = std::filesystem;

namespace
{

std::string lastError()
{
    return std::strerror(errno);
}

// Devices and pipes cannot be synchronised; their flush is all there is.
bool flushed(std::FILE* file, bool toDisk)
{
    return std::fflush(file) == 0 && (!toDisk || flushToDisk(file));
}

std::string writeInto(std::FILE* file, FileWriter const& write, bool toDisk)
{
    if (file == nullptr) return lastError();
    bool const written = write(file) && flushed(file, toDisk);
    std::string error = written ? std::string() : lastError();
    if (std::fclose(file) != 0 && error.empty()) error = lastError();
    return error;
}

std::string takePlaceOf(fs::path const& target, fs::path const& sibling)
{
    std::error_code error;
    fs::file_status const old = fs::status(target, error);
    if (fs::exists(old)) fs::permissions(sibling, old.permissions(), error);
    return replaceFile(target, sibling);
}

// A file of this process's own. The name may be taken: a process of the same number, which was killed while
// it saved, may have left one behind, or one of another machine may be saving to the same folder.
std::FILE* createSibling(fs::path const& target, fs::path& sibling)
{
    constexpr int manyNames = 1000;
    std::string const stem = ".material_graph." + std::to_string(processId());
    for (int number = 1; number <= manyNames; ++number)
    {
        sibling = target.parent_path() /
                  std::string(stem).append(".").append(std::to_string(number)).append(".part");
        std::FILE* const file = createFile(sibling);
        if (file != nullptr || errno != EEXIST) return file;
    }
    return nullptr;
}

std::string writeBeside(fs::path const& target, FileWriter const& write)
{
    if (!isWritable(target) && errno != ENOENT) return lastError();
    fs::path sibling;
    std::FILE* const file = createSibling(target, sibling);
    if (file == nullptr) return lastError();
    std::string error = writeInto(file, write, true);
    if (error.empty()) error = takePlaceOf(target, sibling);
    std::error_code ignored;
    if (!error.empty()) fs::remove(sibling, ignored);
    return error;
}

} // namespace

std::string writeOutputFile(std::string const& path, FileWriter const& write)
{
    Destination const target = destinationOf(pathOf(path));
    std::error_code unknown;
    if (fs::is_directory(target.path, unknown)) return "it is a directory";
    if (target.isReplaceable) return writeBeside(target.path, write);
    return writeInto(openFile(target.path, "wb"), write, false);
}

std::string writeOutputFile(std::string const& path, std::string_view text)
{
    return writeOutputFile(path, [text](std::FILE* file)
                           { return std::fwrite(text.data(), 1, text.size(), file) == text.size(); });
}

} // namespace material_graph
