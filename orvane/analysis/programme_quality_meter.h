#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "orvane/analysis/programme_quality.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Looks a programme over, piece by piece, for what `ProgrammeQuality` tells. A piece of ordinary
/// audio costs a look at its edges; the answers do not depend on how the programme is cut.
class ORVANE_TESTING_API ProgrammeQualityMeter {
 public:
  /// `storedBits`: of integer samples, at most 32; 0 for all others.
  ProgrammeQualityMeter(double sampleRate, std::size_t channelCount, int storedBits);

  /// The next frames, and the largest magnitude of each of their channels.
  void process(PlanarView piece, std::span<const float> peaks);

  /// Ends the programme. `firstTwo`: the correlation of the first two channels, 0 when unknown.
  ProgrammeQuality finish(double firstTwo);

 private:
  /// Two channels that may still prove to be the same, or each other's negative.
  struct Candidate {
    std::size_t first = 0;
    std::size_t second = 0;
    bool isIdentical = true;
    bool isInverted = true;
  };

  void findSilence(PlanarView piece, std::span<const float> peaks);
  void endSilence(std::int64_t frames);
  void comparePairs(PlanarView piece, std::span<const float> peaks);
  void findUsedBits(PlanarView piece);

  std::int64_t gapFrames_;
  int storedBits_;
  std::int64_t position_ = 0;  ///< frames seen
  std::int64_t silence_ = 0;   ///< silent frames at the end of them
  bool isHeard_ = false;
  std::vector<float> peaks_;
  std::vector<Candidate> pairs_{};
  std::uint32_t usedBits_ = 0;  ///< of the samples as 32-bit integers
  ProgrammeQuality result_{};
};

}  // namespace orvane
