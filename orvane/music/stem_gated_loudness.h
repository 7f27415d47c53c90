#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "orvane/music/music_analysis_result.h"
#include "orvane/platform/export.h"

namespace orvane {

/// How loud a programme is while a stem is present and while it is not. Has a JSON form, and so
/// have its pairs.
struct ORVANE_API StemGatedLoudness {
  /// Shorter parts have no loudness worth reporting.
  static constexpr double kMinimumSeconds = 10;
  static constexpr const char* kSource =
      "Orvane BS.1770-4, gated by Apple Music Understanding stem presence";

  struct Pair {
    std::optional<float> presentLUFS{};  ///< absent below `kMinimumSeconds`
    std::optional<float> absentLUFS{};   ///< absent below `kMinimumSeconds`
    std::optional<float> balanceLU{};    ///< present − absent, when both are finite
    double presentSeconds = 0;           ///< of the blocks that pass the gates
    double absentSeconds = 0;

    bool operator==(const Pair&) const = default;
  };

  Pair vocal{};
  Pair drums{};
  std::string source{};

  bool operator==(const StemGatedLoudness&) const = default;

  /// From the powers of a file's gating blocks, one per step of `blockDuration` seconds. Each half
  /// is gated on its own by BS.1770-5, Annex 1. A stem without a lane is absent throughout. No
  /// value without blocks or without any stem.
  static std::optional<StemGatedLoudness> compute(std::span<const double> blockPowers,
                                                  double blockDuration,
                                                  const MusicAnalysisResult& analysis);

  /// For each block whether its centre lies in one of the spans. The spans are walked in the order
  /// of their starts, each until its end is passed: of two that overlap, the later one counts only
  /// from where the earlier one ends.
  static std::vector<bool> presenceMask(std::size_t blockCount, double blockDuration,
                                        std::span<const MusicAnalysisResult::TimeSpan> ranges);

  static Pair pair(std::span<const double> blockPowers, double blockDuration,
                   std::span<const MusicAnalysisResult::TimeSpan> ranges);
};

}  // namespace orvane
