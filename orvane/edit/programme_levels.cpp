#include "orvane/edit/programme_levels.h"

#include <algorithm>
#include <vector>

#include "orvane/core/channel_order.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/platform/stage_progress.h"

namespace orvane {

namespace {

/// Measures all of it in slices, `prepared` as the meters are to hear them, by two tasks.
template <class Prepare>
void meter(core::LoudnessProcessor& meter, PlanarView all, const Execution& execution,
           Prepare prepared) {
  StageProgress progress(execution.observer, "Measuring", 2 * all.frameCount());
  parallelFor(execution.threadCount, 2, [&](std::size_t task) {
    constexpr std::size_t kSlice = std::size_t{1} << 20;
    auto prepare = prepared;
    for (std::size_t first = 0; first < all.frameCount(); first += kSlice) {
      const PlanarView slice =
          prepare(all.slice(first, std::min(kSlice, all.frameCount() - first)));
      if (task == 0)
        meter.process(slice);
      else
        meter.updateTruePeak(slice);
      progress.advance(slice.frameCount());
    }
  });
  meter.flushPartialBlock();
}

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
  core::LoudnessProcessor loudness(audio.sampleRate(), audio.channelCount(), std::nullopt,
                                   core::ChannelOrder::bs1770Weights(audio));
  meter(loudness, audio.view(), execution, [](PlanarView slice) { return slice; });
  return {.integratedLUFS = loudness.integratedLUFS(), .truePeakDB = loudness.truePeakDB()};
}

BroadcastLoudness measureBroadcastLoudness(PlanarView audio, const AudioFormat& format,
                                           SampleEncoding stored, const Execution& execution) {
  core::LoudnessProcessor loudness(format.sampleRate, format.channelCount, std::nullopt,
                                   core::ChannelOrder::bs1770Weights(format));
  loudness.isRecording = true;
  meter(loudness, audio, execution, StoredSlice(stored, audio.channelCount()));
  BroadcastLoudness figures{.integratedLUFS = loudness.integratedLUFS(),
                            .rangeLU = loudness.loudnessRange(),
                            .maxTruePeakDB = loudness.truePeakDB()};
  // An absent figure lies below every other.
  for (const auto& entry : loudness.history()) {
    figures.maxMomentaryLUFS = std::max(figures.maxMomentaryLUFS, std::optional(entry.momentary));
    figures.maxShortTermLUFS = std::max(figures.maxShortTermLUFS, std::optional(entry.shortTerm));
  }
  return figures;
}

}  // namespace orvane
