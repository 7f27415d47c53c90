#pragma once

#include <cstdint>
#include <vector>

#include "orvane/platform/export.h"

/// Cuts a file into pieces of a second for an analysis.
namespace orvane::MusicAnalysisChunking {

struct Chunk {
  std::int64_t offset = 0;  ///< first frame
  std::int64_t count = 0;   ///< frames

  bool operator==(const Chunk&) const = default;
};

/// Frames of one second, to nearest, halves up; at least 1. A rate that is not finite, or whose
/// second 64 bits cannot count, is a programming error.
ORVANE_API std::int64_t chunkFrames(double sampleRate);

/// The chunks of [0, frameLength) in order, the last one perhaps shorter; none for no frames.
ORVANE_API std::vector<Chunk> chunks(std::int64_t frameLength, double sampleRate);

}  // namespace orvane::MusicAnalysisChunking
