#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace orvane {

/// What an engineer would listen and look for before a programme goes out. A frame is silent when
/// no channel exceeds `kSilenceDBFS`.
struct ProgrammeQuality {
  static constexpr double kSilenceDBFS = -60;
  /// Shorter silence within a programme is no gap.
  static constexpr double kShortestGapSeconds = 0.5;

  struct Gap {
    std::int64_t startFrame = 0;
    std::int64_t frameCount = 0;

    bool operator==(const Gap&) const = default;
  };

  struct ChannelPair {
    std::int64_t first = 0;
    std::int64_t second = 0;

    bool operator==(const ChannelPair&) const = default;
  };

  struct BitDepth {
    int stored = 0;     ///< bits of the file's integers
    int effective = 0;  ///< those of them, from the highest one down, that any sample makes use of

    bool operator==(const BitDepth&) const = default;
  };

  std::int64_t headSilenceFrames = 0;  ///< the whole programme if all of it is silent
  std::int64_t tailSilenceFrames = 0;  ///< likewise
  std::optional<Gap> longestGap{};     ///< between the first and the last sound
  std::vector<std::int64_t> silentChannels{};
  /// Pairs of channels that are heard and have the same samples. Of more than 16 channels only
  /// neighbours are compared.
  std::vector<ChannelPair> identicalChannels{};
  /// Pairs of which one is the other's negative; the first two also where they are nearly so: a
  /// correlation below −0.95 over the whole programme, known when the stereo curve is.
  std::vector<ChannelPair> invertedChannels{};
  /// Absent for floating point, lossy codecs and digital silence.
  std::optional<BitDepth> bitDepth{};

  bool operator==(const ProgrammeQuality&) const = default;
};

}  // namespace orvane
