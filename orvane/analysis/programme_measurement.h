#pragma once

#include <cstddef>

#include "orvane/analysis/programme_statistics.h"
#include "orvane/analysis/programme_view.h"
#include "orvane/audio/audio_source.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/platform/progress.h"
#include "orvane/speech/detector/speech_input_maker.h"

namespace orvane {

/// A stretch that all meters have seen to its end.
struct ProgrammeMeasurement {
  core::LoudnessProcessor loudness;  ///< recording; without speech flags
  ProgrammeStatistics statistics{};
  std::size_t frameCount = 0;
};

/// Runs the loudness meter, the true-peak meter and the statistics over a stretch, on up to
/// `threadCount` threads. `observer` may be null; throws `Cancelled` when it asks for it.
ProgrammeMeasurement measureProgramme(const ProgrammeView& programme, bool computeStereoWidth,
                                      std::size_t threadCount, ProgressObserver* observer);

/// The same, to the bit, for the rest of a source of which only two slices are in memory at a time:
/// while one is measured the next one is read. `speechInput`, when not null, is fed too.
/// `dualMono` as in `ProgrammeView::of`.
ProgrammeMeasurement measureProgramme(AudioSource& source, bool computeStereoWidth, bool dualMono,
                                      std::size_t threadCount, SpeechInputMaker* speechInput);

}  // namespace orvane
