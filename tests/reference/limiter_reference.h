#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "orvane/core/peak/polyphase_upsampler.h"

/// The limiter over a whole programme, step by step from its formulas.
namespace orvane::reference {

struct LimitedProgramme {
  std::vector<std::vector<float>> channels{};
  std::vector<double> gains{};  ///< per frame, before the last scaling
  float lastScale = 1;
  bool hasChanged = false;
};

/// Per frame, over all channels; the windows behind the last sample count as the last frame's.
inline std::vector<float> framePeaks(const std::vector<std::vector<float>>& channels) {
  constexpr std::size_t kHistory = core::PolyphaseUpsampler4x::kHistory;
  const std::size_t frames = channels.front().size();
  std::vector<float> largest(frames);
  for (const auto& channel : channels) {
    std::vector<float> work(kHistory);
    work.insert(work.end(), channel.begin(), channel.end());
    work.resize(work.size() + kHistory);
    std::vector<float> peaks(frames + kHistory);
    core::PolyphaseUpsampler4x::detectPerSamplePeaks(work.data(), peaks.size(), peaks.data());
    for (std::size_t i = 0; i < peaks.size(); ++i)
      largest[std::min(i, frames - 1)] = std::max(largest[std::min(i, frames - 1)], peaks[i]);
  }
  return largest;
}

inline std::vector<double> limiterGains(const std::vector<float>& peaks, double sampleRate,
                                        float ceiling) {
  const auto lookAhead = static_cast<std::size_t>(std::max(sampleRate * 0.005, 0.0));
  const double r = std::exp(-1.0 / (sampleRate * 0.1));
  std::vector<double> targets, gains;
  for (const float peak : peaks)
    targets.push_back(peak > ceiling ? static_cast<double>(ceiling) / static_cast<double>(peak)
                                     : 1.0);
  double envelope = 1;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    double gain = targets[i];
    for (std::size_t k = i; k < targets.size() && k - i <= lookAhead; ++k)
      gain = std::min(gain, targets[k]);
    envelope = gain < envelope ? gain : r * envelope + (1 - r) * gain;
    gains.push_back(envelope);
  }
  return gains;
}

inline LimitedProgramme limited(std::vector<std::vector<float>> channels, double sampleRate,
                                float ceiling) {
  LimitedProgramme result;
  for (auto& channel : channels)
    for (float& x : channel)
      if (!std::isfinite(x)) {
        x = 0;
        result.hasChanged = true;
      }
  const auto peaks = framePeaks(channels);
  result.gains = limiterGains(peaks, sampleRate, ceiling);
  for (auto& channel : channels)
    for (std::size_t i = 0; i < channel.size(); ++i)
      channel[i] *= static_cast<float>(result.gains[i]);
  const auto after = framePeaks(channels);
  const float largest = *std::max_element(after.begin(), after.end());
  if (largest > ceiling) {
    result.lastScale = ceiling / largest;
    for (auto& channel : channels)
      for (float& x : channel) x *= result.lastScale;
  }
  if (*std::max_element(peaks.begin(), peaks.end()) > ceiling || largest > ceiling)
    result.hasChanged = true;
  result.channels = std::move(channels);
  return result;
}

}  // namespace orvane::reference
