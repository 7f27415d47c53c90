#include "orvane/edit/non_speech_expander.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>

#include "orvane/edit/channel_arrays.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane::EditOperations {
namespace {

/// Frames of a piece at most, each with a gain of its own.
constexpr std::int64_t kLongest = 1024;

/// What is kept of a distance from one frame to the next.
double retention(double sampleRate, double milliseconds) {
  return std::exp(-1 / (sampleRate * std::max(milliseconds / 1000, 0.0001)));
}

}  // namespace

std::int64_t speechBlockFrames(double sampleRate) {
  return std::max<std::int64_t>(std::llround(0.1 * sampleRate), 1);
}

std::vector<bool> speechBlocks(std::span<const FrameRange> speech, std::int64_t frameCount,
                               std::int64_t blockFrames) {
  std::vector<bool> blocks(static_cast<std::size_t>((frameCount + blockFrames - 1) / blockFrames));
  for (const FrameRange& each : speech) {
    const FrameRange range = each.clamped(frameCount);
    if (range.isEmpty()) continue;
    const auto first = blocks.begin() + range.start / blockFrames;
    std::fill(first, blocks.begin() + (range.end - 1) / blockFrames + 1, true);
  }
  return blocks;
}

NonSpeechExpander::NonSpeechExpander(double sampleRate, std::vector<bool> speechMask,
                                     std::int64_t blockFrames, const NonSpeechExpansion& expansion)
    : speechMask_(std::move(speechMask)),
      blockFrames_(blockFrames),
      speechGain_(std::pow(10.0, expansion.makeupDB / 20)),
      otherGain_(speechGain_ * std::pow(10.0, std::min(expansion.reductionDB, 0.0) / 20)),
      attack_(retention(sampleRate, expansion.attackMs)),
      release_(retention(sampleRate, expansion.releaseMs)),
      gain_(targetOf(0)) {}

double NonSpeechExpander::targetOf(std::int64_t block) const {
  const auto index = static_cast<std::size_t>(block);
  return index < speechMask_.size() && speechMask_[index] ? speechGain_ : otherGain_;
}

void NonSpeechExpander::process(MutablePlanarView slice) {
  if (blockFrames_ < 1 || speechMask_.empty()) return;
  // Pieces as long as the room for their gains, none of them over the edge of a block.
  for (auto rest = slice; rest.frameCount() > 0;) {
    const std::int64_t block = frame_ / blockFrames_;
    const auto frames = std::min({static_cast<std::int64_t>(rest.frameCount()), kLongest,
                                  blockFrames_ - frame_ % blockFrames_});
    const auto count = static_cast<std::size_t>(frames);
    processPiece(rest.slice(0, count), targetOf(block));
    rest = rest.from(count);
    frame_ += frames;
  }
}

/// Of one block.
void NonSpeechExpander::processPiece(MutablePlanarView piece, double target) {
  std::array<float, kLongest> room;
  const auto gains = std::span(room).first(piece.frameCount());
  const double kept = gain_ <= target ? attack_ : release_;  // it never passes its target
  for (std::size_t i = 0; i < gains.size(); ++i) {
    const double next = target + (gain_ - target) * kept;
    if (next == gain_) {  // as close as it ever comes
      std::fill(gains.begin() + static_cast<std::ptrdiff_t>(i), gains.end(),
                static_cast<float>(gain_));
      break;
    }
    gain_ = next;
    gains[i] = static_cast<float>(gain_);
  }
  for (std::size_t c = 0; c < piece.channelCount(); ++c)
    SampleArithmetic::multiply(piece.samples(c), gains.data());
}

EditResult expandNonSpeech(ChannelArrays channelData, double sampleRate,
                           const std::vector<bool>& speechMask, std::int64_t blockFrames,
                           const NonSpeechExpansion& expansion) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    expandNonSpeechInPlace(audio, sampleRate, speechMask, blockFrames, expansion);
  });
}

void expandNonSpeechInPlace(MutablePlanarView audio, double sampleRate,
                            const std::vector<bool>& speechMask, std::int64_t blockFrames,
                            const NonSpeechExpansion& expansion) {
  NonSpeechExpander(sampleRate, speechMask, blockFrames, expansion).process(audio);
}

}  // namespace orvane::EditOperations
