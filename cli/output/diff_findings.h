#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/terminal/console.h"
#include "orvane/analysis/offline_diff_pipeline.h"

namespace orvane::cli {

/// What the comparison of two files has found, and how it is told.
struct DiffFindings {
  std::filesystem::path a{};
  std::filesystem::path b{};
  OfflineDiffPipeline::Result result{};
  OfflineDiffPipeline::Detail detail{};
  std::filesystem::path residualFile{};  ///< empty when it was not written
  std::optional<double> atMostDB{};      ///< what the residual's peak may be

  /// How deep the null is: "deep: what differs lies 72.1 dB below A".
  std::string nullInWords() const;

  /// "B comes 480 frames (10.000 ms) later than A"; absent where nothing looks shifted.
  std::optional<std::string> offsetInWords() const;

  /// Whether no sample of the residual lies above `atMostDB`, or none was asked for. One that is
  /// not finite lies above everything.
  bool isWithin() const;
  /// The sentence for when it is not.
  std::string missed() const;

  std::vector<std::string> warnings() const;

  std::string table(const Console& console) const;
  std::string json() const;
};

}  // namespace orvane::cli
