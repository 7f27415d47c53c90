#include "orvane/analysis/loudness_violations.h"

#include <cstddef>

namespace orvane::LoudnessViolations {
namespace {

constexpr double kStepsPerSecond = 10;

std::vector<HalfOpenTimeRange> find(std::span<const LoudnessCurvePoint> curve,
                                    float LoudnessCurvePoint::*level, float threshold) {
  std::vector<HalfOpenTimeRange> ranges;
  bool isInside = false;
  for (std::size_t i = 0; i < curve.size(); ++i) {
    const bool isAbove = curve[i].*level > threshold;  // not for what is no number
    const auto at = [](std::size_t step) { return static_cast<double>(step) / kStepsPerSecond; };
    if (isAbove && !isInside) ranges.push_back({at(i), at(i)});
    if (isAbove) ranges.back().upperBound = at(i + 1);
    isInside = isAbove;
  }
  return ranges;
}

}  // namespace

std::vector<HalfOpenTimeRange> momentary(std::span<const LoudnessCurvePoint> curve,
                                         float thresholdLUFS) {
  return find(curve, &LoudnessCurvePoint::momentary, thresholdLUFS);
}

std::vector<HalfOpenTimeRange> shortTerm(std::span<const LoudnessCurvePoint> curve,
                                         float thresholdLUFS) {
  return find(curve, &LoudnessCurvePoint::shortTerm, thresholdLUFS);
}

}  // namespace orvane::LoudnessViolations
