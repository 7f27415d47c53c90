#pragma once

#include <cstddef>

#include "orvane/analysis/programme_statistics.h"
#include "orvane/analysis/programme_view.h"
#include "orvane/core/loudness_processor.h"
#include "orvane/platform/progress.h"

namespace orvane {

/// A stretch that all meters have seen to its end.
struct ProgrammeMeasurement {
  core::LoudnessProcessor loudness;  ///< recording; without speech flags
  ProgrammeStatistics statistics{};
};

/// Runs the loudness meter, the true-peak meter and the statistics over a stretch, on up to
/// `threadCount` threads. `observer` may be null; throws `Cancelled` when it asks for it.
ProgrammeMeasurement measureProgramme(const ProgrammeView& programme, bool computeStereoWidth,
                                      std::size_t threadCount, ProgressObserver* observer);

}  // namespace orvane
