/// @file
/// Numbers in files, most significant byte first on every machine; a bool is one byte.
#pragma once

#include <foundation/foundation_api.h>

#include <cstddef>
#include <cstdio>

namespace kestrel
{

/// @name Reading
/// Each reads `count` values from `file` and returns how many arrived whole; the values behind them are left
/// as they were. Any non-zero byte reads as true. A null `file` or `values` gives 0.
/// @{
KS_FOUNDATION_API std::size_t ReadInt(int* values, std::size_t count, std::FILE* file);
KS_FOUNDATION_API std::size_t ReadUInt(unsigned int* values, std::size_t count, std::FILE* file);
KS_FOUNDATION_API std::size_t ReadFloat(float* values, std::size_t count, std::FILE* file);
KS_FOUNDATION_API std::size_t ReadBool(bool* values, std::size_t count, std::FILE* file);
/// @}

/// @name Writing
/// Each writes `count` values to `file` and returns how many were taken whole. A bool is written as 0 or 1. A
/// null `file` or `values` gives 0.
/// @{
KS_FOUNDATION_API std::size_t WriteInt(int const* values, std::size_t count, std::FILE* file);
KS_FOUNDATION_API std::size_t WriteUInt(unsigned int const* values, std::size_t count, std::FILE* file);
KS_FOUNDATION_API std::size_t WriteFloat(float const* values, std::size_t count, std::FILE* file);
KS_FOUNDATION_API std::size_t WriteBool(bool const* values, std::size_t count, std::FILE* file);
/// @}

} // namespace kestrel
