#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Several files as one programme, from what was measured of each.
///
/// The gates see the gating blocks of all files, the loudness range all their 3 s windows, also
/// those across a joint, so that the figures are those of the files joined; what is left of a file
/// behind its last whole 100 ms is left out. The dynamic range is the rounded mean of the files'.
/// The channels' figures are there where all files have as many, speech where it was looked for in
/// all of them.
class ORVANE_API AlbumMeasurement {
 public:
  /// The next file; its audio is not needed.
  void add(const OfflineAnalysisPipeline::Result& result,
           const OfflineAnalysisPipeline::AnalysisDetail& detail);

  std::size_t fileCount() const noexcept { return fileCount_; }

  /// The figures of everything added, at least one file; without curves and what is one file's own.
  OfflineAnalysisPipeline::Result figures() const;

 private:
  void addSpeech(const OfflineAnalysisPipeline::Result& result, const std::vector<double>& powers);
  void addChannels(const OfflineAnalysisPipeline::Result& result);

  struct Speech {
    double power = 0;         ///< sum of the gating blocks'
    std::int64_t blocks = 0;  ///< above the absolute gate
    std::int64_t steps = 0;
    std::int64_t allSteps = 0;
  };
  struct Channel {
    double power = 0;   ///< mean square × seconds
    double offset = 0;  ///< mean × seconds
    bool isClipped = false;
    float peakDB = 0;
  };

  std::size_t fileCount_ = 0;
  double seconds_ = 0;
  std::vector<double> stepPowers_{};  ///< of each 100 ms
  std::optional<Speech> speech_{};
  std::vector<Channel> channels_{};
  std::int64_t dynamicRangeSum_ = 0;
  OfflineAnalysisPipeline::Result highest_{};  ///< its levels
};

}  // namespace orvane
