/// @file
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kestrel::graph::test
{

/// A binary file for reading and writing that goes away again.
class TemporaryFile
{
public:
    explicit TemporaryFile(std::string_view content = "")
        : path_(::testing::TempDir() + "ks_graph_" + std::to_string(std::random_device{}())),
          file_(std::fopen(path_.c_str(), "w+b"))
    {
        if (file_ == nullptr) throw std::runtime_error(path_ + " cannot be written");
        EXPECT_EQ(std::fwrite(content.data(), 1, content.size(), file_), content.size());
        std::rewind(file_);
    }

    ~TemporaryFile()
    {
        std::fclose(file_);
        std::remove(path_.c_str());
    }

    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    std::FILE* get() const { return file_; }
    std::string const& path() const { return path_; }

    /// All bytes of the file, those that wait in its buffer included. It is read to its end.
    std::string content() const
    {
        std::string bytes;
        std::rewind(file_);
        for (int byte = std::fgetc(file_); byte != EOF; byte = std::fgetc(file_))
            bytes += static_cast<char>(byte);
        return bytes;
    }

private:
    std::string path_;
    std::FILE* file_;
};

/// All bytes of a file, as they are on the disk.
inline std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

} // namespace kestrel::graph::test
