#include <foundation/FileStream.h>

#include <foundation/ks_fileio.h>

#include <type_traits>

namespace kestrel
{

namespace
{

template <class T>
bool readRaw(FileStreamRaw& stream, T& value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    T arrived{};
    if (stream.read(&arrived, sizeof arrived) != sizeof arrived) return false;
    value = arrived;
    return true;
}

template <class T>
bool writeRaw(FileStreamRaw& stream, T const& value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    return stream.write(&value, sizeof value) == sizeof value;
}

// The components go to the file back to back.
static_assert(sizeof(Tuple2<float, float>) == 8 && sizeof(Color4<float>) == 16);

} // namespace

FileStream::~FileStream() = default;

std::size_t FileStream::read(void* bytes, std::size_t count)
{
    if (file_ == nullptr || bytes == nullptr) return 0;
    return std::fread(bytes, 1, count, file_);
}

std::size_t FileStream::write(void const* bytes, std::size_t count)
{
    if (file_ == nullptr || bytes == nullptr) return 0;
    return std::fwrite(bytes, 1, count, file_);
}

bool FileStream::flush()
{
    return file_ == nullptr || std::fflush(file_) == 0;
}

FileStreamRaw::~FileStreamRaw() = default;

bool FileStreamRaw::readValue(int& value)
{
    return readRaw(*this, value);
}

bool FileStreamRaw::readValue(unsigned int& value)
{
    return readRaw(*this, value);
}

bool FileStreamRaw::readValue(float& value)
{
    return readRaw(*this, value);
}

bool FileStreamRaw::readValue(bool& value)
{
    // A byte other than 0 and 1 is no bool in memory.
    unsigned char byte = 0;
    if (!readRaw(*this, byte)) return false;
    value = byte != 0;
    return true;
}

bool FileStreamRaw::readValue(Tuple2<float, float>& value)
{
    return readRaw(*this, value);
}

bool FileStreamRaw::readValue(Color4<float>& value)
{
    return readRaw(*this, value);
}

bool FileStreamRaw::writeValue(int value)
{
    return writeRaw(*this, value);
}

bool FileStreamRaw::writeValue(unsigned int value)
{
    return writeRaw(*this, value);
}

bool FileStreamRaw::writeValue(float value)
{
    return writeRaw(*this, value);
}

bool FileStreamRaw::writeValue(bool value)
{
    return writeRaw(*this, static_cast<unsigned char>(value ? 1 : 0));
}

bool FileStreamRaw::writeValue(Tuple2<float, float> const& value)
{
    return writeRaw(*this, value);
}

bool FileStreamRaw::writeValue(Color4<float> const& value)
{
    return writeRaw(*this, value);
}

FileStreamEndian::~FileStreamEndian() = default;

bool FileStreamEndian::readValue(int& value)
{
    return ReadInt(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::readValue(unsigned int& value)
{
    return ReadUInt(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::readValue(float& value)
{
    return ReadFloat(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::readValue(bool& value)
{
    return ReadBool(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::readValue(Tuple2<float, float>& value)
{
    Tuple2<float, float> arrived;
    if (!readValue(arrived.first) || !readValue(arrived.second)) return false;
    value = arrived;
    return true;
}

bool FileStreamEndian::readValue(Color4<float>& value)
{
    Color4<float> arrived;
    if (!readValue(arrived.red) || !readValue(arrived.green) || !readValue(arrived.blue) ||
        !readValue(arrived.alpha))
        return false;
    value = arrived;
    return true;
}

bool FileStreamEndian::writeValue(int value)
{
    return WriteInt(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::writeValue(unsigned int value)
{
    return WriteUInt(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::writeValue(float value)
{
    return WriteFloat(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::writeValue(bool value)
{
    return WriteBool(&value, 1, getFile()) == 1;
}

bool FileStreamEndian::writeValue(Tuple2<float, float> const& value)
{
    return writeValue(value.first) && writeValue(value.second);
}

bool FileStreamEndian::writeValue(Color4<float> const& value)
{
    return writeValue(value.red) && writeValue(value.green) && writeValue(value.blue) &&
           writeValue(value.alpha);
}

} // namespace kestrel
