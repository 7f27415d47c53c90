#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/rawpcm/raw_pcm_guesser.h"

namespace orvane::RawPCMGuesser {

/// What is known of a file whose encoding is looked for.
struct Known {
  double sampleRate = 0;
  std::vector<std::int64_t> channelCounts{};  ///< each is tried; of a common multiple up to 4096
  std::int64_t headerSkipBytes = 0;
};

struct Proposals {
  std::vector<Candidate> candidates{};  ///< best first, with the skip that is known
  /// All bytes that were looked at are equal: the scores tell nothing.
  bool isSilent = false;
};

/// How many equal bytes are passed over in search of others.
inline constexpr std::int64_t kLongestSilence = std::int64_t{64} << 20;

/// Ranks every encoding for every channel count by a preview from which digital silence is cut:
/// whole frames of every candidate in which all bytes are equal. That is, silence would speak for
/// u8, in which zeros are a constant at full level. Of equal scores those of the channel count
/// named first come first. No candidates where none fits the size of the file. Throws
/// `PlatformError` when the file cannot be read.
ORVANE_API Proposals propose(const std::filesystem::path& url, const Known& known,
                             double previewSeconds, const Execution& execution = {});

}  // namespace orvane::RawPCMGuesser
