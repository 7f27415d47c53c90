#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/frame_range.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// What loudness normalisation comes to.
struct NormalizationOutcome {
  double loudnessBefore = 0;  ///< integrated, LUFS; minus infinity for silence
  double loudnessAfter = 0;
  int limiterPasses = 0;  ///< 1 … 3

  bool operator==(const NormalizationOutcome&) const = default;
};

/// Brings the integrated loudness to `targetLUFS` and limits true peaks to `ceilingDB`. Limiting
/// makes it softer again, so gain and limiter are repeated: until the target is met to 0.1 LU, or
/// until a pass is worse than the best by more than 0.05 LU, three times at most. The result is
/// that of the best pass: where peaks are high, the closest to the target that the ceiling lets
/// through. Silence is limited only. `weights`: loudness weights per channel; without them the
/// customary ones for that number of channels. Throws `Cancelled`.
ORVANE_API EditResult normalizeLUFS(ChannelArrays channelData, double sampleRate, double targetLUFS,
                                    double ceilingDB,
                                    const std::optional<std::vector<float>>& weights = std::nullopt,
                                    const Execution& execution = {});
ORVANE_API NormalizationOutcome normalizeLUFSInPlace(
    MutablePlanarView audio, double sampleRate, double targetLUFS, double ceilingDB,
    const std::optional<std::vector<float>>& weights = std::nullopt,
    const Execution& execution = {});

/// A programme that is brought to a loudness, wherever its samples are: what the loop above does to
/// it.
class ORVANE_API NormalizedProgramme {
 public:
  virtual ~NormalizedProgramme();

  virtual double integratedLUFS() = 0;
  virtual void changeLevel(double gainDB) = 0;
  virtual void limit() = 0;
  virtual void remember() = 0;  ///< as it is now
  virtual void restore() = 0;   ///< as it was then
};

ORVANE_API NormalizationOutcome normalize(NormalizedProgramme& programme, double targetLUFS);

/// Frames that the meter takes at a time: it filters stretches of them side by side, and another
/// cut would show in the last bits of its figures.
inline constexpr std::size_t kMeteredFrames = std::size_t{1} << 20;

/// A gain, then the limiter.
ORVANE_API EditResult normalizeByGain(ChannelArrays channelData, double sampleRate, double gainDB,
                                      double ceilingDB, const Execution& execution = {});

/// The gain of a stretch of frames.
struct RangeGain {
  FrameRange range{};
  double gainDB = 0;

  bool operator==(const RangeGain&) const = default;
};

/// The gain of each range, one after the other: where they overlap their decibels add up. Then the
/// limiter, once.
ORVANE_API EditResult levelRangesThenLimit(ChannelArrays channelData, double sampleRate,
                                           std::span<const RangeGain> gains, double ceilingDBTP,
                                           const Execution& execution = {});

}  // namespace orvane::EditOperations
