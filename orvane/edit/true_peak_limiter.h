#pragma once

#include <cstddef>
#include <memory>

#include "orvane/edit/edit_result.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// Lowers the audio around each true peak that exceeds the ceiling (linear, above 0), with a
/// look-ahead of 5 ms and a release of 100 ms, and scales all of it where that leaves a peak above
/// the ceiling: `core::TruePeakMeter` then reads no more than it below 96 kHz, the filter's tail
/// included. Peaks are looked for at four times the rate, whatever the rate is. Samples that are
/// not finite become 0. Whether anything changed: audio below the ceiling stays as it is, bit for
/// bit. Throws `Cancelled`, with part of the audio limited.
ORVANE_API bool applyTruePeakLimiter(MutablePlanarView audio, float ceiling, double sampleRate,
                                     const Execution& execution = {});

/// The same to a ceiling of 10^(ceilingDBTP ÷ 20).
ORVANE_API EditResult limitTruePeak(ChannelArrays channelData, double sampleRate,
                                    double ceilingDBTP, const Execution& execution = {});

/// The same for a programme that comes in slices, of any size, and is never all there: it goes
/// through twice, because only behind its end is it known by what all of it is scaled. Beside the
/// slice 5 ms of audio are held. With each limited frame multiplied by the first turn's
/// `lastScale`, the second one gives the samples of `applyTruePeakLimiter`.
class ORVANE_API TruePeakLimiter {
 public:
  TruePeakLimiter(double sampleRate, std::size_t channelCount, float ceiling);
  ~TruePeakLimiter();
  TruePeakLimiter(TruePeakLimiter&&) noexcept;
  TruePeakLimiter& operator=(TruePeakLimiter&&) noexcept;

  /// Takes the next slice and gives the next limited frames, as far as they are known. They may be
  /// changed and stand until the next call.
  MutablePlanarView process(PlanarView slice);
  /// Gives those that remain at the end of the programme.
  MutablePlanarView finish();

  // After `finish`.
  float lastScale() const noexcept;  ///< 1 where the ceiling holds
  bool hasChanged() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace orvane::EditOperations
