#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "orvane/core/channel_order.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane {

/// A stretch of a buffer to be measured. Owns no samples.
struct ProgrammeView {
  PlanarView audio{};
  double sampleRate = 0;  ///< Hz
  /// Loudness weights by the buffer's layout; absent for the customary ones.
  std::optional<std::vector<float>> weights{};

  /// The frames [start, start + count) of a buffer, which must be there. With `dualMono` a single
  /// channel stands for two equal loudspeakers: its power counts twice before any gate sees it,
  /// unless it is an LFE channel.
  static ProgrammeView of(const PCMBuffer& buffer, std::size_t start, std::size_t count,
                          bool dualMono) {
    ProgrammeView view{.audio = buffer.view().slice(start, count),
                       .sampleRate = buffer.sampleRate(),
                       .weights = core::ChannelOrder::bs1770Weights(buffer)};
    const bool counts = !view.weights || view.weights->front() > 0;
    if (dualMono && buffer.channelCount() == 1 && counts) view.weights = {2.0F};
    return view;
  }

  static ProgrammeView of(const PCMBuffer& buffer, bool dualMono) {
    return of(buffer, 0, buffer.frameLength(), dualMono);
  }
};

}  // namespace orvane
