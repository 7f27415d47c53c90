#pragma once

#include <string_view>
#include <utility>

#include "orvane/edit/fade_curve.h"
#include "orvane/edit/silence.h"

/// What the choices of edits are called, as they are asked for and as they are told.
namespace orvane::cli::EditNames {

inline constexpr std::pair<std::string_view, EditOperations::FadeCurve> kCurves[] = {
    {"linear", EditOperations::FadeCurve::linear},
    {"log", EditOperations::FadeCurve::logarithmic},
    {"equal-power", EditOperations::FadeCurve::equalPower}};
inline constexpr std::pair<std::string_view, EditOperations::FadeDirection> kDirections[] = {
    {"in", EditOperations::FadeDirection::fadeIn}, {"out", EditOperations::FadeDirection::fadeOut}};
inline constexpr std::pair<std::string_view, EditOperations::SilenceMode> kSilences[] = {
    {"before", EditOperations::SilenceMode::insertBefore},
    {"after", EditOperations::SilenceMode::insertAfter},
    {"replace", EditOperations::SilenceMode::replace}};

}  // namespace orvane::cli::EditNames
