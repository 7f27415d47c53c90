#pragma once

#include <cstddef>
#include <vector>

namespace orvane::test {

/// Audio of a test: planar samples and their rate.
struct Programme {
  double sampleRate = 48000;
  std::vector<std::vector<float>> channels{};

  std::size_t frameCount() const { return channels.empty() ? 0 : channels.front().size(); }

  /// Each channel's sample at `offset`.
  std::vector<const float*> pointers(std::size_t offset = 0) const {
    std::vector<const float*> result;
    for (const auto& channel : channels) result.push_back(channel.data() + offset);
    return result;
  }
};

}  // namespace orvane::test
