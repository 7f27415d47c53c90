#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/core/channel_order.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane {

/// A stretch of a buffer to be measured. Owns no samples.
struct ProgrammeView {
  std::vector<const float*> channels{};  ///< each channel's first sample of the stretch
  std::size_t frameCount = 0;
  double sampleRate = 0;  ///< Hz
  /// Loudness weights by the buffer's layout; absent for the customary ones.
  std::optional<std::vector<float>> weights{};

  std::uint32_t channelCount() const noexcept {
    return static_cast<std::uint32_t>(channels.size());
  }

  /// The frames [start, start + count) of a buffer, which must be there. With `dualMono` a single
  /// channel stands for two equal loudspeakers: its power counts twice before any gate sees it,
  /// unless it is an LFE channel.
  static ProgrammeView of(const PCMBuffer& buffer, std::size_t start, std::size_t count,
                          bool dualMono) {
    ProgrammeView view{.channels = buffer.constChannels(),
                       .frameCount = count,
                       .sampleRate = buffer.sampleRate(),
                       .weights = core::ChannelOrder::bs1770Weights(buffer)};
    for (const float*& channel : view.channels) channel += start;
    const bool counts = !view.weights || view.weights->front() > 0;
    if (dualMono && view.channels.size() == 1 && counts) view.weights = {2.0F};
    return view;
  }

  static ProgrammeView of(const PCMBuffer& buffer, bool dualMono) {
    return of(buffer, 0, buffer.frameLength(), dualMono);
  }
};

}  // namespace orvane
