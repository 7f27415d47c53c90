#include "orvane/analysis/programme_statistics.h"
#include "orvane/core/loudness/loudness_grid.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {
namespace {

using SignalKernels::PairStatistics;
using SignalKernels::RunStatistics;

/// Frames; longer than any programme.
constexpr double kLongestWindow = 0x1p40;

/// Below this √(energy product) a window has no correlation to speak of.
constexpr double kSilentCorrelationEnergy = 1e-10;

void add(RunStatistics& total, const RunStatistics& piece) {
  total.peak = std::max(total.peak, piece.peak);
  total.sum += piece.sum;
  total.sumOfSquares += piece.sumOfSquares;
}

void add(PairStatistics& total, const PairStatistics& piece) {
  add(total.left, piece.left);
  add(total.right, piece.right);
  total.dot += piece.dot;
}

float correlationOf(const PairStatistics& window) {
  const double d = std::sqrt(window.left.sumOfSquares * window.right.sumOfSquares);
  if (!(d > kSilentCorrelationEnergy)) return 0.0F;
  return static_cast<float>(std::clamp(window.dot / d, -1.0, 1.0));
}

/// The last frame of the cell of a grid in which `position` lies, and one.
std::size_t cellEnd(std::size_t position, std::size_t cellFrames) {
  return (position / cellFrames + 1) * cellFrames;
}

}  // namespace

ProgrammeStatisticsMeter::ProgrammeStatisticsMeter(double sampleRate, std::size_t channelCount,
                                                   bool computeStereoWidth, int storedBits)
    : drFrames_(core::DRProcessor::blockFrames(sampleRate)),
      clipping_(channelCount),
      quality_(sampleRate, channelCount, storedBits),
      drBlock_(channelCount),
      piecePeaks_(channelCount) {
  result_.channels.resize(channelCount);
  result_.drBlocks.resize(channelCount);
  // Bounded before it is made whole: a raw file may be declared at any rate.
  const double window = std::min(sampleRate * core::LoudnessGrid::kStepSeconds, kLongestWindow);
  if (computeStereoWidth && channelCount >= 2 && window >= 1)
    windowFrames_ = static_cast<std::size_t>(window);
}

void ProgrammeStatisticsMeter::process(PlanarView audio) {
  while (audio.frameCount() > 0) {
    const std::size_t frames = std::min(audio.frameCount(), pieceEnd() - position_);
    measurePiece(audio.slice(0, frames));
    audio = audio.from(frames);
    position_ += frames;
    if (position_ % drFrames_ == 0) closeBlock(drFrames_);
    if (windowFrames_ > 0 && position_ % windowFrames_ == 0) closeWindow();
  }
}

ProgrammeStatistics ProgrammeStatisticsMeter::finish() {
  if (position_ % drFrames_ != 0) closeBlock(position_ % drFrames_);
  clipping_.finish();
  result_.clippingRuns = std::move(clipping_.runs);
  result_.clippingRunCount = clipping_.count;
  add(stereo_, window_);
  result_.quality = quality_.finish(static_cast<double>(correlationOf(stereo_)));
  return std::move(result_);
}

/// Pieces end wherever a window or block of one of the figures ends.
std::size_t ProgrammeStatisticsMeter::pieceEnd() const {
  const std::size_t end = std::min(cellEnd(position_, kPieceFrames), cellEnd(position_, drFrames_));
  return windowFrames_ > 0 ? std::min(end, cellEnd(position_, windowFrames_)) : end;
}

void ProgrammeStatisticsMeter::measurePiece(PlanarView piece) {
  const std::size_t frames = piece.frameCount();
  std::size_t channel = 0;
  if (windowFrames_ > 0) {
    const auto pair = SignalKernels::pairStatistics(piece.channel(0), piece.channel(1), frames);
    takePiece(0, piece.channel(0), frames, pair.left);
    takePiece(1, piece.channel(1), frames, pair.right);
    add(window_, pair);
    channel = 2;
  }
  for (; channel < drBlock_.size(); ++channel) {
    const float* samples = piece.channel(channel);
    takePiece(channel, samples, frames, SignalKernels::runStatistics(samples, frames));
  }
  quality_.process(piece, piecePeaks_);
}

void ProgrammeStatisticsMeter::takePiece(std::size_t channel, const float* samples,
                                         std::size_t frames, const RunStatistics& piece) {
  add(drBlock_[channel], piece);
  piecePeaks_[channel] = piece.peak;
  clipping_.process(static_cast<std::uint32_t>(channel), samples, position_, frames, piece.peak);
  if (!std::isfinite(piece.sumOfSquares))
    result_.nonFiniteSampleCount += std::count_if(
        samples, samples + frames, [](float sample) { return !std::isfinite(sample); });
}

void ProgrammeStatisticsMeter::closeBlock(std::size_t frames) {
  for (std::size_t channel = 0; channel < drBlock_.size(); ++channel) {
    RunStatistics& block = drBlock_[channel];
    result_.drBlocks[channel].push_back(
        {block.sumOfSquares / static_cast<double>(frames), block.peak});
    add(result_.channels[channel], block);
    block = {};
  }
}

void ProgrammeStatisticsMeter::closeWindow() {
  const auto index = static_cast<std::int64_t>(result_.stereoWidthCurve.size());
  result_.stereoWidthCurve.push_back({core::LoudnessGrid::stepEnd(index), correlationOf(window_)});
  add(stereo_, window_);
  window_ = {};
}

}  // namespace orvane
