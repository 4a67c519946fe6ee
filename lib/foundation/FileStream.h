/// @file
/// The two binary file streams. They differ only in the bytes of a number: `FileStreamRaw` takes them as the
/// machine holds them, `FileStreamEndian` puts the most significant byte first on every machine.
#pragma once

#include <foundation/Color4.h>
#include <foundation/Tuple2.h>
#include <foundation/foundation_api.h>

#include <cstddef>
#include <cstdio>

namespace kestrel
{

/// Blocks of bytes to and from a file that the stream does not own: the host opens it, in binary mode, and
/// closes it. With a null file nothing is transferred.
///
/// A file that is both written and read needs a positioning call, such as `std::rewind`, in between. One
/// thread at a time uses a stream.
class KS_FOUNDATION_API FileStream
{
public:
    /// `file` may be null; it is not owned.
    explicit FileStream(std::FILE* file) : file_(file) {}
    FileStream(FileStream const&) = delete;
    FileStream& operator=(FileStream const&) = delete;
    virtual ~FileStream();

    /// Both return the number of bytes transferred, which is less than `count` only at the end of the file,
    /// on a full disk or after an error: an override, too, goes on until all are there. A null pointer
    /// transfers nothing.
    virtual std::size_t read(void* bytes, std::size_t count);
    virtual std::size_t write(void const* bytes, std::size_t count);

    /// Hands on to the system what the file still holds back. False when it could not take it: a full disk
    /// may show only now. True without a file. An override does the same for what its `write` holds back.
    virtual bool flush();

    /// The host's file; null if there is none.
    std::FILE* getFile() const { return file_; }

private:
    std::FILE* file_;
};

/// Numbers as the machine holds them, each as one block through the virtual `read` and `write`; a bool is one
/// byte, 0 or 1. Every `readValue` is false, and leaves its argument as it was, when the value did not arrive
/// whole; every `writeValue` is false when it was not taken whole.
class KS_FOUNDATION_API FileStreamRaw : public FileStream
{
public:
    /// `file` may be null; it is not owned.
    explicit FileStreamRaw(std::FILE* file) : FileStream(file) {}
    ~FileStreamRaw() override;

    /// @name One value
    /// @{
    bool readValue(int& value);
    bool readValue(unsigned int& value);
    bool readValue(float& value);
    /// Any non-zero byte reads as true.
    bool readValue(bool& value);

    bool readValue(Tuple2<float, float>& value);
    bool readValue(Color4<float>& value);

    bool writeValue(int value);
    bool writeValue(unsigned int value);
    bool writeValue(float value);
    bool writeValue(bool value);
    bool writeValue(Tuple2<float, float> const& value);
    bool writeValue(Color4<float> const& value);
    /// @}
};

/// Numbers through the `ks_fileio` operations, one call for each; only blocks of bytes go through the virtual
/// `read` and `write`. The results are those of `FileStreamRaw`.
class KS_FOUNDATION_API FileStreamEndian : public FileStream
{
public:
    /// `file` may be null; it is not owned.
    explicit FileStreamEndian(std::FILE* file) : FileStream(file) {}
    ~FileStreamEndian() override;

    /// @name One value
    /// @{
    bool readValue(int& value);
    bool readValue(unsigned int& value);
    bool readValue(float& value);
    /// Any non-zero byte reads as true.
    bool readValue(bool& value);

    bool readValue(Tuple2<float, float>& value);
    bool readValue(Color4<float>& value);

    bool writeValue(int value);
    bool writeValue(unsigned int value);
    bool writeValue(float value);
    bool writeValue(bool value);
    bool writeValue(Tuple2<float, float> const& value);
    bool writeValue(Color4<float> const& value);
    /// @}
};

} // namespace kestrel
