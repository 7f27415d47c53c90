#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/text/iso8601_date.h"

namespace orvane {

/// What a musical analysis found in a file: stems, beats, structure, key and pace. Times are
/// seconds from the start of the file. Has a JSON form, and so have its nested records.
struct ORVANE_API MusicAnalysisResult {
  enum class Stem { vocal, drum, bass, other };
  static constexpr std::array kAllStems = {Stem::vocal, Stem::drum, Stem::bass, Stem::other};

  /// Half-open: `end` is no part of it.
  struct TimeSpan {
    double start = 0;
    double end = 0;

    bool operator==(const TimeSpan&) const = default;

    /// Seconds; 0 for a span that ends before it starts.
    double duration() const noexcept { return end > start ? end - start : 0; }
    bool contains(double t) const noexcept { return start <= t && t < end; }
  };

  /// How strongly a stem plays at one time.
  struct ActivityPoint {
    double time = 0;
    float value = 0;

    bool operator==(const ActivityPoint&) const = default;
  };

  /// Where a stem is present.
  struct StemLane {
    Stem stem = Stem::vocal;
    std::vector<TimeSpan> ranges{};
    std::vector<ActivityPoint> activity{};

    bool operator==(const StemLane&) const = default;
  };

  struct KeyRange {
    TimeSpan span{};
    std::string tonic{};  ///< "c", "fSharp", "bFlat" …
    std::string mode{};   ///< "major", "minor" …

    bool operator==(const KeyRange&) const = default;

    /// "F♯ minor".
    std::string label() const;
  };

  struct PaceRange {
    TimeSpan span{};
    double value = 0;  ///< beats per minute

    bool operator==(const PaceRange&) const = default;
  };

  /// Both count from 1.
  struct MusicPosition {
    std::int64_t bar = 1;
    std::int64_t beat = 1;

    bool operator==(const MusicPosition&) const = default;
  };

  std::string source{};  ///< which analysis made the record
  Date analysedAt{};
  double duration = 0;  ///< seconds of the analysed audio
  std::vector<StemLane> stems{};
  std::vector<double> beats{};  ///< ascending
  std::vector<double> bars{};   ///< downbeats, ascending
  std::optional<float> beatsPerMinute{};
  std::vector<TimeSpan> sections{};  ///< large parts
  std::vector<TimeSpan> segments{};  ///< finer parts
  std::vector<TimeSpan> phrases{};
  std::vector<KeyRange> keys{};
  std::vector<PaceRange> paces{};

  bool operator==(const MusicAnalysisResult&) const = default;

  /// Whether any key was found.
  bool looksLikeMusic() const noexcept { return !keys.empty(); }
  /// The key with the longest range, the earliest of equals; absent without keys.
  std::optional<KeyRange> dominantKey() const;
  /// The first lane of that stem; null without one.
  const StemLane* lane(Stem stem) const noexcept;
  /// How much of the file the stem is present in, 0 … 100 percent. Ranges that overlap count twice.
  double coverage(Stem stem) const noexcept;
  /// Absent without bars or beats and before the first bar.
  std::optional<MusicPosition> position(double t) const;
  /// A copy cut to [0, length]: spans are shortened, empty ones and times outside are left out.
  MusicAnalysisResult clipped(double length) const;

  /// "F♯" for "fSharp"; what is no tonic is returned as it is.
  static std::string tonicLabel(std::string_view tonic);
};

/// "vocal", "drum", "bass", "other".
ORVANE_API std::string_view rawValue(MusicAnalysisResult::Stem stem) noexcept;
ORVANE_API std::optional<MusicAnalysisResult::Stem> stemFromRawValue(
    std::string_view text) noexcept;
/// "Vocal", "Drums", "Bass", "Other".
ORVANE_API std::string_view displayName(MusicAnalysisResult::Stem stem) noexcept;

}  // namespace orvane
