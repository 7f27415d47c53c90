#pragma once

#include <cstddef>

#include "orvane/analysis/programme_statistics.h"
#include "orvane/analysis/programme_view.h"
#include "orvane/audio/audio_source.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/platform/execution.h"
#include "orvane/speech/detector/speech_detection.h"

namespace orvane {

/// A stretch that all meters have seen to its end.
struct ProgrammeMeasurement {
  core::LoudnessProcessor loudness;  ///< recording; without speech flags
  ProgrammeStatistics statistics{};
  std::size_t frameCount = 0;
};

/// Runs the loudness meter, the true-peak meter and the statistics over a stretch; the stage is
/// "Measuring". `storedBits` as in `ProgrammeQualityMeter`. Throws `Cancelled` when the observer
/// asks for it.
ProgrammeMeasurement measureProgramme(const ProgrammeView& programme, bool computeStereoWidth,
                                      const Execution& execution, int storedBits = 0);

/// The same, to the bit, for the rest of a source of which only a few slices are in memory at a
/// time: while some are measured the next one is read. `speech`, when not null, detects in it, too,
/// short of ending it. `dualMono` as in `ProgrammeView::of`.
ProgrammeMeasurement measureProgramme(AudioSource& source, bool computeStereoWidth, bool dualMono,
                                      const Execution& execution, SpeechDetection* speech);

/// Bits of a source's integer samples; 0 where it has none.
int storedBits(const AudioSource& source);

}  // namespace orvane
