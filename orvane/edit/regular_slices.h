#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "orvane/platform/planar_view.h"

namespace orvane {

/// Cuts audio that comes in slices of any size into slices of one size; the last one may be
/// shorter.
class RegularSlices {
 public:
  RegularSlices(std::size_t channelCount, std::size_t frames)
      : frames_(frames), channels_(channelCount) {}

  /// Hands every slice that is complete to `take`.
  template <class Take>
  void process(PlanarView audio, Take take) {
    while (audio.frameCount() > 0) {
      const std::size_t count = std::min(audio.frameCount(), frames_ - held());
      if (count == frames_) {
        take(audio.slice(0, count));
      } else {
        for (std::size_t c = 0; c < channels_.size(); ++c)
          channels_[c].insert(channels_[c].end(), audio.channel(c), audio.channel(c) + count);
        if (held() == frames_) finish(take);
      }
      audio = audio.from(count);
    }
  }

  /// Hands on what remains.
  template <class Take>
  void finish(Take take) {
    if (held() == 0) return;
    std::vector<const float*> pointers;
    for (const auto& channel : channels_) pointers.push_back(channel.data());
    take(PlanarView(pointers, held()));
    for (auto& channel : channels_) channel.clear();
  }

 private:
  std::size_t held() const { return channels_.empty() ? 0 : channels_.front().size(); }

  std::size_t frames_;
  std::vector<std::vector<float>> channels_;
};

}  // namespace orvane
