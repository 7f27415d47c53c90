#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "orvane/edit/edit_result.h"

namespace orvane::EditOperations::test {

/// Seeded noise within ±1, other in each channel.
inline ChannelArrays noise(std::size_t channelCount, std::size_t frames) {
  std::mt19937 random(20240611);
  std::uniform_real_distribution<float> sample(-1, 1);
  ChannelArrays channels(channelCount, std::vector<float>(frames));
  for (auto& channel : channels)
    for (float& x : channel) x = sample(random);
  return channels;
}

/// Ranges of a programme of so many frames: inside, at both ends, beyond them, empty, turned round.
inline std::vector<FrameRange> rangesOf(std::int64_t frames) {
  return {{frames / 3, frames / 2},
          {0, frames},
          {-5, frames / 4},
          {frames / 2, frames + 9},
          {-3, frames + 3},
          {frames / 2, frames / 2 + 1},
          {7, 7},
          {frames, frames + 4},
          {-9, -2},
          {frames / 2, frames / 3}};
}

/// Does an edit of slices to a programme that is cut into pieces of these sizes, in turn.
inline ChannelArrays inSlices(ChannelArrays channels, const std::vector<std::size_t>& sizes,
                              const std::function<void(const ProgrammeSlice&)>& edit) {
  std::vector<float*> pointers;
  for (auto& channel : channels) pointers.push_back(channel.data());
  const MutablePlanarView all(pointers, channels.front().size());
  std::size_t at = 0;
  for (std::size_t i = 0; at < all.frameCount(); ++i) {
    const std::size_t count = std::min(sizes[i % sizes.size()], all.frameCount() - at);
    edit({all.slice(at, count), static_cast<std::int64_t>(at)});
    at += count;
  }
  return channels;
}

/// Equal sample by sample, to `tolerance`.
inline void expectNear(const std::vector<float>& actual, const std::vector<float>& expected,
                       float tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i)
    ASSERT_NEAR(actual[i], expected[i], tolerance) << "frame " << i;
}

}  // namespace orvane::EditOperations::test
