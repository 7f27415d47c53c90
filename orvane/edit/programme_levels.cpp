#include "orvane/edit/programme_levels.h"

#include <algorithm>

#include "orvane/core/channel_order.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/stage_progress.h"

namespace orvane {

ProgrammeLevels measureLevels(const PCMBuffer& audio, const Execution& execution) {
  core::LoudnessProcessor meter(audio.sampleRate(), audio.channelCount(), std::nullopt,
                                core::ChannelOrder::bs1770Weights(audio));
  const PlanarView all = audio.view();
  StageProgress progress(execution.observer, "Measuring", 2 * all.frameCount());
  parallelFor(execution.threadCount, 2, [&](std::size_t task) {
    constexpr std::size_t kSlice = std::size_t{1} << 20;
    for (std::size_t first = 0; first < all.frameCount(); first += kSlice) {
      const PlanarView slice = all.slice(first, std::min(kSlice, all.frameCount() - first));
      if (task == 0)
        meter.process(slice);
      else
        meter.updateTruePeak(slice);
      progress.advance(slice.frameCount());
    }
  });
  meter.flushPartialBlock();
  return {.integratedLUFS = meter.integratedLUFS(), .truePeakDB = meter.truePeakDB()};
}

}  // namespace orvane
