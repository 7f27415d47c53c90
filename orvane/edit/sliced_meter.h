#pragma once

#include <cstddef>

#include "orvane/core/channel_order.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/edit/loudness_normalizer.h"
#include "orvane/edit/programme_levels.h"
#include "orvane/edit/regular_slices.h"
#include "orvane/platform/parallel.h"

namespace orvane {

/// Measures audio that comes in slices of any size, to the bit as audio in memory is measured.
class SlicedMeter {
 public:
  explicit SlicedMeter(const AudioFormat& format)
      : slices_(format.channelCount, EditOperations::kMeteredFrames),
        meter_(format.sampleRate, format.channelCount, std::nullopt,
               core::ChannelOrder::bs1770Weights(format)) {}

  core::LoudnessProcessor& meter() noexcept { return meter_; }

  /// Loudness alone.
  void process(PlanarView audio) {
    slices_.process(audio, [this](PlanarView slice) { meter_.process(slice); });
  }
  /// True peaks, too.
  void process(PlanarView audio, std::size_t threadCount) {
    slices_.process(audio, [&](PlanarView slice) { measure(slice, threadCount); });
  }

  // At the end, one of them.
  float integratedLUFS() {
    slices_.finish([this](PlanarView slice) { meter_.process(slice); });
    meter_.flushPartialBlock();
    return meter_.integratedLUFS();
  }
  ProgrammeLevels levels() {
    slices_.finish([this](PlanarView slice) { measure(slice, 1); });
    meter_.flushPartialBlock();
    return {.integratedLUFS = meter_.integratedLUFS(), .truePeakDB = meter_.truePeakDB()};
  }

 private:
  void measure(PlanarView slice, std::size_t threadCount) {
    parallelFor(threadCount, 2, [&](std::size_t task) {
      if (task == 0)
        meter_.process(slice);
      else
        meter_.updateTruePeak(slice);
    });
  }

  RegularSlices slices_;
  core::LoudnessProcessor meter_;
};

}  // namespace orvane
