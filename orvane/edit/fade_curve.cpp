#include "orvane/edit/fade_curve.h"

namespace orvane::EditOperations {
namespace {

constexpr std::array<std::string_view, kFadeCurves.size()> kLabels = {"Linear", "Log",
                                                                      "Equal Power"};

}  // namespace

std::string_view rawValue(FadeCurve curve) noexcept {
  return kLabels[static_cast<std::size_t>(curve)];
}

std::optional<FadeCurve> fadeCurveFromRawValue(std::string_view text) noexcept {
  for (const FadeCurve curve : kFadeCurves)
    if (text == rawValue(curve)) return curve;
  return std::nullopt;
}

}  // namespace orvane::EditOperations
