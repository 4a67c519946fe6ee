#include "OutputFile.h"

#include <unistd.h>

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

bool isRegular(fs::path const& path)
{
    std::error_code unknown;
    return fs::is_regular_file(path, unknown);
}

// Devices and pipes cannot be synchronised; their flush is all there is.
bool flushed(std::FILE* file, bool toDisk)
{
    return std::fflush(file) == 0 && (!toDisk || ::fsync(::fileno(file)) == 0);
}

std::string writeInto(fs::path const& path, char const* mode, FileWriter const& write, bool toDisk)
{
    std::FILE* const file = std::fopen(path.c_str(), mode);
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
    fs::rename(sibling, target, error);
    return error ? error.message() : std::string();
}

std::string replaceFile(fs::path const& target, FileWriter const& write)
{
    if (isRegular(target) && ::access(target.c_str(), W_OK) != 0) return lastError();
    fs::path const sibling =
        target.parent_path() / (".material_graph." + std::to_string(::getpid()) + ".part");
    std::string error = writeInto(sibling, "wbx", write, true);
    if (error.empty()) error = takePlaceOf(target, sibling);
    std::error_code ignored;
    if (!error.empty()) fs::remove(sibling, ignored);
    return error;
}

} // namespace

std::string writeOutputFile(std::string const& path, FileWriter const& write)
{
    std::error_code noTarget;
    fs::path const resolved = fs::canonical(path, noTarget);
    fs::path const target = noTarget ? fs::path(path) : resolved;
    if (noTarget || isRegular(target)) return replaceFile(target, write);
    return writeInto(target, "wb", write, false);
}

std::string writeOutputFile(std::string const& path, std::string_view text)
{
    return writeOutputFile(path, [text](std::FILE* file)
                           { return std::fwrite(text.data(), 1, text.size(), file) == text.size(); });
}

} // namespace material_graph
