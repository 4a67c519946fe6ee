#include <foundation/ks_fileio.h>

#include <bit>
#include <cstdint>

namespace kestrel
{

namespace
{

static_assert(sizeof(int) == 4 && sizeof(float) == 4);

bool readWord(std::FILE* file, std::uint32_t& word)
{
    unsigned char bytes[4];
    if (std::fread(bytes, 1, 4, file) != 4) return false;
    word = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           std::uint32_t{bytes[3]};
    return true;
}

bool writeWord(std::FILE* file, std::uint32_t word)
{
    unsigned char const bytes[4] = {static_cast<unsigned char>(word >> 24),
                                    static_cast<unsigned char>(word >> 16),
                                    static_cast<unsigned char>(word >> 8), static_cast<unsigned char>(word)};
    return std::fwrite(bytes, 1, 4, file) == 4;
}

template <class T>
std::size_t readWords(T* values, std::size_t count, std::FILE* file)
{
    if (values == nullptr || file == nullptr) return 0;
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        if (!readWord(file, word)) return i;
        values[i] = std::bit_cast<T>(word);
    }
    return count;
}

template <class T>
std::size_t writeWords(T const* values, std::size_t count, std::FILE* file)
{
    if (values == nullptr || file == nullptr) return 0;
    for (std::size_t i = 0; i < count; ++i)
        if (!writeWord(file, std::bit_cast<std::uint32_t>(values[i]))) return i;
    return count;
}

} // namespace

std::size_t ReadInt(int* values, std::size_t count, std::FILE* file)
{
    return readWords(values, count, file);
}

std::size_t ReadUInt(unsigned int* values, std::size_t count, std::FILE* file)
{
    return readWords(values, count, file);
}

std::size_t ReadFloat(float* values, std::size_t count, std::FILE* file)
{
    return readWords(values, count, file);
}

std::size_t ReadBool(bool* values, std::size_t count, std::FILE* file)
{
    if (values == nullptr || file == nullptr) return 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        int const byte = std::fgetc(file);
        if (byte == EOF) return i;
        values[i] = byte != 0;
    }
    return count;
}

std::size_t WriteInt(int const* values, std::size_t count, std::FILE* file)
{
    return writeWords(values, count, file);
}

std::size_t WriteUInt(unsigned int const* values, std::size_t count, std::FILE* file)
{
    return writeWords(values, count, file);
}

std::size_t WriteFloat(float const* values, std::size_t count, std::FILE* file)
{
    return writeWords(values, count, file);
}

std::size_t WriteBool(bool const* values, std::size_t count, std::FILE* file)
{
    if (values == nullptr || file == nullptr) return 0;
    for (std::size_t i = 0; i < count; ++i)
        if (std::fputc(values[i] ? 1 : 0, file) == EOF) return i;
    return count;
}

} // namespace kestrel
