#pragma once

#include <cstdint>
#include <span>

#include "orvane/edit/fade_curve.h"
#include "orvane/platform/export.h"

namespace orvane::EditOperations {

/// The gains of a curve for the frames first, first + 1, …, with t = frame ÷ divisor in [0, 1].
/// Curves are evaluated in double and rounded once, so that every instruction set gives the same
/// gains, within half a step of single precision and 1e-12.
ORVANE_TESTING_API void fillFadeGains(FadeCurve curve, FadeDirection direction, std::int64_t first,
                                      float divisor, std::span<float> gains) noexcept;

}  // namespace orvane::EditOperations
