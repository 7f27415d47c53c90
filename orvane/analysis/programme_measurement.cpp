#include "orvane/analysis/programme_measurement.h"

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "orvane/platform/parallel.h"
#include "orvane/platform/stage_progress.h"

namespace orvane {
namespace {

/// Frames that a meter takes at a time, between two looks at the observer: about a minute and a
/// half at 48 kHz. Longer pieces measure no faster.
constexpr std::size_t kSliceFrames = std::size_t{1} << 22;

using Channels = std::vector<const float*>;

/// Offers a stretch to a meter slice by slice.
void inSlices(const ProgrammeView& programme, StageProgress& progress,
              const std::function<void(const Channels&, std::size_t)>& meter) {
  Channels channels = programme.channels;
  for (std::size_t offset = 0; offset < programme.frameCount; offset += kSliceFrames) {
    const std::size_t count = std::min(kSliceFrames, programme.frameCount - offset);
    meter(channels, count);
    for (const float*& channel : channels) channel += count;
    progress.advance(count);
  }
}

}  // namespace

ProgrammeMeasurement measureProgramme(const ProgrammeView& programme, bool computeStereoWidth,
                                      std::size_t threadCount, ProgressObserver* observer) {
  ProgrammeMeasurement measurement{
      .loudness = core::LoudnessProcessor(programme.sampleRate, programme.channelCount(),
                                          std::nullopt, programme.weights)};
  measurement.loudness.isRecording = true;
  StageProgress progress(observer, "Measuring", 3 * programme.frameCount);
  // The longest first, so that the others fill the second thread beside it.
  const std::array<std::function<void()>, 3> tasks = {
      [&] {
        inSlices(programme, progress, [&](const Channels& channels, std::size_t count) {
          measurement.loudness.process(channels, count);
        });
      },
      [&] {
        inSlices(programme, progress, [&](const Channels& channels, std::size_t count) {
          measurement.loudness.updateTruePeak(channels, count);
        });
      },
      [&] {
        std::size_t reported = 0;
        measurement.statistics =
            measureProgrammeStatistics(programme, computeStereoWidth, [&](std::size_t framesDone) {
              if (framesDone - reported < kSliceFrames && framesDone < programme.frameCount) return;
              progress.advance(framesDone - reported);
              reported = framesDone;
            });
      }};
  parallelFor(threadCount, tasks.size(), [&](std::size_t task) { tasks[task](); });
  measurement.loudness.flushPartialBlock();
  return measurement;
}

}  // namespace orvane
