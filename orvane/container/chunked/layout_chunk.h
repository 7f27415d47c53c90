#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/container/chunked/chunk_reader.h"
#include "orvane/platform/channel_layout.h"

namespace orvane {

/// Reads the layout chunk of CAF (`chan`) and AIFF (`CHAN`): tag, bitmap and channel descriptions.
/// Absent for a chunk that does not fit `channelCount` channels or tells nothing of them.
std::optional<ChannelLayout> readLayoutChunk(const InputFile& file, const Chunk& chunk,
                                             std::uint32_t channelCount);

/// The body of such a chunk: the layout's tag, or a description of each channel where no tag says
/// it.
std::vector<std::byte> layoutChunkBody(const ChannelLayout& layout);

}  // namespace orvane
