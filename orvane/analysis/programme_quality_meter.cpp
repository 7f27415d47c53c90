#include "orvane/analysis/programme_quality_meter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "orvane/platform/signal_kernels.h"
#include "orvane/platform/used_bits.h"

namespace orvane {
namespace {

/// 10^(kSilenceDBFS ÷ 20).
constexpr float kSilence = 0.001F;
constexpr double kNearlyInverted = -0.95;
/// Of more channels only neighbours are compared.
constexpr std::size_t kMostChannelsInPairs = 16;
/// A fixed count of samples, for which the compiler makes vector code.
constexpr std::size_t kBlock = 64;

/// Frames before the first sound of a channel, at most `limit`.
std::size_t silenceBefore(const float* samples, std::size_t limit) {
  std::size_t count = 0;
  while (count < limit && !(std::abs(samples[count]) > kSilence)) ++count;
  return count;
}

/// Frames behind the last sound of a channel of `frames`, at most `limit`.
std::size_t silenceBehind(const float* samples, std::size_t frames, std::size_t limit) {
  std::size_t count = 0;
  while (count < limit && !(std::abs(samples[frames - 1 - count]) > kSilence)) ++count;
  return count;
}

bool areInverted(const float* a, const float* b, std::size_t frames) {
  std::size_t i = 0;
  for (; i + kBlock <= frames; i += kBlock) {
    std::uint32_t differs = 0;
    for (std::size_t k = 0; k < kBlock; ++k) differs |= a[i + k] + b[i + k] != 0.0F ? 1U : 0U;
    if (differs != 0) return false;
  }
  for (; i < frames; ++i)
    if (a[i] + b[i] != 0.0F) return false;
  return true;
}

}  // namespace

ProgrammeQualityMeter::ProgrammeQualityMeter(double sampleRate, std::size_t channelCount,
                                             int storedBits)
    : gapFrames_(static_cast<std::int64_t>(
          std::max(1.0, std::min(sampleRate, 1e12) * ProgrammeQuality::kShortestGapSeconds))),
      storedBits_(storedBits),
      peaks_(channelCount) {
  for (std::size_t first = 0; first < channelCount; ++first)
    for (std::size_t second = first + 1; second < channelCount; ++second)
      if (channelCount <= kMostChannelsInPairs || second == first + 1)
        pairs_.push_back({first, second});
}

void ProgrammeQualityMeter::process(PlanarView piece, std::span<const float> peaks) {
  for (std::size_t i = 0; i < peaks_.size(); ++i) peaks_[i] = std::max(peaks_[i], peaks[i]);
  comparePairs(piece, peaks);
  if (storedBits_ > 0) findUsedBits(piece);
  const auto gap = static_cast<std::size_t>(gapFrames_);
  if (piece.frameCount() <= gap) {
    findSilence(piece, peaks);
    return;
  }
  // At low rates a gap fits into a piece.
  std::vector<float> shortPeaks(peaks.size());
  for (std::size_t begin = 0; begin < piece.frameCount(); begin += gap) {
    const auto part = piece.slice(begin, std::min(gap, piece.frameCount() - begin));
    for (std::size_t i = 0; i < shortPeaks.size(); ++i)
      shortPeaks[i] = SignalKernels::maximumMagnitude(part.channel(i), part.frameCount());
    findSilence(part, shortPeaks);
  }
}

void ProgrammeQualityMeter::findSilence(PlanarView piece, std::span<const float> peaks) {
  const std::size_t frames = piece.frameCount();
  std::size_t before = frames;
  std::size_t behind = frames;
  for (std::size_t i = 0; i < peaks.size(); ++i) {
    if (!(peaks[i] > kSilence)) continue;
    before = silenceBefore(piece.channel(i), before);
    behind = silenceBehind(piece.channel(i), frames, behind);
  }
  if (before < frames) {
    endSilence(static_cast<std::int64_t>(before));
    silence_ = static_cast<std::int64_t>(behind);
  } else {
    silence_ += static_cast<std::int64_t>(frames);
  }
  position_ += static_cast<std::int64_t>(frames);
}

/// A sound follows after `frames` more silent ones.
void ProgrammeQualityMeter::endSilence(std::int64_t frames) {
  const std::int64_t length = silence_ + frames;
  if (!isHeard_)
    result_.headSilenceFrames = length;
  else if (length >= gapFrames_ && (!result_.longestGap || length > result_.longestGap->frameCount))
    result_.longestGap = {position_ - silence_, length};
  isHeard_ = true;
}

void ProgrammeQualityMeter::comparePairs(PlanarView piece, std::span<const float> peaks) {
  std::erase_if(pairs_, [&](Candidate& pair) {
    if (peaks[pair.first] != peaks[pair.second]) return true;
    if (peaks[pair.first] == 0) return false;
    const float* a = piece.channel(pair.first);
    const float* b = piece.channel(pair.second);
    const std::size_t frames = piece.frameCount();
    pair.isIdentical = pair.isIdentical && std::memcmp(a, b, frames * sizeof(float)) == 0;
    pair.isInverted = pair.isInverted && areInverted(a, b, frames);
    return !pair.isIdentical && !pair.isInverted;
  });
}

void ProgrammeQualityMeter::findUsedBits(PlanarView piece) {
  constexpr std::size_t kFramesAtATime = 512;  // between two looks at whether the answer is known
  const std::uint32_t lowest = 1U << (32 - storedBits_);
  for (std::size_t first = 0; first < piece.frameCount(); first += kFramesAtATime) {
    if ((usedBits_ & lowest) != 0) return;
    const std::size_t count = std::min(kFramesAtATime, piece.frameCount() - first);
    for (std::size_t channel = 0; channel < piece.channelCount(); ++channel)
      usedBits_ |= usedBits(piece.channel(channel) + first, count);
  }
}

ProgrammeQuality ProgrammeQualityMeter::finish(double firstTwo) {
  if (!isHeard_) result_.headSilenceFrames = silence_;
  result_.tailSilenceFrames = silence_;
  const auto isSilent = [&](std::size_t channel) { return !(peaks_[channel] > kSilence); };
  for (std::size_t i = 0; i < peaks_.size(); ++i)
    if (isSilent(i)) result_.silentChannels.push_back(static_cast<std::int64_t>(i));
  for (const Candidate& pair : pairs_) {
    if (isSilent(pair.first)) continue;
    auto& pairs = pair.isIdentical ? result_.identicalChannels : result_.invertedChannels;
    pairs.push_back(
        {static_cast<std::int64_t>(pair.first), static_cast<std::int64_t>(pair.second)});
  }
  auto& inverted = result_.invertedChannels;
  if (firstTwo < kNearlyInverted &&
      std::ranges::find(inverted, ProgrammeQuality::ChannelPair{0, 1}) == inverted.end())
    inverted.insert(inverted.begin(), {0, 1});
  if (usedBits_ != 0)
    result_.bitDepth = {storedBits_, std::min(storedBits_, 32 - std::countr_zero(usedBits_))};
  return std::move(result_);
}

}  // namespace orvane
