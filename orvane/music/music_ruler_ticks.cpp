#include "orvane/music/music_ruler_ticks.h"

namespace orvane::MusicRulerTicks {

std::int64_t labelEvery(double barsVisible) {
  constexpr std::int64_t kLargestStep = 512;
  constexpr double kMostLabels = 12;  // that a ruler shows without crowding
  for (std::int64_t step = 1; step < kLargestStep; step *= 2)
    if (barsVisible / static_cast<double>(step) <= kMostLabels) return step;
  return kLargestStep;
}

}  // namespace orvane::MusicRulerTicks
