#include "orvane/music/music_section_chapters.h"

#include <algorithm>

namespace orvane::MusicSectionChapters {
namespace {

using TimeSpan = MusicAnalysisResult::TimeSpan;

/// Where the spans that lie within [0, duration] start, ascending.
std::vector<double> startsWithin(std::span<const TimeSpan> spans, double duration) {
  std::vector<double> starts;
  for (const TimeSpan& span : spans) {
    const double start = std::clamp(span.start, 0.0, duration);
    const double end = std::clamp(span.end, 0.0, duration);
    if (start < end) starts.push_back(start);
  }
  std::sort(starts.begin(), starts.end());
  return starts;
}

}  // namespace

std::vector<TimeSpan> tile(std::span<const TimeSpan> spans, double duration, double minimumLength) {
  if (!(duration > 0)) return {};
  const std::vector<double> starts = startsWithin(spans, duration);
  if (starts.empty()) return {};

  std::vector<double> boundaries{0.0};
  for (const double start : starts) {
    const bool isNew = start > boundaries.back() && start < duration;
    if (isNew && start - boundaries.back() >= minimumLength) boundaries.push_back(start);
  }
  if (boundaries.size() >= 2 && duration - boundaries.back() < minimumLength) boundaries.pop_back();

  std::vector<TimeSpan> chapters;
  for (std::size_t i = 0; i < boundaries.size(); ++i)
    chapters.push_back({boundaries[i], i + 1 < boundaries.size() ? boundaries[i + 1] : duration});
  return chapters;
}

}  // namespace orvane::MusicSectionChapters
