#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/container/chunked/chunk_reader.h"

namespace orvane {

/// What follows the four letters of a chunk's GUID in Wave64.
inline constexpr std::string_view kWave64ChunkTail{"\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A",
                                                   12};

/// A whole chunk, with its padding.
std::vector<std::byte> chunkBytes(const ChunkGrammar& grammar, FourCC id,
                                  std::span<const std::byte> body);

}  // namespace orvane
