#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "orvane/edit/edit_result.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// Subtracts from each channel's frames [startFrame, endFrame) their mean. A sample that is no
/// number has no mean to be brought to: nor then have the others of the range.
ORVANE_API EditResult removeDCOffset(ChannelArrays channelData, double sampleRate,
                                     std::int64_t startFrame, std::int64_t endFrame);
ORVANE_API void removeDCOffsetInPlace(MutablePlanarView audio, std::int64_t startFrame,
                                      std::int64_t endFrame);

/// The mean, summed in double and rounded once; 0 for no samples.
ORVANE_API float dcOffset(std::span<const float> samples);

/// The same of samples that come in pieces, of any size.
class ORVANE_API DCOffsetMeter {
 public:
  void process(std::span<const float> samples);
  float offset() const noexcept;

 private:
  std::vector<float> pending_{};  ///< of the block that has begun
  double sum_ = 0;                ///< of the blocks before
  std::int64_t blocks_ = 0;
};

/// Takes a channel's offset from the part of a programme that `slice` holds; `range` lies within
/// the programme.
ORVANE_API void subtractFromSlice(const ProgrammeSlice& slice, const FrameRange& range,
                                  std::span<const float> offsets);

}  // namespace orvane::EditOperations
