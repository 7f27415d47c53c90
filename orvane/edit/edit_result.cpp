#include "orvane/edit/edit_result.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "orvane/platform/precondition.h"

namespace orvane::EditOperations {

std::shared_ptr<PCMBuffer> buildBuffer(const EditResult& result,
                                       const std::optional<ChannelLayout>& channelLayout) {
  if (result.channelData.empty() || result.channelCount < 1) return nullptr;
  const auto channelCount = static_cast<std::uint32_t>(result.channelCount);
  precondition(channelCount <= result.channelData.size(), "every channel has an array");
  const std::size_t frames = result.channelData.front().size();
  if (!std::isfinite(result.sampleRate) || result.sampleRate <= 0 ||
      frames > std::numeric_limits<std::uint32_t>::max())
    return nullptr;
  AudioFormat format{.sampleRate = result.sampleRate, .channelCount = channelCount};
  if (channelCount >= 3 && channelLayout && channelLayout->labels.size() == channelCount)
    format.layout = channelLayout;
  auto buffer = PCMBuffer::make(format, static_cast<std::uint32_t>(frames));
  if (!buffer) return nullptr;
  buffer->setFrameLength(static_cast<std::uint32_t>(frames));
  for (std::uint32_t c = 0; c < channelCount; ++c) {
    precondition(result.channelData[c].size() == frames, "all channels have equal length");
    std::ranges::copy(result.channelData[c], buffer->channel(c));
  }
  return buffer;
}

}  // namespace orvane::EditOperations
