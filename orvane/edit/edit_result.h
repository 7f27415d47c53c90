#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "orvane/edit/programme_slice.h"
#include "orvane/platform/channel_layout.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane::EditOperations {

/// One array per channel, all of equal length.
using ChannelArrays = std::vector<std::vector<float>>;

/// What every edit in memory gives.
struct EditResult {
  ChannelArrays channelData{};
  double sampleRate = 0;  ///< hertz, as it was given
  int channelCount = 0;   ///< of `channelData`

  bool operator==(const EditResult&) const = default;
};

/// A buffer with these samples. It takes the layout for three and more channels if it is one of as
/// many; mono and stereo have none. Nothing when there are no channels, when the rate is none, or
/// when the memory cannot be had.
ORVANE_API std::shared_ptr<PCMBuffer> buildBuffer(
    const EditResult& result, const std::optional<ChannelLayout>& channelLayout = std::nullopt);

}  // namespace orvane::EditOperations
