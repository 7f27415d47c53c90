#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane::EditOperations {

enum class FadeCurve { linear, logarithmic, equalPower };
enum class FadeDirection { fadeIn, fadeOut };

inline constexpr std::array kFadeCurves = {FadeCurve::linear, FadeCurve::logarithmic,
                                           FadeCurve::equalPower};

/// "Linear", "Log", "Equal Power": the labels that a user sees.
ORVANE_API std::string_view rawValue(FadeCurve curve) noexcept;
ORVANE_API std::optional<FadeCurve> fadeCurveFromRawValue(std::string_view text) noexcept;

}  // namespace orvane::EditOperations
