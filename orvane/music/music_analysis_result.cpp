#include "orvane/music/music_analysis_result.h"

#include <algorithm>
#include <utility>

namespace orvane {
namespace {

using Stem = MusicAnalysisResult::Stem;
using TimeSpan = MusicAnalysisResult::TimeSpan;

struct StemNames {
  std::string_view rawValue;
  std::string_view displayName;
};

/// In the order of the enumeration. The stored name of the drums is singular.
constexpr std::array<StemNames, 4> kStemNames = {
    {{"vocal", "Vocal"}, {"drum", "Drums"}, {"bass", "Bass"}, {"other", "Other"}}};

/// The note names that the analysis writes; B sharp, C flat, E sharp and F flat are not among them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 17> kTonics = {{
    {"a", "A"},
    {"aFlat", "A\u266D"},
    {"aSharp", "A\u266F"},
    {"b", "B"},
    {"bFlat", "B\u266D"},
    {"c", "C"},
    {"cSharp", "C\u266F"},
    {"d", "D"},
    {"dFlat", "D\u266D"},
    {"dSharp", "D\u266F"},
    {"e", "E"},
    {"eFlat", "E\u266D"},
    {"f", "F"},
    {"fSharp", "F\u266F"},
    {"g", "G"},
    {"gFlat", "G\u266D"},
    {"gSharp", "G\u266F"},
}};

std::optional<TimeSpan> clippedSpan(const TimeSpan& span, double length) {
  const TimeSpan result{std::clamp(span.start, 0.0, length), std::clamp(span.end, 0.0, length)};
  if (!(result.start < result.end)) return std::nullopt;
  return result;
}

void clipSpans(std::vector<TimeSpan>& spans, double length) {
  std::vector<TimeSpan> kept;
  for (const TimeSpan& span : spans)
    if (const auto part = clippedSpan(span, length)) kept.push_back(*part);
  spans = std::move(kept);
}

/// For ranges that carry a span and more.
template <typename Range>
void clipRanges(std::vector<Range>& ranges, double length) {
  std::vector<Range> kept;
  for (Range& range : ranges) {
    const auto part = clippedSpan(range.span, length);
    if (!part) continue;
    range.span = *part;
    kept.push_back(std::move(range));
  }
  ranges = std::move(kept);
}

std::int64_t countNotAfter(const std::vector<double>& ascending, double t) {
  return std::upper_bound(ascending.begin(), ascending.end(), t) - ascending.begin();
}
std::int64_t countBefore(const std::vector<double>& ascending, double t) {
  return std::lower_bound(ascending.begin(), ascending.end(), t) - ascending.begin();
}

}  // namespace

std::string_view rawValue(Stem stem) noexcept {
  return kStemNames[static_cast<std::size_t>(stem)].rawValue;
}

std::optional<Stem> stemFromRawValue(std::string_view text) noexcept {
  for (const Stem stem : MusicAnalysisResult::kAllStems)
    if (rawValue(stem) == text) return stem;
  return std::nullopt;
}

std::string_view displayName(Stem stem) noexcept {
  return kStemNames[static_cast<std::size_t>(stem)].displayName;
}

std::string MusicAnalysisResult::tonicLabel(std::string_view tonic) {
  for (const auto& [name, label] : kTonics)
    if (name == tonic) return std::string(label);
  return std::string(tonic);
}

std::string MusicAnalysisResult::KeyRange::label() const {
  return tonicLabel(tonic) + " " + mode;
}

std::optional<MusicAnalysisResult::KeyRange> MusicAnalysisResult::dominantKey() const {
  if (keys.empty()) return std::nullopt;
  return *std::max_element(keys.begin(), keys.end(), [](const KeyRange& a, const KeyRange& b) {
    return a.span.end - a.span.start < b.span.end - b.span.start;
  });
}

const MusicAnalysisResult::StemLane* MusicAnalysisResult::lane(Stem stem) const noexcept {
  const auto found = std::find_if(stems.begin(), stems.end(),
                                  [stem](const StemLane& lane) { return lane.stem == stem; });
  return found == stems.end() ? nullptr : &*found;
}

double MusicAnalysisResult::coverage(Stem stem) const noexcept {
  const StemLane* const found = lane(stem);
  if (found == nullptr || !(duration > 0)) return 0;
  double present = 0;
  for (const TimeSpan& range : found->ranges) present += range.duration();
  return std::clamp(present / duration * 100, 0.0, 100.0);
}

std::optional<MusicAnalysisResult::MusicPosition> MusicAnalysisResult::position(double t) const {
  if (bars.empty() || beats.empty()) return std::nullopt;
  const std::int64_t bar = countNotAfter(bars, t);
  if (bar == 0) return std::nullopt;
  const double barStart = bars[static_cast<std::size_t>(bar - 1)];
  const std::int64_t beat = countNotAfter(beats, t) - countBefore(beats, barStart);
  return MusicPosition{bar, std::max<std::int64_t>(beat, 1)};
}

MusicAnalysisResult MusicAnalysisResult::clipped(double length) const {
  const double limit = std::max(length, 0.0);
  const auto isOutside = [limit](double time) { return !(time >= 0 && time <= limit); };
  MusicAnalysisResult result = *this;
  std::erase_if(result.beats, isOutside);
  std::erase_if(result.bars, isOutside);
  for (StemLane& lane : result.stems) {
    clipSpans(lane.ranges, limit);
    std::erase_if(lane.activity, [&](const ActivityPoint& point) { return isOutside(point.time); });
  }
  clipSpans(result.sections, limit);
  clipSpans(result.segments, limit);
  clipSpans(result.phrases, limit);
  clipRanges(result.keys, limit);
  clipRanges(result.paces, limit);
  return result;
}

}  // namespace orvane
