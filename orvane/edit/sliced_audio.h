#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "orvane/platform/planar_view.h"

namespace orvane {

/// Audio that is gone through in order, slice by slice, as often as asked for: it is all in memory,
/// or made anew each time.
struct SlicedAudio {
  using Take = std::function<void(PlanarView)>;

  std::size_t channelCount = 0;
  std::int64_t frameCount = 0;
  std::function<void(const Take& take)> deliver{};

  SlicedAudio(std::size_t channels, std::int64_t frames, std::function<void(const Take&)> delivers)
      : channelCount(channels), frameCount(frames), deliver(std::move(delivers)) {}

  /// Of audio in memory; the view has to stay.
  SlicedAudio(PlanarView audio)
      : SlicedAudio(audio.channelCount(), static_cast<std::int64_t>(audio.frameCount()),
                    [audio](const Take& take) {
                      constexpr std::size_t kFrames = std::size_t{1} << 20;
                      for (std::size_t first = 0; first < audio.frameCount(); first += kFrames)
                        take(audio.slice(first, std::min(kFrames, audio.frameCount() - first)));
                    }) {}

  /// One of its channels.
  SlicedAudio channel(std::size_t index) const {
    return {1, frameCount, [index, whole = deliver](const Take& take) {
              whole([&](PlanarView slice) { take(slice.channels(index, 1)); });
            }};
  }
};

}  // namespace orvane
