#include "orvane/music/music_activity_decimation.h"

#include <algorithm>

namespace orvane::MusicActivityDecimation {

std::vector<float> columns(std::span<const MusicAnalysisResult::ActivityPoint> activity,
                           double from, double to, std::int64_t columns) {
  if (columns < 1) return {};
  std::vector<float> levels(static_cast<std::size_t>(columns));
  if (activity.empty() || from >= to) return levels;

  const double width = (to - from) / static_cast<double>(columns);
  auto point = std::find_if(activity.begin(), activity.end(),
                            [from](const auto& each) { return each.time >= from; });
  float carried = point == activity.begin() ? 0 : (point - 1)->value;
  for (std::size_t column = 0; column < levels.size(); ++column) {
    const double edge = from + width * static_cast<double>(column + 1);
    const auto first = point;
    while (point != activity.end() && point->time < edge) ++point;
    if (first == point) {
      levels[column] = carried;
      continue;
    }
    levels[column] = std::max_element(first, point, [](const auto& a, const auto& b) {
                       return a.value < b.value;
                     })->value;
    carried = (point - 1)->value;
  }
  return levels;
}

}  // namespace orvane::MusicActivityDecimation
