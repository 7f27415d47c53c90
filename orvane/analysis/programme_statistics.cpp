#include "orvane/analysis/programme_statistics.h"

#include <algorithm>
#include <cmath>

#include "orvane/analysis/clipping_run_finder.h"

namespace orvane {
namespace {

using SignalKernels::PairStatistics;
using SignalKernels::RunStatistics;

/// Longest piece measured at a time; short enough to be rescanned for clipping from the cache.
constexpr std::size_t kMaximumPieceFrames = 16384;

/// Below this √(energy product) a window has no correlation to speak of.
constexpr double kSilentCorrelationEnergy = 1e-10;

void add(RunStatistics& total, const RunStatistics& piece) {
  total.peak = std::max(total.peak, piece.peak);
  total.sum += piece.sum;
  total.sumOfSquares += piece.sumOfSquares;
}

float correlationOf(const PairStatistics& window) {
  const double d = std::sqrt(window.left.sumOfSquares * window.right.sumOfSquares);
  if (!(d > kSilentCorrelationEnergy)) return 0.0F;
  return static_cast<float>(std::clamp(window.dot / d, -1.0, 1.0));
}

/// Walks a stretch in pieces that end wherever a window or block of one of the figures ends.
class StatisticsPass {
 public:
  StatisticsPass(const ProgrammeView& programme, bool computeStereoWidth)
      : programme_(programme),
        channelCount_(programme.channelCount()),
        frames_(programme.frameCount),
        drFrames_(core::DRProcessor::blockFrames(programme.sampleRate)),
        clipping_(channelCount_),
        drBlock_(channelCount_) {
    result_.channels.resize(channelCount_);
    result_.drBlocks.resize(channelCount_);
    // Compared before it is made whole: a raw file may be declared at any rate.
    const double window = programme.sampleRate * 0.1;
    if (computeStereoWidth && channelCount_ >= 2 && window >= 1 &&
        window < static_cast<double>(frames_) + 1)
      windowFrames_ = static_cast<std::size_t>(window);
  }

  ProgrammeStatistics run(const std::function<void(std::size_t)>& onProgress) {
    for (std::size_t begin = 0; begin < frames_;) {
      const std::size_t end = pieceEnd(begin);
      measurePiece(begin, end - begin);
      closeWhatEndsAt(end);
      begin = end;
      if (onProgress) onProgress(begin);
    }
    clipping_.finish();
    result_.clippingRuns = std::move(clipping_.runs);
    result_.clippingRunCount = clipping_.count;
    return std::move(result_);
  }

 private:
  std::size_t pieceEnd(std::size_t begin) const {
    std::size_t end = std::min(begin + kMaximumPieceFrames, frames_);
    end = std::min(end, (begin / drFrames_ + 1) * drFrames_);
    if (windowFrames_ > 0) end = std::min(end, (begin / windowFrames_ + 1) * windowFrames_);
    return end;
  }

  void measurePiece(std::size_t begin, std::size_t frames) {
    std::uint32_t channel = 0;
    if (windowFrames_ > 0) {
      const auto pair = SignalKernels::pairStatistics(programme_.channels[0] + begin,
                                                      programme_.channels[1] + begin, frames);
      takePiece(0, begin, frames, pair.left);
      takePiece(1, begin, frames, pair.right);
      add(window_.left, pair.left);
      add(window_.right, pair.right);
      window_.dot += pair.dot;
      channel = 2;
    }
    for (; channel < channelCount_; ++channel)
      takePiece(channel, begin, frames,
                SignalKernels::runStatistics(programme_.channels[channel] + begin, frames));
  }

  void takePiece(std::uint32_t channel, std::size_t begin, std::size_t frames,
                 const RunStatistics& piece) {
    const float* samples = programme_.channels[channel] + begin;
    add(drBlock_[channel], piece);
    clipping_.process(channel, samples, begin, frames, piece.peak);
    if (!std::isfinite(piece.sumOfSquares))
      result_.nonFiniteSampleCount += std::count_if(
          samples, samples + frames, [](float sample) { return !std::isfinite(sample); });
  }

  void closeWhatEndsAt(std::size_t end) {
    if (end % drFrames_ == 0 || end == frames_) {
      const std::size_t frames = end - (end - 1) / drFrames_ * drFrames_;
      for (std::uint32_t channel = 0; channel < channelCount_; ++channel) {
        RunStatistics& block = drBlock_[channel];
        result_.drBlocks[channel].push_back(
            {block.sumOfSquares / static_cast<double>(frames), block.peak});
        add(result_.channels[channel], block);
        block = {};
      }
    }
    if (windowFrames_ > 0 && end % windowFrames_ == 0) {
      const auto index = static_cast<double>(result_.stereoWidthCurve.size());
      result_.stereoWidthCurve.push_back({(index + 1) * 0.1, correlationOf(window_)});
      window_ = {};
    }
  }

  const ProgrammeView& programme_;
  std::uint32_t channelCount_;
  std::size_t frames_;
  std::size_t drFrames_;
  std::size_t windowFrames_ = 0;  ///< 0: no stereo curve
  ClippingRunFinder clipping_;
  std::vector<RunStatistics> drBlock_;
  PairStatistics window_{};
  ProgrammeStatistics result_{};
};

}  // namespace

ProgrammeStatistics measureProgrammeStatistics(const ProgrammeView& programme,
                                               bool computeStereoWidth,
                                               const std::function<void(std::size_t)>& onProgress) {
  return StatisticsPass(programme, computeStereoWidth).run(onProgress);
}

}  // namespace orvane
