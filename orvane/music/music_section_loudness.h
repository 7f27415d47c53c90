#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "orvane/music/music_analysis_result.h"
#include "orvane/platform/export.h"

namespace orvane {

/// The loudness of each section of a piece, and how far it is from the middle one. Has a JSON form,
/// and so have its entries.
struct ORVANE_API MusicSectionLoudness {
  /// Shorter sections have no loudness worth reporting.
  static constexpr double kMinimumSeconds = 3;

  struct Entry {
    std::int64_t index = 0;  ///< of the section, from 0
    MusicAnalysisResult::TimeSpan span{};
    std::optional<float> integratedLUFS{};
    std::optional<float> deviationLU{};  ///< from the median

    bool operator==(const Entry&) const = default;
  };

  std::vector<Entry> entries{};  ///< one per section, in their order
  std::optional<float> medianLUFS{};

  bool operator==(const MusicSectionLoudness&) const = default;

  /// Of the entries with a value, the earliest of equals; null when there is none.
  const Entry* loudest() const noexcept;
  const Entry* quietest() const noexcept;

  /// From the powers of a file's gating blocks, one per step of `blockDuration` seconds; each
  /// section is gated on its own by BS.1770-5, Annex 1. No value without blocks or sections.
  static std::optional<MusicSectionLoudness> compute(
      std::span<const double> blockPowers, double blockDuration,
      std::span<const MusicAnalysisResult::TimeSpan> sections);
};

}  // namespace orvane
