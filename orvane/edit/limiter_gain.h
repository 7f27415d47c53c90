#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane::EditOperations {

/// The gain of a limiter, from the peaks of a programme's frames. It falls 5 ms before a peak, at
/// once and far enough for it, and comes back with a time constant of 100 ms:
///   target      1, or ceiling ÷ peak where the peak exceeds the ceiling
///   look-ahead  the least target of a frame and of the floor(0.005 · rate) frames behind it
///   gain        the look-ahead where that is less than the gain before, else
///               r · gain before + (1 − r) · look-ahead, with r = exp(−1 ÷ (0.1 · rate))
/// It is carried on in double: in single precision the release comes to a stand at 0.99986 for
/// ever. Pieces of any size give the same gains.
class ORVANE_TESTING_API LimiterGain {
 public:
  LimiterGain(double sampleRate, float ceiling);

  /// Takes the peaks of the next frames, none below the ceiling, and gives the gains, in order, of
  /// all frames for which they are known: they lag behind by the look-ahead and one frame. They
  /// stand until the next call.
  std::span<const float> push(std::span<const float> peaks);

  /// The gains of all remaining frames; `peakBehindTheEnd` counts as one of the last frame's.
  std::span<const float> finish(float peakBehindTheEnd);

  /// Whether a frame with a known gain, or one that its look-ahead reached, exceeded the ceiling.
  bool hasLimited() const noexcept { return hasLimited_; }

 private:
  std::span<const float> take(std::size_t count);
  void takeBlock(std::span<const float> peaks, std::span<float> gains);
  void slideMaximum(std::span<const float> peaks, std::size_t count);
  void follow(std::span<float> gains);
  void release(std::span<float> gains);

  double ceiling_;
  double retention_;  ///< r
  std::size_t lookAhead_;
  double gain_ = 1;
  bool hasLimited_ = false;
  std::vector<float> pending_{};  ///< peaks of the frames whose gains are not known yet
  std::vector<float> maxima_{};   ///< look-ahead peaks of one block
  std::vector<float> gains_{};
};

}  // namespace orvane::EditOperations
