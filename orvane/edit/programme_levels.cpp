#include "orvane/edit/programme_levels.h"

#include <algorithm>
#include <vector>

#include "orvane/edit/sliced_meter.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/platform/stage_progress.h"

namespace orvane {

namespace {

/// Samples as they come back from the file.
class StoredSlice {
 public:
  StoredSlice(SampleEncoding encoding, std::size_t channelCount)
      : encoding_(encoding), floats_(channelCount), pointers_(channelCount) {}

  PlanarView operator()(PlanarView slice) {
    bytes_.resize(slice.frameCount() * slice.channelCount() * encoding_.bytes);
    interleaveFromFloat(encoding_, slice, bytes_.data());
    for (std::size_t channel = 0; channel < floats_.size(); ++channel) {
      floats_[channel].resize(slice.frameCount());
      pointers_[channel] = floats_[channel].data();
    }
    const MutablePlanarView stored(pointers_, slice.frameCount());
    deinterleaveToFloat(encoding_, bytes_.data(), stored);
    return stored;
  }

 private:
  SampleEncoding encoding_;
  std::vector<std::byte> bytes_{};
  std::vector<std::vector<float>> floats_;
  std::vector<float*> pointers_;
};

}  // namespace

ProgrammeLevels measureLevels(const PCMBuffer& audio, const Execution& execution) {
  SlicedMeter meter(audio.format());
  StageProgress progress(execution.observer, "Measuring", audio.frameLength());
  SlicedAudio(audio.view()).deliver([&](PlanarView slice) {
    meter.process(slice, execution.threadCount);
    progress.advance(slice.frameCount());
  });
  return meter.levels();
}

BroadcastLoudness measureBroadcastLoudness(const SlicedAudio& audio, const AudioFormat& format,
                                           SampleEncoding stored, const Execution& execution) {
  SlicedMeter meter(format);
  meter.meter().isRecording = true;
  StoredSlice asStored(stored, format.channelCount);
  StageProgress progress(execution.observer, "Measuring",
                         static_cast<std::size_t>(audio.frameCount));
  audio.deliver([&](PlanarView slice) {
    meter.process(asStored(slice), execution.threadCount);
    progress.advance(slice.frameCount());
  });
  const ProgrammeLevels levels = meter.levels();
  BroadcastLoudness figures{.integratedLUFS = levels.integratedLUFS,
                            .rangeLU = meter.meter().loudnessRange(),
                            .maxTruePeakDB = levels.truePeakDB};
  // An absent figure lies below every other.
  for (const auto& entry : meter.meter().history()) {
    figures.maxMomentaryLUFS = std::max(figures.maxMomentaryLUFS, std::optional(entry.momentary));
    figures.maxShortTermLUFS = std::max(figures.maxShortTermLUFS, std::optional(entry.shortTerm));
  }
  return figures;
}

}  // namespace orvane
