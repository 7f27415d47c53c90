#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/time_range.h"
#include "orvane/platform/export.h"
#include "orvane/platform/uuid.h"

namespace orvane {

/// A stretch of a file that counts as dialogue. It remembers the span that the speech detector gave
/// it, and so tells whether somebody has changed it since. All times are seconds from the start of
/// the file; all blocks are those of the speech history, one flag per 100 ms.
///
/// Times and durations given to the operations below are finite; anything else is a programming
/// error.
struct ORVANE_API DialogueRegion {
  /// Length of one history block, seconds.
  static constexpr double blockDuration = 0.1;
  /// An edge that moved by less than this (seconds) has not been moved: it only passed through a
  /// file or an editor that rounds.
  static constexpr double pristineTolerance = 0.001;

  /// Indices of blocks, both included.
  struct BlockRange {
    std::int64_t lowerBound = 0;
    std::int64_t upperBound = 0;

    bool operator==(const BlockRange&) const = default;
  };

  UUID id{};  ///< kept across edits and files
  double start = 0;
  double end = 0;  ///< not before `start`, unless a file said otherwise
  std::optional<std::string> label{};
  /// The span the detector gave; absent for a region that was drawn or imported.
  std::optional<ClosedTimeRange> vadOrigin{};

  DialogueRegion() = default;
  /// Swapped edges are put right.
  DialogueRegion(const UUID& id, double start, double end,
                 std::optional<std::string> label = std::nullopt,
                 std::optional<ClosedTimeRange> vadOrigin = std::nullopt);

  bool operator==(const DialogueRegion&) const = default;

  double duration() const noexcept { return end - start; }

  // Exactly one of these holds.
  bool isManual() const noexcept { return !vadOrigin; }
  bool isPristineVAD() const noexcept;
  bool isModifiedVAD() const noexcept { return vadOrigin && !isPristineVAD(); }

  /// The blocks, of `totalBlocks`, that the region touches, if only in part; absent when there are
  /// none.
  std::optional<BlockRange> blockRange(double blockDuration, std::int64_t totalBlocks) const;

  /// One flag per block, true where a region touches it. Empty when `totalBlocks` is below 1.
  static std::vector<bool> toHistory(const std::vector<DialogueRegion>& regions,
                                     std::int64_t totalBlocks,
                                     double blockDuration = DialogueRegion::blockDuration);

  /// One fresh, pristine region per run of true flags, by ascending start.
  static std::vector<DialogueRegion> fromHistory(
      const std::vector<bool>& history, double blockDuration = DialogueRegion::blockDuration);

  /// The flags for a range of frames of the file. The start is rounded to the nearest block and the
  /// length up, so that a range inside the file never gets an empty history. Absent for an empty
  /// history or range, a rate that is not above 0, or a range that starts behind the last block.
  static std::optional<std::vector<bool>> sliceHistory(
      const std::vector<bool>& history, std::int64_t startFrame, std::int64_t frameCount,
      double sampleRate, double blockDuration = DialogueRegion::blockDuration);
};

/// Where a set of regions comes from.
enum class DialogueRegionSource {
  silero,      ///< from the speech detector, "silero"
  userEdited,  ///< changed by the user, "user-edited"
  imported,    ///< read in from elsewhere, "imported"
};

/// The text that stands for the source in files.
ORVANE_API std::string_view rawValue(DialogueRegionSource source);

/// Absent for any other text.
ORVANE_API std::optional<DialogueRegionSource> dialogueRegionSourceFromRawValue(
    std::string_view rawValue) noexcept;

}  // namespace orvane

template <>
struct ORVANE_API std::hash<orvane::DialogueRegion> {
  std::size_t operator()(const orvane::DialogueRegion& region) const noexcept;
};
