#include "orvane/music/music_analysis_chunking.h"

#include <algorithm>
#include <cmath>

#include "orvane/platform/precondition.h"

namespace orvane::MusicAnalysisChunking {

std::int64_t chunkFrames(double sampleRate) {
  constexpr double kBound = 0x1p63;
  precondition(sampleRate >= -kBound && sampleRate < kBound,
               "the frames of a second must be a number of 64 bits");
  return std::max<std::int64_t>(static_cast<std::int64_t>(std::round(sampleRate)), 1);
}

std::vector<Chunk> chunks(std::int64_t frameLength, double sampleRate) {
  const std::int64_t size = chunkFrames(sampleRate);
  std::vector<Chunk> result;
  for (std::int64_t left = frameLength; left > 0; left -= result.back().count)
    result.push_back({.offset = frameLength - left, .count = std::min(size, left)});
  return result;
}

}  // namespace orvane::MusicAnalysisChunking
